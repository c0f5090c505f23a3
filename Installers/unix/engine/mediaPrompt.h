/* Asking for other media, in the installing child, when a file cannot be opened. */
#ifndef OVINST_ENGINE_MEDIAPROMPT_H
#define OVINST_ENGINE_MEDIAPROMPT_H

#include <cstdio>

/* Asks once: 0 for "Continue", 1 for "Browse...", 2 for "Abort". A directory that was picked is
 * stored in *ppSource as a new string; what was there is not freed. */
int OV_instAbortRetryMessageBox(FILE *pStream, const char *pLabel, const char *pFile,
                                char **ppSource);

/* Asks until there is an answer. 1 when a directory was picked, which is then the source
 * directory: the file is worth another try. 0 for "Continue" and for "Abort", which also writes
 * the abort record. */
int OV_instQueryForSource(FILE *pStream, const char *pLabel, const char *pFile);

#endif
