/* Whether an archive has arrived. */
#ifndef OVINST_ENGINE_UNPACKED_H
#define OVINST_ENGINE_UNPACKED_H

#include "description/model.h"

/* The first of the entry's members that is not below pDest as it should be: any of them must be
 * there, and one with a size of more than 1 must be a regular file of that size (1 stands for sizes
 * that are not known, of directories and links as well). Of a member that is listed more than once
 * the last counts, as it does in the archive. Null when all are there. */
const char *OV_instMissingMember(const _OV_InstTar *pTar, const char *pDest);

#endif
