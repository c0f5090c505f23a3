/* Opening below a guarded root: at once where no link is in the way, else by hand. Only the guard's
 * own units use it. Nothing waits for the other end of a fifo, and every descriptor is
 * close-on-exec. -1 with errno set. */
#ifndef OVINST_UT_GUARDOPEN_H
#define OVINST_UT_GUARDOPEN_H

#include <sys/types.h>

#include "ut/guardWalk.h"
#include "ut/guardedRoot.h"

/* Opens a path, as the system resolves it when it is not below the root. */
int OV_instOpenBelow(OV_GuardedRoot *pRoot, const char *pPath, int iFlags, mode_t iMode);

/* Opens what a walk has found, which was no link when it was looked at: one that was planted since
 * then makes it fail. */
int OV_instOpenFound(const OV_Found *pFound, int iFlags, mode_t iMode);

/* Whether a link in the last place is the object itself and not to be followed. */
bool OV_instKeepsLink(int iFlags);

#endif
