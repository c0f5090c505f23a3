#include "description/configLines.h"

#include <cstdio>
#include <cstring>

#include "description/faults.h"
#include "description/fields.h"
#include "description/packageLines.h"
#include "description/scanner.h"
#include "ut/owned.h"

int OV_instParsingConfiguration = 0;

static int rejectLine(OV_FaultCode code, const char *pLine, const char *pAt, const char *pWord)
{
    OV_Fault fault = {};

    fault.code = code;
    fault.bRejects = true;
    fault.pAt = pAt;
    fault.pSubject = pWord;
    fault.pText = pLine;
    return OV_instTellFault(fault);
}

/* An empty text means no icon; any other one is two names around its first comma. */
static int readIcon(const char **ppText, _OV_InstConfigList *pConfig)
{
    const char *pStart = *ppText;
    OwnedText names(readText(ppText));

    if (!names)
        return -1;
    if (!*names)
        return 0;
    const char *pComma = strchr(names.get(), ',');
    if (!pComma)
        return OV_instFault(OV_FAULT_ICON, OV_instFindQuote(pStart), names.get());
    _OV_InstIcon *pIcon = newIcon(pConfig);
    if (!pIcon)
        return -1;
    OV_instNoteAgain(pIcon);
    pIcon->pIcon1 = strndup(names.get(), static_cast<size_t>(pComma - names.get()));
    pIcon->pIcon2 = strdup(pComma + 1);
    return pIcon->pIcon1 && pIcon->pIcon2 ? 0 : -1;
}

/* Neither costs the line: media that have it still load. */
static void tellMember(OV_FaultCode code, const char *pAt, int32_t iId, int32_t iOwnId)
{
    OV_Fault fault = {};

    fault.code = code;
    fault.pAt = pAt;
    fault.iNumber = iId;
    fault.iOwnNumber = iOwnId;
    (void)OV_instTellFault(fault); /* as it says */
}

/* Ids until the slots are full, one is missing or 0 (which then ends the list), or one is not
 * greater than the dialog's own: that one is told, but stays in the list. */
static int readChildren(const char *pText, int32_t iOwnId, int32_t *aChildren, int iMost)
{
    for (int i = 0; i < iMost; i++) {
        const char *pStart = pText;
        if (readNumbers(&pText, {&aChildren[i]}) < 0)
            return -1;
        if (aChildren[i] == 0)
            return 0;
        if (aChildren[i] <= iOwnId) {
            tellMember(OV_FAULT_CHILD_ORDER, OV_instFindDigit(pStart), aChildren[i], iOwnId);
            return 0;
        }
    }
    pText = OV_instFindDigit(pText);
    if (*pText)
        tellMember(OV_FAULT_MANY_MEMBERS, pText, iMost, iOwnId);
    return 0;
}

static int readMainDlg(const char *pText, _OV_instCDinst *, _OV_InstConfigList *pConfig)
{
    auto *pDialog = static_cast<_OV_InstMainDlg *>(newConfigData(pConfig));

    if (!pDialog || readTexts(&pText, {&pDialog->pTitle, &pDialog->pText}) < 0 ||
        readIcon(&pText, pConfig) < 0)
        return -1;
    return readChildren(pText, pConfig->iId, pDialog->aChildren, OV_MAINDLG_CHILDREN);
}

static int readCusDlg(const char *pText, _OV_instCDinst *, _OV_InstConfigList *pConfig)
{
    auto *pDialog = static_cast<_OV_InstCusDlg *>(newConfigData(pConfig));

    if (!pDialog || readTexts(&pText, {&pDialog->pTitle, &pDialog->pText}) < 0 ||
        readIcon(&pText, pConfig) < 0 || readNumbers(&pText, {&pConfig->iSelected}) < 0)
        return -1;
    return readChildren(pText, pConfig->iId, pDialog->aChildren, OV_CUSDLG_CHILDREN);
}

