/* What a run of setup is to be about, by a command's options: the medium, the destination, and the
 * configuration with its marks. */
#ifndef OVMEDIUM_RUNCHOICE_H
#define OVMEDIUM_RUNCHOICE_H

#include "description/model.h"
#include "medium/commandLine.h"

struct OV_RunChoice {
    _OV_InstConfigList *pConfig;
    bool bRemoveAll;
    bool bInstalled; /* there is an installation */
};

/* Reads the medium's description into CDInstPtr, sets the destination, and marks what is installed
 * and what is wanted:
 * - with --suite those suites and no other, in a configuration made of all suites;
 * - with --remove-all nothing, as the dialogs' button does;
 * - otherwise what an unattended run of setup would.
 * With bToRun modules are loaded and sizes computed as setup does it, else they are only looked at.
 * What stands in the way is told: false. OV_mediumEndRunChoice frees the model. */
bool OV_mediumChooseRun(const OV_MediumOptions *pOptions, bool bToRun, OV_RunChoice *pChoice);
void OV_mediumEndRunChoice();

#endif
