/* Decompressing one file of the medium. Reporting and results are as in fileOps.h. */
#ifndef OVINST_ENGINE_UNCOMPRESS_H
#define OVINST_ENGINE_UNCOMPRESS_H

#include <cstdint>
#include <cstdio>

/* The program that decompresses: its standard input, or with "-c" the file named behind it, onto
 * its standard output. */
const char *OV_instDecompressor();

/* Copies a compressed file of the medium uncompressed. 0 or 1. */
int OV_instUncompress(const char *pSource, const char *pTarget, int iMode, int64_t lSize,
                      FILE *pStream, int iDelete);

#endif
