#include "description/model.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <initializer_list>

#include "description/modelIndex.h"
#include "description/scanner.h"

/* In the order of OV_InstOperType. */
const char *const OVInstOperTkList[] = {
    "Suite",       "Package",   "Copy",     "CopyZ",    "Untar",   "UntarZ",  "Untar2",
    "UntarZ2",     "Mkdir",     "HardLink", "SoftLink", "Prefix",  "Env",     "Alias",
    "ConfigBegin", "ConfigEnd", "Function", "Shortcut", "RegData", "SelfReg", nullptr,
};
static_assert(sizeof(OVInstOperTkList) / sizeof(*OVInstOperTkList) == OV_OPER_COUNT + 1,
              "one keyword for each operation kind");

/* In the order of OV_InstConfigType. */
const char *const OVInstConfigTkList[] = {"MainDlg", "CusDlg", "Suite", nullptr};
static_assert(sizeof(OVInstConfigTkList) / sizeof(*OVInstConfigTkList) == OV_CONFIG_COUNT + 1,
              "one keyword for each configuration kind");

static int getKeyword(const char *pWord, const char *const *apKeywords)
{
    for (int i = 0; pWord && apKeywords[i]; i++) {
        if (strcmp(pWord, apKeywords[i]) == 0)
            return i;
    }
    return -1;
}

/* Walks on to the list's last element. The first configuration governs until a custom dialog that
 * has a successor takes over; the last element itself never counts. Whoever follows a parent before
 * a dialog has set it would notice a change. */
static void reachConfigEnd(_OV_instCDinst *pRoot)
{
    if (!pRoot->pConfigTail)
        pRoot->pConfigTail = pRoot->pConfigGroup = pRoot->pConfigHead;
    while (pRoot->pConfigTail && pRoot->pConfigTail->pNext) {
        if (pRoot->pConfigTail->iType == OV_CONFIG_CUSDLG)
            pRoot->pConfigGroup = pRoot->pConfigTail;
        pRoot->pConfigTail = pRoot->pConfigTail->pNext;
    }
}

template <typename Record> static Record *newRecord()
{
    return static_cast<Record *>(calloc(1, sizeof(Record)));
}

/* A record that the look-ups will find, once those before it are in the index. */
template <typename Record> static Record *newIndexed(_OV_instCDinst *pRoot)
{
    return updateIndex(pRoot) == 0 ? newRecord<Record>() : nullptr;
}

template <typename Node> static void append(Node **ppHead, Node **ppTail, Node *pNode)
{
    if (*ppTail)
        (*ppTail)->pNext = pNode;
    else
        *ppHead = pNode;
    *ppTail = pNode;
}

static void freeTexts(std::initializer_list<char *> apTexts)
{
    for (char *pText : apTexts)
        free(pText);
}

static void freeCopy(_OV_InstOper *pOper)
{
    freeTexts({pOper->body.copy.pSource, pOper->body.copy.pDest});
}

static void freeTar(_OV_InstOper *pOper)
{
    _OV_InstTar *pTar = &pOper->body.tar;

    for (int32_t i = 0; i < pTar->iCount; i++)
        free(pTar->apMembers[i]);
    free(pTar->apMembers);
    free(pTar->aUnits);
    freeTexts({pTar->pArchive, pTar->pDestRoot});
}

static void freeMkdir(_OV_InstOper *pOper)
{
    free(pOper->body.mkdir.pPath);
}

static void freeLink(_OV_InstOper *pOper)
{
    freeTexts({pOper->body.link.pLink, pOper->body.link.pTarget, pOper->body.link.pThird});
}

static void freeFunction(_OV_InstOper *pOper)
{
    _OV_InstFunction *pFunction = &pOper->body.function;

    freeTexts({pFunction->pFunction, pFunction->pModule, pFunction->pData});
    if (pFunction->hModule)
        (void)dlclose(pFunction->hModule); /* nothing is left to do about a module that stays */
}

static void freeShortcut(_OV_InstOper *pOper)
{
    _OV_InstShortcut *pShortcut = &pOper->body.shortcut;

    freeTexts({pShortcut->pShort1, pShortcut->pShort2, pShortcut->pShort3, pShortcut->pShort4});
}

static void freeRegData(_OV_InstOper *pOper)
{
    _OV_InstRegData *pData = &pOper->body.regData;

    freeTexts({pData->pRootKey, pData->pKeyName, pData->pKeyValue, pData->pValue});
}

static void freeSelfReg(_OV_InstOper *pOper)
{
    free(pOper->body.selfReg.pModule);
}

