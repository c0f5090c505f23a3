#include "ut/OVinstExpand.h"

#include <cstdlib>
#include <cstring>

/* Never null: a key that is not in the table expands to nothing. */
static const char *findValue(char key, const _OV_InstExpansion *aTable)
{
    while (aTable->value && aTable->key != key)
        aTable++;
    return aTable->value ? aTable->value : "";
}

/* Writes the expansion with its terminating zero to pTo, which may be null, and returns the number
 * of bytes that it takes: measuring and writing cannot disagree. */
static size_t expandInto(char *pTo, const char *pText, const _OV_InstExpansion *aTable)
{
    size_t iLength = 0;

    for (; *pText; pText++) {
        const char *pPiece = pText;
        size_t iPiece = 1;
        if (*pText == '%') {
            if (!*++pText)
                break;
            pPiece = findValue(*pText, aTable);
            iPiece = strlen(pPiece);
        }
        if (pTo)
            memcpy(pTo + iLength, pPiece, iPiece);
        iLength += iPiece;
    }
    if (pTo)
        pTo[iLength] = '\0';
    return iLength + 1;
}

char *OV_instExpandString(const char *pText, const _OV_InstExpansion *aTable)
{
    if (!pText || !aTable)
        return nullptr;
    char *pExpanded = static_cast<char *>(malloc(expandInto(nullptr, pText, aTable)));
    if (pExpanded)
        (void)expandInto(pExpanded, pText, aTable); /* the size is known by now */
    return pExpanded;
}
