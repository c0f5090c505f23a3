#include "description/configLines.h"

#include <cstdio>
#include <cstring>

#include "description/fields.h"
#include "description/scanner.h"
#include "ut/owned.h"

int OV_instParsingConfiguration = 0;

static int rejectLine(const char *pLine)
{
    fprintf(stderr, "Error: invalid configuration line: %s\n", pLine);
    return -1;
}

/* An empty text means no icon; any other one is two names around its first comma. */
static int readIcon(const char **ppText, _OV_InstConfigList *pConfig)
{
    OwnedText names(getQuotedString(*ppText, ppText));

    if (!names)
        return -1;
    if (!*names)
        return 0;
    const char *pComma = strchr(names.get(), ',');
    if (!pComma)
        return -1;
    _OV_InstIcon *pIcon = newIcon(pConfig);
    if (!pIcon)
        return -1;
    pIcon->pIcon1 = strndup(names.get(), static_cast<size_t>(pComma - names.get()));
    pIcon->pIcon2 = strdup(pComma + 1);
    return pIcon->pIcon1 && pIcon->pIcon2 ? 0 : -1;
}

/* Ids until the slots are full, one is missing or 0 (which then ends the list), or one is not
 * greater than the dialog's own: that one is told, but stays in the list, and media that have one
 * still load. */
static int readChildren(const char *pText, int32_t iOwnId, int32_t *aChildren, int iMost)
{
    for (int i = 0; i < iMost; i++) {
        if (readNumbers(&pText, {&aChildren[i]}) < 0)
            return -1;
        if (aChildren[i] == 0)
            return 0;
        if (aChildren[i] <= iOwnId) {
            fprintf(stderr, "Error: config id %d must be greater than %d\n", aChildren[i], iOwnId);
            return 0;
        }
    }
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
    auto *pChoice = static_cast<_OV_InstSuiteChoice *>(newConfigData(pConfig));
    OwnedText name(getQuotedString(pText, &pText));

    if (!pChoice || !name)
        return -1;
    pChoice->pSuite = OV_instGetSuiteFromName(pRoot, name.get());
    if (!pChoice->pSuite) {
        fprintf(stderr, "Error: invalid suite name '%s'\n", name.get());
        return -1;
    }
    if (readTexts(&pText, {&pChoice->pText}) < 0 || readIcon(&pText, pConfig) < 0)
        return -1;
    return readNumbers(&pText, {&pConfig->iSelected});
}

/* In the order of OV_InstConfigType. */
static int (*const s_aReaders[])(const char *, _OV_instCDinst *, _OV_InstConfigList *) = {
    readMainDlg,
    readCusDlg,
    readSuite,
};
static_assert(sizeof(s_aReaders) / sizeof(*s_aReaders) == OV_CONFIG_COUNT,
              "one reader for each configuration kind");

int AddLineToConfig(const char *pLine, _OV_instCDinst *pRoot)
{
    const char *pText = pLine;
    OwnedText keyword(getToken(pLine, OVInstOperTkList, &pText, 1));
    int32_t iId = 0;

    if (keyword && getOperType(keyword.get()) == OV_OPER_CONFIGEND) {
        OV_instParsingConfiguration = 0;
        return 0;
    }
    if (keyword)
        return rejectLine(pLine);

    pText = pLine;
    if (readNumbers(&pText, {&iId}) < 0 || iId == 0)
        return -1;
    OwnedText kind(getToken(pText, OVInstConfigTkList, &pText, 1));
    if (!kind)
        return rejectLine(pLine);
    int iType = getConfigType(kind.get());
    _OV_InstConfigList *pConfig = newConfig(pRoot, iId, iType);
    return pConfig ? s_aReaders[iType](pText, pRoot, pConfig) : -1;
}
