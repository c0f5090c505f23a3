/* Streams read to their end. */
#ifndef OVINST_UT_WHOLEFILE_H
#define OVINST_UT_WHOLEFILE_H

#include <cstdio>
#include <string>

/* Appends all that is left in the stream to *pText, zero bytes included. Returns 0, or -1 when
 * reading failed before the end; *pText then holds what came until there. */
int OV_instReadWhole(FILE *pFile, std::string *pText);

/* Appends what is left in a stream to another. Returns 0, or -1 when either has failed. */
int OV_instCopyWhole(FILE *pFrom, FILE *pTo);

#endif
