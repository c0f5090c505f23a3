#include "ut/strprint.h"

#include <climits>
#include <cstring>

#include "ut/owned.h"

enum { FLAGS_SIZE = 16, WIDTH_SIZE = 32, PRECISION_SIZE = 16, CONVERSION_SIZE = 16 };
enum { WHOLE, FLAGS, WIDTH, PRECISION, CONVERSION, GROUPS };

static const char s_caPattern[] = "%([-+# 0]+)?([1-9][0-9]*)?(\\.[1-9][0-9]*)?(.?)";
static const char s_caFlags[] = "-+# 0";

/* One directive of the format, taken apart. Texts that do not fit are cut, which changes nothing:
 * a number of so many digits is refused whatever its last digits are. */
struct Directive {
    char caFlags[FLAGS_SIZE]; /* each flag once, however often it stands in the format */
    char caWidth[WIDTH_SIZE];
    char caPrecision[PRECISION_SIZE];
    char caConversion[CONVERSION_SIZE];
    unsigned int iNominal; /* its length in the format, were the conversion a single byte */
    size_t iWidth;
};

/* Where a pass counts or writes. */
struct Pass {
    DynString *pString;
    StrOper oper;
    OwnedText text; /* the writing pass only */
    size_t iLength;
    size_t iSize;
};

using AddDirective = int (*)(Pass *pPass, const Directive *pDirective, va_list *pArgs);

struct ConversionRow {
    const char *pCharacters;
    AddDirective fpAdd;
};

static char s_caEmpty[1]; /* what a format that counts to nothing gives; never on the heap */

/* Makes room for iMore bytes and a terminating zero behind what is written. */
static int reserve(Pass *pPass, size_t iMore)
{
    size_t iNeeded = pPass->iLength + iMore + 1;

    if (iNeeded <= pPass->iSize)
        return 0;
    size_t iSize = iNeeded > 2 * pPass->iSize ? iNeeded : 2 * pPass->iSize;
    char *pGrown = static_cast<char *>(realloc(pPass->text.get(), iSize));
    if (!pGrown)
        return 1;
    (void)pPass->text.release(); /* realloc has taken it */
    pPass->text.reset(pGrown);
    pPass->iSize = iSize;
    return 0;
}

static int append(Pass *pPass, const char *pBytes, size_t iLength)
{
    if (reserve(pPass, iLength) != 0)
        return 1;
    memcpy(pPass->text.get() + pPass->iLength, pBytes, iLength);
    pPass->iLength += iLength;
    pPass->text.get()[pPass->iLength] = '\0';
    return 0;
}

/* Counts iCounted characters in place of the directive, or writes the iLength bytes of pBytes. */
static int addText(Pass *pPass, const Directive *pDirective, const char *pBytes, size_t iLength,
                   int iCounted)
{
    if (pPass->oper == ALLOC)
        return append(pPass, pBytes, iLength);
    pPass->pString->len += static_cast<unsigned int>(iCounted) - pDirective->iNominal;
    return 0;
}

/* Has the C library print the one argument that follows. A directive is allotted its width plus one
 * byte, and at least iUsual plus one; a text beyond that is reported, though it does fit here. */
static int addPrinted(Pass *pPass, const Directive *pDirective, size_t iUsual, ...)
{
    char caFormat[FLAGS_SIZE + WIDTH_SIZE + PRECISION_SIZE + CONVERSION_SIZE + 1];
    va_list args;

    (void)snprintf(caFormat, sizeof caFormat, "%%%s%s%s%s", pDirective->caFlags,
                   pDirective->caWidth, pDirective->caPrecision,
                   pDirective->caConversion); /* the sizes add up */
    va_start(args, iUsual);
    int iPrinted = vsnprintf(nullptr, 0, caFormat, args);
    va_end(args);
    if (iPrinted < 0)
        return 1;
    size_t iLength = static_cast<size_t>(iPrinted);
    if (iLength > (pDirective->iWidth > iUsual ? pDirective->iWidth : iUsual) + 1)
        (void)fputs("Possible memory corruption\n", stderr);
    if (pPass->oper == LENGTH)
        return addText(pPass, pDirective, nullptr, 0, iPrinted);

    if (reserve(pPass, iLength) != 0)
        return 1;
    char *pEnd = pPass->text.get() + pPass->iLength;
    va_start(args, iUsual);
    (void)vsnprintf(pEnd, iLength + 1, caFormat, args); /* measured above */
    va_end(args);
    pPass->iLength += strlen(pEnd); /* a zero character ends the text */
    return 0;
}

