#include "ut/toolkit/scrolledLabel.h"

#include <Xm/Form.h>
#include <Xm/ScrollBar.h>

#include <algorithm>
#include <string>

#include "ut/toolkit/foldText.h"
#include "ut/toolkit/looks.h"
#include "ut/toolkit/scrolledView.h"
#include "ut/toolkit/widgetTree.h"

enum { BAR_GAP = 4 };

/* What a label shows. It is the label's user data. */
struct Scrolled {
    Widget bar; /* may be null */
    std::string text;
    const char *pBehind;
    XmString folded; /* the text for its width; null for none yet */
    int iLines;      /* so many of it are seen at a time */
    int iWidth;      /* the room that it was laid out for */
    int iHeight;
};

static Scrolled *scrolledOf(Widget label)
{
    Scrolled *pScrolled = nullptr;

    XtVaGetValues(label, XmNuserData, &pScrolled, nullptr);
    return pScrolled;
}

/* The label's size without its borders. */
static void getRoom(Widget label, int *piWidth, int *piHeight)
{
    const int iBorder = OV_instGetDimension(label, XmNhighlightThickness);

    *piWidth = OV_instGetDimension(label, XmNwidth) -
               2 * (OV_instGetDimension(label, XmNmarginWidth) + iBorder);
    *piHeight = OV_instGetDimension(label, XmNheight) -
                2 * (OV_instGetDimension(label, XmNmarginHeight) + iBorder);
}

static int heightOf(Widget label, XmString text)
{
    XmRenderTable table = nullptr;

    XtVaGetValues(label, XmNrenderTable, &table, nullptr);
    return table && text ? XmStringHeight(table, text) : 0;
}

/* So many lines of a text, from one on; 0 is the first. The direction of writing holds until there
 * is another, the rest belongs to its piece of text. */
static XmString linesOf(XmString text, int iFirst, int iLines)
{
    XmStringContext context = nullptr;
    XmString lines = nullptr;
    unsigned int iLength = 0;
    XtPointer value = nullptr;
    int iLine = 0;

    if (!XmStringInitContext(&context, text))
        return nullptr;
    while (iLine < iFirst + iLines) {
        const XmStringComponentType type = XmStringGetNextTriple(context, &iLength, &value);
        const bool bBreak = type == XmSTRING_COMPONENT_SEPARATOR;
        if (type == XmSTRING_COMPONENT_END)
            break;
        iLine += bBreak;
        if ((bBreak && iLine > iFirst && iLine < iFirst + iLines) || (!bBreak && iLine >= iFirst) ||
            type == XmSTRING_COMPONENT_DIRECTION)
            lines = XmStringConcatAndFree(lines, XmStringComponentCreate(type, iLength, value));
        XtFree(static_cast<char *>(value));
        value = nullptr;
    }
    XmStringFreeContext(context);
    return lines;
}

/* A label centres its lines in the height it is given, but for the margin below them. */
static void showLines(Widget label, int iFirst)
{
    const Scrolled *pScrolled = scrolledOf(label);
    XmString lines = linesOf(pScrolled->folded, iFirst, pScrolled->iLines);
    const int iBelow = pScrolled->iHeight - heightOf(label, lines);

    XtVaSetValues(label, XmNlabelString, lines, XmNmarginBottom,
                  static_cast<Dimension>(std::max(iBelow, 0)), nullptr);
    XmStringFree(lines);
}

static void scrolled(Widget, XtPointer label, XtPointer call)
{
    showLines(static_cast<Widget>(label), static_cast<XmScrollBarCallbackStruct *>(call)->value);
}

/* Breaks the lines for a width, and says how high they are. */
static int fold(Widget label, int iWidth)
{
    Scrolled *pScrolled = scrolledOf(label);

    OV_instSetFoldedLabel(label, pScrolled->text.c_str(), iWidth, pScrolled->pBehind);
    XmStringFree(pScrolled->folded);
    XtVaGetValues(label, XmNlabelString, &pScrolled->folded, nullptr);
    return heightOf(label, pScrolled->folded);
}

static int widthOfBar(Widget bar)
{
    Dimension width = 0;

    XtVaGetValues(bar, XmNwidth, &width, nullptr);
    return width + OV_instScaleLength(XtDisplay(bar), BAR_GAP);
}

