/* A custom-function module as setup wants it. */
#include "OVinstModule.h"

double ModuleVersion = OV_MODULE_VERSION;

int32_t initModule(struct _OV_instCDinst *pRoot, struct _OV_CustomData *pData)
{
    (void)pRoot;
    (void)pData;
    return OV_INST_NO_ERROR;
}

int32_t goodEntry(struct _OV_instCDinst *pRoot, struct _OV_CustomData *pData)
{
    (void)pRoot;
    return pData->ovPass == OV_CUSTOM_FINISH ? OV_INST_ERROR : OV_INST_NO_ERROR;
}
