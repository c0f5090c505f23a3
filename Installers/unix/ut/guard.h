/* Opening and creating below the destination without being led astray. The program runs as root
 * and writes into directories that others may write to, so below the guarded root a symbolic link
 * is followed only when root or the running user owns it, in every component of a path; a link of
 * anybody else makes the call fail with ELOOP. Paths that are not below the guarded root are
 * used as the system resolves them. All descriptors are close-on-exec. */
#ifndef OVINST_UT_GUARD_H
#define OVINST_UT_GUARD_H

#include <cstdio>
#include <sys/types.h>

/* The directory below which strangers' links are refused: the root destination. Below "/" is every
 * absolute path. Null or empty means none. The path is copied. */
void OV_instSetGuardedRoot(const char *pRoot);

/* Opens a directory for use with the ...at calls and fchdir. It is a path descriptor: syncfs or
 * reading need OV_instGuardedOpen with O_DIRECTORY. The caller closes it. -1 with errno set. */
int OV_instGuardedOpenDir(const char *pDirectory);

/* Opens a file; iMode is what a created file gets (less the umask). Never waits for the other
 * end of a fifo. -1 with errno set. */
int OV_instGuardedOpen(const char *pPath, int iFlags, mode_t iMode);

/* OV_instGuardedOpen with pRoot as the guarded root, for this call only. */
int OV_instGuardedOpenIn(const char *pRoot, const char *pPath, int iFlags, mode_t iMode);

/* OV_instGuardedOpen for a stream; pMode is "r", "r+", "w" or "a". Null with errno set;
 * EMLINK for "w" or "a" when the file has a second name and its directory is one where others could
 * have given that name to any file there is. */
FILE *OV_instGuardedFopen(const char *pPath, const char *pMode);

/* Whether an opened file is to be left alone: it has a second name, and lies in a directory where
 * others could have made a name for any file there is. */
bool OV_instIsPlanted(int iFd, const char *pPath);

/* The directory that pPath's last component lives in, opened; *ppName points at that component
 * within pPath. The caller closes the descriptor. -1 with errno set (EINVAL for a path that ends
 * in a slash). */
int OV_instGuardedOpenParent(const char *pPath, const char **ppName);

/* remove(): unlinks the file or link itself, or removes an empty directory. A path that ends in a
 * slash removes a directory only. 0 or -1. */
int OV_instGuardedRemove(const char *pPath);

/* Sets the mode of the file itself, through a descriptor that was opened as above (EMLINK
 * likewise); who has the file open anyway uses fchmod. 0 or -1. */
int OV_instGuardedChmod(const char *pPath, mode_t iMode);

#endif
