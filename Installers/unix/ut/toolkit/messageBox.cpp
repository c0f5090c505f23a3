#include "ut/toolkit/messageBox.h"

#include <Xm/DialogS.h>
#include <Xm/MessageB.h>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

#include "ut/toolkit/dialogShell.h"
#include "ut/toolkit/foldText.h"
#include "ut/toolkit/modal.h"
#include "ut/owned.h"
#include "ut/strprint.h"
#include "ut/frontEnd.h"
#include "ut/toolkit/uiut.h"
#include "ut/toolkit/widgetTree.h"

/* How long a notice may take to come up before it is drawn as far as it is, in milliseconds. */
enum { NOTICE_PATIENCE = 300, NOTICE_STEP = 5 };
enum { WIDTH_PERCENT = 70 }; /* how much of the screen a message's lines take at most */

/* A question on the screen. Boxes nest, so each has an answer of its own. */
struct OpenBox {
    Widget box;
    int MessageBoxId; /* 0 while waiting, then 1, 2 or 3 */
    int iLast;        /* its last button */
};

static Widget MessageBox; /* the notice on the screen */

static void forgetNotice(Widget box, XtPointer, XtPointer)
{
    if (MessageBox == box)
        MessageBox = nullptr;
}

/* What a box can be opened below: a parent about to go would take it along unanswered. */
static Widget livingParent(Widget parent)
{
    while (OV_instIsDying(parent))
        parent = XtParent(parent);
    return parent;
}

/* Makes a message box without a separator in a shell of its own, not managed yet. One without a
 * button stays when its frame is closed. */
static Widget createBox(Widget parent, const char *pName)
{
    Widget shell = XtVaCreatePopupShell("Orvane Message", xmDialogShellWidgetClass, parent,
                                        XmNallowShellResize, True, nullptr);
    Widget box =
        XtVaCreateWidget(pName, xmMessageBoxWidgetClass, shell, XmNautoUnmanage, False,
                         XmNdialogStyle, XmDIALOG_FULL_APPLICATION_MODAL, XmNmessageAlignment,
                         XmALIGNMENT_BEGINNING, XmNdefaultButtonType, XmDIALOG_OK_BUTTON, nullptr);

    XtUnmanageChild(XmMessageBoxGetChild(box, XmDIALOG_SEPARATOR));
    OV_instCompleteDialog(box);
    return box;
}

/* The callback of a box's buttons, given the button's number. */
static void MessageBoxCB(Widget button, XtPointer number, XtPointer)
{
    Widget box = XtParent(button);
    OpenBox *pOpen = nullptr;

    if (OV_instIsDying(box)) /* nobody waits for it any more */
        return;
    XtVaGetValues(box, XmNuserData, &pOpen, nullptr);
    pOpen->MessageBoxId = static_cast<int>(reinterpret_cast<intptr_t>(number));
    OV_instTakeDown(box);
}

/* Labels a button and lets it answer, or removes it when it has no label. */
static void setUpButton(OpenBox *pOpen, unsigned char child, const char *pLabel, int iNumber)
{
    Widget button = XmMessageBoxGetChild(pOpen->box, child);

    if (!pLabel) {
        XtUnmanageChild(button);
        return;
    }
    OV_instUpdateLabelString(button, pLabel);
    /* On the button itself: the box's own help callback would answer the F1 key as well. */
    XtAddCallback(button, XmNactivateCallback, MessageBoxCB,
                  reinterpret_cast<XtPointer>(intptr_t{iNumber}));
    pOpen->iLast = iNumber;
}

/* In lines that fit on the screen: a path can have any length, and the buttons of a box wider than
 * the screen cannot be reached. */
static void setMessage(Widget box, const char *pText)
{
    Widget label = XmMessageBoxGetChild(box, XmDIALOG_MESSAGE_LABEL);
    const int iMostWidth = WidthOfScreen(XtScreenOfObject(label)) * WIDTH_PERCENT / 100;

    OV_instSetFoldedLabel(label, pText ? pText : "", iMostWidth);
}

/* The notice, unless it was inherited from the parent process with its display. */
static Widget ownNotice()
{
    Widget main = OV_instGetMainTopLevelShell();

    return MessageBox && main && XtDisplay(main) != XtDisplay(MessageBox) ? nullptr : MessageBox;
}

