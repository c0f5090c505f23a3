#include "medium/model.h"

#include <algorithm>
#include <cstring>
#include <sys/stat.h>

#include "description/modules.h"
#include "OVinstModule.h"
#include "ut/owned.h"

static const char s_caDescription[] = "cdinst.dat";

std::string OV_mediumDescription(const std::string &place)
{
    struct stat info;

    if (place.empty() || place == ".")
        return s_caDescription;
    if (stat(place.c_str(), &info) < 0 || !S_ISDIR(info.st_mode))
        return place;
    return place + (place.back() == '/' ? "" : "/") + s_caDescription;
}

void OV_mediumWatchFunction(OV_ModuleFiles *pFiles, const char *pSourceDir,
                            const _OV_InstFunction *pFunction,
                            const std::function<void(const OV_ModuleFault &fault)> &tell)
{
    const std::string module = pFunction->pModule ? pFunction->pModule : "";
    const std::string name = pFunction->pFunction ? pFunction->pFunction : "";
    OwnedText path(OV_instModulePath(pSourceDir, module.c_str()));
    const std::string file = path ? path.get() : "";
    std::string reason;
    double dVersion = 0;

    if (!OV_mediumOpenObject(pFiles, file, &reason)) {
        tell({true, "the module 'SetupFiles/" + module + "' cannot be loaded: " + reason, module});
        return;
    }
    if (!OV_mediumModuleVersion(pFiles, file, &dVersion))
        tell({false, "the module '" + module + "' has no ModuleVersion", "ModuleVersion"});
    else if (dVersion != OV_MODULE_VERSION)
        tell({false, "the ModuleVersion of '" + module + "' is not the one that setup is for",
              "ModuleVersion"});
    for (const std::string &symbol : {std::string("initModule"), name})
        if (!OV_mediumHasSymbol(pFiles, file, symbol))
            tell({false, "the module '" + module + "' has no function '" + symbol + "'", symbol});
}

static std::string at(const char *pPath, int iLine, const std::string &sentence)
{
    return std::string(pPath) + ":" + std::to_string(iLine) + ": " + sentence;
}

_OV_instCDinst *OV_mediumReadModel(const char *pPath, std::string *pReason)
{
    OV_Reading reading = {};
    OV_ModuleFiles files;

    OV_mediumRead(pPath, &reading);
    for (const OV_ReadFault &fault : reading.faults)
        if (fault.bRejects && (pReason->empty() || !reading.model))
            *pReason = fault.code == OV_FAULT_UNREADABLE
                           ? std::string(pPath) + ": " + OV_mediumFaultSentence(&fault)
                           : at(pPath, fault.iLine, OV_mediumFaultSentence(&fault));
    if (reading.bRejected) {
        if (pReason->empty())
            *pReason = std::string(pPath) + ": the description cannot be read";
        return nullptr;
    }
    auto tell = [&](const OV_ModuleFault &fault) {
        if (pReason->empty())
            *pReason = std::string(pPath) + ": " + fault.sentence;
    };
    for (auto *pNode = reading.model->pPackageHead; pNode; pNode = pNode->pNext)
        for (auto *pOper = pNode->pPackage->pOperHead; pOper; pOper = pOper->pNext)
            if (pOper->iType == OV_OPER_FUNCTION)
                OV_mediumWatchFunction(&files, reading.model->pSourceDir, &pOper->body.function,
                                       tell);
    return pReason->empty() ? reading.model.release() : nullptr;
}
