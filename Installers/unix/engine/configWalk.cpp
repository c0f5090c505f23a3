#include "engine/configWalk.h"

#include <unordered_map>
#include <vector>

enum { MAX_VISITS = 64 };

/* What a walk remembers of a configuration that leads further. */
struct OV_ConfigPassage {
    int iVisits;
    bool bInside;
};

struct OV_ConfigWalk {
    _OV_instCDinst *pRoot;
    _OV_InstConfigList *pFirst; /* null once it was entered */
    bool bThroughPages;
    std::vector<OV_ConfigVisit> visits; /* what the walk is inside of, the innermost last */
    std::unordered_map<const _OV_InstConfigList *, OV_ConfigPassage> passages;
};

/* A suite leads no further, so any number of groups share it and nothing is remembered of it: most
 * configurations of a large description are suites, and a walk over one alone is cheap. */
static bool leadsFurther(const _OV_InstConfigList *pConfig)
{
    return pConfig->iType != OV_CONFIG_SUITE;
}

/* A new innermost visit. The visits of its groups move when there is no room left. */
static OV_ConfigVisit *addVisit(std::vector<OV_ConfigVisit> *pVisits)
{
    const bool bMoved = pVisits->size() == pVisits->capacity();
    OV_ConfigVisit *pNew = &pVisits->emplace_back();

    for (OV_ConfigVisit *pVisit = pNew; pVisit > pVisits->data(); pVisit--) {
        pVisit->pGroup = pVisit - 1;
        if (!bMoved)
            break;
    }
    return pNew;
}

static OV_ConfigVisit *enter(OV_ConfigWalk *pWalk, _OV_InstConfigList *pConfig)
{
    OV_ConfigVisit *pVisit = addVisit(&pWalk->visits);

    pVisit->pConfig = pConfig;
    pVisit->lFactor = 1;
    if (leadsFurther(pConfig)) {
        pVisit->pPassage = &pWalk->passages[pConfig];
        pVisit->pPassage->iVisits++;
        pVisit->pPassage->bInside = true;
    }
    return pVisit;
}

static void leave(OV_ConfigWalk *pWalk)
{
    OV_ConfigPassage *pPassage = pWalk->visits.back().pPassage;

    if (pPassage)
        pPassage->bInside = false;
    pWalk->visits.pop_back();
}

OV_ConfigWalk *OV_instStartWalk(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig,
                                bool bThroughPages)
{
    return new OV_ConfigWalk{pRoot, pConfig, bThroughPages, {}, {}};
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
    if (!pWalk->visits.empty() && pWalk->visits.back().bLeaving)
        leave(pWalk);
    if (pWalk->visits.empty())
        return nullptr;
    OV_ConfigVisit *pVisit = &pWalk->visits.back();
    if (_OV_InstConfigList *pMember = nextMember(pWalk, pVisit))
        return enter(pWalk, pMember);
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
