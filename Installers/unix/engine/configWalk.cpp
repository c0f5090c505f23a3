#include "engine/configWalk.h"

#include <deque>
#include <unordered_map>

enum { MAX_VISITS = 64 };

/* What a walk remembers of a configuration that leads further. */
struct Passage {
    int iVisits;
    bool bInside;
};

/* A deque keeps the visits in place. */
struct OV_ConfigWalk {
    _OV_instCDinst *pRoot;
    _OV_InstConfigList *pFirst;
    bool bThroughPages;
    bool bLeave; /* the innermost visit was returned as left */
    std::deque<OV_ConfigVisit> visits;
    std::unordered_map<const _OV_InstConfigList *, Passage> passages;
};

/* A suite leads no further, so any number of groups share it and nothing is remembered of it: most
 * configurations of a large description are suites, and most walks are over one alone. */
static bool leadsFurther(const _OV_InstConfigList *pConfig)
{
    return pConfig->iType != OV_CONFIG_SUITE;
}

static OV_ConfigVisit *enter(OV_ConfigWalk *pWalk, _OV_InstConfigList *pConfig)
{
    OV_ConfigVisit *pGroup = pWalk->visits.empty() ? nullptr : &pWalk->visits.back();

    if (leadsFurther(pConfig)) {
        Passage *pPassage = &pWalk->passages[pConfig];
        pPassage->iVisits++;
        pPassage->bInside = true;
    }
    pWalk->visits.push_back({pConfig, pGroup, false, false, 1, 0});
    return &pWalk->visits.back();
}

static void leave(OV_ConfigWalk *pWalk)
{
    const _OV_InstConfigList *pConfig = pWalk->visits.back().pConfig;

    if (leadsFurther(pConfig))
        pWalk->passages[pConfig].bInside = false;
    pWalk->visits.pop_back();
}

OV_ConfigWalk *OV_instStartWalk(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig,
                                bool bThroughPages)
{
    return new OV_ConfigWalk{pRoot, pConfig, bThroughPages, false, {}, {}};
}

void OV_instFreeWalk(OV_ConfigWalk *pWalk)
{
    delete pWalk;
}

static bool mayEnter(const OV_ConfigWalk *pWalk, const _OV_InstConfigList *pConfig)
{
    if (!pConfig)
        return false;
    if (!leadsFurther(pConfig))
        return true;
    auto known = pWalk->passages.find(pConfig);
    return known == pWalk->passages.end() ||
           (!known->second.bInside && known->second.iVisits < MAX_VISITS);
}

/* The next member of a group that may be entered, or null. */
static _OV_InstConfigList *nextOfGroup(const OV_ConfigWalk *pWalk, OV_ConfigVisit *pVisit)
{
    int iMost = 0;
    const int32_t *aChildren = OV_instGetConfigChildren(pVisit->pConfig, &iMost);

    while (pVisit->iNextChild < iMost && aChildren[pVisit->iNextChild] >= 1) {
        _OV_InstConfigList *pMember =
            OV_instGetConfigFromId(pWalk->pRoot, aChildren[pVisit->iNextChild++]);
        if (mayEnter(pWalk, pMember))
            return pMember;
    }
    return nullptr;
}

static _OV_InstConfigList *nextMember(const OV_ConfigWalk *pWalk, OV_ConfigVisit *pVisit)
{
    const _OV_InstConfigList *pConfig = pVisit->pConfig;

    if (pConfig->iType == OV_CONFIG_CUSDLG)
        return nextOfGroup(pWalk, pVisit);
    if (pConfig->iType != OV_CONFIG_SUITE && pWalk->bThroughPages && !pVisit->iNextChild++)
        return mayEnter(pWalk, pConfig->pNext) ? pConfig->pNext : nullptr;
    return nullptr;
}

OV_ConfigVisit *OV_instNextVisit(OV_ConfigWalk *pWalk)
{
    if (_OV_InstConfigList *pFirst = pWalk->pFirst) {
        pWalk->pFirst = nullptr;
        return enter(pWalk, pFirst);
    }
    if (pWalk->bLeave) {
        pWalk->bLeave = false;
        leave(pWalk);
    }
    if (pWalk->visits.empty())
        return nullptr;
    OV_ConfigVisit *pVisit = &pWalk->visits.back();
    if (_OV_InstConfigList *pMember = nextMember(pWalk, pVisit))
        return enter(pWalk, pMember);
    pWalk->bLeave = true;
    pVisit->bLeaving = true;
    return pVisit;
}

OV_ConfigVisit *OV_instNextEntry(OV_ConfigWalk *pWalk)
{
    OV_ConfigVisit *pVisit;

    do {
        pVisit = OV_instNextVisit(pWalk);
    } while (pVisit && pVisit->bLeaving);
    return pVisit;
}
