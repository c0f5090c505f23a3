#include "engine/sizes.h"

#include <cstdio>
#include <cstdlib>
#include <sys/statvfs.h>

#include "OVinstModule.h"
#include "description/configParts.h"
#include "engine/configWalk.h"
#include "engine/customFunc.h"
#include "engine/selection.h"
#include "engine/setupState.h"
#include "ut/OVinstFileUtils.h"
#include "ut/frontEnd.h"
#include "ut/owned.h"
#include "ut/strprint.h"

static const int64_t ONE_K = 1024;
static const int64_t ONE_MEG = 1024 * ONE_K;
static const int64_t ONE_GIG = 1024 * ONE_MEG;
static const int64_t READ_SIZES = 1; /* the selector of read sizes */

double OV_instTranslateBytes2Gigs(int64_t lBytes)
{
    return static_cast<double>(lBytes) / static_cast<double>(ONE_GIG);
}

double OV_instTranslateBytes2Megs(int64_t lBytes)
{
    return static_cast<double>(lBytes) / static_cast<double>(ONE_MEG);
}

double OV_instTranslateBytes2Ks(int64_t lBytes)
{
    return static_cast<double>(lBytes) / static_cast<double>(ONE_K);
}

int64_t OV_instGetAvailableSpace(const char *pPath)
{
    struct statvfs info;

    if (!pPath || !pPath[0] || statvfs(pPath, &info) < 0)
        return -1;
    return static_cast<int64_t>(info.f_frsize) * static_cast<int64_t>(info.f_bavail);
}

int64_t OV_instGetBlockSize(const char *pPath)
{
    OwnedText partition(OV_instGetPartitionDirectory(pPath));
    struct statvfs info;

    if (!partition || !partition.get()[0] || statvfs(partition.get(), &info) < 0)
        return -1;
    return static_cast<int64_t>(info.f_frsize);
}

/* Unsigned throughout: sums of absurd sizes wrap instead of being undefined. */
static uint64_t roundUp(uint64_t ulSize, uint64_t ulBlock)
{
    if (!ulSize)
        ulSize = 1;
    uint64_t ulRest = ulSize % ulBlock;
    return ulRest ? ulSize + (ulBlock - ulRest) : ulSize;
}

static uint64_t membersSize(const _OV_InstTar *pTar, uint64_t ulBlock)
{
    uint64_t ulSum = 0;

    for (int i = 0; i < pTar->iCount; i++)
        ulSum += roundUp(static_cast<uint64_t>(pTar->aUnits[i]), ulBlock);
    return ulSum;
}

static uint64_t functionSize(_OV_InstOper *pOper, const _OV_InstPackage *pPackage, int64_t lBlock,
                             const char *pFrom, const char *pDest)
{
    _OV_CustomData data = {};

    data.pTls = OV_instFrontEnd()->fpModuleShell();
    data.pDest = pDest;
    data.pFrom = pFrom;
    data.pData = pOper->body.function.pData;
    data.pPackageName = pPackage->pName;
    data.iSize = static_cast<int32_t>(lBlock);
    data.ovPass = OV_CUSTOM_SIZE;
    if (OV_instCustomFunction(pOper, &data, nullptr) != OV_INST_NO_ERROR) {
        OV_instTell("Exit", "Error: Internal error getting size of package '%s' (%s)\n",
                    pPackage->pName, pOper->body.function.pFunction);
        exit(1);
    }
    return static_cast<uint64_t>(static_cast<int64_t>(data.iSize));
}

int64_t OV_instGetPackageSize(_OV_InstPackage *pPackage, int64_t lBlock, const char *pFrom,
                              const char *pDest)
{
    uint64_t ulBlock = static_cast<uint64_t>(lBlock);
    uint64_t ulSum = 0;

    if (!pPackage || !lBlock)
        return -1;
    for (_OV_InstOper *pOper = pPackage->pOperHead; pOper; pOper = pOper->pNext) {
        if (pOper->iType >= OV_OPER_UNTAR && pOper->iType <= OV_OPER_UNTARZ2)
            ulSum += membersSize(&pOper->body.tar, ulBlock);
        else if (pOper->iType == OV_OPER_FUNCTION)
            ulSum += functionSize(pOper, pPackage, lBlock, pFrom, pDest);
        else
            ulSum += roundUp(static_cast<uint64_t>(pOper->lUnits), ulBlock);
    }
    return static_cast<int64_t>(ulSum);
}

/* Only the first suite gets totals: whoever reads them from the model finds them there. */
static void sumFirstSuite(_OV_InstSuiteList *pSuite)
{
    for (_OV_InstPackageNode *pNode = pSuite ? pSuite->pPackHead : nullptr; pNode;
         pNode = pNode->pNext) {
        if (pNode->pPackage->iCounted)
            continue;
        pSuite->lReadSize += pNode->pPackage->lSize;
        pSuite->lWriteSize += pNode->pPackage->lSize2;
        pNode->pPackage->iCounted = 1;
    }
}

