/* Reading a description file into the setup model. */
#ifndef OVINST_DESCRIPTION_READER_H
#define OVINST_DESCRIPTION_READER_H

#include <cstdio>

#include "description/model.h"

/* The model of the file, for the caller to free, or null with the reason already told. Where
 * faults are collected (faults.h) there is one in spite of them, and modules are not loaded.
 * progress is called once for every line behind the header; it may be null. */
_OV_instCDinst *OV_instReadCDinst(const char *pPath, void (*progress)());

/* Reads the body lines from the file's position on and checks the modules. 0 or -1. */
int readCdinst(FILE *pFile, _OV_instCDinst *pRoot, void (*progress)(), int *piLine);

/* The keys of the header in their order; null behind the last. */
const char *OV_instHeaderKey(int iRow);

/* The progress callback of unattended runs: turns the spinner by one. */
void parseUpdate();

#endif
