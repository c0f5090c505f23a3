/* Files of an archive's names where setup was started. */
#ifndef OVINST_ENGINE_WORKINGFILES_H
#define OVINST_ENGINE_WORKINGFILES_H

#include <cstdio>

#include "description/model.h"

/* Gives the entry's existing files owner write permission. The names are examined as they stand in
 * the entry, from the working directory: files below the destination are replaced by tar. Only what
 * lies in that directory, is root's or the running user's, and can be exchanged by nobody else is
 * changed; anything else is told like a failure, pArchive being the archive's path. */
void OV_instMakeWritable(const _OV_InstTar *pTar, const char *pArchive, FILE *pStream);

#endif
