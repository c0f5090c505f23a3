#include "dialogs/Progress.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <sys/types.h>

#include <Xm/MessageB.h>
#include <Xm/Xm.h>

#include "Dialogs/windowTitle.h"
#include "dialogs/runWatch.h"
#include "ut/toolkit/messageBox.h"
#include "ut/owned.h"
#include "ut/strprint.h"
#include "ut/toolkit/uiut.h"
#include "ut/toolkit/widgetTree.h"

enum { NAME_WHOLE = 60, NAME_TAIL = 58, STATUS_QUIT = 10 };

/* What is shown. The percentage and the file outlive the dialog. */
static struct {
    Widget dialog;    /* null when there is none */
    Pixmap aWhole[2]; /* what the bar is put together from; the toolkit keeps every drawable that it
                         has drawn text on, so they are not made anew for each drawing */
    Dimension iWidth; /* of these; 0 when there are none */
    Dimension iHeight;
    int oldPercent;
    char *pFile;
} s_progress;

/* What the bar is drawn with. */
struct Bar {
    Widget area;
    Dimension iWidth;
    Dimension iHeight;
    Pixel foreground;
    Pixel background;
    Pixel labelBackground;
    XmRenderTable font;
    GC gc;
};

/* ---- the file's name ---- */

char *OV_instProgressFileText(const char *pFile)
{
    size_t iLength = strlen(pFile);

    if (iLength <= NAME_WHOLE)
        return strdup(pFile);
    const char *pTail = pFile + iLength - NAME_TAIL;
    const char *pSlash = strchr(pTail, '/');
    return OV_instStrPrint("...%s", pSlash && strlen(pSlash) >= 2 ? pSlash : pTail);
}

static void showFile(const char *pFile)
{
    if (s_progress.pFile && strcmp(s_progress.pFile, pFile) == 0)
        return;
    OwnedText text(OV_instProgressFileText(pFile));
    if (text)
        OV_instSetLiteralLabel(OV_instFindWidget(s_progress.dialog, "laProgressDestination"),
                               text.get());
    free(s_progress.pFile);
    s_progress.pFile = strdup(pFile);
}

/* ---- the bar ---- */

static bool readBar(Bar *pBar)
{
    Widget label = OV_instFindWidget(s_progress.dialog, "laProgressDestination");

    pBar->area = OV_instFindWidget(s_progress.dialog, "daProgress");
    if (!pBar->area || !label || !XtIsRealized(pBar->area))
        return false;
    XtVaGetValues(pBar->area, XmNwidth, &pBar->iWidth, XmNheight, &pBar->iHeight, XmNforeground,
                  &pBar->foreground, XmNbackground, &pBar->background, nullptr);
    XtVaGetValues(label, XmNbackground, &pBar->labelBackground, XmNrenderTable, &pBar->font,
                  nullptr);
    return pBar->iWidth && pBar->iHeight;
}

static void freePixmaps(Display *pDisplay)
{
    for (Pixmap whole : s_progress.aWhole)
        if (s_progress.iWidth)
            XFreePixmap(pDisplay, whole);
    s_progress.iWidth = 0;
}

static void providePixmaps(const Bar *pBar)
{
    Display *pDisplay = XtDisplay(pBar->area);

    if (s_progress.iWidth == pBar->iWidth && s_progress.iHeight == pBar->iHeight)
        return;
    freePixmaps(pDisplay);
    for (Pixmap &whole : s_progress.aWhole)
        whole = XCreatePixmap(pDisplay, XtWindow(pBar->area), pBar->iWidth, pBar->iHeight,
                              static_cast<unsigned>(DefaultDepthOfScreen(XtScreen(pBar->area))));
    s_progress.iWidth = pBar->iWidth;
    s_progress.iHeight = pBar->iHeight;
}

/* A bar as it looks filled with that colour all along. The percentage in its middle has the colour
 * that exclusive-or gives it; it is drawn with that colour outright, since antialiased text knows
 * no other function than copying and its edges would come out in any colour. */
