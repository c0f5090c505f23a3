#include "engine/customFunc.h"

#include <cstdlib>
#include <cstring>
#include <dlfcn.h>

#include "description/modules.h"
#include "engine/records.h"
#include "engine/setupState.h"
#include "ut/OVinstLogfile.h"
#include "ut/owned.h"
#include "ut/text.h"

enum { MAX_MODULES = 100 };

static struct {
    char *apPaths[MAX_MODULES];
    int iCount;
} s_modules;

bool InModuleList(const char *pPath)
{
    for (int i = 0; pPath && i < s_modules.iCount; i++)
        if (strcmp(s_modules.apPaths[i], pPath) == 0)
            return true;
    return false;
}

void UpdateModuleList(const char *pPath)
{
    if (!pPath || s_modules.iCount == MAX_MODULES || InModuleList(pPath))
        return;
    char *pCopy = strdup(pPath);
    if (pCopy)
        s_modules.apPaths[s_modules.iCount++] = pCopy;
}

static void unloadModule(_OV_InstFunction *pFunction)
{
    (void)dlclose(pFunction->hModule); /* nothing could be done about a failure */
    pFunction->hModule = nullptr;
    pFunction->pAddress = nullptr;
}

static int loadModule(_OV_InstFunction *pFunction, const char *pFrom, FILE *pStream)
{
    OwnedText path(OV_instModulePath(pFrom, pFunction->pModule));

    if (!path) {
        fputs("-1 Can't allocate memory\n", stderr); /* the pipe's reader would ask */
        return OV_INST_EXIT_SETUP;
    }
    pFunction->hModule = dlopen(path.get(), RTLD_LAZY);
    if (!pFunction->hModule) {
        OV_instSendUpdate(pStream, "-1 Error: loading module %s\n", pFunction->pModule);
        return OV_INST_EXIT_SETUP;
    }
    UpdateModuleList(path.get());
    return 0;
}

/* The module's symbol; without it the module is unloaded and the pipe gets an error record. */
static void *findFunction(_OV_InstFunction *pFunction, const char *pName, FILE *pStream)
{
    void *pAddress = dlsym(pFunction->hModule, pName);

    if (!pAddress) {
        OV_instSendUpdate(pStream, "-1 Error: function %s not found in Module %s\n", pName,
                          pFunction->pModule);
        unloadModule(pFunction);
    }
    return pAddress;
}

int OV_instCustomFunction(_OV_InstOper *pOper, _OV_CustomData *pData, FILE *pStream)
{
    _OV_InstFunction *pFunction = pOper ? &pOper->body.function : nullptr;

    if (!pFunction || !pData || !OV_instIsText(pFunction->pModule) ||
        !OV_instIsText(pFunction->pFunction)) {
        OV_instSendUpdate(pStream, "-1 Custom Function invalid parameters\n");
        return OV_INST_EXIT_SETUP;
    }
    if (!pFunction->hModule && loadModule(pFunction, pData->pFrom, pStream) != 0)
        return OV_INST_EXIT_SETUP;
    void *pInit = findFunction(pFunction, "initModule", pStream);
    if (!pInit)
        return OV_INST_EXIT_SETUP;
    (void)reinterpret_cast<OV_CustomFunction>(pInit)(CDInstPtr, pData); /* its result is not used */
    if (!pFunction->pAddress)
        pFunction->pAddress = findFunction(pFunction, pFunction->pFunction, pStream);
    if (!pFunction->pAddress)
        return OV_INST_EXIT_SETUP;
    OwnedFile log(OV_instOpenLogfile());
    pData->fpLog = log.get();
    int iResult = reinterpret_cast<OV_CustomFunction>(pFunction->pAddress)(CDInstPtr, pData);
    pData->fpLog = nullptr;
    return iResult;
}
