#include "engine/pending.h"

#include "description/configParts.h"
#include "engine/configWalk.h"
#include "engine/selection.h"

/* What is pending of a suite. One that was being removed was installed as a whole; one that was
 * being installed is offered again when nothing else of it is missing. */
static OV_Pending pendingOf(const _OV_InstSuiteList *pSuite)
{
    bool bInstalling = false;
    bool bMissing = false;

    for (auto *pNode = pSuite->pPackHead; pNode; pNode = pNode->pNext) {
        const _OV_InstPackage *pPackage = pNode->pPackage;
        if (pPackage->iPending == OV_PENDING_REMOVAL)
            return OV_PENDING_REMOVAL;
        if (pPackage->iPending == OV_PENDING_INSTALL)
            bInstalling = true;
        else if (!pPackage->iInstalled)
            bMissing = true;
    }
    return bInstalling && !bMissing ? OV_PENDING_INSTALL : OV_PENDING_NONE;
}

/* ---- marking ---- */

static void mark(_OV_InstConfigList *pConfig, OV_Pending pending)
{
    pConfig->iPending = pending;
    pConfig->iSelected = OV_instFirstChoice(pConfig);
}

static void markSuite(_OV_InstConfigList *pConfig, _OV_InstSuiteList *pSuite)
{
    const OV_Pending pending = pendingOf(pSuite);

    if (pending == OV_PENDING_NONE)
        return;
    /* Also where some of its packages are gone already: else the rest would stay for ever. */
    if (pending == OV_PENDING_REMOVAL)
        pSuite->iState = pConfig->iInstalled = 1;
    mark(pConfig, pending);
}

/* A group is installed and chosen with the first of its members that is, and cleared with the last.
 */
static void markGroup(const OV_ConfigVisit *pVisit)
{
    _OV_InstConfigList *pGroup = pVisit->pConfig;

    if (pVisit->bCleared)
        pGroup->iInstalled = 1;
    if (pVisit->bFound && !pGroup->iInstalled)
        mark(pGroup, OV_PENDING_INSTALL);
    else if (pVisit->bFound)
        mark(pGroup, OV_PENDING_NONE);
    else if (pVisit->bCleared)
        mark(pGroup, OV_PENDING_REMOVAL);
}

void OV_instMarkPending(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig)
{
    if (!OV_instHasPending(pRoot))
        return;
    OwnedWalk walk(OV_instStartWalk(pRoot, pConfig, true));
    while (OV_ConfigVisit *pVisit = OV_instNextVisit(walk.get())) {
        _OV_InstConfigList *pVisited = pVisit->pConfig;

        if (!pVisit->bLeaving)
            continue;
        if (_OV_InstSuiteList *pSuite = OV_instGetConfigSuite(pVisited)) {
            markSuite(pVisited, pSuite);
            pVisit->bFound = pVisited->iSelected != 0;
            pVisit->bCleared = pVisited->iPending == OV_PENDING_REMOVAL;
        } else if (pVisited->iType == OV_CONFIG_CUSDLG) {
            markGroup(pVisit);
        }
        if (!pVisit->pGroup)
            continue;
        pVisit->pGroup->bFound = pVisit->pGroup->bFound || pVisit->bFound;
        pVisit->pGroup->bCleared = pVisit->pGroup->bCleared || pVisit->bCleared;
    }
}

bool OV_instHasPending(const _OV_instCDinst *pRoot)
{
    for (auto *pNode = pRoot->pPackageHead; pNode; pNode = pNode->pNext)
        if (pNode->pPackage->iPending)
            return true;
    return false;
}

int OV_instFirstChoice(const _OV_InstConfigList *pConfig)
{
    if (pConfig->iPending == OV_PENDING_NONE)
        return pConfig->iInstalled;
    return pConfig->iPending == OV_PENDING_INSTALL;
}

/* ---- choices against it ---- */

/* What was being removed and is chosen again is there in part only: it is installed anew. */
static void installAnew(_OV_InstConfigList *pConfig, _OV_InstSuiteList *pSuite)
{
    pSuite->iState = 0;
    pConfig->iInstalled = 0;
    for (auto *pNode = pSuite->pPackHead; pNode; pNode = pNode->pNext)
        if (pNode->pPackage->iPending == OV_PENDING_REMOVAL)
            pNode->pPackage->iInstalled = 0;
}

/* What was being installed and is cleared is removed, but for what another choice needs. */
static void removeAgain(_OV_InstConfigList *pConfig, _OV_InstSuiteList *pSuite)
{
    pSuite->iState = 1;
    pConfig->iInstalled = 1;
    for (auto *pNode = pSuite->pPackHead; pNode; pNode = pNode->pNext)
        if (pNode->pPackage->iPending == OV_PENDING_INSTALL && !pNode->pPackage->iInUse)
            pNode->pPackage->iInstalled = 1;
}

void OV_instSettlePending(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig)
{
    if (!OV_instHasPending(pRoot))
        return;
    OV_instUpdateNumInUseFlag(pRoot, pConfig, 1);
    OV_instUpdateNumInUseFlag(pRoot, pConfig, 0);
    OwnedWalk walk(OV_instStartWalk(pRoot, pConfig));
    while (OV_ConfigVisit *pVisit = OV_instNextEntry(walk.get())) {
        _OV_InstConfigList *pVisited = pVisit->pConfig;
        _OV_InstSuiteList *pSuite = OV_instGetConfigSuite(pVisited);

        if (pSuite && pVisited->iPending == OV_PENDING_REMOVAL && pVisited->iSelected)
            installAnew(pVisited, pSuite);
        else if (pSuite && pVisited->iPending == OV_PENDING_INSTALL && !pVisited->iSelected)
            removeAgain(pVisited, pSuite);
    }
}