/* In the order of OV_InstOperType; null for a kind without a body. */
static void (*const s_aFreeBody[])(_OV_InstOper *) = {
    nullptr, nullptr,   freeCopy,     freeCopy,     freeTar,     freeTar,     freeTar,
    freeTar, freeMkdir, freeLink,     freeLink,     nullptr,     nullptr,     nullptr,
    nullptr, nullptr,   freeFunction, freeShortcut, freeRegData, freeSelfReg,
};
static_assert(sizeof(s_aFreeBody) / sizeof(*s_aFreeBody) == OV_OPER_COUNT,
              "one row for each operation kind");

static void freeMainDlg(void *pData)
{
    _OV_InstMainDlg *pDialog = static_cast<_OV_InstMainDlg *>(pData);

    freeTexts({pDialog->pTitle, pDialog->pText});
}

static void freeCusDlg(void *pData)
{
    _OV_InstCusDlg *pDialog = static_cast<_OV_InstCusDlg *>(pData);

    freeTexts({pDialog->pTitle, pDialog->pText});
}

static void freeSuiteChoice(void *pData)
{
    free(static_cast<_OV_InstSuiteChoice *>(pData)->pText);
}

/* In the order of OV_InstConfigType. */
static const struct {
    size_t iSize;
    void (*freeOwn)(void *pData);
} s_aData[] = {
    {sizeof(_OV_InstMainDlg),     freeMainDlg    },
    {sizeof(_OV_InstCusDlg),      freeCusDlg     },
    {sizeof(_OV_InstSuiteChoice), freeSuiteChoice},
};
static_assert(sizeof(s_aData) / sizeof(*s_aData) == OV_CONFIG_COUNT,
              "one row for each configuration kind");

/* Nodes only: whom they refer to is the root's. */
static void freeNodes(_OV_InstPackageNode *pNode)
{
    while (pNode) {
        _OV_InstPackageNode *pNext = pNode->pNext;
        free(pNode);
        pNode = pNext;
    }
}

int getOperType(const char *pWord)
{
    return getKeyword(pWord, OVInstOperTkList);
}

int getConfigType(const char *pWord)
{
    return getKeyword(pWord, OVInstConfigTkList);
}

const int32_t *OV_instGetConfigChildren(const _OV_InstConfigList *pConfig, int *piMost)
{
    *piMost = 0;
    if (!pConfig || !pConfig->pData)
        return nullptr;
    if (pConfig->iType == OV_CONFIG_MAINDLG) {
        *piMost = OV_MAINDLG_CHILDREN;
        return static_cast<const _OV_InstMainDlg *>(pConfig->pData)->aChildren;
    }
    if (pConfig->iType == OV_CONFIG_CUSDLG) {
        *piMost = OV_CUSDLG_CHILDREN;
        return static_cast<const _OV_InstCusDlg *>(pConfig->pData)->aChildren;
    }
    return nullptr;
}

int OV_instCountMissingMembers(_OV_instCDinst *pRoot, const _OV_InstConfigList *pConfig)
{
    int iMost = 0;
    int iMissing = 0;
    const int32_t *aChildren = OV_instGetConfigChildren(pConfig, &iMost);

    for (int i = 0; i < iMost && aChildren[i] > 0; i++)
        iMissing += OV_instGetConfigFromId(pRoot, aChildren[i]) ? 0 : 1;
    return iMissing;
}

_OV_instCDinst *newCDinst()
{
    _OV_instCDinst *pRoot = newRecord<_OV_instCDinst>();

    if (!pRoot)
        return nullptr;
    pRoot->bChestRC = 1;
    pRoot->bUserOrgRes = 0; /* no key sets it: media would get pages that they never showed */
    pRoot->bDisplayLog = 1;
    return pRoot;
}

_OV_InstSuiteList *newSuite(_OV_instCDinst *pRoot)
{
    _OV_InstSuiteList *pSuite = newIndexed<_OV_InstSuiteList>(pRoot);

    if (pSuite)
        append(&pRoot->pSuiteHead, &pRoot->pSuiteTail, pSuite);
    return pSuite;
}

_OV_InstPackage *newPackage(_OV_instCDinst *pRoot)
{
    _OV_InstPackage *pPackage = newIndexed<_OV_InstPackage>(pRoot);
    _OV_InstPackageNode *pNode = newRecord<_OV_InstPackageNode>();

    if (!pPackage || !pNode) {
        free(pPackage);
        free(pNode);
        return nullptr;
    }
    pNode->pPackage = pPackage;
    append(&pRoot->pPackageHead, &pRoot->pPackageTail, pNode);
    return pPackage;
}

