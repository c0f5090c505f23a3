/* Custom functions: entries of shared modules that come with the medium. */
#ifndef OVINST_ENGINE_CUSTOMFUNC_H
#define OVINST_ENGINE_CUSTOMFUNC_H

#include <cstdio>

#include "description/model.h"
#include "OVinstModule.h"

/* Runs the operation's function with the record, its module loaded on first use and initialised
 * before every one. Returns the function's result, or OV_INST_EXIT_SETUP with an error record in
 * the pipe (which may be null). The record's log stream is open during the call only. */
int OV_instCustomFunction(_OV_InstOper *pOper, _OV_CustomData *pData, FILE *pStream);

/* The paths of the modules loaded so far (up to 100): files that are never deleted. */
bool InModuleList(const char *pPath);
void UpdateModuleList(const char *pPath);

#endif
