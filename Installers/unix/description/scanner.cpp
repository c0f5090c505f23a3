#include "description/scanner.h"

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <strings.h>

#include "description/faults.h"
#include "ut/OVinstFileUtils.h"
#include "ut/owned.h"

static const size_t s_iTokenStep = 10;

static bool isSpace(char c)
{
    return isspace(static_cast<unsigned char>(c)) != 0;
}

static bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

static bool isTokenCharacter(char c)
{
    return isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '_';
}

static bool isListed(const char *pWord, const char *const *apKeywords, bool bCaseSensitive)
{
    int (*compare)(const char *, const char *) = bCaseSensitive ? strcmp : strcasecmp;

    for (; *apKeywords; apKeywords++) {
        if (compare(pWord, *apKeywords) == 0)
            return true;
    }
    return false;
}

const char *OV_instFindQuote(const char *pText)
{
    for (; *pText; pText++) {
        if (*pText == '"')
            return pText;
        if (*pText == '\\' && *++pText == '\0')
            return nullptr;
    }
    return nullptr;
}

/* Only backslash-n is undone. Media rely on every other escape, a doubled backslash included,
 * staying as it is written: values for the registry are written for the shell. */
static char *copyQuoted(const char *pFrom, const char *pEnd)
{
    char *pCopy = static_cast<char *>(malloc(static_cast<size_t>(pEnd - pFrom) + 1));
    char *pTo = pCopy;

    if (!pCopy)
        return nullptr;
    while (pFrom < pEnd) {
        if (*pFrom != '\\') {
            *pTo++ = *pFrom++;
        } else if (pFrom[1] == 'n') {
            *pTo++ = '\n';
            pFrom += 2;
        } else {
            *pTo++ = *pFrom++;
            *pTo++ = *pFrom++; /* an escape never ends at pEnd, where a bare quote stands */
        }
    }
    *pTo = '\0';
    return pCopy;
}

/* Room for another step of entries and the terminator, whenever a step is used up. */
static char **growTokens(char **apTokens, size_t iCount)
{
    if (iCount % s_iTokenStep != 0)
        return apTokens;
    return static_cast<char **>(realloc(apTokens, (iCount + s_iTokenStep + 1) * sizeof(*apTokens)));
}

/* The blanks around the value do not belong to it. 0, or -1 when it does not fit. */
static int copyHeaderValue(const char *pFrom, char *pValue)
{
    while (isSpace(*pFrom))
        pFrom++;
    OV_instNoteAt(pValue, pFrom);
    size_t iLength = strlen(pFrom);
    while (iLength > 0 && isSpace(pFrom[iLength - 1]))
        iLength--;
    if (iLength >= OV_HEADER_SIZE)
        return -1;
    memcpy(pValue, pFrom, iLength);
    pValue[iLength] = '\0';
    return 0;
}

void tellNoMemory()
{
    fprintf(stderr, "%s\n", "Out of memory");
    errno = ENOMEM; /* whatever the printing made of it: a list tells its end from this by it */
}

bool isWhiteOrCommentLine(const char *pLine)
{
    if (!pLine)
        return true;
    while (isSpace(*pLine))
        pLine++;
    return *pLine == '\0' || *pLine == '#';
}

bool checkToken(const char *pWord, const char *const *apKeywords, int bCaseSensitive)
{
    if (!pWord)
        return false;
    return !apKeywords || !*apKeywords || isListed(pWord, apKeywords, bCaseSensitive != 0);
}

const char *OV_instFindWord(const char *pText)
{
    while (*pText && !isTokenCharacter(*pText))
        pText++;
    return pText;
}

char *getToken(const char *pText, const char *const *apKeywords, const char **ppCursor,
               int bCaseSensitive)
{
    const char *pStart = OV_instFindWord(pText);

    pText = pStart;
    while (isTokenCharacter(*pText))
        pText++;
    *ppCursor = pText;
    if (pText == pStart)
        return nullptr;

    OwnedText word(strndup(pStart, static_cast<size_t>(pText - pStart)));
    if (!word) {
        tellNoMemory();
        return nullptr;
    }
    if (apKeywords && !isListed(word.get(), apKeywords, bCaseSensitive != 0))
        return nullptr;
    return word.release();
}

