#include "dialogs/sequence.h"

#include <cstdio>
#include <cstdlib>

int OV_instStartDialogs(int, char **, char *pDescription, char *pDestination)
{
    free(pDescription);
    free(pDestination);
    fputs("Error: this setup has no dialogs yet, run it with -cmdline\n", stderr);
    return 1;
}
