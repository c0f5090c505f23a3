#include "ut/toolkit/frameClose.h"

#include <Xm/Xm.h>
#include <Xm/BulletinB.h>
#include <Xm/Protocols.h>

#include "ut/toolkit/pressButton.h"
#include "ut/toolkit/widgetTree.h"

/* A dialog whose frame is watched; the newest is first. */
struct Watched {
    Widget dialog;
    const char *pButton;
    Watched *pOlder;
};

static Watched *s_pNewest;

static bool isModal(Widget dialog)
{
    unsigned char style = XmDIALOG_MODELESS;

    if (!XtIsManaged(dialog) || !XmIsBulletinBoard(dialog))
        return false;
    XtVaGetValues(dialog, XmNdialogStyle, &style, nullptr);
    return style != XmDIALOG_MODELESS && style != XmDIALOG_WORK_AREA;
}

/* The toolkit keeps keys and buttons from a dialog below a modal one, but not what the window
 * manager sends. Dialogs of another display belong to the process that this one was forked from. */
static bool isBlocked(const Watched *pWatched)
{
    for (const Watched *pNewer = s_pNewest; pNewer && pNewer != pWatched; pNewer = pNewer->pOlder) {
        if (XtDisplay(pNewer->dialog) == XtDisplay(pWatched->dialog) && isModal(pNewer->dialog))
            return true;
    }
    return false;
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

static void frameClosed(Widget shell, XtPointer, XtPointer call)
{
    const Watched *pWatched = s_pNewest;

    while (pWatched && XtParent(pWatched->dialog) != shell)
        pWatched = pWatched->pOlder;
    if (!pWatched || isBlocked(pWatched))
        return;
    Widget button = closingButton(pWatched);
    if (OV_instCanPress(button))
        OV_instPressButton(button, static_cast<XmAnyCallbackStruct *>(call)->event);
}

static void forget(Widget, XtPointer watched, XtPointer)
{
    Watched **ppLink = &s_pNewest;

    while (*ppLink && *ppLink != watched)
        ppLink = &(*ppLink)->pOlder;
    if (*ppLink)
        *ppLink = (*ppLink)->pOlder;
    XtFree(static_cast<char *>(watched));
}

void OV_instHandleFrameClose(Widget dialog, const char *pButton)
{
    static char s_caProtocol[] = "WM_DELETE_WINDOW";
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
    XmAddWMProtocolCallback(shell, XmInternAtom(XtDisplay(shell), s_caProtocol, False), frameClosed,
                            nullptr);
}
