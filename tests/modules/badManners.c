/* What a module had better not do: leave a process behind that holds everything open, end the
 * installing process in the middle of its work, and play somebody who can rename the destination. */
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include "OVinstModule.h"

double ModuleVersion = OV_MODULE_VERSION;

int32_t initModule(struct _OV_instCDinst *pRoot, struct _OV_CustomData *pData)
{
    return OV_INST_NO_ERROR;
}

int32_t leaveProcess(struct _OV_instCDinst *pRoot, struct _OV_CustomData *pData)
{
    if (pData->ovPass == OV_CUSTOM_INIT && fork() == 0) {
        sleep(30);
        _exit(0);
    }
    return OV_INST_NO_ERROR;
}

int32_t endProcess(struct _OV_instCDinst *pRoot, struct _OV_CustomData *pData)
{
    if (pData->ovPass == OV_CUSTOM_INIT)
        _exit(0);
    return OV_INST_NO_ERROR;
}

/* Moves the root destination aside, and puts a link to what its argument names in its place. */
int32_t exchangeRoot(struct _OV_instCDinst *pRoot, struct _OV_CustomData *pData)
{
    char caRoot[4096], caAside[4096];

    if (pData->ovPass != OV_CUSTOM_INIT)
        return OV_INST_NO_ERROR;
    (void)snprintf(caRoot, sizeof caRoot, "%.*s", (int)strlen(pData->pRootDest) - 1,
                   pData->pRootDest);
    (void)snprintf(caAside, sizeof caAside, "%s.aside", caRoot);
    return rename(caRoot, caAside) == 0 && symlink(pData->pData, caRoot) == 0 ? OV_INST_NO_ERROR
                                                                             : OV_INST_ERROR;
}
