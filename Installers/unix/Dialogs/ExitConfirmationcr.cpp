#include "Dialogs/ExitConfirmation.h"

#include <Xm/DialogS.h>
#include <Xm/MessageB.h>

#include "Dialogs/windowTitle.h"
#include "ut/toolkit/frameClose.h"
#include "ut/toolkit/uibuild.h"

#define BOX(style, message)                                                                        \
    UI_SET("dialogStyle", style)                                                                   \
    UI_SET("messageString", message)                                                               \
    UI_SET("messageAlignment", "ALIGNMENT_BEGINNING")                                              \
    UI_SET("defaultButtonType", "DIALOG_OK_BUTTON")

/* The question leaves the other dialogs live, the notice does not: all is decided by then. */
// clang-format off
static const OV_WidgetRow s_aQuestion[] = {
    {"dsExitSetup", nullptr, &xmDialogShellWidgetClass, ""},
    {"mbExitSetup", "dsExitSetup", &xmMessageBoxWidgetClass,
     BOX("DIALOG_MODELESS", "Are you sure you want to Exit?")
     UI_SET("okLabelString", "Resume Setup") UI_SET("cancelLabelString", "Exit Setup")
     UI_ESCAPE_IS_OK},
    {nullptr, nullptr, nullptr, nullptr},
};

static const OV_WidgetRow s_aNotice[] = {
    {"dsExitSetupFinish", nullptr, &xmDialogShellWidgetClass, ""},
    {"mbExitSetupFinish", "dsExitSetupFinish", &xmMessageBoxWidgetClass,
     BOX("DIALOG_FULL_APPLICATION_MODAL", "Setup was interrupted")
     UI_SET("okLabelString", "OK") UI_ESCAPE_IS_OK},
    {nullptr, nullptr, nullptr, nullptr},
};

static const OV_WidgetRow s_aComplete[] = {
    {"dsExitSetupComplete", nullptr, &xmDialogShellWidgetClass, ""},
    {"mbExitSetupComplete", "dsExitSetupComplete", &xmMessageBoxWidgetClass,
     BOX("DIALOG_MODELESS", "Setup is complete")
     UI_SET("okLabelString", "OK") UI_ESCAPE_IS_OK},
    {nullptr, nullptr, nullptr, nullptr},
};
// clang-format on

static const OV_CallbackRow s_aQuestionCallbacks[] = {
    {"mbExitSetup", XmNokCallback,     ExitSetupResumeCB},
    {"mbExitSetup", XmNcancelCallback, ExitSetupExitCB  },
    {nullptr,       nullptr,           nullptr          },
};

static const OV_CallbackRow s_aNoticeCallbacks[] = {
    {"mbExitSetupFinish", XmNokCallback, ExitSetupFinishCB},
    {nullptr,             nullptr,       nullptr          },
};

static const OV_CallbackRow s_aCompleteCallbacks[] = {
    {"mbExitSetupComplete", XmNokCallback, ExitSetupCompleteCB},
    {nullptr,               nullptr,       nullptr            },
};

static Widget createTitled(Widget parent, const OV_WidgetRow *aRows,
                           const OV_CallbackRow *aCallbacks)
{
    Widget box = OV_instBuildDialog(parent, aRows, aCallbacks);

    OV_instSetWindowTitle(box);
    return box;
}

/* Neither its frame nor Escape leaves setup. */
Widget CreatembExitSetup(Widget parent)
{
    Widget box = createTitled(parent, s_aQuestion, s_aQuestionCallbacks);

    OV_instHandleFrameClose(box, "OK");
    return box;
}

Widget CreatembExitSetupFinish(Widget parent)
{
    return createTitled(parent, s_aNotice, s_aNoticeCallbacks);
}

Widget CreatembExitSetupComplete(Widget parent)
{
    Widget box = createTitled(parent, s_aComplete, s_aCompleteCallbacks);

    XtUnmanageChild(XmMessageBoxGetChild(box, XmDIALOG_CANCEL_BUTTON));
    XtUnmanageChild(XmMessageBoxGetChild(box, XmDIALOG_HELP_BUTTON));
    return box;
}