static bool isThere(Widget bar)
{
    return bar && XtIsManaged(bar);
}

static void showBar(Widget label, Widget bar, bool bNeeded)
{
    if (!bar || bNeeded == isThere(bar))
        return;
    if (bNeeded)
        XtManageChild(bar);
    XtVaSetValues(label, XmNrightAttachment, bNeeded ? XmATTACH_WIDGET : XmATTACH_FORM,
                  XmNrightWidget, bNeeded ? bar : nullptr, XmNrightOffset,
                  bNeeded ? OV_instScaleLength(XtDisplay(bar), BAR_GAP) : 0, nullptr);
    if (!bNeeded) /* nothing is attached to it any more */
        XtUnmanageChild(bar);
}

static void layOut(Widget label)
{
    Scrolled *pScrolled = scrolledOf(label);
    Widget bar = pScrolled->bar;
    const int iBar = isThere(bar) ? widthOfBar(bar) : 0;

    getRoom(label, &pScrolled->iWidth, &pScrolled->iHeight);
    pScrolled->iWidth += iBar;
    const int iRoom = std::max(pScrolled->iHeight, 1);
    int iText = fold(label, pScrolled->iWidth);
    const bool bNeeded = bar && iText > iRoom;
    if (bNeeded)
        iText = fold(label, pScrolled->iWidth - widthOfBar(bar));
    showBar(label, bar, bNeeded);
    const int iAll = std::max(XmStringLineCount(pScrolled->folded), 1);
    pScrolled->iLines = iText > iRoom ? std::max(iAll * iRoom / iText, 1) : iAll;
    if (bar)
        XtVaSetValues(bar, XmNvalue, 0, XmNmaximum, iAll, XmNsliderSize, pScrolled->iLines,
                      XmNincrement, 1, XmNpageIncrement, std::max(pScrolled->iLines - 1, 1),
                      nullptr);
    showLines(label, 0);
}

/* Also when the label appears: it gets its first size before it has a window. */
static void resized(Widget label, XtPointer, XEvent *, Boolean *)
{
    const Scrolled *pScrolled = scrolledOf(label);
    int iWidth = 0;
    int iHeight = 0;

    getRoom(label, &iWidth, &iHeight);
    if (isThere(pScrolled->bar))
        iWidth += widthOfBar(pScrolled->bar);
    if (iWidth != pScrolled->iWidth || iHeight != pScrolled->iHeight)
        layOut(label);
}

static void forget(Widget, XtPointer client, XtPointer)
{
    auto *pScrolled = static_cast<Scrolled *>(client);

    XmStringFree(pScrolled->folded);
    delete pScrolled;
}

static void useBar(Widget label, Widget bar)
{
    XtAddCallback(bar, XmNvalueChangedCallback, scrolled, label);
    XtAddCallback(bar, XmNdragCallback, scrolled, label);
    OV_instScrollByWheel(label, bar);
}

void OV_instSetScrolledLabel(Widget label, Widget bar, const char *pText, const char *pBehind)
{
    if (!label || !pText)
        return;
    if (!scrolledOf(label)) {
        auto *pScrolled = new Scrolled{bar, "", nullptr, nullptr, 0, 0, 0};
        XtVaSetValues(label, XmNuserData, pScrolled, nullptr);
        XtAddEventHandler(label, StructureNotifyMask, False, resized, nullptr);
        XtAddCallback(label, XmNdestroyCallback, forget, pScrolled);
        if (bar)
            useBar(label, bar);
    }
    scrolledOf(label)->text = pText;
    scrolledOf(label)->pBehind = pBehind;
    layOut(label);
}

void OV_instSizeScrolledLabel(Widget label, int iWidth, int iMostLines)
{
    Dimension height = 0;
    int iNow = 0;
    int iRoom = 0;

    if (!label || !scrolledOf(label))
        return;
    XtVaGetValues(label, XmNheight, &height, nullptr);
    getRoom(label, &iNow, &iRoom);
    XmString line = XmStringCreateLocalized(const_cast<char *>("-"));
    const int iText = std::min(fold(label, iWidth), iMostLines * heightOf(label, line));
    XmStringFree(line);
    XtVaSetValues(label, XmNheight, static_cast<Dimension>(iText + height - iRoom), nullptr);
    layOut(label);
}
