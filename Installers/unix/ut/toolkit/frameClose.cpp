#include "ut/toolkit/frameClose.h"

#include <Xm/XmP.h>
#include <Xm/BulletinB.h>
#include <Xm/Protocols.h>
#include <Xm/GadgetP.h>

#include "ut/toolkit/uiut.h"

/* A dialog whose frame is watched; the newest is first. */
typedef struct Watched {
    Widget dialog;
    const char *pButton;
    struct Watched *pOlder;
} Watched;

static Watched *s_pNewest;

static int isModal(Widget dialog)
{
    unsigned char style = XmDIALOG_MODELESS;

    if (!XtIsManaged(dialog) || !XmIsBulletinBoard(dialog))
        return 0;
    XtVaGetValues(dialog, XmNdialogStyle, &style, nullptr);
    return style != XmDIALOG_MODELESS && style != XmDIALOG_WORK_AREA;
}

/* The toolkit keeps keys and buttons from a dialog below a modal one, but not what the window
 * manager sends. Dialogs of another display belong to the process that this one was forked from. */
static int isBlocked(const Watched *pWatched)
{
    for (const Watched *pNewer = s_pNewest; pNewer && pNewer != pWatched; pNewer = pNewer->pOlder) {
        if (XtDisplay(pNewer->dialog) == XtDisplay(pWatched->dialog) && isModal(pNewer->dialog))
            return 1;
    }
    return 0;
}

/* The button that closing stands for; null when none can be pressed. */
static Widget closingButton(const Watched *pWatched)
{
    static const char *const s_apNames[] = {"Cancel", "OK"}; /* as the toolkit names them */

    if (pWatched->pButton)
        return OV_instFindWidget(pWatched->dialog, pWatched->pButton);
    for (const char *pName : s_apNames) {
        Widget button = XtNameToWidget(pWatched->dialog, pName);
        if (button && XtIsManaged(button))
            return button;
    }
    return nullptr;
}

static int canPress(Widget button)
{
    return button && !button->core.being_destroyed && XtIsManaged(button) && XtIsSensitive(button);
}

static void press(Widget button, XEvent *pEvent)
{
    Cardinal iNone = 0;

    if (XmIsGadget(button)) /* gadgets have no actions of their own, only this method */
        ((XmGadgetClass)XtClass(button))
            ->gadget_class.arm_and_activate(button, pEvent, nullptr, &iNone);
    else
        XtCallActionProc(button, "ArmAndActivate", pEvent, nullptr, 0);
}

/* Handles the event by which a button is pressed from outside a dispatch. */
static void pressNow(Widget widget, XtPointer button, XEvent *pEvent, Boolean *)
{
    XtRemoveEventHandler(widget, NoEventMask, True, pressNow, button);
    press((Widget)button, pEvent);
}

static void frameClosed(Widget shell, XtPointer, XtPointer call)
{
    const Watched *pWatched = s_pNewest;

    while (pWatched && XtParent(pWatched->dialog) != shell)
        pWatched = pWatched->pOlder;
    if (!pWatched || isBlocked(pWatched))
        return;
    Widget button = closingButton(pWatched);
    if (canPress(button))
        press(button, ((XmAnyCallbackStruct *)call)->event);
}

static void forget(Widget, XtPointer watched, XtPointer)
{
    Watched **ppLink = &s_pNewest;

    while (*ppLink && *ppLink != watched)
        ppLink = &(*ppLink)->pOlder;
    if (*ppLink)
        *ppLink = (*ppLink)->pOlder;
    XtFree((char *)watched);
}

void OV_instHandleFrameClose(Widget dialog, const char *pButton)
{
    Widget shell = dialog ? XtParent(dialog) : nullptr;
    Watched *pWatched = s_pNewest;

    if (!shell || !XtIsShell(shell))
        return;
    while (pWatched && pWatched->dialog != dialog)
        pWatched = pWatched->pOlder;
    if (pWatched) { /* watched already, another button from now on */
        pWatched->pButton = pButton;
        return;
    }
    pWatched = XtNew(Watched);
    *pWatched = {dialog, pButton, s_pNewest};
    s_pNewest = pWatched;
    XtAddCallback(dialog, XmNdestroyCallback, forget, pWatched);
    XtVaSetValues(shell, XmNdeleteResponse, XmDO_NOTHING, nullptr);
    XmAddWMProtocolCallback(shell,
                            XmInternAtom(XtDisplay(shell), (char *)"WM_DELETE_WINDOW", False),
                            frameClosed, nullptr);
}

int OV_instActivateButton(Widget button)
{
    Widget widget = button && XmIsGadget(button) ? XtParent(button) : button;
    XEvent event = {};

    if (!canPress(button) || !XtIsRealized(widget))
        return 0;
    event.xclient.type = ClientMessage;
    event.xclient.display = XtDisplay(widget);
    event.xclient.window = XtWindow(widget);
    event.xclient.message_type = XmInternAtom(XtDisplay(widget), (char *)"OVINST_PRESS", False);
    event.xclient.format = 32;
    XtAddEventHandler(widget, NoEventMask, True, pressNow, button);
    return XtDispatchEvent(&event) ? 1 : 0;
}
