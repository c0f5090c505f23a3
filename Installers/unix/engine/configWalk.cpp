#include "engine/configWalk.h"

#include <cstdlib>
#include <deque>
#include <new>

enum { MAX_VISITS = 64 };

/* The marks of visits stand in the configurations themselves; iVisits counts for the walk named by
 * iWalk, iInside is cleared when the visit is left or the walk is freed. A deque keeps the visits
 * in place. */
struct OV_ConfigWalk {
    _OV_instCDinst *pRoot;
    _OV_InstConfigList *pFirst;
    int iThroughPages;
    std::deque<OV_ConfigVisit> *pVisits;
    int iLeave; /* the innermost visit was returned as left */
};

static int s_iLastWalk = 0;

static void enter(OV_ConfigWalk *pWalk, _OV_InstConfigList *pConfig)
{
    OV_ConfigVisit *pGroup = pWalk->pVisits->empty() ? nullptr : &pWalk->pVisits->back();

    pConfig->iInside = 1;
    pConfig->iVisits = pConfig->iWalk == s_iLastWalk ? pConfig->iVisits + 1 : 1;
    pConfig->iWalk = s_iLastWalk;
    pWalk->pVisits->push_back({pConfig, pGroup, 0, 0, 1, 0});
}

OV_ConfigWalk *OV_instStartWalk(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig,
                                int iThroughPages)
{
    OV_ConfigWalk *pWalk =
        new (std::nothrow) OV_ConfigWalk{pRoot, pConfig, iThroughPages, nullptr, 0};

    if (!pWalk)
        return nullptr;
    pWalk->pVisits = new (std::nothrow) std::deque<OV_ConfigVisit>;
    if (!pWalk->pVisits) {
        delete pWalk;
        return nullptr;
    }
    s_iLastWalk++;
    return pWalk;
}

void OV_instFreeWalk(OV_ConfigWalk *pWalk)
{
    if (!pWalk)
        return;
    for (OV_ConfigVisit &visit : *pWalk->pVisits)
        visit.pConfig->iInside = 0;
    delete pWalk->pVisits;
    delete pWalk;
}

static bool mayEnter(const _OV_InstConfigList *pConfig)
{
    if (!pConfig || pConfig->iInside)
        return false;
    if (pConfig->iType == OV_CONFIG_SUITE) /* leads no further, so any number of groups share it */
        return true;
    return pConfig->iWalk != s_iLastWalk || pConfig->iVisits < MAX_VISITS;
}

/* The next member of a group that may be entered, or null. */
static _OV_InstConfigList *nextOfGroup(OV_ConfigWalk *pWalk, OV_ConfigVisit *pVisit)
{
    int iMost = 0;
    const int32_t *aChildren = OV_instGetConfigChildren(pVisit->pConfig, &iMost);

    while (pVisit->iNextChild < iMost && aChildren[pVisit->iNextChild] >= 1) {
        _OV_InstConfigList *pMember =
            OV_instGetConfigFromId(pWalk->pRoot, aChildren[pVisit->iNextChild++]);
        if (mayEnter(pMember))
            return pMember;
    }
    return nullptr;
}

static _OV_InstConfigList *nextMember(OV_ConfigWalk *pWalk, OV_ConfigVisit *pVisit)
{
    _OV_InstConfigList *pConfig = pVisit->pConfig;

    if (pConfig->iType == OV_CONFIG_CUSDLG)
        return nextOfGroup(pWalk, pVisit);
    if (pConfig->iType != OV_CONFIG_SUITE && pWalk->iThroughPages && !pVisit->iNextChild++)
        return mayEnter(pConfig->pNext) ? pConfig->pNext : nullptr;
    return nullptr;
}

OV_ConfigVisit *OV_instNextVisit(OV_ConfigWalk *pWalk)
{
    _OV_InstConfigList *pMember;

    if (!pWalk)
        return nullptr;
    if (pWalk->pFirst) {
        enter(pWalk, pWalk->pFirst);
        pWalk->pFirst = nullptr;
        return &pWalk->pVisits->back();
    }
    if (pWalk->iLeave) {
        pWalk->iLeave = 0;
        pWalk->pVisits->back().pConfig->iInside = 0;
        pWalk->pVisits->pop_back();
    }
    if (pWalk->pVisits->empty())
        return nullptr;
    pMember = nextMember(pWalk, &pWalk->pVisits->back());
    if (pMember) {
        enter(pWalk, pMember);
        return &pWalk->pVisits->back();
    }
    pWalk->iLeave = 1;
    pWalk->pVisits->back().iLeaving = 1;
    return &pWalk->pVisits->back();
}

OV_ConfigVisit *OV_instNextEntry(OV_ConfigWalk *pWalk)
{
    OV_ConfigVisit *pVisit;

    do {
        pVisit = OV_instNextVisit(pWalk);
    } while (pVisit && pVisit->iLeaving);
    return pVisit;
}
