/* Looking at what is in a tree: nothing but regular files is ever opened, and no link of a stranger
 * is followed. */
#ifndef OVMEDIUM_EXAMINE_H
#define OVMEDIUM_EXAMINE_H

#include <cstdint>
#include <string>
#include <sys/stat.h>

#include "ut/owned.h"

/* What is at a path, the link itself where there is one. */
struct OV_TreeObject {
    OwnedFd object; /* a path descriptor; -1 for nothing */
    struct stat info = {};
    int iError = 0; /* why there is nothing */
};

/* False when it cannot be said what is there (told). */
bool OV_mediumLook(const std::string &path, OV_TreeObject *pFound);

/* Opens a regular file that was found for reading; the very one. -1 (told). */
int OV_mediumOpenFound(const OV_TreeObject *pFound, const std::string &path);

/* A regular file of the medium, opened, with its status. -1 (told). */
int OV_mediumOpenSource(const std::string &path, struct stat *pInfo);

/* Whether two opened files of this size hold the same: 1 or 0, or -1 where one cannot be read. */
int OV_mediumSameContent(int iFirst, int iSecond, int64_t lSize);

/* The next bytes, as many as fit unless the file ends. -1 with errno set. */
ssize_t OV_mediumReadFull(int iFd, char *pBytes, size_t iCount);

/* The text of a link that was found; empty where it cannot be read. */
std::string OV_mediumLinkText(const OV_TreeObject *pFound);

#endif