char **getTokenList(const char *pText, const char *const *apKeywords, int bCaseSensitive)
{
    size_t iCount = 0;
    char **apTokens = growTokens(nullptr, 0);

    if (!apTokens) {
        tellNoMemory();
        return nullptr;
    }
    apTokens[0] = nullptr;
    errno = 0;
    while (char *pToken = getToken(pText, apKeywords, &pText, bCaseSensitive)) {
        char **apGrown = growTokens(apTokens, iCount);
        if (!apGrown) {
            tellNoMemory();
            free(pToken);
            freeTokenList(apTokens);
            return nullptr;
        }
        apTokens = apGrown;
        apTokens[iCount++] = pToken;
        apTokens[iCount] = nullptr;
    }
    if (errno == ENOMEM) { /* told already; the list must not count as a shorter one */
        freeTokenList(apTokens);
        return nullptr;
    }
    char **apTrimmed = static_cast<char **>(realloc(apTokens, (iCount + 1) * sizeof(*apTrimmed)));
    return apTrimmed ? apTrimmed : apTokens;
}

void freeTokenList(char **apTokens)
{
    for (char **ppToken = apTokens; ppToken && *ppToken; ppToken++)
        free(*ppToken);
    free(apTokens);
}

char *getQuotedString(const char *pText, const char **ppCursor)
{
    const char *pOpen = OV_instFindQuote(pText);
    const char *pClose = pOpen ? OV_instFindQuote(pOpen + 1) : nullptr;

    if (!pOpen)
        return strdup(""); /* a missing string is an empty one */
    if (!pClose)
        return nullptr;

    char *pCopy = copyQuoted(pOpen + 1, pClose);
    if (pCopy)
        *ppCursor = pClose + 1;
    return pCopy;
}

const char *OV_instFindDigit(const char *pText)
{
    while (*pText && !isDigit(*pText))
        pText++;
    return pText;
}

int scanInteger(const char *pText, const char **ppCursor, int64_t *plValue)
{
    const char *pStart = OV_instFindDigit(pText);

    *plValue = 0;
    pText = pStart;
    /* Also for a hexadecimal number: media that have one have its "x1F" read as what follows. */
    while (isDigit(*pText))
        pText++;
    *ppCursor = pText;
    if (pText == pStart)
        return 0;

    errno = 0;
    *plValue = strtol(pStart, nullptr, 0);
    return errno == ERANGE ? -1 : 0;
}

int64_t getInteger(const char *pText, const char **ppCursor)
{
    int64_t lValue = 0;

    (void)scanInteger(pText, ppCursor, &lValue); /* out of range: the limit, as strtol gives it */
    return lValue;
}

int OV_ReadHeaderLine(const char *pKey, char *pWord, char *pValue, FILE *pFile, int *piLine,
                      int bVerbose)
{
    off_t lStart = ftello(pFile);
    const int iStartLine = OV_instNextLine();
    OwnedText line(OV_instReadLine(pFile, piLine));
    int iEnd = 0;

    static_assert(OV_HEADER_SIZE == 512, "the width below leaves room for the terminator");
    pWord[0] = '\0';
    if (line && sscanf(line.get(), "%511s%n", pWord, &iEnd) == 1 && strcmp(pWord, pKey) == 0 &&
        copyHeaderValue(line.get() + iEnd, pValue) == 0)
        return 1;
    if (line && bVerbose)
        fprintf(stderr, "Invalid header line, expecting: %s\n", pKey);
    /* The line stays counted, so line numbers run ahead by one for every absent optional key:
     * authors who debug a medium know the number that they are told so. */
    (void)fseeko(pFile, lStart, SEEK_SET); /* failing, the next key reads on and is missed */
    OV_instSetNextLine(iStartLine);
    return 0;
}