int OV_instSetSizes(_OV_instCDinst *pRoot)
{
    const char *pDest = GetDestinationDirectory(pRoot);
    const char *pFrom = GetSourceDirectory(pRoot);

    if (!pRoot || !pRoot->pPackageHead || !pDest || !pDest[0])
        return -1;
    int64_t lBlock = OV_instGetBlockSize(pDest);
    if (lBlock == -1)
        return -1;
    for (_OV_InstPackageNode *pNode = pRoot->pPackageHead; pNode; pNode = pNode->pNext) {
        int64_t lRead = OV_instGetPackageSize(pNode->pPackage, 1, pFrom, pDest);
        int64_t lWrite = OV_instGetPackageSize(pNode->pPackage, lBlock, pFrom, pDest);

        if (lRead == -1 || lWrite == -1)
            return -1;
        pNode->pPackage->lSize = static_cast<uint64_t>(lRead);
        pNode->pPackage->lSize2 = static_cast<uint64_t>(lWrite);
    }
    sumFirstSuite(pRoot->pSuiteHead);
    return 0;
}

void OV_instResetPackagePasses(_OV_InstPackageNode *pPackages)
{
    for (; pPackages; pPackages = pPackages->pNext)
        pPackages->pPackage->iCounted = 0;
}

static uint64_t sizeOf(const _OV_InstPackage *pPackage, int64_t lSelector)
{
    return lSelector == READ_SIZES ? pPackage->lSize : pPackage->lSize2;
}

/* What a suite configuration itself contributes to a pass. */
static int64_t suitePass(const _OV_InstConfigList *pConfig, int64_t lSelector, int iPass)
{
    uint64_t ulSum = 0;

    if (iPass == 0 && (!pConfig->iInstalled || !pConfig->iSelected))
        return 0;
    for (_OV_InstPackageNode *pNode = OV_instGetConfigPackages(pConfig); pNode;
         pNode = pNode->pNext) {
        if (pNode->pPackage->iCounted)
            continue;
        ulSum += sizeOf(pNode->pPackage, lSelector);
        if (pConfig->iSelected == 1)
            pNode->pPackage->iCounted = 1;
    }
    return static_cast<int64_t>(ulSum);
}

/* How a member's size enters its group's: 1, -1, or 0 for not at all. */
static int64_t memberFactor(const _OV_InstConfigList *pGroup, const _OV_InstConfigList *pMember,
                            int iAbsolute)
{
    bool bMemberSame = pMember->iSelected == pMember->iInstalled;
    int64_t lBySelection = iAbsolute || pMember->iSelected ? 1 : -1;

    if (pGroup->iSelected == pGroup->iInstalled) {
        bool bSelectedGroup = pMember->iType == OV_CONFIG_CUSDLG && pMember->iSelected;
        return bMemberSame && !bSelectedGroup ? 0 : lBySelection;
    }
    if (pGroup->iSelected)
        return lBySelection;
    if (!bMemberSame && pMember->iSelected)
        return 0;
    return iAbsolute ? 1 : -1;
}

int64_t GetSizePass(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig, int64_t lSelector,
                    int iAbsolute, int iPass)
{
    uint64_t ulTotal = 0;
    OwnedWalk walk(OV_instStartWalk(pRoot, pConfig));

    while (OV_ConfigVisit *pVisit = OV_instNextEntry(walk.get())) {
        _OV_InstConfigList *pVisited = pVisit->pConfig;

        if (pVisited->iType == OV_CONFIG_MAINDLG) {
            fputs("Error: OV_instGetSize called on a MainDialog\n", stderr);
            exit(1);
        }
        /* A member's factor applies to all beneath it; sizes are marked even where it is 0. */
        if (pVisit->pGroup)
            pVisit->lFactor = pVisit->pGroup->lFactor *
                              memberFactor(pVisit->pGroup->pConfig, pVisited, iAbsolute);
        if (pVisited->iType == OV_CONFIG_SUITE)
            ulTotal += static_cast<uint64_t>(pVisit->lFactor) *
                       static_cast<uint64_t>(suitePass(pVisited, lSelector, iPass));
    }
    return static_cast<int64_t>(ulTotal);
}

static int64_t sizeInPasses(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig, int64_t lSelector,
                            int iAbsolute)
{
    OV_instResetPackagePasses(pRoot->pPackageHead);
    int64_t lStays = GetSizePass(pRoot, pConfig, lSelector, iAbsolute, 0);
    return lStays + GetSizePass(pRoot, pConfig, lSelector, iAbsolute, 1);
}

int64_t OV_instGetReadSize(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig, int iAbsolute)
{
    if (!pRoot || !pRoot->pPackageHead || !pConfig)
        return -1;
    return sizeInPasses(pRoot, pConfig, READ_SIZES, iAbsolute);
}

