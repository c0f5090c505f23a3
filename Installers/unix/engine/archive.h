/* Archives of the medium: feeding them to tar. Reporting and results are as in fileOps.h. */
#ifndef OVINST_ENGINE_ARCHIVE_H
#define OVINST_ENGINE_ARCHIVE_H

#include <cstdint>
#include <cstdio>

#include "description/model.h"

/* Has tar unpack the entry's archive into pDest, which must exist. The entry's files are reported
 * as the archive is fed, so by its fraction and not by what tar has done. When tar or the
 * decompressor ends with a status, a warning goes into the log, and it is a failure if one of the
 * entry's files is not there as it should be. 0 or 1. */
int OV_instUntar(const _OV_InstTar *pTar, const char *pFrom, const char *pDest, int64_t lSize,
                 int iCompressed, FILE *pStream, int iMode);

/* Removes the entry's files from pDirectory, last one first, directories where empty. Always 0:
 * what could not be removed is told (engine/fileOps.h). */
int DeleteUntar(const _OV_InstTar *pTar, const char *pDirectory, FILE *pStream);

/* How many of iFiles are covered when ulFed bytes of an archive of ulSize have been fed: the index
 * of the last one, -1 for none. */
int32_t OV_instLastFedFile(int32_t iFiles, uint64_t ulFed, uint64_t ulSize);

#endif
