#include "dialogs/Welcome.h"

#include <Xm/DialogS.h>
#include <Xm/Form.h>
#include <Xm/Frame.h>
#include <Xm/Label.h>
#include <Xm/MessageB.h>

#include "ut/toolkit/bxutils.h"
#include "ut/toolkit/uibuild.h"
#include "ut/toolkit/widgetTree.h"

#define HEADING UI_SET("renderTable.fontStyle", "Bold") UI_SET("renderTable.fontSize", "13")

// clang-format off
static const OV_WidgetRow s_aRows[] = {
    {"dsWelcome", nullptr, &xmDialogShellWidgetClass, UI_SET("title", "ORVANE|Setup")},
    {"mbWelcome", "dsWelcome", &xmMessageBoxWidgetClass,
     UI_SET("okLabelString", "Continue") UI_SET("cancelLabelString", "Exit Setup")
     UI_SET("dialogStyle", "DIALOG_MODELESS") UI_SET("defaultButtonType", "DIALOG_OK_BUTTON")},
    {"foWelcome", "mbWelcome", &xmFormWidgetClass, ""},
    {"frWelcomeTop", "foWelcome", &xmFrameWidgetClass, UI_FILL},
    {"form", "frWelcomeTop", &xmFormWidgetClass, UI_SET("verticalSpacing", "14")},
    {"laWelcomeTop", "form", &xmLabelWidgetClass,
     UI_TEXT(":::t\"Welcome to the Tamboril installation program.\"")
     HEADING UI_TOP UI_LEFT UI_RIGHT},
    {"laWelcomeMiddle", "form", &xmLabelWidgetClass,
     UI_TEXT("") UI_BELOW("laWelcomeTop") UI_LEFT UI_RIGHT UI_BOTTOM
     UI_SET("alignment", "ALIGNMENT_BEGINNING")},
    {nullptr, nullptr, nullptr, nullptr},
};
// clang-format on

static const OV_CallbackRow s_aCallbacks[] = {
    {"mbWelcome", XmNmapCallback,    OV_instWelcomeMapCB     },
    {"mbWelcome", XmNokCallback,     OV_instWelcomeContinueCB},
    {"mbWelcome", XmNcancelCallback, OV_instWelcomeExitCB    },
    {nullptr,     nullptr,           nullptr                 },
};

Widget CreatembWelcome(Widget parent)
{
    Widget dialog = OV_instBuildDialog(parent, s_aRows, s_aCallbacks);

    OV_instWelcomeCreateLabelCB(OV_instFindWidget(dialog, "laWelcomeTop"), nullptr, nullptr);
    return dialog;
}
