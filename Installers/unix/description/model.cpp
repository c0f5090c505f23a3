#include "description/model.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <initializer_list>
#include <new>
#include <string_view>
#include <unordered_map>

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

/* The end of the configuration list, and the group that governs whatever is appended there. */
struct ConfigEnd {
    _OV_InstConfigList *pTail;
    _OV_InstConfigList *pGroup;
};

/* Maps beside the lists. The keys are the records' own names. A list may be appended to by hand,
 * so each map follows its list: the "seen" pointers stand on the last node that it holds. */
struct _OV_InstIndex {
    std::unordered_map<int, _OV_InstConfigList *> configs;
    std::unordered_map<std::string_view, _OV_InstSuiteList *> suites;
    std::unordered_map<std::string_view, _OV_InstPackage *> packages;
    std::unordered_multimap<std::string_view, _OV_InstPackage *> namesakes; /* all but the first */
    _OV_InstConfigList *pConfigSeen;
    _OV_InstSuiteList *pSuiteSeen;
    _OV_InstPackageNode *pPackageSeen;
    ConfigEnd configEnd;
};

static int getKeyword(const char *pWord, const char *const *apKeywords)
{
    for (int i = 0; pWord && apKeywords[i]; i++) {
        if (strcmp(pWord, apKeywords[i]) == 0)
            return i;
    }
    return -1;
}

/* Null without memory: every user of the index can do with the list alone. */
static _OV_InstIndex *getIndex(_OV_instCDinst *pRoot)
{
    if (!pRoot->pIndex)
        pRoot->pIndex = new (std::nothrow) _OV_InstIndex();
    return pRoot->pIndex;
}

/* The first node behind pSeen. */
template <typename Node> static Node *unseen(Node *pSeen, Node *pHead)
{
    return pSeen ? pSeen->pNext : pHead;
}

/* Each of these follows its list as far as it goes: to the end, to a record whose name is not read
 * yet, or until memory is short. The rest is looked through by walking. */
static void followConfigs(_OV_InstIndex *pIndex, _OV_InstConfigList *pHead)
{
    try {
        while (_OV_InstConfigList *pConfig = unseen(pIndex->pConfigSeen, pHead)) {
            pIndex->configs.emplace(pConfig->iId, pConfig); /* keeps the first of an id */
            pIndex->pConfigSeen = pConfig;
        }
    } catch (const std::bad_alloc &) {
        return;
    }
}

static void followSuites(_OV_InstIndex *pIndex, _OV_InstSuiteList *pHead)
{
    try {
        _OV_InstSuiteList *pSuite = nullptr;
        while ((pSuite = unseen(pIndex->pSuiteSeen, pHead)) && pSuite->pName) {
            pIndex->suites.emplace(pSuite->pName, pSuite);
            pIndex->pSuiteSeen = pSuite;
        }
    } catch (const std::bad_alloc &) {
        return;
    }
}

static void followPackages(_OV_InstIndex *pIndex, _OV_InstPackageNode *pHead)
{
    try {
        _OV_InstPackageNode *pNode = nullptr;
        while ((pNode = unseen(pIndex->pPackageSeen, pHead)) && pNode->pPackage->pName) {
            if (!pIndex->packages.emplace(pNode->pPackage->pName, pNode->pPackage).second)
                pIndex->namesakes.emplace(pNode->pPackage->pName, pNode->pPackage);
            pIndex->pPackageSeen = pNode;
        }
    } catch (const std::bad_alloc &) {
        return;
    }
}

static bool isNamed(const char *pName, const char *pWanted)
{
    return pName && strcmp(pName, pWanted) == 0;
}

/* Walks on to the list's last element. The first configuration governs until a custom dialog that
 * has a successor takes over; the last element itself never counts, which is meant. */
static void reachConfigEnd(ConfigEnd *pEnd, _OV_InstConfigList *pHead)
{
    if (!pEnd->pTail)
        pEnd->pTail = pEnd->pGroup = pHead;
    while (pEnd->pTail && pEnd->pTail->pNext) {
        if (pEnd->pTail->iType == OV_CONFIG_CUSDLG)
            pEnd->pGroup = pEnd->pTail;
        pEnd->pTail = pEnd->pTail->pNext;
    }
}

