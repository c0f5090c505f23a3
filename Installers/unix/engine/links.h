/* Hard and symbolic links. Reporting and results are as in fileOps.h. */
#ifndef OVINST_ENGINE_LINKS_H
#define OVINST_ENGINE_LINKS_H

#include <cstdint>
#include <cstdio>

/* Makes pName, below pDirectory, a link to pTarget; a file of that name is replaced. 0 or 1. */
int OV_instHardlink(const char *pDirectory, const char *pTarget, const char *pName, int64_t lSize,
                    FILE *pStream, int iDelete);
int OV_instSoftlink(const char *pDirectory, const char *pTarget, const char *pName, int64_t lSize,
                    FILE *pStream, int iDelete);

#endif
