/* Opening and creating below the destination without being led astray. The program runs as root
 * and writes into directories that others may write to, so below the guarded root, the root
 * destination, it follows symbolic links by these rules (ut/trust.h says who is who):
 *
 * - A link of root's or the running user's is followed wherever it leads, unless strangers could
 *   have put it where it is: there is a directory on the way, the root included, that a stranger
 *   owns, or that strangers can write to without the sticky bit being set.
 * - Any other link is followed as long as what is behind it stays below the root, which holds for
 *   the rest of the path. An absolute one does when its text begins with the root's. Where the
 *   root is "/", nothing could leave it, and no such link is followed.
 * - What is not followed makes the call fail with ELOOP and is told (OV_instSetRefusalHandler).
 *
 * The root is opened once, and all that is below it is reached from there: an exchange of the root
 * leads nowhere. ".." leads back to where a path came from. A path that itself leads out of the
 * root by ".." is the description's own choice. Paths whose text does not begin with the root's are
 * used as the system resolves them. All descriptors are close-on-exec. */
#ifndef OVINST_UT_GUARD_H
#define OVINST_UT_GUARD_H

#include <sys/types.h>

/* The directory below which that holds; below "/" is every absolute path. It is opened at once, or
 * at the first use after it was made. Null or empty means none. The path is copied. */
void OV_instSetGuardedRoot(const char *pRoot);

/* Opens the root anew: at the start of a run, since it may have been moved and made again since the
 * last one. What was refused is told again from now on. */
void OV_instReopenGuardedRoot();

/* What follows the guarded root in pPath when the root is there, opened, and pPath below it; else
 * null. The directories up to there need not be looked at, let alone be made. */
const char *OV_instBelowGuardedRoot(const char *pPath);

/* Opens a directory for use with the ...at calls and fchdir. It is a path descriptor: syncfs or
 * reading need OV_instGuardedOpen with O_DIRECTORY. The caller closes it. -1 with errno set. */
int OV_instGuardedOpenDir(const char *pDirectory);

/* Opens a file; iMode is what a created file gets (less the umask). Never waits for the other
 * end of a fifo. -1 with errno set. */
int OV_instGuardedOpen(const char *pPath, int iFlags, mode_t iMode);

/* OV_instGuardedOpen with pRoot as the guarded root, for this call only. */
int OV_instGuardedOpenIn(const char *pRoot, const char *pPath, int iFlags, mode_t iMode);

/* OV_instGuardedOpen for a file that is there and must not be another one under this name: EMLINK
 * when it has a second name, and its directory is one where others could have given that name to
 * any file there is. Outside of the root nothing is looked at. */
int OV_instGuardedOpenOwn(const char *pPath, int iFlags);

/* The directory that pPath's last component lives in, opened; *ppName points at that component
 * within pPath. The caller closes the descriptor. -1 with errno set (EINVAL for a path that ends
 * in a slash). */
int OV_instGuardedOpenParent(const char *pPath, const char **ppName);

/* remove(): unlinks the file or link itself, or removes an empty directory. A path that ends in a
 * slash removes a directory only. 0 or -1. */
int OV_instGuardedRemove(const char *pPath);

/* Makes a directory and gives it iMode whatever the umask is, and the set-group-ID bit that it may
 * inherit; a file system that refuses modes is no failure. 0, or -1 when it cannot be made (EEXIST
 * also when another process was quicker), or 1 when it is gone again. */
int OV_instGuardedMkdir(const char *pPath, mode_t iMode);

/* Sets the mode of the file itself, through a descriptor that was opened as OV_instGuardedOpenOwn
 * does; who has the file open anyway uses fchmod. 0 or -1. */
int OV_instGuardedChmod(const char *pPath, mode_t iMode);

#endif
