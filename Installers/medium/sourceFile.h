/* Files of a medium, looked at without waiting for anybody and without opening devices. */
#ifndef OVMEDIUM_SOURCEFILE_H
#define OVMEDIUM_SOURCEFILE_H

#include <cstdint>
#include <map>
#include <string>

#include "medium/checkParts.h"

enum OV_SourceState { OV_SOURCE_THERE, OV_SOURCE_MISSING, OV_SOURCE_UNREADABLE };

struct OV_SourceFile {
    OV_SourceState state;
    std::string path;
    std::string reason; /* why it is not readable */
    std::string near;   /* the name that is there and differs in letter case, or empty */
    int64_t lSize;
};

/* The names of a directory by their small letters: each directory is listed once. */
using OV_NamesByLetters = std::map<std::string, std::string>;

struct OV_SourceFinder {
    const char *pMedium; /* its directory */
    std::map<std::string, OV_NamesByLetters> listings;
};

/* What there is of that name on the medium. */
OV_SourceFile OV_mediumLookAt(OV_SourceFinder *pFinder, const char *pName);

/* Tells what is wrong with the source of an operation. Whether it is there and readable. */
bool OV_checkSource(OV_Check *pCheck, const OV_SourceFile *pSource, const char *pName,
                    const _OV_InstOper *pOper);

#endif
