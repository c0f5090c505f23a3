/* A tree as it will be in the middle of a run that is only thought of: what is on the disk, with
 * what the steps so far would have made of it. Paths are absolute and clean. */
#ifndef OVMEDIUM_PLANNEDTREE_H
#define OVMEDIUM_PLANNEDTREE_H

#include <cstdint>
#include <map>
#include <string>

enum OV_PlannedKind { OV_PLANNED_NOTHING, OV_PLANNED_FILE, OV_PLANNED_DIRECTORY, OV_PLANNED_OTHER };

struct OV_PlannedObject {
    OV_PlannedKind kind = OV_PLANNED_NOTHING;
    int64_t lSize = 0;
    bool bOnDisk = false; /* it is what is there now */
    std::string source;   /* a file of that content, where the run copied it; else empty */
    std::string refusal;  /* why setup would not go there; kind is then "other" */
};

struct OV_PlannedTree {
    std::map<std::string, OV_PlannedObject> changed;
};

/* What would be at the path, behind links that setup follows; or the very object there. */
OV_PlannedObject OV_mediumPlanned(const OV_PlannedTree *pTree, const std::string &path);
OV_PlannedObject OV_mediumPlannedItself(const OV_PlannedTree *pTree, const std::string &path);

/* Whether the directory would hold nothing. */
bool OV_mediumPlannedEmpty(const OV_PlannedTree *pTree, const std::string &path);

#endif
