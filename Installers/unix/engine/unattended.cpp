#include "engine/unattended.h"

#include <cstdio>

#include "description/reader.h"
#include "engine/history.h"
#include "engine/installer.h"
#include "engine/selection.h"
#include "engine/setupState.h"
#include "engine/sizes.h"

static int installAll()
{
    _OV_InstConfigList *pConfig = OV_instGetConfigFromId(CDInstPtr, OV_UNATTENDED_CONFIG);

    OV_instMarkAllConfig(pConfig, 1);
    if (OV_instSetSizes(CDInstPtr) == -1) {
        fputs("Error: during setting installation size\n", stderr);
        return 1;
    }
    (void)OV_instFindInstallation(OV_UNATTENDED_CONFIG); /* what is installed is kept */
    if (OV_instCommandLineInstall(CDInstPtr, pConfig, 0) != 0) {
        fputs("Error: during installation\n", stderr);
        return 1;
    }
    OV_instFreeCDinst(CDInstPtr);
    CDInstPtr = nullptr;
    return 0;
}

int OV_instRunUnattended(const char *pDescription, const char *pDestination)
{
    CDInstPtr = OV_instReadCDinst(pDescription, parseUpdate);
    if (!CDInstPtr) {
        fprintf(stderr, "Error: reading %s\n", pDescription);
        return 1;
    }
    printf("\n");
    (void)OV_instSetRootDestination(pDestination); /* a missing one is noticed next */
    return installAll();
}
