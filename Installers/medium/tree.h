/* An installed product as setup left it: where it is, what setup knows of it, and its medium. */
#ifndef OVMEDIUM_TREE_H
#define OVMEDIUM_TREE_H

#include <string>
#include <vector>

#include "engine/runFile.h"
#include "medium/commandLine.h"

/* The state that engine and description share (setupState.h) is set to it as long as it is open. */
struct OV_MediumTree {
    std::string dest;         /* the product's directory, with a slash at its end */
    std::string medium;       /* the medium's directory likewise; empty when it was not asked for */
    bool bUnfinished = false; /* there is a run file, which then is the state */
    bool bHistory = false;
    OV_RunFile state; /* product, version and packages, each once; those that count as installed */
    OV_RunFile history;
};

/* Finds the installation that the options name. What stands in the way is told: false. */
bool OV_mediumFindTree(const OV_MediumOptions *pOptions, OV_MediumTree *pTree);

/* The same, with the model of its medium (CDInstPtr) and its destination in use. */
bool OV_mediumOpenTree(const OV_MediumOptions *pOptions, OV_MediumTree *pTree);

/* Reads history and run file anew, as under a lock that was just taken. */
bool OV_mediumReadTree(OV_MediumTree *pTree);

/* Frees the model in use. */
void OV_mediumCloseTree();

/* The names of the packages that are pending. */
std::vector<std::string> OV_mediumPending(const OV_MediumTree *pTree);

#endif
