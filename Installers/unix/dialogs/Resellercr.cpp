#include "dialogs/Reseller.h"

#include <Xm/DialogS.h>
#include <Xm/Form.h>
#include <Xm/Frame.h>
#include <Xm/Label.h>
#include <Xm/MessageB.h>
#include <Xm/TextF.h>

#include "dialogs/fieldRows.h"

#define EXPLANATION                                                                                \
    ":::t\"Information about your Reseller or Dealer:\""                                           \
    ":t\"\""                                                                                       \
    ":t\"What you enter here appears in the About KIVO box. Have this information at\""            \
    "\"hand whenever you have problems with the product and need assistance.\""

// clang-format off
static const OV_WidgetRow s_aRows[] = {
    {"dsReseller", nullptr, &xmDialogShellWidgetClass, UI_SET("title", "ORVANE|Setup")},
    {"mbReseller", "dsReseller", &xmMessageBoxWidgetClass, FORM_BOX},
    {"frame", "mbReseller", &xmFrameWidgetClass, ""},
    {"form", "frame", &xmFormWidgetClass, PAGE_FORM},
    {"laReseller", "form", &xmLabelWidgetClass, UI_TEXT(EXPLANATION) UI_TOP UI_LEFT UI_RIGHT},
    {"laResellerName", "form", &xmLabelWidgetClass, FIELD_LABEL("Name:", "laReseller")},
    {"laResellerPhone", "form", &xmLabelWidgetClass, FIELD_LABEL("Phone:", "laResellerName")},
    {"laResellerEmail", "form", &xmLabelWidgetClass,
     FIELD_LABEL("Email:", "laResellerPhone")},
    {"txResellerName", "form", &xmTextFieldWidgetClass,
     FIELD_BESIDE("laResellerName", "laResellerPhone")},
    {"txResellerPhone", "form", &xmTextFieldWidgetClass,
     FIELD_BESIDE("laResellerPhone", "laResellerPhone")},
    {"txResellerEmail", "form", &xmTextFieldWidgetClass,
     FIELD_BESIDE("laResellerEmail", "laResellerPhone")},
    {nullptr, nullptr, nullptr, nullptr},
};

static const OV_WidgetRow s_aConfirmRows[] = {
    {"dsResellerConfirm", nullptr, &xmDialogShellWidgetClass, UI_SET("title", "ORVANE|Setup")},
    {"mbResellerConfirm", "dsResellerConfirm", &xmMessageBoxWidgetClass, CONFIRM_BOX},
    {"frame", "mbResellerConfirm", &xmFrameWidgetClass, ""},
    {"form", "frame", &xmFormWidgetClass, PAGE_FORM},
    {"laReseller1", "form", &xmLabelWidgetClass, UI_TEXT(CONFIRM_TEXT) UI_TOP UI_LEFT UI_RIGHT},
    {"laResellerConfirmName", "form", &xmLabelWidgetClass, VALUE("laReseller1")},
    {"laResellerConfirmPhone", "form", &xmLabelWidgetClass, VALUE("laResellerConfirmName")},
    {"laResellerConfirmEmail", "form", &xmLabelWidgetClass,
     VALUE("laResellerConfirmPhone")},
    {"laResellerName1", "form", &xmLabelWidgetClass,
     VALUE_LABEL("Name:", "laResellerConfirmName")},
    {"laResellerPhone1", "form", &xmLabelWidgetClass,
     VALUE_LABEL("Phone:", "laResellerConfirmPhone")},
    {"laResellerEmail1", "form", &xmLabelWidgetClass,
     VALUE_LABEL("Email:", "laResellerConfirmEmail")},
    {nullptr, nullptr, nullptr, nullptr},
};
// clang-format on

static const OV_CallbackRow s_aCallbacks[] = {
    {"mbReseller", XmNmapCallback,    OV_instResellerMapCB },
    {"mbReseller", XmNokCallback,     OV_instResellerOKCB  },
    {"mbReseller", XmNcancelCallback, OV_instResellerExitCB},
    {nullptr,      nullptr,           nullptr              },
};

static const OV_CallbackRow s_aConfirmCallbacks[] = {
    {"mbResellerConfirm", XmNmapCallback,    OV_instResellerConfirmMapCB   },
    {"mbResellerConfirm", XmNokCallback,     OV_instResellerConfirmOKCB    },
    {"mbResellerConfirm", XmNcancelCallback, OV_instResellerConfirmChangeCB},
    {nullptr,             nullptr,           nullptr                       },
};

Widget CreatembReseller(Widget parent)
{
    return OV_instBuildDialog(parent, s_aRows, s_aCallbacks);
}

Widget CreatembResellerConfirm(Widget parent)
{
    return OV_instBuildDialog(parent, s_aConfirmRows, s_aConfirmCallbacks);
}
