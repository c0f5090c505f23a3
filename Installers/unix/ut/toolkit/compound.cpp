#include "ut/toolkit/compound.h"

#include <X11/Intrinsic.h>
#include <cstdlib>
#include <cstring>

/* What the notation gives a meaning to, as wide characters from the start. */
static const wchar_t TAG_MARK = L'#';
static const wchar_t OPTION_MARK = L':';
static const wchar_t QUOTE = L'"';
static const wchar_t BACKSLASH = L'\\';
static const wchar_t END = L'\0';

enum OptionKind { LINE_BREAK, DIRECTION };

struct OptionRow {
    wchar_t cLetter;
    OptionKind kind;
    bool bValue;
};

static const OptionRow s_aOptions[] = {
    {L't', LINE_BREAK, true },
    {L'T', LINE_BREAK, true },
    {L'1', LINE_BREAK, true },
    {L'f', LINE_BREAK, false},
    {L'F', LINE_BREAK, false},
    {L'0', LINE_BREAK, false},
    {L'r', DIRECTION,  true },
    {L'R', DIRECTION,  true },
    {L'l', DIRECTION,  false},
    {L'L', DIRECTION,  false},
};

struct EscapeRow {
    wchar_t cLetter;
    wchar_t cMeaning;
};

static const EscapeRow s_aEscapes[] = {
    {L'n', L'\n'},
    {L't', L'\t'},
    {L'r', L'\r'},
    {L'f', L'\f'},
    {L'v', L'\v'},
};

/* Bytes that are no character travel as wide characters that no locale has. */
static const wchar_t STRAY_BYTE = 0x7fffff00;
static const wchar_t LAST_CHARACTER = 0x10ffff;

/* A buffer that grows and is kept from text to text. */
struct Scratch {
    wchar_t *pText;
    size_t iSize;
};

static Scratch s_tag;
static Scratch s_text;

static Cardinal bytesOf(size_t iCharacters)
{
    return static_cast<Cardinal>(iCharacters * sizeof(wchar_t));
}

/* Makes the buffer hold iLength characters and the end. */
static wchar_t *grow(Scratch *pScratch, size_t iLength)
{
    if (pScratch->iSize < iLength + 1) {
        pScratch->iSize = 2 * (iLength + 1);
        pScratch->pText = reinterpret_cast<wchar_t *>(
            XtRealloc(reinterpret_cast<char *>(pScratch->pText), bytesOf(pScratch->iSize)));
    }
    return pScratch->pText;
}

static const OptionRow *findOption(wchar_t cLetter)
{
    for (const OptionRow &row : s_aOptions) {
        if (row.cLetter == cLetter)
            return &row;
    }
    return nullptr;
}

static wchar_t meaningOf(wchar_t cEscaped)
{
    for (const EscapeRow &row : s_aEscapes) {
        if (row.cLetter == cEscaped)
            return row.cMeaning;
    }
    return cEscaped;
}

/* Steps over one character, and over the one that a backslash makes ordinary. */
static const wchar_t *stepOver(const wchar_t *pText)
{
    return pText + (*pText == BACKSLASH && pText[1] != END ? 2 : 1);
}

static const wchar_t *takeTag(const wchar_t *pStart, OV_TextSegment *pSegment)
{
    const wchar_t *pEnd = getNextSeparator(pStart);
    size_t iLength = static_cast<size_t>(pEnd - pStart);
    wchar_t *pTag = grow(&s_tag, iLength);

    wmemcpy(pTag, pStart, iLength);
    pTag[iLength] = END;
    pSegment->pTag = pTag;
    return pEnd;
}

static void applyOption(const OptionRow *pRow, OV_TextSegment *pSegment)
{
    if (pRow->kind == LINE_BREAK)
        pSegment->bSeparator = pRow->bValue;
    else
        pSegment->bRightToLeft = pRow->bValue;
}

/* Reads the option group whose mark is at *ppNext: a letter, and after a letter for the line
 * break a direction group as well. Returns false, only the mark taken, when no option follows it.
 */
static bool takeOptions(const wchar_t **ppNext, OV_TextSegment *pSegment)
{
    const OptionRow *pRow = findOption(*++*ppNext);

    if (!pRow)
        return false;
    ++*ppNext;
    applyOption(pRow, pSegment);
    if (pRow->kind != LINE_BREAK || **ppNext != OPTION_MARK)
        return true;
    const OptionRow *pMore = findOption((*ppNext)[1]);
    if (pMore && pMore->kind == DIRECTION) {
        applyOption(pMore, pSegment);
        *ppNext += 2;
    }
    return true;
}

/* Reads the quoted text that starts at pStart; the result is behind its closing quote. A
 * backslash at the very end has nothing to make ordinary and stays. */
