#include "description/fields.h"

#include "description/faults.h"
#include "description/scanner.h"

char *readText(const char **ppText)
{
    const char *pStart = *ppText;
    char *pRead = getQuotedString(pStart, ppText);

    if (!pRead)
        (void)OV_instRefuseText(pStart); /* the caller fails */
    else
        OV_instNoteText(pRead, pStart, *ppText);
    return pRead;
}

int readTexts(const char **ppText, std::initializer_list<char **> appTargets)
{
    for (char **ppTarget : appTargets) {
        *ppTarget = readText(ppText);
        if (!*ppTarget)
            return -1;
    }
    return 0;
}

int readNumbers(const char **ppText, std::initializer_list<int32_t *> apTargets)
{
    for (int32_t *pTarget : apTargets) {
        const char *pStart = *ppText;
        int64_t lValue = 0;
        if (scanInteger(pStart, ppText, &lValue) < 0)
            return OV_instRefuseNumber(pStart);
        *pTarget = static_cast<int32_t>(lValue);
        OV_instNoteNumber(pTarget, pStart, lValue, true);
    }
    return 0;
}

int readUnits(const char **ppText, int64_t *plUnits, bool bNoted)
{
    const char *pStart = *ppText;

    if (scanInteger(pStart, ppText, plUnits) < 0)
        return OV_instRefuseNumber(pStart);
    OV_instNoteNumber(bNoted ? plUnits : nullptr, pStart, *plUnits, false);
    if (*plUnits == 0)
        *plUnits = 1;
    return 0;
}
