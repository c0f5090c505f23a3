/* Files that are read, written or kept below the guarded root (ut/guard.h), and what happens to
 * those that somebody else may have put in their place. None of these waits for the other end of a
 * fifo. Null or -1 with errno set. */
#ifndef OVINST_UT_GUARDEDFILE_H
#define OVINST_UT_GUARDEDFILE_H

#include <cstdio>
#include <sys/stat.h>

enum { OV_BELIEVED_MOST = 64 * 1024 * 1024 };

/* A file that setup keeps for itself: pMode is "r", "r+", "w" or "a". The latter two make it, with
 * mode 0644 whatever the umask is; they replace it by a new, empty one
 * - when it has a second name, and its directory is one where others could have given that name to
 *   any file there is: the new one gets owner, group and mode of the old where that can be done,
 * and the other name keeps the old content. (A backup made of second names is maintained so.)
 * - when it is a stranger's, of whatever kind: the new one is ours.
 * - when it is root's, say, and only he may write to it, for "w": likewise.
 * A file or device that a link of root's or ours leads to is used as it is, whoever owns it. */
FILE *OV_instGuardedFopen(const char *pPath, const char *pMode);

/* A file of the product, empty and for writing, which gets its mode from the caller (fchmod).
 * Another owner's file, and any with a second name, is replaced by a new one that keeps owner and
 * group where that can be done; a fifo, device or socket is replaced as well. What a link of root's
 * or ours leads to is filled, whoever owns it, a device too. When it is the very file of *pSource,
 * which may be null, it is left alone, with EALREADY; also if it is a running program. */
int OV_instGuardedOpenTarget(const char *pPath, const struct stat *pSource);

/* The same as a stream. */
FILE *OV_instGuardedFopenTarget(const char *pPath);

/* A file that the run is going to believe, "r" or "r+": a regular file of a trusted user that
 * strangers could neither write to nor put there, and not larger than OV_BELIEVED_MOST. EACCES or
 * EFBIG otherwise, which is told. With pRoot not null, that is the guarded root for this call. A
 * path outside of the root has nothing but its file looked at. */
FILE *OV_instGuardedFopenBelieved(const char *pRoot, const char *pPath, const char *pMode);

/* Whether what is at pPath, behind links that are followed, can only be what trusted users have put
 * there: it belongs to one, strangers can neither write to it nor exchange it or a directory on the
 * way from the root, the root included, and the path leads to it as the system resolves it now. If
 * not, that is told. Outside of the root it is enough that something is there. */
bool OV_instIsTrusted(const char *pPath);

#endif
