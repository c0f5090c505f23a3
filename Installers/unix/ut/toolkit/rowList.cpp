#include "ut/toolkit/rowList.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include <Xm/Form.h>
#include <Xm/Label.h>
#include <Xm/ScrolledW.h>
#include <Xm/ToggleB.h>

#include "ut/toolkit/scrolledView.h"
#include "ut/toolkit/widgetTree.h"

/* The current row of a list is the user data of its row column, a null one where there is none. */

/* Where a key goes to: so many rows on, or pages; or to an end. */
struct Way {
    const char *pName;
    int iRows;
    int iPages;
    int iEnd;
};

static const Way s_aWays[] = {
    {"up",       -1, 0,  0 },
    {"down",     1,  0,  0 },
    {"pageUp",   0,  -1, 0 },
    {"pageDown", 0,  1,  0 },
    {"first",    0,  0,  -1},
    {"last",     0,  0,  1 },
};

static const char s_caKeys[] = "<Key>osfUp: OvGo(up)\n"
                               "<Key>osfDown: OvGo(down)\n"
                               "<Key>osfPageUp: OvGo(pageUp)\n"
                               "<Key>osfPageDown: OvGo(pageDown)\n"
                               ":c<Key>osfBeginLine: OvGo(first)\n"
                               ":c<Key>osfEndLine: OvGo(last)\n"
                               "<Key>osfBeginLine: OvGo(first)\n"
                               "<Key>osfEndLine: OvGo(last)\n";

static std::vector<Widget> childrenOf(Widget widget)
{
    WidgetList aChildren = nullptr;
    Cardinal iChildren = 0;

    XtVaGetValues(widget, XmNchildren, &aChildren, XmNnumChildren, &iChildren, nullptr);
    return {aChildren, aChildren + iChildren};
}

static Widget boxOf(Widget row)
{
    for (Widget part : childrenOf(row))
        if (XmIsToggleButton(part))
            return part;
    return nullptr;
}

static Widget windowOf(Widget rows)
{
    Widget up = XtParent(rows); /* the toolkit's own window, which clips */

    return XtParent(up);
}

static Widget currentOf(Widget rows)
{
    Widget current = nullptr;

    XtVaGetValues(rows, XmNuserData, &current, nullptr);
    return current;
}

/* ---- the current row ---- */

/* A frame, in the colour that shows where the keyboard is. It is seen on any background. */
static void mark(Widget row, bool bCurrent)
{
    Pixel pixel = 0;

    XtVaGetValues(row, bCurrent ? XmNhighlightColor : XmNbackground, &pixel, nullptr);
    XtVaSetValues(row, XmNtopShadowColor, pixel, XmNbottomShadowColor, pixel, nullptr);
}

/* Tab comes back to it. */
static void makeCurrent(Widget rows, Widget row)
{
    Widget before = currentOf(rows);

    if (before == row)
        return;
    if (before)
        mark(before, false);
    mark(row, true);
    XtVaSetValues(rows, XmNuserData, row, XmNinitialFocus, boxOf(row), nullptr);
}

static void gotKeyboard(Widget row, XtPointer, XtPointer)
{
    makeCurrent(XtParent(row), row);
}

/* One that is not on the screen cannot get the keyboard, but the list begins there then. */
static void goTo(Widget rows, Widget row)
{
    makeCurrent(rows, row);
    (void)XmProcessTraversal(boxOf(row), XmTRAVERSE_CURRENT);
}

static void pressed(Widget row, XtPointer, XEvent *pEvent, Boolean *)
{
    if (pEvent->xbutton.button == Button1)
        goTo(XtParent(row), row);
}

/* ---- keys ---- */

static int topOf(Widget row)
{
    Position y = 0;

    XtVaGetValues(row, XmNy, &y, nullptr);
    return y;
}

