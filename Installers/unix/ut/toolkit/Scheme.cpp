#include "ut/toolkit/Scheme.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

/* The dialogs bring their own looks: a desktop's colour schemes would paint over them. */
static const char *const s_apFixed[] = {"-xrm", "*sgiMode: false", "-xrm", "*useSchemes: all"};

enum { FIXED_COUNT = sizeof s_apFixed / sizeof s_apFixed[0] };
static_assert(FIXED_COUNT == 4, "callers count on four more arguments");

static void *orExit(void *pMemory)
{
    if (!pMemory) {
        (void)fputs("Error: memory allocation\n", stderr);
        exit(1);
    }
    return pMemory;
}

char **OV_instNewArgv(int *piArgc, char **apArgv)
{
    int iOwn = *piArgc;
    size_t iSize = static_cast<size_t>(iOwn) + FIXED_COUNT + 1;
    char **apNew = static_cast<char **>(orExit(calloc(iSize, sizeof *apNew)));

    for (int i = 0; i < iOwn; i++)
        apNew[i] = static_cast<char *>(orExit(strdup(apArgv[i])));
    for (const char *pFixed : s_apFixed)
        apNew[iOwn++] = static_cast<char *>(orExit(strdup(pFixed)));
    *piArgc = iOwn;
    return apNew;
}

void OV_instFreeArgv(int iArgc, char **apArgv)
{
    if (!apArgv)
        return;
    for (int i = 0; i < iArgc; i++)
        free(apArgv[i]);
    free(apArgv);
}
