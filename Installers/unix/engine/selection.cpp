#include "engine/selection.h"

#include <cstdio>

#include "description/configParts.h"
#include "engine/configWalk.h"
#include "engine/setupState.h"

/* The slot above the top is written before an overflow is clamped, and read by a restore. */
static struct {
    _OV_InstConfigList *lastConfig;
    _OV_InstConfigList *slConfigs[OV_CONFIG_STORE + 1];
    int iConfigNum;
} s_store;

void OV_instMarkAllConfig(_OV_InstConfigList *pConfig, int iState)
{
    OwnedWalk walk(OV_instStartWalk(CDInstPtr, pConfig));

    while (OV_ConfigVisit *pVisit = OV_instNextEntry(walk.get()))
        pVisit->pConfig->iSelected = iState;
}

void OV_instResetAllConfig(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig, int iState)
{
    OwnedWalk walk(OV_instStartWalk(pRoot, pConfig));

    while (OV_ConfigVisit *pVisit = OV_instNextEntry(walk.get()))
        pVisit->pConfig->iInstalled = pVisit->pConfig->iSelected = iState;
}

static void markFound(_OV_InstConfigList *pConfig, int iState)
{
    pConfig->iInstalled = iState;
    pConfig->iSelected = iState;
}

/* Whether this suite configuration stands for pSuite; it was marked then. */
static bool markSuite(_OV_InstConfigList *pConfig, _OV_InstSuiteList *pSuite, int iState)
{
    if (OV_instGetConfigSuite(pConfig) != pSuite)
        return false;
    markFound(pConfig, iState);
    if (!pSuite)
        puts("Null pList to UpdateInstalledFlag");
    /* Installed whatever the state: the history that led here names them. */
    for (_OV_InstPackageNode *pNode = pSuite ? pSuite->pPackHead : nullptr; pNode;
         pNode = pNode->pNext)
        pNode->pPackage->iInstalled = 1;
    return true;
}

int OV_instFindAndMarkConfig(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig,
                             _OV_InstSuiteList *pSuite, int iState)
{
    bool bFound = false;
    OwnedWalk walk(OV_instStartWalk(pRoot, pConfig, true));

    while (OV_ConfigVisit *pVisit = OV_instNextVisit(walk.get())) {
        if (!pVisit->bLeaving)
            continue;
        if (pVisit->pConfig->iType == OV_CONFIG_SUITE)
            pVisit->bFound = markSuite(pVisit->pConfig, pSuite, iState);
        else if (pVisit->pConfig->iType != OV_CONFIG_CUSDLG)
            pVisit->bFound = false; /* a page leads on but reports nothing */
        else if (pVisit->bFound)
            markFound(pVisit->pConfig, iState);
        if (pVisit->pGroup)
            pVisit->pGroup->bFound = pVisit->pGroup->bFound || pVisit->bFound;
        else
            bFound = pVisit->bFound;
    }
    return bFound ? 1 : 0;
}

int OV_instIsAllConfigSelected(_OV_InstConfigList *pConfig, int iTestSelf)
{
    OwnedWalk walk(OV_instStartWalk(CDInstPtr, pConfig));

    while (OV_ConfigVisit *pVisit = OV_instNextEntry(walk.get())) {
        if (!pVisit->pGroup && !iTestSelf)
            continue;
        if (pVisit->pConfig->iType == OV_CONFIG_CUSDLG && !pVisit->pConfig->iSelected)
            return 0;
    }
    return 1;
}

void OV_instUpdateNumInUseFlag(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig, int iReset)
{
    if (!pRoot || !pConfig) {
        puts("Invalid args to UpdateNumInUseFlag");
        return;
    }
    OwnedWalk walk(OV_instStartWalk(pRoot, pConfig));
    while (OV_ConfigVisit *pVisit = OV_instNextEntry(walk.get())) {
        _OV_InstConfigList *pVisited = pVisit->pConfig;
        if (pVisited->iType == OV_CONFIG_CUSDLG)
            continue;
        if (pVisited->iType != OV_CONFIG_SUITE) {
            puts("invalid suite type to UpdateNumInUseFlag");
            continue;
        }
        if (!iReset && pVisited->iSelected != 1)
            continue;
        for (_OV_InstPackageNode *pNode = OV_instGetConfigPackages(pVisited); pNode;
             pNode = pNode->pNext)
            pNode->pPackage->iInUse = iReset ? 0 : pNode->pPackage->iInUse + 1;
    }
}

static int packagesAffected(const _OV_InstConfigList *pConfig)
{
    int iCount = 0;

    if (pConfig->iSelected == pConfig->iInstalled)
        return 0;
    for (_OV_InstPackageNode *pNode = OV_instGetConfigPackages(pConfig); pNode;
         pNode = pNode->pNext) {
        const _OV_InstPackage *pPackage = pNode->pPackage;
        if ((pPackage->iInUse != 0) != (pPackage->iInstalled != 0))
            iCount++;
    }
    return iCount;
}

int OV_instNumPackagesAffected(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig)
{
    int iCount = 0;

    if (!pRoot || !pConfig) {
        puts("Invalid args to NumPackagesAffected");
        return 0;
    }
    OwnedWalk walk(OV_instStartWalk(pRoot, pConfig));
    while (OV_ConfigVisit *pVisit = OV_instNextEntry(walk.get())) {
        if (pVisit->pConfig->iType == OV_CONFIG_SUITE)
            iCount += packagesAffected(pVisit->pConfig);
        else if (pVisit->pConfig->iType != OV_CONFIG_CUSDLG)
            puts("invalid suite type to NumPackagesAffected");
    }
    return iCount;
}

_OV_InstConfigList *OV_InstGetLastConfig()
{
    return s_store.lastConfig;
}

void OV_instSetLastDlg(_OV_InstConfigList *pConfig)
{
    s_store.slConfigs[s_store.iConfigNum++] = s_store.lastConfig;
    if (s_store.iConfigNum > OV_CONFIG_STORE) {
        puts("Overflow in config store");
        s_store.iConfigNum = OV_CONFIG_STORE;
    }
    s_store.lastConfig = pConfig;
}

_OV_InstConfigList *OV_instRestoreLastDlg()
{
    /* The slot above the last stored entry, not the entry itself: the dialogs find their way back
     * by the parent links, and what they get here has to agree with those. */
    s_store.lastConfig = s_store.slConfigs[s_store.iConfigNum--];
    if (s_store.iConfigNum < 0) {
        puts("Underflow in config store");
        s_store.iConfigNum = 0;
    }
    return s_store.lastConfig;
}
