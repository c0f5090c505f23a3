#include "description/packageLines.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "description/configLines.h"
#include "description/faults.h"
#include "description/fields.h"
#include "description/scanner.h"
#include "ut/owned.h"

static const int32_t s_iTarStep = 100;

/* How a keyword's arguments are read: as a line of its own, or as the body of an operation that
 * is linked to the last package beforehand. Both return 0 or -1. */
struct LineRow {
    int (*readLine)(const char *pText, _OV_instCDinst *pRoot);
    int (*readBody)(const char *pText, _OV_InstOper *pOper);
};

/* What a suite's word stands for. A package is looked for first: media may have one called "Hidden"
 * or "Vital". One that is listed twice appears twice, also in the history. */
static int addSuiteWord(_OV_instCDinst *pRoot, _OV_InstSuiteList *pSuite, const char *pWord,
                        const char *pAt)
{
    if (_OV_InstPackage *pPackage = OV_instGetPackageFromName(pRoot, pWord)) {
        const _OV_InstPackageNode *pLast = pSuite->pPackTail;
        OV_instAddPackage2Suite(pSuite, pPackage);
        if (pSuite->pPackTail == pLast) /* without memory, which was told */
            return -1;
        OV_instNoteAt(pSuite->pPackTail, pAt);
    } else if (strcmp(pWord, "Hidden") == 0) {
        pSuite->iHidden = 1;
    } else if (strcmp(pWord, "Vital") == 0) {
        pSuite->iVital = 1;
    } else {
        return OV_instFault(OV_FAULT_PACKAGE, pAt, pWord);
    }
    return 0;
}

/* A record whose name could not be read hides those behind it; where reading goes on it gets an
 * empty one. */
static int readName(const char **ppText, char **ppName)
{
    if (readTexts(ppText, {ppName}) == 0)
        return 0;
    if (OV_instReadingSink)
        *ppName = strdup("");
    return -1;
}

static int readSuite(const char *pText, _OV_instCDinst *pRoot)
{
    _OV_InstSuiteList *pSuite = newSuite(pRoot);

    if (!pSuite)
        return -1;
    OV_instNoteAt(pSuite, nullptr);
    if (readName(&pText, &pSuite->pName) < 0)
        return -1;
    char **apWords = getTokenList(pText, nullptr, 1);
    int iResult = apWords ? 0 : -1;
    for (char **ppWord = apWords; ppWord && *ppWord; ppWord++) {
        const char *pAt = OV_instReadingSink ? OV_instFindWord(pText) : pText;
        iResult |= addSuiteWord(pRoot, pSuite, *ppWord, pAt);
        if (iResult != 0 && !OV_instReadingSink)
            break;
        if (OV_instReadingSink)
            pText = pAt + strlen(*ppWord);
    }
    freeTokenList(apWords);
    return iResult;
}

static int readPackage(const char *pText, _OV_instCDinst *pRoot)
{
    _OV_InstPackage *pPackage = newPackage(pRoot);

    if (!pPackage)
        return -1;
    OV_instNoteAt(pPackage, nullptr);
    if (readName(&pText, &pPackage->pName) < 0)
        return -1;
    return readTexts(&pText, {&pPackage->pLabel});
}

static int beginConfig(const char *, _OV_instCDinst *)
{
    OV_instParsingConfiguration = 1;
    return 0;
}

static int endConfig(const char *, _OV_instCDinst *)
{
    OV_instParsingConfiguration = 0;
    return 0;
}

/* A text without a closing quote where setup takes the line all the same. */
static void tellOpenText(const char *pStart)
{
    OV_Fault fault = {};

    fault.code = OV_FAULT_TEXT;
    fault.pAt = OV_instFindQuote(pStart);
    fault.pSubject = fault.pAt ? fault.pAt + 1 : "";
    (void)OV_instTellFault(fault); /* as it says */
}

static int readCopy(const char *pText, _OV_InstOper *pOper)
{
    _OV_InstCopy *pCopy = &pOper->body.copy;

    if (readTexts(&pText, {&pCopy->pSource}) < 0)
        return -1;
    errno = 0;
    const char *pStart = pText;
    OwnedText dest(getQuotedString(pText, &pText));
    if (!dest && errno == ENOMEM)
        return -1;
    if (!dest) /* media load whose destination has no closing quote: it counts as none */
        tellOpenText(pStart);
    if (dest && *dest) {
        OV_instNoteText(dest.get(), pStart, pText);
        pCopy->pDest = dest.release();
    }
    if (readUnits(&pText, &pOper->lUnits, true) < 0)
        return -1;
    return readNumbers(&pText, {&pCopy->iMode, &pCopy->iValue3, &pCopy->iValue4});
}

