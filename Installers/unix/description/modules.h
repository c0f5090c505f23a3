/* The shared modules of a medium: where they lie, and whether they are what setup can use. */
#ifndef OVINST_DESCRIPTION_MODULES_H
#define OVINST_DESCRIPTION_MODULES_H

#include "description/model.h"

/* The path of a module on the medium in pDirectory, for the caller to free; null without memory. */
char *OV_instModulePath(const char *pDirectory, const char *pModule);

/* Loads the module of every Function operation for a moment and looks for what setup needs in it.
 * 0 when all are usable, 100 otherwise, which is told; a module that cannot be loaded ends the
 * check. */
int validateModule(_OV_instCDinst *pRoot);

#endif
