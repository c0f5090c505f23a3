#include "dialogs/Viewlog.h"

#include <Xm/DialogS.h>
#include <Xm/Form.h>
#include <Xm/Frame.h>
#include <Xm/Label.h>
#include <Xm/MessageB.h>
#include <Xm/PushB.h>
#include <initializer_list>

#include "ut/uibuild.h"

// clang-format off
static const OV_WidgetRow s_aRows[] = {
    {"dsViewlog", nullptr, &xmDialogShellWidgetClass, UI_SET("title", "ORVANE|Setup")},
    {"mbViewlog", "dsViewlog", &xmMessageBoxWidgetClass,
     UI_SET("okLabelString", "Done") UI_SET("dialogStyle", "DIALOG_MODELESS")
     UI_SET("defaultButtonType", "DIALOG_OK_BUTTON") UI_SET("defaultPosition", "False")
     UI_SET("x", "7") UI_SET("y", "31") UI_SET("width", "425") UI_SET("height", "248")},
    {"frame", "mbViewlog", &xmFrameWidgetClass,
     UI_SET("marginWidth", "14") UI_SET("marginHeight", "10")},
    {"form", "frame", &xmFormWidgetClass, UI_SET("verticalSpacing", "8")},
    {"label", "form", &xmLabelWidgetClass,
     UI_TEXT("#bold\"Installation Setup Log\"") UI_TOP UI_LEFT},
    {"form1", "form", &xmFormWidgetClass, UI_SET("verticalSpacing", "10")
     UI_SET("horizontalSpacing", "0") UI_BELOW("label") UI_LEFT UI_RIGHT},
    {"label1", "form1", &xmLabelWidgetClass,
     UI_TEXT(":::t\"View information about events that occur\"\"during setup.\"")
     UI_SET("topOffset", "0") UI_TOP UI_LEFT},
    {"pushButton", "form1", &xmPushButtonWidgetClass,
     UI_TEXT("View Log") UI_BELOW("label1") UI_LEFT UI_SET("leftOffset", "2") UI_BOTTOM},
    {nullptr, nullptr, nullptr, nullptr},
};
// clang-format on

static const OV_CallbackRow s_aCallbacks[] = {
    {"mbViewlog",  XmNokCallback,       OV_instViewlogDoneCB},
    {"pushButton", XmNactivateCallback, OV_instViewlogCB    },
    {nullptr,      nullptr,             nullptr             },
};

Widget CreatembViewlog(Widget parent)
{
    Widget dialog = OV_instBuildDialog(parent, s_aRows, s_aCallbacks);

    for (unsigned char child :
         {XmDIALOG_CANCEL_BUTTON, XmDIALOG_HELP_BUTTON, XmDIALOG_SYMBOL_LABEL})
        XtUnmanageChild(XmMessageBoxGetChild(dialog, child));
    return dialog;
}