/* Small steps cost no more than doubling would: the C library moves big blocks by their pages. */
static int growTar(_OV_InstTar *pTar)
{
    size_t iCount = static_cast<size_t>(pTar->iCount);
    size_t iRoom = iCount + s_iTarStep;

    void *pUnits = realloc(pTar->aUnits, iRoom * sizeof(*pTar->aUnits));
    if (!pUnits)
        return -1;
    pTar->aUnits = static_cast<int64_t *>(pUnits);
    void *pMembers = realloc(pTar->apMembers, iRoom * sizeof(*pTar->apMembers));
    if (!pMembers)
        return -1;
    pTar->apMembers = static_cast<char **>(pMembers);
    memset(pTar->aUnits + iCount, 0, s_iTarStep * sizeof(*pTar->aUnits));
    memset(pTar->apMembers + iCount, 0, s_iTarStep * sizeof(*pTar->apMembers));
    return 0;
}

/* A member's name. Once no quote opens behind the cursor none ever will, since a cursor behind a
 * number is never inside an escape; without that memory a line of bare numbers would be searched
 * to its end for each of them. */
static char *readMemberName(const char **ppText, bool *pbQuotes)
{
    const char *pStart = *ppText;

    if (!*pbQuotes)
        return strdup("");
    char *pName = readText(ppText);
    *pbQuotes = *ppText != pStart;
    return pName;
}

/* Tells of a member that has no name, or no size. */
static void watchMember(const char *pStart, const char *pSize, const char *pName)
{
    OV_Fault fault = {};

    fault.code = OV_FAULT_MEMBER_PART;
    fault.pAt = pSize == pStart ? pStart : OV_instFindQuote(pStart);
    fault.pSubject = pName;
    if (pSize == pStart || !*OV_instFindDigit(pSize))
        (void)OV_instTellFault(fault); /* setup takes the line */
}

/* Whatever stands behind the last pair, trailing blanks too, is one more member: sizes and the
 * records of media with such lines count it. */
static int readMembers(const char *pText, _OV_InstTar *pTar)
{
    bool bQuotes = true;

    while (*pText) {
        if (pTar->iCount % s_iTarStep == 0 && growTar(pTar) < 0)
            return -1;
        const char *pStart = pText;
        OwnedText name(readMemberName(&pText, &bQuotes));
        const char *pSize = pText;
        int64_t lUnits = 0;
        if (!name || readUnits(&pText, &lUnits) < 0)
            return OV_instFault(OV_FAULT_MEMBERS, nullptr, "");
        if (OV_instReadingSink)
            watchMember(pStart, pSize, name.get());
        pTar->aUnits[pTar->iCount] = lUnits;
        pTar->apMembers[pTar->iCount++] = name.release();
    }
    return 0;
}

static int readTar(const char *pText, _OV_InstOper *pOper)
{
    _OV_InstTar *pTar = &pOper->body.tar;

    if (readTexts(&pText, {&pTar->pArchive}) < 0)
        return -1;
    const char *pStart = pText;
    if (scanInteger(pText, &pText, &pOper->lUnits) < 0) /* 0 when missing: the members count */
        return OV_instRefuseNumber(pStart);
    return readMembers(pText, pTar);
}

static int readTar2(const char *pText, _OV_InstOper *pOper)
{
    if (readTexts(&pText, {&pOper->body.tar.pDestRoot}) < 0)
        return -1;
    return readTar(pText, pOper);
}

static int readMkdir(const char *pText, _OV_InstOper *pOper)
{
    _OV_InstMkdir *pMkdir = &pOper->body.mkdir;

    if (readTexts(&pText, {&pMkdir->pPath}) < 0)
        return -1;
    return readNumbers(&pText, {&pMkdir->iMode, &pMkdir->iValue2, &pMkdir->iValue3});
}

static int readLink(const char *pText, _OV_InstOper *pOper)
{
    _OV_InstLink *pLink = &pOper->body.link;

    pLink->iHard = pOper->iType == OV_OPER_HARDLINK;
    return readTexts(&pText, {&pLink->pLink, &pLink->pTarget, &pLink->pThird});
}

static int readFunction(const char *pText, _OV_InstOper *pOper)
{
    _OV_InstFunction *pFunction = &pOper->body.function;

    return readTexts(&pText, {&pFunction->pFunction, &pFunction->pModule, &pFunction->pData});
}

static int readShortcut(const char *pText, _OV_InstOper *pOper)
{
    _OV_InstShortcut *pShortcut = &pOper->body.shortcut;

    if (readTexts(&pText, {&pShortcut->pShort1, &pShortcut->pShort2, &pShortcut->pShort3}) < 0)
        return -1;
    errno = 0;
    const char *pStart = pText;
    pShortcut->pShort4 = getQuotedString(pText, &pText); /* may stay null, but not without memory */
    if (!pShortcut->pShort4 && errno == ENOMEM)
        return -1;
    if (!pShortcut->pShort4)
        tellOpenText(pStart);
    return 0;
}

