/* Whose something below the root destination is, in words for the log. */
#ifndef OVINST_ENGINE_OWNERSHIP_H
#define OVINST_ENGINE_OWNERSHIP_H

#include <string>
#include <sys/stat.h>

/* The first symbolic link on the way to pPath that is not followed, and whose it is; just pPath
 * where there is none. */
std::string OV_instRefusedLink(const char *pPath);

/* The first part of pPath that is not a trusted user's alone, and whose it is. Empty when all parts
 * are; a part that does not exist is nobody's. */
std::string OV_instForeignPart(const char *pPath);

/* Whether it is root or the running user. */
bool OV_instIsOurs(uid_t owner);

/* Whether what was examined is one of theirs, and nobody else can write to it. */
bool OV_instIsOursAlone(const struct stat *pInfo);

#endif
