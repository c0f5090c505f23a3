#include "ut/toolkit/wrappedLabel.h"

#include <algorithm>

#include <Xm/Xm.h>

#include "ut/toolkit/bxutils.h"
#include "ut/toolkit/compound.h"
#include "ut/toolkit/uiut.h"

enum { LEAST_WIDTH = 40 }; /* a label that has not got its size yet is narrower */

/* What a label that wraps shows. It is the label's user data. */
typedef struct Wrapped {
    std::string text;
    int iWidth;  /* the room that the lines were broken for, */
    int iHeight; /* and in which they stand at the top */
} Wrapped;

static int widthOf(XmRenderTable table, const std::string &line)
{
    XmString drawn = OV_instLiteralXmString(line.c_str());
    int iWidth = XmStringWidth(table, drawn);

    XmStringFree(drawn);
    return iWidth;
}

/* The start of the character that a place is within; the place itself in what is no text. */
static size_t characterAt(const std::string &text, size_t lPlace)
{
    size_t lStart = lPlace;

    while (lStart > 0 && lPlace - lStart < 3 && (text[lStart] & 0xc0) == 0x80)
        lStart--;
    return (text[lStart] & 0xc0) == 0x80 ? lPlace : lStart;
}

/* How much of a word that is too wide goes into a line. */
static size_t brokenLength(XmRenderTable table, const std::string &word, int iWidth)
{
    size_t lFits = 0;
    size_t lTooMuch = word.size();

    while (lTooMuch - lFits > 1) {
        const size_t lMiddle = characterAt(word, lFits + (lTooMuch - lFits) / 2);
        if (lMiddle <= lFits) /* within one character */
            break;
        (widthOf(table, word.substr(0, lMiddle)) <= iWidth ? lFits : lTooMuch) = lMiddle;
    }
    return lFits ? lFits : word.size();
}

/* How much of the line fits: up to a blank, or a part of its first word where that is too wide. */
static size_t fittingLength(XmRenderTable table, std::string line, int iWidth)
{
    const size_t lMost = static_cast<size_t>(iWidth) * sizeof(wchar_t); /* of a pixel each */
    const bool bCut = line.size() > lMost;

    if (bCut) /* measuring all of it again for every line would take its time */
        line.resize(characterAt(line, lMost));
    size_t lFits = line.find(' ');
    if (!bCut && widthOf(table, line) <= iWidth)
        return line.size();
    if (widthOf(table, line.substr(0, lFits)) > iWidth)
        return brokenLength(table, line.substr(0, lFits), iWidth);
    while (lFits != std::string::npos) {
        size_t lNext = line.find(' ', lFits + 1);
        if (lNext == std::string::npos || widthOf(table, line.substr(0, lNext)) > iWidth)
            return lFits;
        lFits = lNext;
    }
    return line.size();
}

std::string OV_instFoldText(Widget label, const char *pText, int iWidth)
{
    XmRenderTable table = nullptr;
    std::string left(pText);
    std::string folded;

    XtVaGetValues(label, XmNrenderTable, &table, nullptr);
    while (table && !left.empty()) {
        const size_t lLine = left.find('\n');
        const size_t lFits =
            fittingLength(table, left.substr(0, lLine), std::max<int>(iWidth, LEAST_WIDTH));
        folded += left.substr(0, lFits);
        left.erase(0, lFits);
        if (left.empty())
            break;
        folded += '\n';
        if (left[0] == ' ' || left[0] == '\n') /* the break replaces it */
            left.erase(0, 1);
    }
    return folded + left;
}

void OV_instSetFoldedLabel(Widget label, const char *pText, int iWidth)
{
    if (!label || !pText)
        return;
    if (OV_instIsCompoundText(pText))
        OV_instUpdateLabelString(label, pText);
    else
        OV_instSetLiteralLabel(label, OV_instFoldText(label, pText, iWidth).c_str());
}

/* The label's size without its borders. */
static void getRoom(Widget label, int *piWidth, int *piHeight)
{
    Dimension width = 0;
    Dimension height = 0;
    Dimension marginWidth = 0;
    Dimension marginHeight = 0;
    Dimension border = 0;

    XtVaGetValues(label, XmNwidth, &width, XmNheight, &height, XmNmarginWidth, &marginWidth,
                  XmNmarginHeight, &marginHeight, XmNhighlightThickness, &border, nullptr);
    *piWidth = width - 2 * (marginWidth + border);
    *piHeight = height - 2 * (marginHeight + border);
}

/* A label centres its lines in the height it is given, but for the margin below them. */
static void moveToTop(Widget label, int iRoom)
{
    XmRenderTable table = nullptr;
    XmString shown = nullptr;

    XtVaGetValues(label, XmNrenderTable, &table, XmNlabelString, &shown, nullptr);
    const int iBelow = table && shown ? iRoom - XmStringHeight(table, shown) : 0;
    XtVaSetValues(label, XmNmarginBottom, (Dimension)(iBelow > 0 ? iBelow : 0), nullptr);
    XmStringFree(shown);
}

static void wrap(Widget label, Wrapped *pWrapped)
{
    OV_instSetFoldedLabel(label, pWrapped->text.c_str(), pWrapped->iWidth);
    moveToTop(label, pWrapped->iHeight);
}

/* Also when the label appears: it gets its first size before it has a window. */
static void resized(Widget label, XtPointer wrapped, XEvent *, Boolean *)
{
    Wrapped *pWrapped = (Wrapped *)wrapped;
    int iWidth = 0;
    int iHeight = 0;

    getRoom(label, &iWidth, &iHeight);
    if (iWidth == pWrapped->iWidth && iHeight == pWrapped->iHeight)
        return;
    pWrapped->iWidth = iWidth;
    pWrapped->iHeight = iHeight;
    wrap(label, pWrapped);
}

static void forget(Widget, XtPointer wrapped, XtPointer)
{
    delete (Wrapped *)wrapped;
}

void OV_instSetWrappedLabel(Widget label, const char *pText)
{
    Wrapped *pWrapped = nullptr;

    if (!label || !pText)
        return;
    XtVaGetValues(label, XmNuserData, &pWrapped, nullptr);
    if (!pWrapped) {
        pWrapped = new Wrapped;
        XtVaSetValues(label, XmNuserData, pWrapped, nullptr);
        XtAddEventHandler(label, StructureNotifyMask, False, resized, pWrapped);
        XtAddCallback(label, XmNdestroyCallback, forget, pWrapped);
    }
    pWrapped->text = pText;
    getRoom(label, &pWrapped->iWidth, &pWrapped->iHeight);
    wrap(label, pWrapped);
}
