/* The process-wide state of a run, in one place: the description in use and what was found out at
 * start-up. Getters that return a path use a static buffer which their next call overwrites. */
#ifndef OVINST_ENGINE_SETUPSTATE_H
#define OVINST_ENGINE_SETUPSTATE_H

#include <cstdint>

#include "description/model.h"

/* The description in use; null before it is read and after it is freed. */
extern _OV_instCDinst *CDInstPtr;

/* Header values; a zero-length string when there is none. */
const char *OV_instGetProductName();
const char *OV_instGetProductVersion();
const char *GetProductName(const _OV_instCDinst *pRoot);
const char *GetProductVersion(const _OV_instCDinst *pRoot);

/* The real path of the directory that the program was started from, and the directory of the
 * description. The running directory's buffer is handed out itself: the search for an installed
 * tree cuts it. The setters take a path with its trailing slash; -1 when it is too long. */
char *OV_instGetRunningDirectory();
const char *OV_instGetCdinstDirectory();
int OV_instSetRunningDirectory(const char *pDirectory);
int OV_instSetCdinstDirectory(const char *pDirectory);

/* The destinations, each with a trailing slash: the root (as chosen), the product's directory in
 * it, and the directory shared by products. Null without a description, without a root
 * destination, or (the latter two) without a product directory. */
const char *OV_instGetRootDestinationDirectory();
const char *OV_instGetDestinationDirectory();
const char *OV_instGetCommonDestinationDirectory();
const char *GetRootDestinationDirectory(const _OV_instCDinst *pRoot);
const char *GetDestinationDirectory(const _OV_instCDinst *pRoot);

/* Replaces the root destination by a copy of pPath and guards it: below it, strangers' symbolic
 * links are not followed from now on. -1 without a description or memory. */
int OV_instSetRootDestination(const char *pPath);

/* The resolved directory of the medium; the running directory when it cannot be resolved; null
 * without a description. */
const char *OV_instGetSourceDirectory();
const char *GetSourceDirectory(const _OV_instCDinst *pRoot);

/* OV_instGetSourceDirectory as it was found out last, as long as the description's directory is the
 * same: resolving it takes more system calls than copying a small file. */
const char *OV_instGetKnownSourceDirectory();

/* Makes pPath (absolute, or resolved now) the medium's directory and returns it. Ends the process
 * with status 1 when that cannot be done. */
const char *OV_instSetSourceDirectory(const char *pPath);

/* The root destination where neither an option nor the description names one. */
#define OV_DEFAULT_DESTINATION "/usr/Orvane/"

/* The directory of a product for what setup knows about it. */
#define OV_SETUP_FOLDER "SetupFiles"

/* The name of the history file, ".NAME.his". */
const char *OV_instGetHistoryFile();

/* Appended to shell commands whose output nobody wants. The text is not copied. */
const char *OV_instGetRedirect();
void OV_instSetRedirect(const char *pSuffix);

/* What all progress counts of a run add up to. */
uint64_t GetProgressBarTotalSize();
void SetProgressBarTotalSize(uint64_t ulTotal);

/* What the dialogs chose for installation. */
_OV_InstConfigList *GetConfigToInstall();
void SetConfigToInstall(_OV_InstConfigList *pConfig);

/* Whether an unattended run was told where to install. It then looks for no installed tree around
 * the medium. */
bool OV_instIsDestinationGiven();
void OV_instSetDestinationGiven(bool bGiven);

/* What kind of run this is. The mode is 0 for a new installation, 1 once the user has chosen to
 * maintain the one that is there. Whether the maintenance dialog was ever created is another
 * matter: it offers that choice, and removes all without it. */
extern int OV_instInstallationMode;
bool OV_instMaintenanceExists();
void OV_instSetMaintenanceExists();

/* Whether the run that was started last removes everything. */
bool OV_instRemovesAll();
void OV_instSetRemovesAll(bool bRemovesAll);

#endif
