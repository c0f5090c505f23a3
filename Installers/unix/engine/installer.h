/* The installing child, and starting it. A run works in a forked child that writes one record per
 * event into a pipe (records.h); the parent reads them and answers with signals only. */
#ifndef OVINST_ENGINE_INSTALLER_H
#define OVINST_ENGINE_INSTALLER_H

#include <cstdio>
#include <sys/types.h>

#include "description/model.h"
#include "engine/driver.h"

/* Starts a run over pConfig. Without dialogs it returns when the child is done and has been
 * waited for; its exit status is not part of the result. 0, or 1 when the run could not be
 * started (told to the user). */
int OV_instCommandLineInstall(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig, int iRemoveAll);

/* The child's work, from the start marker to the completion marker: the OR of all passes. The
 * stream is closed at the end. */
int OV_instRunInstallation(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig, int iRemoveAll,
                           FILE *pStream);

/* Tells of every step of such a run (driver.h) and does none: by the marks that a run would find.
 * Of those, what is pending and was chosen otherwise is settled, as a run would do it. */
void OV_instRehearseInstallation(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig,
                                 const OV_Rehearsal *pRehearsal);

/* A bare fork with a pipe, for an interface of another kind; nothing uses it today. 0 in both
 * processes, -1 when there can be no child; without a pipe the process ends with status 1. */
int OV_instInterfaceInstall(_OV_instCDinst *pRoot, const char *pPath);

/* What the fork has left to this process: the end of the pipe that it needs, for the caller to
 * close, and the child's id, 0 in the child. */
struct OV_InterfaceRun {
    FILE *pStream; /* null without memory */
    pid_t iChild;
};
const OV_InterfaceRun *OV_instInterfaceRun();

/* The handler of the child's exit; it only installs itself again. */
void OV_instChildHandler(int iSignal);

#endif
