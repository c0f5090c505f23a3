#include "ut/shellWord.h"

#include <cstdlib>
#include <cstring>

/* "~" is no member, so a word of these characters cannot name a home directory. */
static const char s_caOrdinary[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                   "0123456789@%_+=:,./-";
static const char s_caSpecial[] = "\\\"$`"; /* between double quotes */

char *OV_instShellWord(const char *pText)
{
    if (!pText)
        return nullptr;
    if (*pText && !pText[strspn(pText, s_caOrdinary)])
        return strdup(pText);

    char *pWord = static_cast<char *>(malloc(4 * strlen(pText) + sizeof "''"));
    if (!pWord)
        return nullptr;
    char *pEnd = pWord;
    *pEnd++ = '\'';
    for (; *pText; pText++) {
        if (*pText == '\'') /* nothing escapes it in there: leave the quotes for one character */
            pEnd = stpcpy(pEnd, "'\\''");
        else
            *pEnd++ = *pText;
    }
    strcpy(pEnd, "'");
    return pWord;
}

/* How many bytes from pText on are an escape that the shell is to see as it stands: 2 or 0. */
static size_t escapeAt(const char *pText)
{
    return pText[0] == '\\' && pText[1] && strchr(s_caSpecial, pText[1]) ? 2 : 0;
}

/* Whether a backslash that starts no escape would take effect on what follows it: on the closing
 * quote, on a line end, or on the first character of what a "%" is expanded to. */
static bool joinsWithNext(const char *pBackslash)
{
    return pBackslash[1] == '\0' || pBackslash[1] == '\n' || pBackslash[1] == '%';
}

static char *quoteText(const char *pText, bool bKeepEscapes)
{
    if (!pText)
        return nullptr;
    char *pQuoted = static_cast<char *>(malloc(2 * strlen(pText) + 1));
    if (!pQuoted)
        return nullptr;
    char *pEnd = pQuoted;
    while (*pText) {
        size_t iKept = bKeepEscapes ? escapeAt(pText) : 0;
        bool bHarmless = bKeepEscapes && *pText == '\\' && !joinsWithNext(pText);
        if (iKept)
            *pEnd++ = *pText++;
        else if (strchr(s_caSpecial, *pText) && !bHarmless)
            *pEnd++ = '\\';
        *pEnd++ = *pText++;
    }
    *pEnd = '\0';
    return pQuoted;
}

char *OV_instShellQuotedText(const char *pText)
{
    return quoteText(pText, true);
}

char *OV_instShellQuotedPath(const char *pText)
{
    return quoteText(pText, false);
}
