/* How paths below a guarded root are resolved by hand, component by component, and what is learned
 * of the directories on the way. Only the guard's own units use it: what the others may rely on
 * stands in ut/guard.h. */
#ifndef OVINST_UT_GUARDWALK_H
#define OVINST_UT_GUARDWALK_H

#include <string>
#include <sys/stat.h>

#include "ut/guardedRoot.h"
#include "ut/owned.h"

/* A directory on the way. */
struct OV_WayPoint {
    OwnedFd dir;
    std::string path;  /* for people to read */
    std::string blame; /* the directory, in words, through which strangers can exchange what
                          is in here; empty when they cannot */
    bool bStrangersAdd = false; /* they can put things of their own into it */
    bool bShared = false;       /* others than root and we could have put a second name into it */
};

/* Where a path's last component is. */
struct OV_Found {
    OV_WayPoint parent;
    std::string name;        /* "." for the root itself, and behind a last "." or ".." */
    struct stat status = {}; /* of what is there, not followed; st_mode is 0 when nothing is */
    bool bDirectory = false; /* a slash at the end asks for a directory */
    bool bByLink = false;    /* a link of root's or ours named the object itself */
};

/* Resolves what follows the root; bKeepLink: a link in the last place is the object itself. 0, also
 * when only the last component is missing, or -1 with errno set; ELOOP for a link that must not be
 * followed, which is told. */
int OV_instWalk(OV_GuardedRoot *pRoot, const char *pRest, bool bKeepLink, OV_Found *pFound);

/* The whole path of what was found, for people to read. */
std::string OV_instFoundPath(const OV_Found *pFound);

#endif
