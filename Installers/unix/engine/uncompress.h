/* Decompressing one file of the medium. Reporting and results are as in fileOps.h. */
#ifndef OVINST_ENGINE_UNCOMPRESS_H
#define OVINST_ENGINE_UNCOMPRESS_H

#include <cstdint>
#include <cstdio>

/* The program that decompresses, as a word of a command for the shell: its standard input, or with
 * "-c" the file named behind it, onto its standard output. "lbunzip2" where it is on the search
 * path, else "bunzip2"; OVINST_BUNZIP2 names another. Chosen at the first call. */
const char *OV_instDecompressor();

/* Copies a compressed file of the medium uncompressed. 0 or 1. */
int OV_instUncompress(const char *pSource, const char *pTarget, int iMode, int64_t lSize,
                      FILE *pStream, int iDelete);

#endif