int64_t OV_instGetWriteSize(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig, int iAbsolute)
{
    const char *pDest = GetDestinationDirectory(pRoot);

    if (!pRoot || !pRoot->pPackageHead || !pConfig || !pDest)
        return -1;
    /* The block size is the selector; one that cannot be found (-1) picks write sizes as well. */
    return sizeInPasses(pRoot, pConfig, OV_instGetBlockSize(pDest), iAbsolute);
}

static uint64_t suiteBytes(const _OV_InstConfigList *pConfig, int64_t lSelector, int iAbsolute)
{
    uint64_t ulSum = 0;

    if (pConfig->iSelected == pConfig->iInstalled)
        return 0;
    for (_OV_InstPackageNode *pNode = OV_instGetConfigPackages(pConfig); pNode;
         pNode = pNode->pNext) {
        _OV_InstPackage *pPackage = pNode->pPackage;
        bool bRemoved = pPackage->iInstalled && !pPackage->iInUse;

        if (pPackage->iCounted++)
            continue;
        if ((pPackage->iInUse && !pPackage->iInstalled) || (bRemoved && iAbsolute))
            ulSum += sizeOf(pPackage, lSelector);
        else if (bRemoved)
            ulSum -= sizeOf(pPackage, lSelector);
    }
    return ulSum;
}

int64_t OV_instCountBytesToInstall(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig,
                                   int64_t lSelector, int iAbsolute)
{
    uint64_t ulSum = 0;

    if (!pRoot || !pConfig) {
        puts("Invalid arguments to OV_instCountBytesToInstall");
        return 0;
    }
    OwnedWalk walk(OV_instStartWalk(pRoot, pConfig));
    while (OV_ConfigVisit *pVisit = OV_instNextEntry(walk.get()))
        if (pVisit->pConfig->iType == OV_CONFIG_SUITE)
            ulSum += suiteBytes(pVisit->pConfig, lSelector, iAbsolute);
    return static_cast<int64_t>(ulSum);
}

int64_t OV_instGetTrueSize(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig, int64_t lSelector,
                           int iAbsolute)
{
    OV_instUpdateNumInUseFlag(pRoot, pConfig, 1);
    OV_instUpdateNumInUseFlag(pRoot, pConfig, 0);
    OV_instResetPackagePasses(pRoot ? pRoot->pPackageHead : nullptr);
    int64_t lBytes = OV_instCountBytesToInstall(pRoot, pConfig, lSelector, iAbsolute);
    OV_instResetPackagePasses(pRoot ? pRoot->pPackageHead : nullptr);
    return lBytes;
}

void diskSpace2String(int64_t lBytes, char *pText)
{
    int64_t lAmount = lBytes < 0 && lBytes != INT64_MIN ? -lBytes : lBytes;

    if (!pText)
        return;
    if (lAmount > ONE_GIG - 1)
        (void)snprintf(pText, OV_SIZE_TEXT, "%5.2f GB", OV_instTranslateBytes2Gigs(lAmount));
    else if (lAmount > ONE_MEG - 1)
        (void)snprintf(pText, OV_SIZE_TEXT, "%5.2f MB", OV_instTranslateBytes2Megs(lAmount));
    else
        (void)snprintf(pText, OV_SIZE_TEXT, "%5.2f KB", OV_instTranslateBytes2Ks(lAmount));
}

void OV_instGetFreeSpaceString(const char *pPath, char *pText)
{
    OwnedText partition(OV_instGetPartitionDirectory(pPath));

    if (partition)
        diskSpace2String(OV_instGetAvailableSpace(partition.get()), pText);
}

void OV_instGetRequiredSpaceString(const void *pHandle, _OV_InstConfigList *pConfig, char *pText)
{
    if (pHandle && pConfig && pText)
        diskSpace2String(OV_instGetWriteSize(CDInstPtr, pConfig, 0), pText);
}

int OV_instEnoughSpace(const _OV_InstConfigList *pConfig)
{
    char caNeeded[OV_SIZE_TEXT];
    char caFree[OV_SIZE_TEXT];
    OwnedText partition(OV_instGetPartitionDirectory(OV_instGetDestinationDirectory()));
    int64_t lNeeded = -1;

    if (pConfig) {
        _OV_InstConfigList asIfChosen = *pConfig;
        asIfChosen.iInstalled = asIfChosen.iSelected = 1;
        lNeeded = OV_instGetWriteSize(CDInstPtr, &asIfChosen, 0);
    }
    if (!partition)
        return 1;
    int64_t lFree = OV_instGetAvailableSpace(partition.get());
    if (lNeeded < lFree)
        return 1;
    diskSpace2String(lNeeded, caNeeded);
    diskSpace2String(lFree, caFree);
    OwnedText message(
        OV_instStrPrint("Not Enough Disk Space\n%s Needed, Only %s Available", caNeeded, caFree));
    (void)OV_instAsk(message.get(), "OK");
    return 0;
}
