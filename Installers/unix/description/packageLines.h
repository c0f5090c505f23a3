/* Body lines of a description outside a configuration section: suites, packages, operations. */
#ifndef OVINST_DESCRIPTION_PACKAGELINES_H
#define OVINST_DESCRIPTION_PACKAGELINES_H

#include "description/model.h"

/* Adds what the line declares to the model. 0 when the line was taken, -1 when it was rejected;
 * the model may then hold a partly filled record, which is freed with it. */
int AddLineToCDinst(const char *pLine, _OV_instCDinst *pRoot);

#endif
