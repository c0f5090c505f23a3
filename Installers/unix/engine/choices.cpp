#include "engine/choices.h"

#include <cstdio>

#include "description/configParts.h"
#include "engine/configWalk.h"
#include "engine/pending.h"
#include "engine/setupState.h"

bool OV_instIsHidden(const _OV_InstConfigList *pConfig)
{
    const _OV_InstSuiteList *pSuite = OV_instGetConfigSuite(pConfig);

    return pSuite && pSuite->iHidden;
}

bool OV_instIsVital(const _OV_InstConfigList *pConfig)
{
    const _OV_InstSuiteList *pSuite = OV_instGetConfigSuite(pConfig);

    return pSuite && pSuite->iVital;
}

bool OV_instIsSingleSuite(const _OV_InstConfigList *pConfig)
{
    int iMost = 0;
    const int32_t *aChildren = OV_instGetConfigChildren(pConfig, &iMost);

    if (!aChildren || pConfig->iType != OV_CONFIG_CUSDLG || !aChildren[0] || aChildren[1])
        return false;
    const _OV_InstConfigList *pOnly = OV_instGetConfigFromId(CDInstPtr, aChildren[0]);
    return pOnly && pOnly->iType == OV_CONFIG_SUITE;
}

/* ---- counting ---- */

static bool isClearedGroup(const _OV_InstConfigList *pConfig)
{
    return pConfig && pConfig->iType == OV_CONFIG_CUSDLG && !pConfig->iSelected &&
           pConfig->iInstalled;
}

void OV_instCountChoices(_OV_InstConfigList *pConfig, const _OV_InstConfigList *pChanged,
                         OV_ChoiceCounts *pCounts)
{
    const bool bCleared = isClearedGroup(pChanged);
    OwnedWalk walk(OV_instStartWalk(CDInstPtr, pConfig));

    while (OV_ConfigVisit *pVisit = OV_instNextEntry(walk.get())) {
        const _OV_InstConfigList *pSuite = pVisit->pConfig;

        if (pSuite->iType != OV_CONFIG_SUITE)
            continue;
        if (bCleared)
            pCounts->iAdd += pSuite->iInstalled ? 1 : 0;
        else if (pSuite->iSelected && pSuite->iSelected != pSuite->iInstalled)
            pCounts->iRemove++;
        else if (pSuite->iSelected != pSuite->iInstalled)
            pCounts->iAdd++;
    }
}

/* ---- giving up ---- */

void OV_instResetChoices(const _OV_InstConfigList *pConfig)
{
    int iMost = 0;
    const int32_t *aChildren = OV_instGetConfigChildren(pConfig, &iMost);

    for (int i = 0; i < iMost && aChildren[i] > 0; i++)
        if (_OV_InstConfigList *pChild = OV_instGetConfigFromId(CDInstPtr, aChildren[i]))
            pChild->iSelected = OV_instFirstChoice(pChild);
}

void OV_instUndoChoices(_OV_InstConfigList *pConfig)
{
    OwnedWalk walk(OV_instStartWalk(CDInstPtr, pConfig));

    while (OV_ConfigVisit *pVisit = OV_instNextEntry(walk.get()))
        if (pVisit->pGroup)
            pVisit->pConfig->iSelected = OV_instFirstChoice(pVisit->pConfig);
}

/* ---- flags ---- */

static void tellMissing(const _OV_InstConfigList *pGroup, const char *pMessage)
{
    for (int i = OV_instCountMissingMembers(CDInstPtr, pGroup); i > 0; i--)
        puts(pMessage);
}

void SetSelectedFlags(_OV_InstConfigList *pConfig, int iValue)
{
    /* Misspelt: who looks for the text knows it so. */
    static const char s_caMissing[] = "Error in SetSelectedFlafs";
    OwnedWalk walk(OV_instStartWalk(CDInstPtr, pConfig));

    if (!pConfig)
        puts(s_caMissing);
    while (OV_ConfigVisit *pVisit = OV_instNextEntry(walk.get())) {
        pVisit->pConfig->iSelected = iValue;
        if (pVisit->pConfig->iType != OV_CONFIG_CUSDLG)
            continue;
        pVisit->pConfig->iInstalled = 1;
        tellMissing(pVisit->pConfig, s_caMissing);
    }
}

void SetInstalledFlags(_OV_InstConfigList *pConfig, int iValue)
{
    static const char s_caMissing[] = "Error in SetInstalledFlags";
    OwnedWalk walk(OV_instStartWalk(CDInstPtr, pConfig));

    if (!pConfig)
        puts(s_caMissing);
    while (OV_ConfigVisit *pVisit = OV_instNextEntry(walk.get())) {
        if (pVisit->pConfig->iType == OV_CONFIG_CUSDLG)
            tellMissing(pVisit->pConfig, s_caMissing);
        if (_OV_InstSuiteList *pSuite = OV_instGetConfigSuite(pVisit->pConfig))
            pSuite->iState = iValue;
    }
}