static void drawWhole(const Bar *pBar, Pixmap whole, Pixel fill, XmString label)
{
    Display *pDisplay = XtDisplay(pBar->area);
    Dimension iWidth = 0;
    Dimension iHeight = 0;

    XmStringExtent(pBar->font, label, &iWidth, &iHeight);
    const int iBaseline = pBar->iHeight / 2 + iHeight / 2;
    XSetForeground(pDisplay, pBar->gc, fill);
    XFillRectangle(pDisplay, whole, pBar->gc, 0, 0, pBar->iWidth, pBar->iHeight);
    XSetForeground(pDisplay, pBar->gc, fill ^ pBar->foreground ^ pBar->background);
    XmStringDraw(pDisplay, whole, pBar->font, label, pBar->gc,
                 static_cast<Position>(pBar->iWidth / 2 - iWidth / 2),
                 static_cast<Position>(iBaseline - XmStringBaseline(pBar->font, label)), iWidth,
                 XmALIGNMENT_BEGINNING, XmSTRING_DIRECTION_L_TO_R, nullptr);
}

/* Both parts appear ready drawn: nothing flickers. */
static void drawBar(Bar *pBar, int iPercent)
{
    Display *pDisplay = XtDisplay(pBar->area);
    Window window = XtWindow(pBar->area);
    const unsigned iFilled = pBar->iWidth * static_cast<unsigned>(iPercent) / 100;
    const Pixel fill =
        pBar->background == pBar->labelBackground ? pBar->foreground : pBar->labelBackground;
    OwnedText text(OV_instStrPrint("%d%% completed", iPercent));
    XmString label = XmStringCreateLocalized(text ? text.get() : const_cast<char *>(""));

    pBar->gc = XCreateGC(pDisplay, window, 0, nullptr);
    XSetGraphicsExposures(pDisplay, pBar->gc, False);
    providePixmaps(pBar);
    drawWhole(pBar, s_progress.aWhole[0], fill, label);
    drawWhole(pBar, s_progress.aWhole[1], pBar->background, label);
    XCopyArea(pDisplay, s_progress.aWhole[0], window, pBar->gc, 0, 0, iFilled, pBar->iHeight, 0, 0);
    XCopyArea(pDisplay, s_progress.aWhole[1], window, pBar->gc, static_cast<int>(iFilled), 0,
              pBar->iWidth - iFilled, pBar->iHeight, static_cast<int>(iFilled), 0);
    XFreeGC(pDisplay, pBar->gc);
    XmStringFree(label);
    XFlush(pDisplay);
}

void OV_instProgressUpdate(int iPercent, const char *pFile)
{
    Bar bar = {};

    if (!s_progress.dialog)
        return;
    if (iPercent > 100)
        iPercent = 100;
    if (pFile)
        showFile(pFile);
    if (iPercent < 0)
        iPercent = s_progress.oldPercent;
    else if (iPercent == s_progress.oldPercent)
        return;
    s_progress.oldPercent = iPercent;
    if (readBar(&bar))
        drawBar(&bar, iPercent);
}

void OV_instProgressUpdateLabel(const char *pText)
{
    OV_instSetLiteralLabel(OV_instFindWidget(s_progress.dialog, "laProgressAction"), pText);
}

/* ---- callbacks ---- */

static void forget(Widget dialog, XtPointer, XtPointer)
{
    if (s_progress.dialog != dialog)
        return;
    freePixmaps(XtDisplay(dialog));
    s_progress.dialog = nullptr;
}

void OV_instProgressUse(Widget dialog)
{
    s_progress.dialog = dialog;
    XtAddCallback(dialog, XmNdestroyCallback, forget, nullptr);
}

void OV_instProgressExposeCB(Widget, XtPointer, XtPointer)
{
    OV_instProgressUpdate(-1, nullptr);
}

void OV_instProgressMapCB(Widget widget, XtPointer, XtPointer)
{
    XtUnmanageChild(XmMessageBoxGetChild(widget, XmDIALOG_HELP_BUTTON));
    XtUnmanageChild(XmMessageBoxGetChild(widget, XmDIALOG_OK_BUTTON));
    OV_instSetLiteralLabel(OV_instFindWidget(widget, "laProgressDestination"), "");
    OV_instSetWindowTitle(widget);
}

void OV_instProgressCancelCB(Widget widget, XtPointer, XtPointer)
{
    XtPointer pUserData = nullptr;

    XtVaGetValues(widget, XmNuserData, &pUserData, nullptr);
    const auto iChild = static_cast<pid_t>(reinterpret_cast<intptr_t>(pUserData));
    if (iChild <= 0)
        return;
    OV_instPauseRun(iChild);
    if (OV_instConfirm(OV_instGetMainTopLevelShell(),
                       "Setup is not yet completed.\n\n"
                       "If you quit now, the product will not be installed\n"
                       "properly.\n\nQuit Setup?")) {
        OV_instKillRun(iChild);
        exit(STATUS_QUIT);
    }
    OV_instResumeRun(iChild);
}
