#include "engine/unattended.h"

#include <cstdio>
#include <cstdlib>

#include "description/reader.h"
#include "engine/history.h"
#include "engine/installer.h"
#include "engine/runReport.h"
#include "engine/selection.h"
#include "engine/setupState.h"
#include "engine/sizes.h"

/* Whoever asks for it is told of everything that was not as it should be; others rely on a status
 * that says only whether the run could be made. */
static int strictStatus()
{
    return getenv("OVINST_STRICT") && !OV_instRunEndedWell() ? 1 : 0;
}

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
    return strictStatus();
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
