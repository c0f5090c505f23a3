/* The argument vector handed to the toolkit: the program's own plus fixed resource settings. */
#ifndef OVINST_TOOLKIT_SCHEME_H
#define OVINST_TOOLKIT_SCHEME_H

/* A new array of *piArgc + 4 new strings (a terminating null follows them); *piArgc grows by 4.
 * Without memory the process ends with status 1. */
char **OV_instNewArgv(int *piArgc, char **apArgv);

/* Frees the first iArgc strings and the array; null is accepted. */
void OV_instFreeArgv(int iArgc, char **apArgv);

#endif