static int readSuite(const char *pText, _OV_instCDinst *pRoot, _OV_InstConfigList *pConfig)
{
    const char *pStart = pText;
    auto *pChoice = static_cast<_OV_InstSuiteChoice *>(newConfigData(pConfig));
    OwnedText name(readText(&pText));

    if (!pChoice || !name)
        return -1;
    if (pText != pStart)
        OV_instNoteAgain(&pChoice->pSuite);
    pChoice->pSuite = OV_instGetSuiteFromName(pRoot, name.get());
    int iResult =
        pChoice->pSuite ? 0 : OV_instFault(OV_FAULT_SUITE, OV_instFindQuote(pStart), name.get());
    if (iResult < 0 && !OV_instReadingSink)
        return -1;
    if (readTexts(&pText, {&pChoice->pText}) < 0 || readIcon(&pText, pConfig) < 0 ||
        readNumbers(&pText, {&pConfig->iSelected}) < 0)
        return -1;
    return iResult;
}

/* In the order of OV_InstConfigType. */
static int (*const s_aReaders[])(const char *, _OV_instCDinst *, _OV_InstConfigList *) = {
    readMainDlg,
    readCusDlg,
    readSuite,
};
static_assert(sizeof(s_aReaders) / sizeof(*s_aReaders) == OV_CONFIG_COUNT,
              "one reader for each configuration kind");

/* A line that begins with a keyword. What else it says is still read where all faults are
 * collected: what it declares is then not missed below. */
static int takeKeyword(const char *pLine, const char *pAt, const char *pKeyword,
                       _OV_instCDinst *pRoot)
{
    if (getOperType(pKeyword) == OV_OPER_CONFIGEND) {
        OV_instParsingConfiguration = 0;
        return 0;
    }
    (void)rejectLine(OV_FAULT_CONFIG_OUTSIDE, pLine, pAt, pKeyword); /* so it is */
    if (OV_instReadingSink && getOperType(pKeyword) != OV_OPER_CONFIGBEGIN)
        (void)AddLineToCDinst(pLine, pRoot); /* refused it is in any case */
    return -1;
}

/* The kind of a configuration, or -1 with the reason told; one that was guessed is refused in the
 * end. */
static int readKind(const char *pLine, const char **ppText, int *piResult)
{
    const char *pAt = OV_instFindWord(*ppText);
    OwnedText kind(getToken(*ppText, OVInstConfigTkList, ppText, 1));

    if (kind)
        return getConfigType(kind.get());
    OwnedText word(getToken(pAt, nullptr, ppText, 1));
    *piResult =
        rejectLine(OV_FAULT_CONFIG_KIND, pLine, word ? pAt : nullptr, word ? word.get() : "");
    return word ? OV_instGuess(word.get(), OVInstConfigTkList) : -1;
}

int AddLineToConfig(const char *pLine, _OV_instCDinst *pRoot)
{
    const char *pText = pLine;
    OwnedText keyword(getToken(pLine, OVInstOperTkList, &pText, 1));
    int32_t iId = 0;
    int iResult = 0;

    if (keyword)
        return takeKeyword(pLine, OV_instFindWord(pLine), keyword.get(), pRoot);

    pText = pLine;
    if (readNumbers(&pText, {&iId}) < 0)
        return -1;
    if (iId == 0)
        return OV_instFault(OV_FAULT_CONFIG_NUMBER, nullptr, "");
    const char *pKind = OV_instFindWord(pText);
    int iType = readKind(pLine, &pText, &iResult);
    if (iType < 0)
        return -1;
    _OV_InstConfigList *pConfig = newConfig(pRoot, iId, iType);
    if (!pConfig)
        return -1;
    OV_instNoteAt(&pConfig->iId, OV_instFindDigit(pLine));
    OV_instNoteAt(&pConfig->iType, pKind);
    return s_aReaders[iType](pText, pRoot, pConfig) < 0 ? -1 : iResult;
}
