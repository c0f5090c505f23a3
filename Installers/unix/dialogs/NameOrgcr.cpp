#include "dialogs/NameOrg.h"

#include <Xm/DialogS.h>
#include <Xm/Form.h>
#include <Xm/Frame.h>
#include <Xm/Label.h>
#include <Xm/MessageB.h>
#include <Xm/TextF.h>

#include "dialogs/fieldRows.h"

#define INSTRUCTION                                                                                \
    ":::t\"Enter your full name in the box below. You may also enter\""                            \
    ":t\"the name of your organization. Setup will use this information\""                         \
    "\"for subsequent installations of the product.\""

// clang-format off
static const OV_WidgetRow s_aRows[] = {
    {"dsNameOrg", nullptr, &xmDialogShellWidgetClass, UI_SET("title", "ORVANE|Setup")},
    {"mbNameOrg", "dsNameOrg", &xmMessageBoxWidgetClass, FORM_BOX},
    {"frame", "mbNameOrg", &xmFrameWidgetClass, ""},
    {"form", "frame", &xmFormWidgetClass, PAGE_FORM},
    {"laNameOrg", "form", &xmLabelWidgetClass, UI_TEXT(INSTRUCTION) UI_TOP UI_LEFT UI_RIGHT},
    {"laNameOrgName", "form", &xmLabelWidgetClass, FIELD_LABEL("Name:", "laNameOrg")},
    {"laNameOrgOrg", "form", &xmLabelWidgetClass,
     FIELD_LABEL("Organization:", "laNameOrgName")},
    {"txNameOrgName", "form", &xmTextFieldWidgetClass,
     FIELD_BESIDE("laNameOrgName", "laNameOrgOrg")},
    {"txNameOrgOrg", "form", &xmTextFieldWidgetClass,
     FIELD_BESIDE("laNameOrgOrg", "laNameOrgOrg")},
    {nullptr, nullptr, nullptr, nullptr},
};

static const OV_WidgetRow s_aConfirmRows[] = {
    {"dsNameOrgConfirm", nullptr, &xmDialogShellWidgetClass, UI_SET("title", "ORVANE|Setup")},
    {"mbNameOrgConfirm", "dsNameOrgConfirm", &xmMessageBoxWidgetClass, CONFIRM_BOX},
    {"frame", "mbNameOrgConfirm", &xmFrameWidgetClass, ""},
    {"form", "frame", &xmFormWidgetClass, PAGE_FORM},
    {"laNameOrg1", "form", &xmLabelWidgetClass, UI_TEXT(CONFIRM_TEXT) UI_TOP UI_LEFT UI_RIGHT},
    {"laNameOrgConfirmName", "form", &xmLabelWidgetClass, VALUE("laNameOrg1")},
    {"laNameOrgConfirmOrg", "form", &xmLabelWidgetClass, VALUE("laNameOrgConfirmName")},
    {"laNameOrgName1", "form", &xmLabelWidgetClass, VALUE_LABEL("Name:", "laNameOrgConfirmName")},
    {"laNameOrgOrg1", "form", &xmLabelWidgetClass,
     VALUE_LABEL("Organization:", "laNameOrgConfirmOrg")},
    {nullptr, nullptr, nullptr, nullptr},
};
// clang-format on

static const OV_CallbackRow s_aCallbacks[] = {
    {"mbNameOrg", XmNmapCallback,    OV_instNameOrgMapCB },
    {"mbNameOrg", XmNokCallback,     OV_instNameOrgOKCB  },
    {"mbNameOrg", XmNcancelCallback, OV_instNameOrgExitCB},
    {nullptr,     nullptr,           nullptr             },
};

static const OV_CallbackRow s_aConfirmCallbacks[] = {
    {"mbNameOrgConfirm", XmNmapCallback,    OV_instNameOrgConfirmMapCB   },
    {"mbNameOrgConfirm", XmNokCallback,     OV_instNameOrgConfirmOKCB    },
    {"mbNameOrgConfirm", XmNcancelCallback, OV_instNameOrgConfirmChangeCB},
    {nullptr,            nullptr,           nullptr                      },
};

Widget CreatembNameOrg(Widget parent)
{
    return OV_instBuildDialog(parent, s_aRows, s_aCallbacks);
}

Widget CreatembNameOrgConfirm(Widget parent)
{
    return OV_instBuildDialog(parent, s_aConfirmRows, s_aConfirmCallbacks);
}
