#include "ut/toolkit/scrolledView.h"

#include <algorithm>

#include <Xm/ScrollBar.h>
#include <Xm/ScrolledW.h>

#include "ut/toolkit/widgetTree.h"

enum { WHEEL_UP = Button4, WHEEL_DOWN = Button5, WHEEL_STEPS = 3 };

/* A window whose contents are kept fitted. */
struct View {
    Widget window;
    OV_FitContents fpFit;
    int iWidth; /* that they were fitted for */
    int iHeight;
};

static Widget barOf(Widget window)
{
    Widget bar = nullptr;

    XtVaGetValues(window, XmNverticalScrollBar, &bar, nullptr);
    return bar;
}

static int borderOf(Widget window)
{
    return 2 * OV_instGetDimension(window, XmNshadowThickness);
}

/* What the contents may take without a bar below them. */
static int viewWidth(Widget window, bool bWithBar)
{
    Widget bar = barOf(window);
    int iWidth = OV_instGetDimension(window, XmNwidth) - borderOf(window) -
                 2 * OV_instGetDimension(window, XmNscrolledWindowMarginWidth);

    if (bWithBar && bar)
        iWidth -= OV_instGetDimension(bar, XmNwidth) + OV_instGetDimension(window, XmNspacing);
    return std::max(iWidth, 1);
}

int OV_instViewHeight(Widget window)
{
    const int iHeight = OV_instGetDimension(window, XmNheight) - borderOf(window) -
                        2 * OV_instGetDimension(window, XmNscrolledWindowMarginHeight);

    return std::max(iHeight, 1);
}

static void scrollTo(Widget bar, int iPlace)
{
    int iLeast = 0;
    int iMost = 0;
    int iSlider = 0;
    int iStep = 0;
    int iPage = 0;

    XtVaGetValues(bar, XmNminimum, &iLeast, XmNmaximum, &iMost, XmNsliderSize, &iSlider,
                  XmNincrement, &iStep, XmNpageIncrement, &iPage, nullptr);
    iPlace = std::max(iLeast, std::min(iPlace, iMost - iSlider));
    XmScrollBarSetValues(bar, iPlace, iSlider, iStep, iPage, True);
}

static void wheelTurned(Widget, XtPointer client, XEvent *pEvent, Boolean *)
{
    const unsigned iButton = pEvent->xbutton.button;
    Widget bar = static_cast<Widget>(client);
    int iPlace = 0;
    int iStep = 0;

    XtVaGetValues(bar, XmNvalue, &iPlace, XmNincrement, &iStep, nullptr);
    if (iButton == WHEEL_UP || iButton == WHEEL_DOWN)
        scrollTo(bar, iPlace + (iButton == WHEEL_UP ? -iStep : iStep) * WHEEL_STEPS);
}

void OV_instScrollByWheel(Widget over, Widget bar)
{
    XtAddEventHandler(over, ButtonPressMask, False, wheelTurned, bar);
}

static void fit(View *pView)
{
    const bool bThere = XtIsRealized(pView->window);

    pView->iWidth = bThere ? OV_instGetDimension(pView->window, XmNwidth) : 0;
    pView->iHeight = bThere ? OV_instGetDimension(pView->window, XmNheight) : 0;
    if (pView->fpFit(pView->window, viewWidth(pView->window, false)) >
        OV_instViewHeight(pView->window))
        (void)pView->fpFit(pView->window, viewWidth(pView->window, true));
}

/* Also when the window appears: before, contents do not know their heights. */
static void resized(Widget window, XtPointer view, XEvent *, Boolean *)
{
    auto *pView = static_cast<View *>(view);

    if (pView->iWidth != OV_instGetDimension(window, XmNwidth) ||
        pView->iHeight != OV_instGetDimension(window, XmNheight))
        fit(pView);
}

static void forget(Widget, XtPointer view, XtPointer)
{
    delete static_cast<View *>(view);
}

void OV_instFitView(Widget window, OV_FitContents fpFit)
{
    View *pView = nullptr;

    if (!window)
        return;
    XtVaGetValues(window, XmNuserData, &pView, nullptr);
    if (!pView) {
        pView = new View{window, fpFit, 0, 0};
        XtVaSetValues(window, XmNuserData, pView, nullptr);
        XtAddEventHandler(window, StructureNotifyMask, False, resized, pView);
        OV_instScrollByWheel(window, barOf(window));
        XtVaSetValues(barOf(window), XmNtraversalOn, False, nullptr); /* the contents have keys */
        /* Before what lies within takes it for a press, or for nothing. Without the release, too,
         * the toolkit would believe that the button is still held. */
        for (int iButton : {WHEEL_UP, WHEEL_DOWN})
            XtGrabButton(window, iButton, AnyModifier, False, ButtonPressMask | ButtonReleaseMask,
                         GrabModeAsync, GrabModeAsync, None, None);
        XtAddCallback(window, XmNdestroyCallback, forget, pView);
    }
    fit(pView);
}
