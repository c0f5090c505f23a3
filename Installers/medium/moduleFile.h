/* Shared modules as their files show them: nothing is loaded. */
#ifndef OVMEDIUM_MODULEFILE_H
#define OVMEDIUM_MODULEFILE_H

#include <map>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

/* One object that could be loaded: the module, or a library that it needs. */
struct OV_SharedObject {
    std::unordered_set<std::string> symbols;
    std::vector<std::string> needed; /* libraries, as it names them */
    std::vector<std::string> places; /* directories that it says they are in */
    bool bVersion;                   /* it has a ModuleVersion, whose value is known */
    double dVersion;
};

/* The objects that were looked at, by their paths; null for what cannot be loaded. */
struct OV_ModuleFiles {
    std::map<std::string, std::unique_ptr<OV_SharedObject>> objects;
    std::map<std::string, std::string> reasons;
    std::vector<std::string> libraryPlaces;
};

/* The object, or null with why it is none. */
const OV_SharedObject *OV_mediumOpenObject(OV_ModuleFiles *pFiles, const std::string &path,
                                           std::string *pReason);

/* Whether the module at path has the symbol, itself or by a library that it needs and that is
 * found. */
bool OV_mediumHasSymbol(OV_ModuleFiles *pFiles, const std::string &path, const std::string &symbol);

/* The version that the module was made for. False where it has none that can be known. */
bool OV_mediumModuleVersion(OV_ModuleFiles *pFiles, const std::string &path, double *pdVersion);

#endif