/* Waits until the window manager has put the shell on the screen, without running callbacks. */
static void awaitWindow(Widget shell)
{
    XWindowAttributes state = {};

    for (int i = 0; i < NOTICE_PATIENCE; i += NOTICE_STEP) {
        if (!XGetWindowAttributes(XtDisplay(shell), XtWindow(shell), &state) ||
            state.map_state == IsViewable)
            return;
        (void)usleep(NOTICE_STEP * 1000);
    }
}

/* Asks in a box whose default button that child is; results as OV_instOkCancelMessageBox has them.
 */
static int askInBox(Widget parent, const char *pMessage, const char *pOk, const char *pCancel,
                    const char *pHelp, unsigned char defaultButton)
{
    parent = livingParent(parent);
    if (!parent)
        return OV_instPrinting.fpAsk(pMessage, pOk, pCancel, pHelp);

    OpenBox open = {createBox(parent, "mbOkCancel"), 0, 1};
    XtVaSetValues(open.box, XmNuserData, &open, XmNdefaultButtonType, defaultButton, nullptr);
    setUpButton(&open, XmDIALOG_OK_BUTTON, pOk ? pOk : "OK", 1);
    setUpButton(&open, XmDIALOG_CANCEL_BUTTON, pCancel, 2);
    setUpButton(&open, XmDIALOG_HELP_BUTTON, pHelp, 3);
    setMessage(open.box, pMessage);
    if (!pCancel && !pHelp) /* Escape, too, has something to press */
        XtOverrideTranslations(open.box, XtParseTranslationTable("<Key>osfCancel: OvPress(OK)"));
    OV_instRunDialog(open.box, &open.MessageBoxId);
    return (open.MessageBoxId ? open.MessageBoxId : open.iLast) - 1; /* or destroyed elsewhere */
}

int OV_instOkCancelMessageBox(Widget parent, const char *pMessage, const char *pOk,
                              const char *pCancel, const char *pHelp)
{
    return askInBox(parent, pMessage, pOk, pCancel, pHelp, XmDIALOG_OK_BUTTON);
}

bool OV_instConfirm(Widget parent, const char *pQuestion)
{
    return askInBox(parent, pQuestion, "Yes", "No", nullptr, XmDIALOG_CANCEL_BUTTON) == 0;
}

int OV_instDisplayMessage(Widget parent, const char *pOk, const char *pCancel, const char *pHelp,
                          const char *pFormat, ...)
{
    va_list args;

    if (!pFormat)
        return 0;
    va_start(args, pFormat);
    OwnedPrint text(OV_instVMessage(pFormat, args));
    va_end(args);
    if (parent)
        return OV_instOkCancelMessageBox(parent, text.get(), pOk, pCancel, pHelp);
    OV_instPrinting.fpTell(text.get(), pOk);
    return 0;
}

void OV_instTellOver(Widget widget, const char *pFormat, ...)
{
    va_list args;

    va_start(args, pFormat);
    OwnedPrint text(OV_instVMessage(pFormat, args));
    va_end(args);
    (void)OV_instDisplayMessage(OV_instGetShell(widget), "OK", nullptr, nullptr, "%s", text.get());
}

void OV_instDisplayMessageBox(Widget parent, const char *pText)
{
    parent = livingParent(parent);
    if (!parent)
        return;
    OV_instRemoveMessageBox();

    Widget box = MessageBox = createBox(parent, "mbMessage");
    XtAddCallback(box, XmNdestroyCallback, forgetNotice, nullptr);
    for (unsigned char child : {XmDIALOG_OK_BUTTON, XmDIALOG_CANCEL_BUTTON, XmDIALOG_HELP_BUTTON})
        XtUnmanageChild(XmMessageBoxGetChild(box, child));
    setMessage(box, pText);
    XtManageChild(box);
    awaitWindow(XtParent(box));
    for (Widget drawn : {XtParent(box), box, XmMessageBoxGetChild(box, XmDIALOG_MESSAGE_LABEL),
                         XmMessageBoxGetChild(box, XmDIALOG_SYMBOL_LABEL)})
        XmUpdateDisplay(drawn);
}

void OV_instRemoveMessageBox()
{
    Widget box = ownNotice();

    MessageBox = nullptr;
    if (!box)
        return;
    Display *pDisplay = XtDisplay(box);
    OV_instTakeDown(box);
    XFlush(pDisplay); /* the caller may be busy for long */
}
