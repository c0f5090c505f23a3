/* A custom-function module that tells through the pipe and the log how it was called. */
#include <string.h>

#include "OVinstModule.h"

double ModuleVersion = OV_MODULE_VERSION;

static int s_iInits;

int32_t initModule(struct _OV_instCDinst *pRoot, struct _OV_CustomData *pData)
{
    s_iInits++;
    if (pData->fpUpdate)
        fprintf(pData->fpUpdate, "init %d %s\n", s_iInits, pRoot ? "model" : "none");
    return OV_INST_ERROR; /* nobody looks at it */
}

static const char *shown(const char *pText)
{
    return pText ? pText : "null";
}

/* Fails when its argument begins with "fail". */
int32_t tellAll(struct _OV_instCDinst *pRoot, struct _OV_CustomData *pData)
{
    if (pData->fpLog)
        fprintf(pData->fpLog, "told in pass %d\n", (int)pData->ovPass);
    if (pData->ovPass == OV_CUSTOM_SIZE)
        pData->iSize += !pData->fpUpdate && !pData->pSuiteName ? 1000 : 1;
    if (pData->fpUpdate)
        fprintf(pData->fpUpdate, "pass %d mode %d: %s|%s|%s|%s|%s|%s|%s|%d|%s\n",
                (int)pData->ovPass, (int)pData->iDelete, shown(pData->pRootDest),
                shown(pData->pCommonDest), shown(pData->pDest), shown(pData->pFrom),
                shown(pData->pData), shown(pData->pPackageName), shown(pData->pSuiteName),
                (int)pData->iSize, pData->pTls ? "shell" : "no shell");
    return strncmp(shown(pData->pData), "fail", 4) == 0 ? 7 : OV_INST_NO_ERROR;
}
