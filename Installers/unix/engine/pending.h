/* What a run that did not end well has left to be completed, as marks of the model. A suite that it
 * was installing is offered as chosen and not installed, one that it was removing as installed and
 * not chosen: so the next run completes both, unless the user decides otherwise. */
#ifndef OVINST_ENGINE_PENDING_H
#define OVINST_ENGINE_PENDING_H

#include "description/model.h"

/* Chooses, from pConfig down, the suites of which packages are pending, and clears those that were
 * being removed. The packages, suites and configurations that are installed have been marked. */
void OV_instMarkPending(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig);

/* Whether any package is pending. */
bool OV_instHasPending(const _OV_instCDinst *pRoot);

/* Whether the configuration is chosen before the user has changed anything: when it is installed,
 * but for pending ones. */
int OV_instFirstChoice(const _OV_InstConfigList *pConfig);

/* Makes a run out of what was chosen against the first choice: a suite that was being removed and
 * is chosen again is installed anew, one that was being installed and is cleared is removed. Called
 * before the marks are counted or a run begins; a second call changes nothing. */
void OV_instSettlePending(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig);

#endif
