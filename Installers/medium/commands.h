/* The commands of ovmedium, one unit each. Each carries out what the options say, prints its result
 * and returns the status to end with. */
#ifndef OVMEDIUM_COMMANDS_H
#define OVMEDIUM_COMMANDS_H

#include "medium/commandLine.h"

int OV_mediumPlan(const OV_MediumOptions *pOptions);
int OV_mediumApply(const OV_MediumOptions *pOptions);
int OV_mediumCheck(const OV_MediumOptions *pOptions);
int OV_mediumVerify(const OV_MediumOptions *pOptions);
int OV_mediumRepair(const OV_MediumOptions *pOptions);
int OV_mediumStatus(const OV_MediumOptions *pOptions);
int OV_mediumNew(const OV_MediumOptions *pOptions);
int OV_mediumUpdate(const OV_MediumOptions *pOptions);

#endif
