/* The scanner of the dialog texts' notation on any bytes; it needs no display.
 *
 *   compound_fuzz -dict=compound.dict -max_total_time=180 NEW_CORPUS compound_corpus */
#include <X11/Intrinsic.h>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <string>

#include "ut/toolkit/compound.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *pData, size_t lSize);

static void require(bool bHolds)
{
    if (!bHolds)
        abort();
}

/* Every segment takes at least one character, and gives no more than it took. */
static void scanSegments(const wchar_t *pText)
{
    const wchar_t *pNext = pText;
    const wchar_t *pFrom = pText;
    OV_TextSegment segment;

    for (; extractSegment(&pNext, &segment); pFrom = pNext) {
        const size_t lTaken = (size_t)(pNext - pFrom);
        require(pNext > pFrom && lTaken <= wcslen(pFrom));
        require(wcslen(segment.pTag) + wcslen(segment.pText) < lTaken + 1);
        require(wcspbrk(segment.pTag, L"\\") || !wcspbrk(segment.pTag, L"#:\""));
    }
    require(!*pNext && pNext == pText + wcslen(pText));
    require(getNextSeparator(pText) <= pNext);
}

/* The items that the delimiters cut are as many as were counted. */
static void scanItems(const char *pText)
{
    const char *const pEnd = pText + strlen(pText);
    const int iCount = getCStrCount(pText);
    int iItems = 0;

    require((iCount == 0) == (pText == pEnd));
    for (const char *pItem = pText; iItems < iCount; iItems++) {
        const char *pDelimiter = getNextCStrDelim(pItem);
        require(pDelimiter >= pItem && pDelimiter <= pEnd);
        require((*pDelimiter == '\0') == (iItems == iCount - 1));
        pItem = pDelimiter + 1;
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *pData, size_t lSize)
{
    const std::string text((const char *)pData, strnlen((const char *)pData, lSize));
    static const char *const s_pLocale = setlocale(LC_CTYPE, "C.UTF-8");
    wchar_t *pWide = OV_instWidenText(text.c_str());
    char *pNarrow = OV_instNarrowText(pWide);

    require(s_pLocale && text == pNarrow);
    scanSegments(pWide);
    scanItems(text.c_str());
    XtFree(pNarrow);
    XtFree((char *)pWide);
    return 0;
}
