/* Lines of a configuration section. */
#ifndef OVINST_DESCRIPTION_CONFIGLINES_H
#define OVINST_DESCRIPTION_CONFIGLINES_H

#include "description/model.h"

/* Set by "ConfigBegin", cleared by "ConfigEnd"; the reader itself never resets it. */
extern int OV_instParsingConfiguration;

/* Adds the configuration that the line declares. 0 when the line was taken, -1 when rejected. */
int AddLineToConfig(const char *pLine, _OV_instCDinst *pRoot);

#endif