template <typename Record> static Record *newRecord()
{
    return static_cast<Record *>(calloc(1, sizeof(Record)));
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

_OV_InstConfigList *OV_instGetConfigFromId(_OV_instCDinst *pRoot, int iId)
{
    _OV_InstConfigList *pSeen = nullptr;

    if (!pRoot)
        return nullptr;
    if (_OV_InstIndex *pIndex = getIndex(pRoot)) {
        followConfigs(pIndex, pRoot->pConfigHead);
        auto found = pIndex->configs.find(iId);
        if (found != pIndex->configs.end())
            return found->second;
        pSeen = pIndex->pConfigSeen;
    }
    _OV_InstConfigList *pConfig = unseen(pSeen, pRoot->pConfigHead);
    while (pConfig && pConfig->iId != iId)
        pConfig = pConfig->pNext;
    return pConfig;
}

_OV_InstSuiteList *OV_instGetSuiteFromName(_OV_instCDinst *pRoot, const char *pName)
{
    _OV_InstSuiteList *pSeen = nullptr;

    if (!pRoot || !pName)
        return nullptr;
    if (_OV_InstIndex *pIndex = getIndex(pRoot)) {
        followSuites(pIndex, pRoot->pSuiteHead);
        auto found = pIndex->suites.find(pName);
        if (found != pIndex->suites.end())
            return found->second;
        pSeen = pIndex->pSuiteSeen;
    }
    _OV_InstSuiteList *pSuite = unseen(pSeen, pRoot->pSuiteHead);
    while (pSuite && !isNamed(pSuite->pName, pName))
        pSuite = pSuite->pNext;
    return pSuite;
}

_OV_InstPackage *OV_instGetPackageFromName(_OV_instCDinst *pRoot, const char *pName)
{
    _OV_InstPackageNode *pSeen = nullptr;

    if (!pRoot || !pName)
        return nullptr;
    if (_OV_InstIndex *pIndex = getIndex(pRoot)) {
        followPackages(pIndex, pRoot->pPackageHead);
        auto found = pIndex->packages.find(pName);
        if (found != pIndex->packages.end())
            return found->second;
        pSeen = pIndex->pPackageSeen;
    }
    _OV_InstPackageNode *pNode = unseen(pSeen, pRoot->pPackageHead);
    while (pNode && !isNamed(pNode->pPackage->pName, pName))
        pNode = pNode->pNext;
    return pNode ? pNode->pPackage : nullptr;
}

void OV_instMarkPackageInstalled(_OV_instCDinst *pRoot, const char *pName)
{
    _OV_InstPackage *pFirst = OV_instGetPackageFromName(pRoot, pName);
    _OV_InstPackageNode *pSeen = nullptr;

    if (!pFirst)
        return;
    pFirst->iInstalled = 1;
    if (_OV_InstIndex *pIndex = pRoot->pIndex) {
        auto others = pIndex->namesakes.equal_range(pName);
        for (auto other = others.first; other != others.second; ++other)
            other->second->iInstalled = 1;
        pSeen = pIndex->pPackageSeen;
    }
    for (_OV_InstPackageNode *pNode = unseen(pSeen, pRoot->pPackageHead); pNode;
         pNode = pNode->pNext) {
        if (isNamed(pNode->pPackage->pName, pName))
            pNode->pPackage->iInstalled = 1;
    }
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

_OV_instCDinst *newCDinst()
{
    _OV_instCDinst *pRoot = newRecord<_OV_instCDinst>();

    if (!pRoot)
        return nullptr;
    pRoot->bChestRC = 1;
    pRoot->bUserOrgRes = 0; /* never set by any description, which is meant */
    pRoot->bDisplayLog = 1;
    return pRoot;
}

_OV_InstSuiteList *newSuite(_OV_instCDinst *pRoot)
{
    _OV_InstSuiteList *pSuite = newRecord<_OV_InstSuiteList>();

    if (pSuite)
        append(&pRoot->pSuiteHead, &pRoot->pSuiteTail, pSuite);
    return pSuite;
}

_OV_InstPackage *newPackage(_OV_instCDinst *pRoot)
{
    _OV_InstPackage *pPackage = newRecord<_OV_InstPackage>();
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
    _OV_InstConfigList *pConfig = newRecord<_OV_InstConfigList>();
    _OV_InstIndex *pIndex = getIndex(pRoot);
    ConfigEnd fromHead = {};
    ConfigEnd *pEnd = pIndex ? &pIndex->configEnd : &fromHead;

    if (!pConfig)
        return nullptr;
    reachConfigEnd(pEnd, pRoot->pConfigHead);
    pConfig->iId = iId;
    pConfig->iType = iType;
    pConfig->pParent = pEnd->pGroup;
    if (pEnd->pTail)
        pEnd->pTail->pNext = pConfig;
    else
        pRoot->pConfigHead = pConfig;
    return pConfig;
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
        fprintf(stderr, "%s\n", "Out of memory");
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
    if (pConfig->pData && pConfig->iType == OV_CONFIG_MAINDLG) {
        _OV_InstMainDlg *pDialog = static_cast<_OV_InstMainDlg *>(pConfig->pData);
        freeTexts({pDialog->pTitle, pDialog->pText});
    } else if (pConfig->pData && pConfig->iType == OV_CONFIG_CUSDLG) {
        _OV_InstCusDlg *pDialog = static_cast<_OV_InstCusDlg *>(pConfig->pData);
        freeTexts({pDialog->pTitle, pDialog->pText});
    } else if (pConfig->pData && pConfig->iType == OV_CONFIG_SUITE) {
        free(static_cast<_OV_InstSuiteChoice *>(pConfig->pData)->pText);
    }
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
    delete pRoot->pIndex;
    free(pRoot);
}