static int addInteger(Pass *pPass, const Directive *pDirective, va_list *pArgs)
{
    return addPrinted(pPass, pDirective, 20, va_arg(*pArgs, int));
}

static int addDouble(Pass *pPass, const Directive *pDirective, va_list *pArgs)
{
    return addPrinted(pPass, pDirective, 30, va_arg(*pArgs, double));
}

static int addCharacter(Pass *pPass, const Directive *pDirective, va_list *pArgs)
{
    Directive plain = *pDirective;

    plain.caPrecision[0] = '\0';
    return addPrinted(pPass, &plain, 1, va_arg(*pArgs, int));
}

/* A width pads a string with zero bytes, so that the text seems to end there. It counts one more
 * than it writes; callers notice counts by the formats that come to nothing (OV_instVStrprint). */
static int addString(Pass *pPass, const Directive *pDirective, va_list *pArgs)
{
    const char *pText = va_arg(*pArgs, const char *);

    if (!pText)
        return addText(pPass, pDirective, "(null)", 6, 6);
    size_t iText = strlen(pText);
    size_t iWidth = pDirective->iWidth;
    if (iWidth > INT_MAX)
        return 1;
    if (iWidth <= iText || pPass->oper == LENGTH)
        return addText(pPass, pDirective, pText, iText,
                       static_cast<int>((iWidth > iText ? iWidth : iText) + 1));
    if (reserve(pPass, iWidth) != 0 || append(pPass, pText, iText) != 0)
        return 1;
    memset(pPass->text.get() + pPass->iLength, 0, iWidth - iText + 1);
    pPass->iLength += iWidth - iText;
    return 0;
}

/* Counts two less than it writes, so that "x%%" comes to nothing: its caller gets the static text.
 */
static int addPercent(Pass *pPass, const Directive *pDirective, va_list *)
{
    return addText(pPass, pDirective, "%", 1, -1);
}

/* Every conversion that is not in the table, and none at all. */
static int addNothing(Pass *pPass, const Directive *pDirective, va_list *)
{
    return addText(pPass, pDirective, "", 0, pDirective->caConversion[0] ? 0 : -1);
}

static const ConversionRow s_aConversions[] = {
    {"diouxX", addInteger  },
    {"eEfgG",  addDouble   },
    {"c",      addCharacter},
    {"s",      addString   },
    {"%",      addPercent  },
    {nullptr,  nullptr     },
};

static unsigned int matchLength(const regmatch_t *pMatch)
{
    return pMatch->rm_so < 0 ? 0 : static_cast<unsigned int>(pMatch->rm_eo - pMatch->rm_so);
}

/* Copies as much of a sub-match as iSize bytes hold. */
static void copyCut(char *pDest, unsigned int iSize, const char *pFormat, regmatch_t match)
{
    if (matchLength(&match) >= iSize)
        match.rm_eo = match.rm_so + static_cast<regoff_t>(iSize - 1);
    copy_reg_match(pDest, pFormat, &match);
}

static void takeDirective(Directive *pDirective, const char *pFormat, const regmatch_t *aMatches)
{
    char *pFlag = pDirective->caFlags;

    for (const char *pKnown = s_caFlags; *pKnown; pKnown++) {
        unsigned int iFlags = matchLength(&aMatches[FLAGS]);
        if (iFlags && memchr(pFormat + aMatches[FLAGS].rm_so, *pKnown, iFlags))
            *pFlag++ = *pKnown;
    }
    *pFlag = '\0';
    copyCut(pDirective->caWidth, WIDTH_SIZE, pFormat, aMatches[WIDTH]);
    copyCut(pDirective->caPrecision, PRECISION_SIZE, pFormat, aMatches[PRECISION]);
    copyCut(pDirective->caConversion, CONVERSION_SIZE, pFormat, aMatches[CONVERSION]);
    pDirective->iNominal = matchLength(&aMatches[FLAGS]) + matchLength(&aMatches[WIDTH]) +
                           matchLength(&aMatches[PRECISION]) + 2;
    pDirective->iWidth = strtoul(pDirective->caWidth, nullptr, 10);
}

static int addDirective(Pass *pPass, const Directive *pDirective, va_list *pArgs)
{
    const ConversionRow *pRow = s_aConversions;
    char cConversion = pDirective->caConversion[0];

    if (!cConversion)
        return addNothing(pPass, pDirective, pArgs);
    while (pRow->pCharacters && !strchr(pRow->pCharacters, cConversion))
        pRow++;
    return (pRow->fpAdd ? pRow->fpAdd : addNothing)(pPass, pDirective, pArgs);
}

