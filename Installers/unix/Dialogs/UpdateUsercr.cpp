#include "Dialogs/UpdateUser.h"

#include <Xm/DialogS.h>
#include <Xm/Form.h>
#include <Xm/Frame.h>
#include <Xm/List.h>
#include <Xm/MessageB.h>
#include <Xm/PushB.h>
#include <Xm/RowColumn.h>
#include <Xm/ScrolledW.h>
#include <Xm/TextF.h>
#include <Xm/ToggleB.h>

#include <cstdint>

#include "ut/toolkit/uibuild.h"

#define RADIO UI_SET("indicatorOn", "INDICATOR_FILL") UI_SET("indicatorType", "ONE_OF_MANY_ROUND")

// clang-format off
static const OV_WidgetRow s_aRows[] = {
    {"dsUpdateUser", nullptr, &xmDialogShellWidgetClass, UI_SET("title", "Update User")},
    {"mbUpdateUser", "dsUpdateUser", &xmMessageBoxWidgetClass,
     UI_SET("okLabelString", "Update") UI_SET("cancelLabelString", "Continue")
     UI_SET("dialogStyle", "DIALOG_MODELESS") UI_SET("defaultButtonType", "DIALOG_OK_BUTTON")},
    {"rowColumn1", "mbUpdateUser", &xmRowColumnWidgetClass,
     UI_SET("marginWidth", "0") UI_SET("marginHeight", "0") UI_SET("spacing", "12")},
    {"frame2", "rowColumn1", &xmFrameWidgetClass, UI_SET("marginHeight", "10")},
    {"form", "frame2", &xmFormWidgetClass, UI_SET("verticalSpacing", "0")},
    {"txUpdateUserUsername", "form", &xmTextFieldWidgetClass,
     UI_SET("width", "280") UI_TOP UI_BOTTOM UI_LEFT
     UI_SET("rightAttachment", "ATTACH_POSITION") UI_SET("rightPosition", "70")},
    {"pbUpdateUserSelectUser", "form", &xmPushButtonWidgetClass,
     UI_TEXT("Select User") UI_SET("navigationType", "TAB_GROUP") UI_TOP UI_BOTTOM
     UI_SET("leftAttachment", "ATTACH_POSITION") UI_SET("leftPosition", "70") UI_SET("leftOffset", "8") UI_RIGHT},
    {"frame3", "rowColumn1", &xmFrameWidgetClass, ""},
    {"rowColumn3", "frame3", &xmRowColumnWidgetClass, UI_SET("radioBehavior", "True")},
    {"toggleButton", "rowColumn3", &xmToggleButtonWidgetClass,
     UI_TEXT("Copy .kivo_2.01 file in user account from $OV_HOME") UI_SET("set", "True") RADIO},
    {"toggleButton1", "rowColumn3", &xmToggleButtonWidgetClass,
     UI_TEXT("Create new .kivo_2.01 file in user account") RADIO},
    {nullptr, nullptr, nullptr, nullptr},
};

static const OV_WidgetRow s_aListRows[] = {
    {"swUpdateUserUserList", nullptr, &xmScrolledWindowWidgetClass,
     UI_SET("scrollingPolicy", "APPLICATION_DEFINED") UI_SET("visualPolicy", "VARIABLE")},
    {"listUpdateUserUsernames", "swUpdateUserUserList", &xmListWidgetClass,
     UI_SET("selectionPolicy", "SINGLE_SELECT") UI_SET("listSizePolicy", "CONSTANT")},
    {nullptr, nullptr, nullptr, nullptr},
};
// clang-format on

static const OV_CallbackRow s_aCallbacks[] = {
    {"mbUpdateUser",           XmNokCallback,       UpdateUserUpdateCB    },
    {"mbUpdateUser",           XmNcancelCallback,   UpdateUserContinueCB  },
    {"pbUpdateUserSelectUser", XmNactivateCallback, UpdateUserSelectUserCB},
    {nullptr,                  nullptr,             nullptr               },
};

/* A click chooses a name; with the keyboard, Return does. */
static const OV_CallbackRow s_aListCallbacks[] = {
    {"listUpdateUserUsernames", XmNsingleSelectionCallback, user_sel_name_ok},
    {"listUpdateUserUsernames", XmNdefaultActionCallback,   user_sel_name_ok},
    {nullptr,                   nullptr,                    nullptr         },
};

Widget CreatembUpdateUser(Widget parent)
{
    Widget dialog = OV_instBuildDialog(parent, s_aRows, s_aCallbacks);

    XtUnmanageChild(XmMessageBoxGetChild(dialog, XmDIALOG_HELP_BUTTON));
    XtUnmanageChild(XmMessageBoxGetChild(dialog, XmDIALOG_SYMBOL_LABEL));
    XtVaSetValues(dialog, XmNinitialFocus, XtNameToWidget(dialog, "*txUpdateUserUsername"),
                  nullptr);
    XtAddCallback(XtNameToWidget(dialog, "*toggleButton"), XmNvalueChangedCallback,
                  UpdateUserValueChangeCB, nullptr);
    XtAddCallback(XtNameToWidget(dialog, "*toggleButton1"), XmNvalueChangedCallback,
                  UpdateUserValueChangeCB, reinterpret_cast<XtPointer>(intptr_t{1}));
    return dialog;
}

Widget CreateswUpdateUserUserList(Widget parent)
{
    return OV_instBuildDialog(parent, s_aListRows, s_aListCallbacks);
}