/* The row that a key leads to: of pages the last whose beginning is within one, but another one. */
static int target(Widget rows, const std::vector<Widget> &all, const Way *pWay)
{
    const int iLast = static_cast<int>(all.size()) - 1;
    const int iStep = pWay->iRows + pWay->iPages;
    const int iFrom = std::max(OV_instCurrentRow(rows), 0);
    const int iPage = pWay->iPages ? OV_instViewHeight(windowOf(rows)) : 0;
    const int iTop = topOf(all[static_cast<size_t>(iFrom)]);
    int iTo = std::max(0, std::min(iFrom + iStep, iLast));

    if (pWay->iEnd)
        return pWay->iEnd < 0 ? 0 : iLast;
    for (int iNext = iTo + iStep; iPage && iNext >= 0 && iNext <= iLast; iNext += iStep) {
        const auto iAt = static_cast<size_t>(iNext);
        if (std::abs(topOf(all[iAt]) - iTop) >= iPage)
            break;
        iTo = iNext;
    }
    return iTo;
}

static void go(Widget box, XEvent *, String *apWords, Cardinal *piWords)
{
    Widget row = XtParent(box);
    Widget rows = XtParent(row);
    const std::vector<Widget> all = OV_instRows(rows);
    for (const Way &way : s_aWays)
        if (*piWords == 1 && !all.empty() && !strcmp(way.pName, apWords[0]))
            OV_instGoToRow(rows, target(rows, all, &way));
}

void OV_instAddListAction(XtAppContext app)
{
    static char s_caName[] = "OvGo";
    XtActionsRec aActions[] = {
        {s_caName, go}
    };

    XtAppAddActions(app, aActions, XtNumber(aActions));
}

/* The keyboard reaches the rows that are out of sight as well. */
static void showObscured(Widget window, XtPointer, XtPointer call)
{
    Widget reached = static_cast<XmTraverseObscuredCallbackStruct *>(call)->traversal_destination;

    XmScrollVisible(window, XmIsForm(XtParent(reached)) ? XtParent(reached) : reached, 0, 0);
}

/* The toolkit's own window would take Page Down and others from the rows, by grabs after which it
 * misses what other keys are grabbed for. They come with its translations. */
void OV_instUseRowList(Widget rows)
{
    XtUninstallTranslations(XtParent(rows));
    XtAddCallback(windowOf(rows), XmNtraverseObscuredCallback, showObscured, nullptr);
}

/* ---- rows ---- */

/* Lets a press through to the row, which takes it whether the part is sensitive or not. */
static void mapped(Widget part, XtPointer, XEvent *pEvent, Boolean *)
{
    XSetWindowAttributes none = {};

    if (pEvent->type == MapNotify)
        XChangeWindowAttributes(XtDisplay(part), XtWindow(part), CWDontPropagate, &none);
}

void OV_instUseRow(Widget row)
{
    mark(row, false);
    for (Widget part : childrenOf(row)) {
        if (part == boxOf(row)) {
            XtOverrideTranslations(part, XtParseTranslationTable(s_caKeys));
            continue;
        }
        XtUninstallTranslations(part);
        XtAddEventHandler(part, StructureNotifyMask, False, mapped, nullptr);
    }
    XtVaSetValues(row, XmNnavigationType, XmNONE, nullptr);
    XtAddCallback(row, XmNfocusCallback, gotKeyboard, nullptr);
    XtAddEventHandler(row, ButtonPressMask, False, pressed, nullptr);
}

std::vector<Widget> OV_instRows(Widget rows)
{
    std::vector<Widget> all = childrenOf(rows);

    all.erase(std::remove_if(all.begin(), all.end(), OV_instIsDying), all.end());
    return all;
}

void OV_instClearRows(Widget rows)
{
    std::vector<Widget> all = OV_instRows(rows);

    XtVaSetValues(rows, XmNuserData, nullptr, XmNinitialFocus, nullptr, nullptr);
    XtUnmanageChildren(all.data(), static_cast<Cardinal>(all.size()));
    for (Widget row : all) /* within a callback they stay among the children for now */
        XtDestroyWidget(row);
}

int OV_instCurrentRow(Widget rows)
{
    const std::vector<Widget> all = OV_instRows(rows);
    const auto found = std::find(all.begin(), all.end(), currentOf(rows));

    return found == all.end() ? -1 : static_cast<int>(found - all.begin());
}

void OV_instGoToRow(Widget rows, int iRow)
{
    const std::vector<Widget> all = OV_instRows(rows);

    if (iRow >= 0 && iRow < static_cast<int>(all.size()))
        goTo(rows, all[static_cast<size_t>(iRow)]);
}
