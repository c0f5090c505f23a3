#include "description/modules.h"

#include <dlfcn.h>

#include "OVinstModule.h"
#include "ut/OVinstFileUtils.h"
#include "ut/frontEnd.h"
#include "ut/owned.h"

char *OV_instModulePath(const char *pDirectory, const char *pModule)
{
    return OV_instBuildPath(pDirectory, "SetupFiles", pModule, nullptr);
}

/* Null, already told, when the module cannot be looked at. */
static void *openModule(const char *pSourceDir, const char *pModule, OwnedText *pPath)
{
    pPath->reset(OV_instModulePath(pSourceDir, pModule));
    if (!*pPath) {
        OV_instTell("OK", "Error: (readCdinst) Can't allocate memory");
        return nullptr;
    }
    void *hModule = dlopen(pPath->get(), RTLD_LAZY);
    if (!hModule)
        OV_instTell("OK", "Error: unable to load %s", pPath->get());
    return hModule;
}

/* 0 or 100, with what is missing told. */
static int checkSymbols(void *hModule, const char *pPath, const _OV_InstFunction *pFunction,
                        const char *pPackageName)
{
    const double *pdVersion = static_cast<const double *>(dlsym(hModule, "ModuleVersion"));
    const char *const apNames[] = {"initModule", pFunction->pFunction};
    int iResult = OV_INST_NO_ERROR;

    if (!pdVersion) {
        OV_instTell("OK",
                    "Error: there is no version number in module\n"
                    "Module: %s\nPackage: %s",
                    pPath, pPackageName);
        iResult = OV_INST_EXIT_SETUP;
    } else if (*pdVersion != OV_MODULE_VERSION) {
        OV_instTell("OK",
                    "Error: version number of module is invalid\n"
                    "Module: %s\nPackage: %s\n"
                    "Current version: %f\nRequired version: %f",
                    pPath, pPackageName, *pdVersion, OV_MODULE_VERSION);
        iResult = OV_INST_EXIT_SETUP;
    }
    for (const char *pName : apNames) {
        if (dlsym(hModule, pName))
            continue;
        OV_instTell("OK",
                    "Error: missing function in module\n"
                    "Module: %s\nPackage: %s\nFunction: %s",
                    pFunction->pModule, pPackageName, pName);
        iResult = OV_INST_EXIT_SETUP;
    }
    return iResult;
}

int validateModule(_OV_instCDinst *pRoot)
{
    int iResult = OV_INST_NO_ERROR;

    for (_OV_InstPackageNode *pNode = pRoot->pPackageHead; pNode; pNode = pNode->pNext) {
        for (_OV_InstOper *pOper = pNode->pPackage->pOperHead; pOper; pOper = pOper->pNext) {
            if (pOper->iType != OV_OPER_FUNCTION)
                continue;
            const _OV_InstFunction *pFunction = &pOper->body.function;
            OwnedText path;
            void *hModule = openModule(pRoot->pSourceDir, pFunction->pModule, &path);
            if (!hModule)
                return OV_INST_EXIT_SETUP;
            iResult |= checkSymbols(hModule, path.get(), pFunction, pNode->pPackage->pName);
            (void)dlclose(hModule); /* it was only looked at */
        }
    }
    return iResult;
}
