#include "description/fields.h"

#include "description/scanner.h"

int readTexts(const char **ppText, std::initializer_list<char **> appTargets)
{
    for (char **ppTarget : appTargets) {
        *ppTarget = getQuotedString(*ppText, ppText);
        if (!*ppTarget)
            return -1;
    }
    return 0;
}

int readNumbers(const char **ppText, std::initializer_list<int32_t *> apTargets)
{
    for (int32_t *pTarget : apTargets) {
        int64_t lValue = 0;
        if (scanInteger(*ppText, ppText, &lValue) < 0)
            return -1;
        *pTarget = static_cast<int32_t>(lValue);
    }
    return 0;
}

int readUnits(const char **ppText, int64_t *plUnits)
{
    if (scanInteger(*ppText, ppText, plUnits) < 0)
        return -1;
    if (*plUnits == 0)
        *plUnits = 1;
    return 0;
}
