#include "ut/toolkit/foldText.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include <Xm/Xm.h>

#include "ut/toolkit/bxutils.h"
#include "ut/toolkit/compound.h"
#include "ut/toolkit/uiut.h"

enum { LEAST_WIDTH = 40 }; /* a label that has not got its size yet is narrower */

/* How lines are broken. */
struct Fold {
    XmRenderTable table;
    int iWidth;
    const char *pBehind; /* null: at blanks */
};

static int widthOf(const Fold *pFold, const std::string &line)
{
    XmString drawn = OV_instLiteralXmString(line.c_str());
    const int iWidth = XmStringWidth(pFold->table, drawn);

    XmStringFree(drawn);
    return iWidth;
}

static bool fits(const Fold *pFold, const std::string &line)
{
    return widthOf(pFold, line) <= pFold->iWidth;
}

/* The start of the character that a place is within; the place itself in what is no text. */
static size_t characterAt(const std::string &text, size_t iPlace)
{
    size_t iStart = iPlace;

    while (iStart > 0 && iPlace - iStart < 3 && (text[iStart] & 0xc0) == 0x80)
        iStart--;
    return (text[iStart] & 0xc0) == 0x80 ? iPlace : iStart;
}

/* How much of a word that is too wide goes into a line: at least one character. */
static size_t brokenLength(const Fold *pFold, const std::string &word)
{
    std::vector<size_t> ends; /* of its characters */

    for (size_t i = 1; i < word.size(); i++)
        if (characterAt(word, i) == i)
            ends.push_back(i);
    const auto tooMuch = std::partition_point(
        ends.begin(), ends.end(), [&](size_t iEnd) { return fits(pFold, word.substr(0, iEnd)); });
    if (tooMuch != ends.begin())
        return tooMuch[-1];
    return ends.empty() ? word.size() : ends[0];
}

/* The next length, from iFrom on, that the line may be broken at; the whole line's at last. */
static size_t nextBreak(const Fold *pFold, const std::string &line, size_t iFrom)
{
    const size_t iFound =
        pFold->pBehind ? line.find_first_of(pFold->pBehind, iFrom) : line.find(' ', iFrom);

    if (iFound == std::string::npos)
        return line.size();
    return pFold->pBehind ? iFound + 1 : iFound;
}

/* How much of the line fits: up to a break, or a part of its first word where that is too wide. */
static size_t fittingLength(const Fold *pFold, std::string line)
{
    const size_t iMost = static_cast<size_t>(pFold->iWidth) * sizeof(wchar_t); /* of a pixel each */
    const bool bCut = line.size() > iMost;

    if (bCut) /* measuring all of it again for every line would take its time */
        line.resize(characterAt(line, iMost));
    if (!bCut && fits(pFold, line))
        return line.size();
    size_t iFits = nextBreak(pFold, line, 0);
    if (!fits(pFold, line.substr(0, iFits)))
        return brokenLength(pFold, line.substr(0, iFits));
    while (iFits < line.size()) {
        const size_t iNext = nextBreak(pFold, line, pFold->pBehind ? iFits : iFits + 1);
        if (iNext == line.size() || !fits(pFold, line.substr(0, iNext)))
            break;
        iFits = iNext;
    }
    return iFits;
}

std::string OV_instFoldText(Widget label, const char *pText, int iWidth, const char *pBehind)
{
    Fold fold = {nullptr, std::max<int>(iWidth, LEAST_WIDTH), pBehind};
    std::string left(pText);
    std::string folded;

    XtVaGetValues(label, XmNrenderTable, &fold.table, nullptr);
    while (fold.table && !left.empty()) {
        const size_t iFits = fittingLength(&fold, left.substr(0, left.find('\n')));
        folded += left.substr(0, iFits);
        left.erase(0, iFits);
        if (left.empty())
            break;
        folded += '\n';
        if (left[0] == '\n' || (left[0] == ' ' && !pBehind)) /* the break replaces it */
            left.erase(0, 1);
    }
    return folded + left;
}

std::string OV_instCutText(Widget label, const char *pText, int iWidth)
{
    static const char s_caMore[] = "...";
    const std::string whole = OV_instFoldText(label, pText, iWidth);

    if (whole.find('\n') == std::string::npos)
        return whole;
    /* As much of it as there is room for beside what says that there is more. */
    Fold fold = {nullptr, std::max<int>(iWidth, LEAST_WIDTH), nullptr};
    std::string line(pText, strcspn(pText, "\n"));
    XtVaGetValues(label, XmNrenderTable, &fold.table, nullptr);
    fold.iWidth -= widthOf(&fold, s_caMore);
    if (!fits(&fold, line))
        line.resize(brokenLength(&fold, line));
    return line + s_caMore;
}

void OV_instSetFoldedLabel(Widget label, const char *pText, int iWidth, const char *pBehind)
{
    if (!label || !pText)
        return;
    if (!pBehind && OV_instIsCompoundText(pText))
        OV_instUpdateLabelString(label, pText);
    else
        OV_instSetLiteralLabel(label, OV_instFoldText(label, pText, iWidth, pBehind).c_str());
}
