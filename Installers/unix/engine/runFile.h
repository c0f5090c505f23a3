/* The file of a run: which packages a run is about to install or to remove, written before its
 * first change. It is there for as long as the run has not ended well, so that the next start knows
 * what is incomplete. It lies beside the history, "SetupFiles/.NAME.run". Lines: version of the
 * format, product name, product version, source directory, then one per package. */
#ifndef OVINST_ENGINE_RUNFILE_H
#define OVINST_ENGINE_RUNFILE_H

#include <string>
#include <vector>

#include "description/model.h"

enum OV_RunState { OV_RUN_INSTALLED, OV_RUN_INSTALLING, OV_RUN_REMOVING };

struct OV_RunPackage {
    std::string name;
    OV_RunState state;
};

struct OV_RunFile {
    std::string product;
    std::string version;
    std::string source; /* the directory that was installed from */
    std::vector<OV_RunPackage> packages;
    bool bUnreadable; /* there may be one, but it could not be read to its end */
};

/* ---- the run that this process carries out ---- */

/* Writes the file for a run over pConfig: what stays installed, and what the run is going to
 * install or remove by the marks and the in-use counts. It is on the disk when this returns. 0, or
 * -1 when it cannot be written; the run is then one that leaves no trace if it is killed. */
int OV_instBeginRunFile(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig, const char *pDest);

/* A step of the package failed: it stays pending. */
void OV_instKeepPending(const _OV_InstPackage *pPackage);

/* The same for a step that all packages share which are being installed with operations of a kind.
 */
void OV_instKeepPendingWith(OV_InstOperType kind);

/* The run is over, with what it did on the disk. Without a failed step of the run (runReport.h) the
 * file goes; otherwise one takes its place in which only the packages that were kept are pending.
 * 0, or -1 when that could not be written: the file is then as it was. */
int OV_instEndRunFile();

/* ---- the file of any tree ---- */

/* "SetupFiles/NAME" of a product's directory, NAME being the history's with another ending; for the
 * caller to free. Null without memory. */
char *OV_instRunFilePath(const char *pDest);

/* Whether a file that cannot be opened or read for this error may be there all the same. */
bool OV_instIsTrouble(int iError);

/* Reads the file of the product in pDest, with pRoot for the root destination, null for the one in
 * use. False when there is none, or none that can be believed: damaged, of another format, not
 * written by a user whom setup trusts. */
bool OV_instReadRunFile(const char *pDest, OV_RunFile *pRun, const char *pRoot = nullptr);

/* Puts a file of that content into the product's "SetupFiles", as a whole and on the disk when this
 * returns. With bKeepOwner it belongs to the owner of that directory, who could replace it anyway,
 * where the runner may give it away. 0 or -1. */
int OV_instWriteSetupFile(const char *pDest, const std::string &name, const std::string &text,
                          bool bKeepOwner);

/* What is pending has changed without a run: writes the state, or removes the file when nothing is
 * pending in it. The history has to name what is installed before that. 0 or -1. */
int OV_instSettleRunFile(const char *pDest, const OV_RunFile *pRun);

void OV_instRemoveRunFile(const char *pDest);

#endif
