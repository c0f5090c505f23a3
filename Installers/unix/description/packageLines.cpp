#include "description/packageLines.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "description/configLines.h"
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
static int addSuiteWord(_OV_instCDinst *pRoot, _OV_InstSuiteList *pSuite, const char *pWord)
{
    if (_OV_InstPackage *pPackage = OV_instGetPackageFromName(pRoot, pWord)) {
        const _OV_InstPackageNode *pLast = pSuite->pPackTail;
        OV_instAddPackage2Suite(pSuite, pPackage);
        if (pSuite->pPackTail == pLast) /* without memory, which was told */
            return -1;
    } else if (strcmp(pWord, "Hidden") == 0) {
        pSuite->iHidden = 1;
    } else if (strcmp(pWord, "Vital") == 0) {
        pSuite->iVital = 1;
    } else {
        fprintf(stderr, "Error: there is no package named '%s'\n", pWord);
        return -1;
    }
    return 0;
}

static int readSuite(const char *pText, _OV_instCDinst *pRoot)
{
    _OV_InstSuiteList *pSuite = newSuite(pRoot);

    if (!pSuite || readTexts(&pText, {&pSuite->pName}) < 0)
        return -1;
    char **apWords = getTokenList(pText, nullptr, 1);
    int iResult = apWords ? 0 : -1;
    for (char **ppWord = apWords; iResult == 0 && *ppWord; ppWord++)
        iResult = addSuiteWord(pRoot, pSuite, *ppWord);
    freeTokenList(apWords);
    return iResult;
}

static int readPackage(const char *pText, _OV_instCDinst *pRoot)
{
    _OV_InstPackage *pPackage = newPackage(pRoot);

    return pPackage ? readTexts(&pText, {&pPackage->pName, &pPackage->pLabel}) : -1;
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

static int readCopy(const char *pText, _OV_InstOper *pOper)
{
    _OV_InstCopy *pCopy = &pOper->body.copy;

    if (readTexts(&pText, {&pCopy->pSource}) < 0)
        return -1;
    errno = 0;
    OwnedText dest(getQuotedString(pText, &pText));
    if (!dest && errno == ENOMEM)
        return -1;
    if (dest && *dest) /* media load whose destination has no closing quote: it counts as none */
        pCopy->pDest = dest.release();
    if (readUnits(&pText, &pOper->lUnits) < 0)
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
    char *pName = getQuotedString(pStart, ppText);
    *pbQuotes = *ppText != pStart;
    return pName;
}

/* Whatever stands behind the last pair, trailing blanks too, is one more member: sizes and the
 * records of media with such lines count it. */
static int readMembers(const char *pText, _OV_InstTar *pTar)
{
    bool bQuotes = true;

    while (*pText) {
        if (pTar->iCount % s_iTarStep == 0 && growTar(pTar) < 0)
            return -1;
        OwnedText name(readMemberName(&pText, &bQuotes));
        int64_t lUnits = 0;
        if (!name || readUnits(&pText, &lUnits) < 0) {
            fputs("Error: invalid tar line\n", stderr);
            return -1;
        }
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
    if (scanInteger(pText, &pText, &pOper->lUnits) < 0) /* 0 when missing: the members count */
        return -1;
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
    pShortcut->pShort4 = getQuotedString(pText, &pText); /* may stay null, but not without memory */
    return pShortcut->pShort4 || errno != ENOMEM ? 0 : -1;
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

int AddLineToCDinst(const char *pLine, _OV_instCDinst *pRoot)
{
    const char *pText = pLine;
    OwnedText keyword(getToken(pText, OVInstOperTkList, &pText, 1));
    int iType = getOperType(keyword.get());

    if (iType < 0)
        return -1;
    if (s_aLines[iType].readLine)
        return s_aLines[iType].readLine(pText, pRoot);
    if (!s_aLines[iType].readBody)
        return -1;

    _OV_InstOper *pOper = newOper(pRoot);
    if (!pOper)
        return -1;
    pOper->iType = iType; /* first, so that a rejected line's record frees what it holds */
    pOper->lUnits = 1;
    return s_aLines[iType].readBody(pText, pOper);
}
