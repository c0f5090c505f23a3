/* The application's registry, written through its own command-line tools below the destination.
 * The commands run through the shell; the routines report into the pipe, which may be null. */
#ifndef OVINST_ENGINE_REGISTRY_H
#define OVINST_ENGINE_REGISTRY_H

#include <cstdio>

#include "OVinstModule.h"

/* Adds one value; "%d" in pValue stands for the destination. Without any display only a warning is
 * written. 0, or OV_INST_ERROR. */
int OV_instRegData(const char *pDest, const char *pRootKey, const char *pKeyName,
                   const char *pKeyValue, const char *pValue, FILE *pStream);

/* Gathers modules in the INIT pass and registers them all with one command at the first call of
 * the REGISTRY pass; nothing in other passes and nothing ever after. 0, or OV_INST_ERROR. */
int OV_instSelfReg(const char *pCommonDest, const char *pDest, const char *pModule, FILE *pStream,
                   int iPass);

/* Makes the registry file below pDest readable by all. Misspelt: its callers know it so. */
void OV_instChangeResgitryPermission(const char *pDest);

/* The value of OV_LOCATION, that directory created when absent; null, told on standard output,
 * when the variable is not set. Nothing calls it today. */
const char *OV_instGetOVLocation();

/* Whether the tools can be called: they want a display. */
bool OV_instHasRegistryDisplay();

#endif
