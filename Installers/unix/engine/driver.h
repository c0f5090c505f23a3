/* Carrying out a configuration's operations for one pass, in one mode. */
#ifndef OVINST_ENGINE_DRIVER_H
#define OVINST_ENGINE_DRIVER_H

#include <cstdio>

#include "description/model.h"
#include "OVinstModule.h"

enum { OV_MAX_REMOVED_DIRS = 1000 };

/* Whether the mode is about a suite's packages, by its marks and those of its configuration, and
 * whether it leaves one of them alone. */
bool OV_instIsHandedOver(const _OV_InstConfigList *pConfig, const _OV_InstSuiteList *pSuite,
                         OV_InstMode iMode);
bool OV_instIsLeftAlone(const _OV_InstPackage *pPackage, OV_InstMode iMode);

/* An operation as it comes up in a run. */
struct OV_RunStep {
    _OV_InstOper *pOper;
    const char *pDest; /* the product's directory */
    OV_CustomPass ovPass;
    OV_InstMode iMode;
};

/* Who is told of a run's steps in their order, in place of carrying them out: each operation in
 * each pass in which it does something, and each directory that is removed when it is empty. */
struct OV_Rehearsal {
    void *pContext;
    void (*fpStep)(void *pContext, const OV_RunStep *pStep);
    void (*fpRemoveDirectory)(void *pContext, const char *pPath);
};

/* Makes all runs of this process rehearsals, which change nothing; null ends it. */
void OV_instRehearse(const OV_Rehearsal *pRehearsal);

/* Where an operation works: the path that Copy, CopyZ and Mkdir make, the directory of a link or of
 * an archive. A new string, or null for a kind that has no place, for want of a destination, and
 * without memory. */
char *OV_instPlaceOf(const _OV_InstOper *pOper, const char *pDest);

/* Walks pConfig down to its suites and hands those that the mode is about to
 * OV_instInstallPackList; in the INIT pass of either mode selected suites are written into the
 * history. 0, or the OR of all failures. */
int OV_instInstallConfig(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig, const char *pDest,
                         FILE *pStream, OV_CustomPass ovPass, OV_InstMode iMode);

/* Carries out the operations of every package that has not yet seen this pass. 0, the OR of the
 * failures that count, 1 at once for an operation of no known kind, -1 for bad input. */
int OV_instInstallPackList(_OV_InstPackageNode *pPackages, const char *pFrom, const char *pDest,
                           FILE *pStream, OV_CustomPass ovPass, OV_InstMode iMode,
                           const char *pSuiteName);

#endif