_OV_InstOper *newOper(_OV_instCDinst *pRoot)
{
    if (!pRoot || !pRoot->pPackageTail)
        return nullptr;

    _OV_InstPackage *pPackage = pRoot->pPackageTail->pPackage;
    _OV_InstOper *pOper = newRecord<_OV_InstOper>();
    if (pOper)
        append(&pPackage->pOperHead, &pPackage->pOperTail, pOper);
    return pOper;
}

_OV_InstConfigList *newConfig(_OV_instCDinst *pRoot, int iId, int iType)
{
    _OV_InstConfigList *pConfig = newIndexed<_OV_InstConfigList>(pRoot);

    if (!pConfig)
        return nullptr;
    reachConfigEnd(pRoot);
    pConfig->iId = iId;
    pConfig->iType = iType;
    pConfig->pParent = pRoot->pConfigGroup;
    if (pRoot->pConfigTail)
        pRoot->pConfigTail->pNext = pConfig;
    else
        pRoot->pConfigHead = pConfig;
    return pConfig;
}

void *newConfigData(_OV_InstConfigList *pConfig)
{
    pConfig->pData = calloc(1, s_aData[pConfig->iType].iSize);
    return pConfig->pData;
}

_OV_InstIcon *newIcon(_OV_InstConfigList *pConfig)
{
    pConfig->pIcon = newRecord<_OV_InstIcon>();
    return pConfig->pIcon;
}

void OV_instAddPackage2Suite(_OV_InstSuiteList *pSuite, _OV_InstPackage *pPackage)
{
    if (!pSuite) {
        fputs("Error: adding package to suite\n", stderr);
        return;
    }
    if (!pPackage)
        return;

    _OV_InstPackageNode *pNode = newRecord<_OV_InstPackageNode>();
    if (!pNode) {
        tellNoMemory();
        return;
    }
    pNode->pPackage = pPackage;
    append(&pSuite->pPackHead, &pSuite->pPackTail, pNode);
}

void OV_instFreeOper(_OV_InstOper *pOper)
{
    if (!pOper)
        return;
    if (pOper->iType >= 0 && pOper->iType < OV_OPER_COUNT && s_aFreeBody[pOper->iType])
        s_aFreeBody[pOper->iType](pOper);
    free(pOper);
}

void OV_instFreePackage(_OV_InstPackage *pPackage)
{
    if (!pPackage)
        return;
    for (_OV_InstOper *pOper = pPackage->pOperHead; pOper;) {
        _OV_InstOper *pNext = pOper->pNext;
        OV_instFreeOper(pOper);
        pOper = pNext;
    }
    freeTexts({pPackage->pName, pPackage->pLabel});
    free(pPackage);
}

void OV_instFreeSuite(_OV_InstSuiteList *pSuite)
{
    if (!pSuite)
        return;
    freeNodes(pSuite->pPackHead);
    free(pSuite->pName);
    free(pSuite);
}

void OV_instFreeConfig(_OV_InstConfigList *pConfig)
{
    if (!pConfig)
        return;
    if (pConfig->pData && pConfig->iType >= 0 && pConfig->iType < OV_CONFIG_COUNT)
        s_aData[pConfig->iType].freeOwn(pConfig->pData);
    free(pConfig->pData);
    if (pConfig->pIcon)
        freeTexts({pConfig->pIcon->pIcon1, pConfig->pIcon->pIcon2});
    free(pConfig->pIcon);
    free(pConfig);
}

void OV_instFreeCDinst(_OV_instCDinst *pRoot)
{
    if (!pRoot)
        return;
    while (_OV_InstConfigList *pConfig = pRoot->pConfigHead) {
        pRoot->pConfigHead = pConfig->pNext;
        OV_instFreeConfig(pConfig);
    }
    while (_OV_InstSuiteList *pSuite = pRoot->pSuiteHead) {
        pRoot->pSuiteHead = pSuite->pNext;
        OV_instFreeSuite(pSuite);
    }
    for (_OV_InstPackageNode *pNode = pRoot->pPackageHead; pNode; pNode = pNode->pNext)
        OV_instFreePackage(pNode->pPackage);
    freeNodes(pRoot->pPackageHead);
    freeTexts({pRoot->pSourceDir, pRoot->pInstallDir, pRoot->pProductName, pRoot->pProductVersion,
               pRoot->pProductDirectory, pRoot->pCdinstPath, pRoot->pLogFile, pRoot->pHistoryFile});
    freeIndex(pRoot->pIndex);
    free(pRoot);
}
