#include "ut/toolkit/dialogShell.h"

#include <X11/Shell.h>
#include <X11/Xatom.h>
#include <X11/Xutil.h>
#include <Xm/Xm.h>
#include <Xm/FileSB.h>
#include <Xm/ScrolledW.h>
#include <algorithm>
#include <cctype>
#include <string>

#include "ut/text.h"
#include "ut/toolkit/frameClose.h"
#include "ut/toolkit/looks.h"
#include "ut/toolkit/mnemonics.h"
#include "ut/toolkit/widgetTree.h"

enum { LEAST_SCROLLING = 120 }; /* the height that what scrolls is left, at 96 dots per inch */

/* ---- the title ---- */

/* The title for window managers that read UTF-8; the toolkit knows the older property only, which
 * has no characters but those of the west in every locale. The shell needs its window for it. */
static void publishTitle(Widget shell)
{
    char *pTitle = nullptr;
    XTextProperty property = {};

    if (!XtIsRealized(shell))
        return;
    XtVaGetValues(shell, XmNtitle, &pTitle, nullptr);
    if (!pTitle || XmbTextListToTextProperty(XtDisplay(shell), &pTitle, 1, XUTF8StringStyle,
                                             &property) < Success)
        return;
    XSetTextProperty(XtDisplay(shell), XtWindow(shell), &property,
                     XInternAtom(XtDisplay(shell), "_NET_WM_NAME", False));
    XFree(property.value);
}

/* ---- the smallest size ---- */

/* The height of the highest part that scrolls; 0 where there is none. A file selection box does not
 * let its lists have less. */
static int scrollingHeight(Widget widget)
{
    WidgetList aChildren = nullptr;
    Cardinal iChildren = 0;
    Dimension height = 0;
    int iMost = 0;

    if (!XtIsComposite(widget) || !XtIsManaged(widget) || XmIsFileSelectionBox(widget))
        return 0;
    if (XmIsScrolledWindow(widget)) {
        XtVaGetValues(widget, XmNheight, &height, nullptr);
        return height;
    }
    XtVaGetValues(widget, XmNchildren, &aChildren, XmNnumChildren, &iChildren, nullptr);
    for (Cardinal i = 0; i < iChildren; i++)
        iMost = std::max(iMost, scrollingHeight(aChildren[i]));
    return iMost;
}

/* What a dialog is when it appears holds all of it. In height only what scrolls can do with less:
 * the width is that of texts, which nothing breaks anew. */
static void limitSize(Widget shell)
{
    WidgetList aChildren = nullptr;
    Cardinal iChildren = 0;
    int iLeastWidth = 0;
    int iLeastHeight = 0;
    int iScrolling = 0;

    XtVaGetValues(shell, XmNchildren, &aChildren, XmNnumChildren, &iChildren, XmNminWidth,
                  &iLeastWidth, XmNminHeight, &iLeastHeight, nullptr);
    if (iLeastWidth > 0 || iLeastHeight > 0) /* by the user, or when it was shown before */
        return;
    for (Cardinal i = 0; i < iChildren; i++)
        iScrolling = std::max(iScrolling, scrollingHeight(aChildren[i]));
    const int iSpared = iScrolling - OV_instScaleLength(XtDisplay(shell), LEAST_SCROLLING);
    iLeastWidth = OV_instGetDimension(shell, XmNwidth);
    iLeastHeight = OV_instGetDimension(shell, XmNheight) - std::max(iSpared, 0);
    XtVaSetValues(shell, XmNminWidth, std::min(iLeastWidth, WidthOfScreen(XtScreen(shell))),
                  XmNminHeight, std::min(iLeastHeight, HeightOfScreen(XtScreen(shell))), nullptr);
}

/* ---- all of it ---- */

/* Called when the window is about to be shown, with all that is in it laid out. */
static void aboutToShow(Widget shell, XtPointer, XtPointer)
{
    publishTitle(shell);
    limitSize(shell);
}

void OV_instSetTitle(Widget widget, const char *pTitle)
{
    Widget shell = OV_instGetShell(widget);

    if (!shell || !pTitle)
        return;
    std::string title = OV_instDisplayable(pTitle);
    for (char &c : title)
        c = iscntrl(static_cast<unsigned char>(c)) ? ' ' : c;
    /* No encoding is that of the locale. */
    XtVaSetValues(shell, XmNtitle, title.c_str(), XmNtitleEncoding, Atom{None}, nullptr);
    publishTitle(shell);
    XtRemoveCallback(shell, XmNpopupCallback, aboutToShow, nullptr);
    XtAddCallback(shell, XmNpopupCallback, aboutToShow, nullptr);
}

void OV_instCompleteDialog(Widget dialog)
{
    Widget shell = OV_instGetShell(dialog);
    char *pTitle = nullptr; /* of a table, a resource, or the shell's name */

    if (!shell)
        return;
    OV_instHandleFrameClose(dialog, nullptr);
    OV_instUseMnemonics(dialog);
    XtVaGetValues(shell, XmNtitle, &pTitle, nullptr);
    OV_instSetTitle(shell, pTitle);
}
