/* A directory below which nothing is found by way of strangers (ut/guard.h), opened once: whatever
 * is put at its path later is not looked at. Only the guard's own units use it. */
#ifndef OVINST_UT_GUARDEDROOT_H
#define OVINST_UT_GUARDEDROOT_H

#include <string>
#include <sys/stat.h>

#include "ut/owned.h"

struct OV_GuardedRoot {
    std::string text;        /* no slash at its end but that of "/"; empty: nothing is guarded */
    std::string real;        /* the same without links, as of the opening */
    OwnedFd opened;          /* -1 as long as it is not there */
    struct stat status = {}; /* of what was opened; before that its owner is root */
};

/* That of the whole program. */
OV_GuardedRoot *OV_instGuardedRoot();

/* Sets the root's path; nothing is opened yet. Null or empty: nothing is guarded. */
void OV_instNameRoot(OV_GuardedRoot *pRoot, const char *pPath);

/* The root's descriptor, opened unless it is already. -1 with errno set. */
int OV_instOpenRoot(OV_GuardedRoot *pRoot);

/* What follows the root in pPath (empty for the root itself), or null when pPath is not below it.
 * Only the text is compared: setup composes every path from the root's own text. For what others
 * have composed, the second one compares with the root's real path, too. */
const char *OV_instBelowRoot(const OV_GuardedRoot *pRoot, const char *pPath);
const char *OV_instBelowRealRoot(const OV_GuardedRoot *pRoot, const char *pPath);

bool OV_instIsRoot(const OV_GuardedRoot *pRoot, const struct stat *pStatus);

#endif
