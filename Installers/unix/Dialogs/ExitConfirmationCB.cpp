#include "Dialogs/ExitConfirmation.h"

#include <Xm/MessageB.h>
#include <cstdlib>
#include <initializer_list>
#include <string>

#include "ut/owned.h"
#include "ut/strprint.h"
#include "ut/toolkit/modal.h"
#include "ut/toolkit/uiut.h"
#include "ut/toolkit/widgetTree.h"

enum { STATUS_QUIT = 10 };

/* One question being asked; its record lives on the stack of the routine that waits. */
struct Question {
    Widget parent;
    Widget box;    /* null once it is gone */
    Widget notice; /* null until the user has chosen to leave */
    bool bStay;    /* the dialog that asked goes, too: see questionGone */
    int ExitConfirmationDone;
};

static Question *s_pOpen; /* null when none is open */

/* The product of the last confirmation. */
static std::string Sproduct;

static void hideButtons(Widget box, std::initializer_list<unsigned char> children)
{
    for (unsigned char child : children)
        XtUnmanageChild(XmMessageBoxGetChild(box, child));
}

static void showMessage(Widget box, const char *pText)
{
    OV_instSetLiteralLabel(XmMessageBoxGetChild(box, XmDIALOG_MESSAGE_LABEL), pText);
}

static void raiseBox(Widget box)
{
    Widget shell = OV_instGetShell(box);

    if (shell && XtIsRealized(shell))
        XMapRaised(XtDisplay(shell), XtWindow(shell));
}

/* Where the dialog that asked goes, too, nobody must return into the callback of its button: the
 * wait then takes the place of the toolkit's main loop. */
static void questionGone(Widget, XtPointer question, XtPointer)
{
    Question *pQuestion = static_cast<Question *>(question);

    if (s_pOpen == pQuestion)
        s_pOpen = nullptr;
    pQuestion->box = nullptr;
    pQuestion->bStay = OV_instIsDying(pQuestion->parent);
}

static void noticeGone(Widget, XtPointer, XtPointer)
{
    if (s_pOpen)
        s_pOpen->notice = nullptr;
}

/* A box that is dying but not gone when its event has been handled waits for us to return. */
static void waitForAnswer(Question *pQuestion)
{
    XtAppContext app = XtWidgetToApplicationContext(pQuestion->parent);

    XtAddCallback(pQuestion->box, XmNdestroyCallback, questionGone, pQuestion);
    OV_instRunDialog(pQuestion->box, &pQuestion->ExitConfirmationDone);
    while (pQuestion->bStay)
        XtAppProcessEvent(app, XtIMAll);
    if (pQuestion->box) /* it must not come back to this record */
        XtRemoveCallback(pQuestion->box, XmNdestroyCallback, questionGone, pQuestion);
    if (s_pOpen == pQuestion)
        s_pOpen = nullptr;
}

void OV_exitSetupConfirmation(Widget parent, const char *pMessage, const char *pProduct)
{
    if (!parent || OV_instIsDying(parent))
        return;
    if (s_pOpen) {
        raiseBox(s_pOpen->notice ? s_pOpen->notice : s_pOpen->box);
        return;
    }
    OwnedText text(
        OV_instStrPrint("%s%s", "Are you sure you want to Exit?\n", pMessage ? pMessage : ""));
    Question question = {parent, CreatembExitSetup(parent), nullptr, false, 0};
    hideButtons(question.box, {XmDIALOG_SEPARATOR, XmDIALOG_HELP_BUTTON});
    showMessage(question.box, text ? text.get() : "");
    Sproduct = pProduct ? pProduct : "";
    s_pOpen = &question;
    waitForAnswer(&question);
}

void ExitSetupResumeCB(Widget widget, XtPointer, XtPointer)
{
    XtDestroyWidget(OV_instGetShell(widget));
    if (s_pOpen)
        s_pOpen->ExitConfirmationDone = 1;
}

void ExitSetupExitCB(Widget widget, XtPointer, XtPointer)
{
    if (s_pOpen && s_pOpen->notice) {
        raiseBox(s_pOpen->notice);
        return;
    }
    Widget notice = CreatembExitSetupFinish(OV_instGetShell(widget));
    /* An empty product leaves the blank in front: who drives dialogs by their texts compares them
     * whole. */
    OwnedText text(OV_instStrPrint("%s Setup was interrupted before your\n"
                                   "new software was fully installed",
                                   Sproduct.c_str()));
    hideButtons(notice, {XmDIALOG_HELP_BUTTON, XmDIALOG_CANCEL_BUTTON, XmDIALOG_SEPARATOR});
    showMessage(notice, text ? text.get() : "");
    if (s_pOpen) {
        s_pOpen->notice = notice;
        XtAddCallback(notice, XmNdestroyCallback, noticeGone, nullptr);
    }
    XtManageChild(notice);
}

void ExitSetupFinishCB(Widget widget, XtPointer, XtPointer)
{
    XtDestroyWidget(OV_instGetShell(widget));
    exit(STATUS_QUIT);
}

void ExitSetupCompleteCB(Widget, XtPointer, XtPointer) {}
