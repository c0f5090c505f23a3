/* What a module had better not do: leave a process behind that holds everything open, and end the
 * installing process in the middle of its work. */
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
