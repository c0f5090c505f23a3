/* Which configurations are installed and which are wanted, and what follows for their packages.
 * A configuration that is installed and no longer selected is to be removed, one that is selected
 * and not installed is to be installed; a package follows from its in-use count and its installed
 * flag. Inconsistencies are told on standard output and stop nothing. */
#ifndef OVINST_ENGINE_SELECTION_H
#define OVINST_ENGINE_SELECTION_H

#include "description/model.h"

enum { OV_CONFIG_STORE = 100 };

/* Set the state of a configuration and of all beneath it: the selected one only, or both. */
void OV_instMarkAllConfig(_OV_InstConfigList *pConfig, int iState);
void OV_instResetAllConfig(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig, int iState);

/* Marks the configurations at and below pConfig that stand for pSuite, and the groups that hold
 * them, installed and selected; every package of the suite becomes installed. 1 when found. */
int OV_instFindAndMarkConfig(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig,
                             _OV_InstSuiteList *pSuite, int iState);

/* 1 when every group beneath pConfig (and pConfig itself, with iTestSelf) is selected. Suites
 * count as selected always. */
int OV_instIsAllConfigSelected(_OV_InstConfigList *pConfig, int iTestSelf);

/* With iReset clears the in-use counts of all packages beneath pConfig; without it adds 1 to those
 * of every selected suite. Call it with 1, then with 0. */
void OV_instUpdateNumInUseFlag(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig, int iReset);

/* How many packages would be installed or removed, by the in-use counts. */
int OV_instNumPackagesAffected(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig);

/* The configuration whose dialog is shown, and the way back. */
_OV_InstConfigList *OV_InstGetLastConfig();
void OV_instSetLastDlg(_OV_InstConfigList *pConfig);
_OV_InstConfigList *OV_instRestoreLastDlg();

#endif