static int readRegData(const char *pText, _OV_InstOper *pOper)
{
    _OV_InstRegData *pData = &pOper->body.regData;

    return readTexts(&pText,
                     {&pData->pRootKey, &pData->pKeyName, &pData->pKeyValue, &pData->pValue});
}

static int readSelfReg(const char *pText, _OV_InstOper *pOper)
{
    return readTexts(&pText, {&pOper->body.selfReg.pModule});
}

/* In the order of OV_InstOperType. A row of nulls is a reserved word: a description that uses it
 * does not load. */
static const LineRow s_aLines[] = {
    {readSuite,   nullptr     }, /* Suite */
    {readPackage, nullptr     }, /* Package */
    {nullptr,     readCopy    }, /* Copy */
    {nullptr,     readCopy    }, /* CopyZ */
    {nullptr,     readTar     }, /* Untar */
    {nullptr,     readTar     }, /* UntarZ */
    {nullptr,     readTar2    }, /* Untar2 */
    {nullptr,     readTar2    }, /* UntarZ2 */
    {nullptr,     readMkdir   }, /* Mkdir */
    {nullptr,     readLink    }, /* HardLink */
    {nullptr,     readLink    }, /* SoftLink */
    {nullptr,     nullptr     }, /* Prefix */
    {nullptr,     nullptr     }, /* Env */
    {nullptr,     nullptr     }, /* Alias */
    {beginConfig, nullptr     }, /* ConfigBegin */
    {endConfig,   nullptr     }, /* ConfigEnd */
    {nullptr,     readFunction}, /* Function */
    {nullptr,     readShortcut}, /* Shortcut */
    {nullptr,     readRegData }, /* RegData */
    {nullptr,     readSelfReg }, /* SelfReg */
};
static_assert(sizeof(s_aLines) / sizeof(*s_aLines) == OV_OPER_COUNT,
              "one row for each operation kind");

/* Whether a line outside a section is a configuration: a number and a kind. */
static bool isConfigLine(const char *pLine)
{
    const char *pCursor = nullptr;
    OwnedText number(getToken(pLine, nullptr, &pCursor, 1));

    if (!number || *OV_instFindDigit(number.get()) != *number ||
        strspn(number.get(), "0123456789") != strlen(number.get()))
        return false;
    return OwnedText(getToken(pCursor, OVInstConfigTkList, &pCursor, 1)) != nullptr;
}

static int addLine(int iType, const char *pText, const char *pLine, _OV_instCDinst *pRoot)
{
    if (s_aLines[iType].readLine)
        return s_aLines[iType].readLine(pText, pRoot);
    if (!s_aLines[iType].readBody)
        return OV_instFault(OV_FAULT_KEYWORD, OV_instFindWord(pLine), OVInstOperTkList[iType]);
    if (!pRoot->pPackageTail)
        return OV_instFault(OV_FAULT_NO_PACKAGE, OV_instFindWord(pLine), OVInstOperTkList[iType]);

    _OV_InstOper *pOper = newOper(pRoot);
    if (!pOper)
        return -1;
    OV_instNoteAt(pOper, nullptr);
    pOper->iType = iType; /* first, so that a rejected line's record frees what it holds */
    pOper->lUnits = 1;
    return s_aLines[iType].readBody(pText, pOper);
}

/* A line that begins with no keyword. Where all faults are collected, what it was meant for is read
 * on; it is refused in any case. */
static int refuseKeyword(const char *pLine, _OV_instCDinst *pRoot)
{
    const char *pCursor = pLine;
    const char *pAt = OV_instFindWord(pLine);

    if (!OV_instReadingSink)
        return OV_instFault(OV_FAULT_KEYWORD, nullptr, "");
    if (isConfigLine(pLine)) {
        OV_instParsingConfiguration = 1;
        (void)OV_instFault(OV_FAULT_NO_SECTION, nullptr, ""); /* refused below */
        (void)AddLineToConfig(pLine, pRoot);
        return -1;
    }
    OwnedText word(getToken(pLine, nullptr, &pCursor, 1));
    (void)OV_instFault(OV_FAULT_KEYWORD, word ? pAt : nullptr, word ? word.get() : "");
    const int iMeant = word ? OV_instGuess(word.get(), OVInstOperTkList) : -1;
    if (iMeant >= 0)
        (void)addLine(iMeant, pCursor, pLine, pRoot); /* likewise */
    return -1;
}

int AddLineToCDinst(const char *pLine, _OV_instCDinst *pRoot)
{
    const char *pText = pLine;
    OwnedText keyword(getToken(pText, OVInstOperTkList, &pText, 1));
    int iType = getOperType(keyword.get());

    if (iType < 0)
        return refuseKeyword(pLine, pRoot);
    return addLine(iType, pText, pLine, pRoot);
}
