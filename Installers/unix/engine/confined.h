/* Keeping a command to given directories. tar follows symbolic links that it finds in its way, and
 * those may have been planted a moment ago. So the command gets a view of the file system in which
 * all but those directories is read-only (a mount namespace, for which setup must be root), and may
 * not write elsewhere (Landlock). Each is used where the kernel lets it. */
#ifndef OVINST_ENGINE_CONFINED_H
#define OVINST_ENGINE_CONFINED_H

#include <cstdint>
#include <set>
#include <string>
#include <sys/stat.h>
#include <tuple>
#include <vector>

#include "ut/owned.h"

/* What a directory is known by, however it was reached: mount, device, number. */
using OV_DirectoryId = std::tuple<uint64_t, uint64_t, uint64_t>;

/* A directory that the command may write below. */
struct OV_ConfinedPlace {
    std::string path; /* as it was reached; may be relative to the starter's directory */
    OV_DirectoryId id;
};

struct OV_Confinement {
    std::vector<OV_ConfinedPlace> places; /* the command works in the first one */
    std::set<OV_DirectoryId> allowed;     /* these, and what was found below them */
    OwnedFd working;
    OwnedFd rules;                 /* the kernel's; none without Landlock */
    bool bOpenToStrangers = false; /* somebody else can write in a directory that was looked at */
    bool bRequired = false;        /* the command must not run where the kernel does neither */
};

/* Adds an opened directory unless it lies below one that was added. 0, or -1 when the kernel does
 * not let it be added: the command had better not be started. */
int OV_instAllowBelow(OV_Confinement *pConfinement, int iDirectory, const char *pPath);

/* Whether the kernel can keep a command there at all. Forks to see, where it has no Landlock. */
bool OV_instCanConfine(const OV_Confinement *pConfinement);

/* In the command's process: goes to the first directory and gives up everything else. False when
 * the process must not go on. */
bool OV_instEnterConfinement(const OV_Confinement *pConfinement);

#endif
