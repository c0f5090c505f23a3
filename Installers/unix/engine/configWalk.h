/* The one walk through a configuration and everything beneath it, on which all operations over the
 * tree are built. It visits a group's members in table order, skips ids that name nothing, and
 * needs no stack of the process. A description is not checked for being a tree: the walk does not
 * enter a configuration that it is already inside, and enters no group more than 64 times, so that
 * configurations which refer to each other end the walk instead of keeping it going. A walk keeps
 * all of this to itself and leaves no marks: walks may nest, and several may go on side by side. */
#ifndef OVINST_ENGINE_CONFIGWALK_H
#define OVINST_ENGINE_CONFIGWALK_H

#include <cstdint>
#include <memory>

#include "description/model.h"

struct OV_ConfigPassage;

/* A configuration being visited. bFound, bCleared and lFactor are the visitor's own: false, false
 * and 1 when the visit begins. */
struct OV_ConfigVisit {
    _OV_InstConfigList *pConfig;
    OV_ConfigVisit *pGroup; /* the visit of the group it was reached through; null at the start */
    bool bLeaving;          /* false before its members, true after them */
    bool bFound;
    bool bCleared;
    int64_t lFactor;
    int iNextChild; /* this and the next are the walk's own */
    OV_ConfigPassage *pPassage;
};

struct OV_ConfigWalk;

/* The walk over pConfig (null: visits nothing); free it in any case. With bThroughPages a
 * configuration that is neither a group nor a suite leads on to its successor in the description's
 * list, as if that were its one member. */
OV_ConfigWalk *OV_instStartWalk(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig,
                                bool bThroughPages = false);
void OV_instFreeWalk(OV_ConfigWalk *pWalk);

/* The next visit: each configuration is returned when it is entered and once more when it is left;
 * null at the end. The visit is valid until the next call. */
OV_ConfigVisit *OV_instNextVisit(OV_ConfigWalk *pWalk);

/* OV_instNextVisit without the leaving visits. */
OV_ConfigVisit *OV_instNextEntry(OV_ConfigWalk *pWalk);

struct WalkFreed {
    void operator()(OV_ConfigWalk *pWalk) const { OV_instFreeWalk(pWalk); }
};

using OwnedWalk = std::unique_ptr<OV_ConfigWalk, WalkFreed>;

#endif