static const wchar_t *takeText(const wchar_t *pStart, OV_TextSegment *pSegment)
{
    const wchar_t *pEnd = pStart;

    while (*pEnd != END && *pEnd != QUOTE)
        pEnd = stepOver(pEnd);
    wchar_t *pTo = grow(&s_text, static_cast<size_t>(pEnd - pStart));
    pSegment->pText = pTo;
    for (const wchar_t *pFrom = pStart; pFrom < pEnd; pFrom = stepOver(pFrom))
        *pTo++ = *pFrom == BACKSLASH && pFrom[1] != END ? meaningOf(pFrom[1]) : *pFrom;
    *pTo = END;
    return *pEnd == QUOTE ? pEnd + 1 : pEnd;
}

/* Whether a conversion says that there is no character, or no whole one. */
static bool isNoCharacter(size_t iResult)
{
    return iResult >= static_cast<size_t>(-2);
}

/* The length in bytes of the character at pText, which is not the end. */
static size_t charLength(const char *pText)
{
    mbstate_t state = {};
    size_t iLength = mbrlen(pText, strnlen(pText, MB_CUR_MAX), &state);

    return isNoCharacter(iLength) || iLength == 0 ? 1 : iLength;
}

bool OV_instIsCompoundText(const char *pText)
{
    return pText && (*pText == '#' || *pText == '"' || *pText == ':');
}

wchar_t *OV_instWidenText(const char *pText)
{
    if (!pText)
        return nullptr;
    size_t iLeft = strlen(pText);
    auto *pWide = reinterpret_cast<wchar_t *>(XtMalloc(bytesOf(iLeft + 1)));
    wchar_t *pTo = pWide;
    for (mbstate_t state = {}; iLeft > 0; pTo++) {
        size_t iTaken = mbrtowc(pTo, pText, iLeft, &state);
        /* The library also reads the longer forms that stand for no character. */
        if (isNoCharacter(iTaken) || *pTo > LAST_CHARACTER) {
            *pTo = STRAY_BYTE + static_cast<unsigned char>(*pText);
            iTaken = 1;
            state = {};
        }
        pText += iTaken;
        iLeft -= iTaken;
    }
    *pTo = END;
    return pWide;
}

char *OV_instNarrowText(const wchar_t *pText)
{
    mbstate_t state = {};

    if (!pText)
        return nullptr;
    char *pNarrow = XtMalloc(static_cast<Cardinal>(wcslen(pText) * MB_CUR_MAX + 1));
    char *pTo = pNarrow;
    for (; *pText != END; pText++) {
        const bool bStray = *pText >= STRAY_BYTE;
        size_t iGiven = bStray ? 1 : wcrtomb(pTo, *pText, &state);
        if (bStray || isNoCharacter(iGiven)) {
            *pTo = static_cast<char>(*pText & 0xff);
            iGiven = 1;
            state = {};
        }
        pTo += iGiven;
    }
    *pTo = '\0';
    return pNarrow;
}

const wchar_t *getNextSeparator(const wchar_t *pText)
{
    while (*pText != END && *pText != TAG_MARK && *pText != QUOTE && *pText != OPTION_MARK)
        pText = stepOver(pText);
    return pText;
}

int extractSegment(const wchar_t **ppNext, OV_TextSegment *pSegment)
{
    bool bTagSeen = false;
    bool bOptionsSeen = false;

    *pSegment = {L"", L"", false, false};
    if (**ppNext == END)
        return 0;
    while (**ppNext != END && **ppNext != QUOTE) {
        if (**ppNext == TAG_MARK) {
            if (bTagSeen)
                return 1;
            bTagSeen = true;
            *ppNext = takeTag(*ppNext + 1, pSegment);
        } else if (**ppNext == OPTION_MARK) {
            if (bOptionsSeen || !takeOptions(ppNext, pSegment))
                return 1;
            bOptionsSeen = true;
        } else {
            *ppNext = stepOver(*ppNext);
        }
    }
    if (**ppNext == QUOTE)
        *ppNext = takeText(*ppNext + 1, pSegment);
    return 1;
}

int getCStrCount(const char *pText)
{
    int iCount = 1;

    if (!pText || !*pText)
        return 0;
    for (pText = getNextCStrDelim(pText); *pText; pText = getNextCStrDelim(pText + 1))
        iCount++;
    return iCount;
}

const char *getNextCStrDelim(const char *pText)
{
    bool bQuoted = false;

    for (; *pText; pText += charLength(pText)) {
        if (*pText == '"')
            bQuoted = !bQuoted;
        else if (!bQuoted && (*pText == ',' || *pText == '\n'))
            break;
        else if (*pText == '\\' && pText[1])
            pText++;
    }
    return pText;
}
