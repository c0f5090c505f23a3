/* The steps of a run before it is made: the run is rehearsed, and each step is looked at against
 * the tree as the steps before it would have left it. */
#ifndef OVMEDIUM_PLANSTEPS_H
#define OVMEDIUM_PLANSTEPS_H

#include <cstdint>
#include <string>
#include <sys/types.h>
#include <vector>

#include "medium/runChoice.h"

struct OV_PlanStep {
    const char *pAction; /* "mkdir", "create", "replace", "same", "remove", "link", "call",
                            "registry" or "blocked" */
    int64_t lBytes;      /* what is written, or what is removed */
    std::string path;    /* of "call" the function, of "registry" what is registered */
    std::string detail;  /* the module of "call", the reason of "blocked" */
};

/* What a file system gets, and has: of a run that removes more than it writes nothing is needed. */
struct OV_PlanRoom {
    std::string directory; /* where it is mounted */
    int64_t lNeeded;
    int64_t lFree;
};

struct OV_Plan {
    std::vector<OV_PlanStep> steps;
    std::vector<OV_PlanRoom> rooms;
};

void OV_mediumPlanRun(const OV_RunChoice *pChoice, OV_Plan *pPlan);

/* Whether something is blocked, or does not fit. */
bool OV_mediumIsBlocked(const OV_Plan *pPlan);

/* A line for each step, or for the blocked ones alone, and for each file system. */
void OV_mediumPrintPlan(const OV_Plan *pPlan, bool bBlockedOnly);

#endif