static int walkFormat(Pass *pPass, const regex_t *pPattern, const char *pFormat, va_list *pArgs)
{
    regmatch_t aMatches[GROUPS];

    while (*pFormat && regexec(pPattern, pFormat, GROUPS, aMatches, 0) == 0) {
        Directive directive;
        takeDirective(&directive, pFormat, aMatches);
        if (pPass->oper == ALLOC &&
            append(pPass, pFormat, static_cast<size_t>(aMatches[WHOLE].rm_so)) != 0)
            return 1;
        if (addDirective(pPass, &directive, pArgs) != 0)
            return 1;
        pFormat += aMatches[WHOLE].rm_eo;
    }
    return pPass->oper == ALLOC ? append(pPass, pFormat, strlen(pFormat)) : 0;
}

static int countLength(const regex_t *pPattern, const char *pFormat, DynString *pString,
                       va_list *pArgs)
{
    Pass pass = {pString, LENGTH, nullptr, 0, 0};

    pString->len = static_cast<unsigned int>(strlen(pFormat));
    return walkFormat(&pass, pPattern, pFormat, pArgs);
}

/* len decides only whether there is anything to write. It cannot size the buffer: it may be short
 * of what is written, or wrapped to nearly 2^32. */
static int writeText(const regex_t *pPattern, const char *pFormat, DynString *pString,
                     va_list *pArgs)
{
    Pass pass = {pString, ALLOC, nullptr, 0, 0};

    if (!pString->len) {
        pString->str = s_caEmpty;
        return 0;
    }
    if (reserve(&pass, strlen(pFormat)) != 0 || walkFormat(&pass, pPattern, pFormat, pArgs) != 0) {
        pString->str = nullptr;
        pString->len = 0;
        return 1;
    }
    pString->str = pass.text.release();
    return 0;
}

void PrintedFreed::operator()(char *pText) const
{
    if (pText != s_caEmpty)
        free(pText);
}

int get_len_or_allocate(va_list args, const char *pFormat, DynString *pString, StrOper oper)
{
    regex_t pattern;
    va_list ownArgs;

    if (!pFormat || !pString || (oper != LENGTH && oper != ALLOC))
        return 1;
    if (regcomp(&pattern, s_caPattern, REG_EXTENDED) != 0)
        return 1;
    va_copy(ownArgs, args); /* a va_list parameter has no address that can be passed on */
    int iResult = (oper == LENGTH ? countLength : writeText)(&pattern, pFormat, pString, &ownArgs);
    va_end(ownArgs);
    regfree(&pattern);
    return iResult;
}

void copy_reg_match(char *pDest, const char *pSource, const regmatch_t *pMatch)
{
    size_t iLength = matchLength(pMatch);

    if (iLength)
        memcpy(pDest, pSource + pMatch->rm_so, iLength);
    pDest[iLength] = '\0';
}

char *OV_instVStrprint(const char *pFormat, va_list args)
{
    DynString result = {0, nullptr};
    const StrOper aPasses[] = {LENGTH, ALLOC};

    for (StrOper oper : aPasses) {
        va_list passArgs;
        va_copy(passArgs, args);
        int iResult = get_len_or_allocate(passArgs, pFormat, &result, oper);
        va_end(passArgs);
        if (iResult != 0)
            return nullptr;
    }
    return result.str;
}

char *OV_instStrPrint(const char *pFormat, ...)
{
    va_list args;

    va_start(args, pFormat);
    char *pText = OV_instVStrprint(pFormat, args);
    va_end(args);
    return pText;
}

char *OV_instStrConcat(char *pBase, ...)
{
    size_t iBase = pBase ? strlen(pBase) : 0;
    size_t iTotal = iBase + 1;
    va_list args;

    va_start(args, pBase);
    while (const char *pNext = va_arg(args, const char *))
        iTotal += strlen(pNext);
    va_end(args);

    char *pText = static_cast<char *>(realloc(pBase, iTotal));
    if (!pText)
        return nullptr;
    char *pEnd = pText + iBase;
    *pEnd = '\0';
    va_start(args, pBase);
    while (const char *pNext = va_arg(args, const char *))
        pEnd = stpcpy(pEnd, pNext);
    va_end(args);
    return pText;
}

FILE *OV_instStrPopen(const char *pFormat, const char *pMode, ...)
{
    va_list args;

    va_start(args, pMode);
    OwnedPrint command(OV_instVStrprint(pFormat, args));
    va_end(args);
    return command ? popen(command.get(), pMode) : nullptr;
}

int OV_instStrSystem(const char *pFormat, ...)
{
    va_list args;

    va_start(args, pFormat);
    OwnedPrint command(OV_instVStrprint(pFormat, args));
    va_end(args);
    return command ? system(command.get()) : 1;
}
