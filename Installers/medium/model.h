/* The description of a medium, for the commands that work with it. */
#ifndef OVMEDIUM_MODEL_H
#define OVMEDIUM_MODEL_H

#include <functional>
#include <string>

#include "medium/moduleFile.h"
#include "medium/reading.h"

/* The description's path, of a medium or of a description as it was named. */
std::string OV_mediumDescription(const std::string &place);

/* The model of the description at that path, as setup would take it, for the caller to free; or
 * null with the first reason in a sentence. Modules are looked at as files and not loaded. */
_OV_instCDinst *OV_mediumReadModel(const char *pPath, std::string *pReason);

/* What is wrong with a module that the medium has to have. */
struct OV_ModuleFault {
    bool bMissing; /* the file; else a symbol */
    std::string sentence;
    std::string subject;
};

/* Calls tell for everything that makes setup refuse a function's module. */
void OV_mediumWatchFunction(OV_ModuleFiles *pFiles, const char *pSourceDir,
                            const _OV_InstFunction *pFunction,
                            const std::function<void(const OV_ModuleFault &fault)> &tell);

#endif
