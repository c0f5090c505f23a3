/* The maps beside a model's lists, behind the look-ups that model.h declares: without them a medium
 * of many thousand packages would be read in quadratic time. */
#ifndef OVINST_DESCRIPTION_MODELINDEX_H
#define OVINST_DESCRIPTION_MODELINDEX_H

#include "description/model.h"

/* Takes in whatever the lists have got since the last time, up to a record without a name. Called
 * before a record is appended, it leaves a later look-up next to nothing to allocate. 0, or -1
 * without memory. */
int updateIndex(_OV_instCDinst *pRoot);

/* Null is accepted. */
void freeIndex(_OV_InstIndex *pIndex);

#endif
