#include "ut/guardOpen.h"

#include <cerrno>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

/* A planted fifo or terminal must neither block nor take over the program. */
static const int s_iAlways = O_CLOEXEC | O_NONBLOCK | O_NOCTTY;

static bool s_bNoOpenat2; /* the kernel has no openat2: do not ask it again */

static int failWith(int iError)
{
    errno = iError;
    return -1;
}

/* openat2 rejects what has no meaning for a path descriptor. */
static int withUsual(int iFlags)
{
    return iFlags | ((iFlags & O_PATH) ? O_CLOEXEC : s_iAlways);
}

static int openWithoutLinks(int iDir, const char *pPath, int iFlags, mode_t iMode)
{
    struct open_how how = {};

    if (s_bNoOpenat2)
        return failWith(ENOSYS);
    how.flags = static_cast<unsigned>(iFlags);
    how.mode = (iFlags & O_CREAT) ? iMode & 07777 : 0; /* it rejects a mode that has no use */
    how.resolve = RESOLVE_NO_SYMLINKS | RESOLVE_BENEATH;
    int iFd = static_cast<int>(syscall(SYS_openat2, iDir, pPath, &how, sizeof how));
    if (iFd < 0 && errno == ENOSYS)
        s_bNoOpenat2 = true;
    return iFd;
}

/* Whether openWithoutLinks failed for a reason that a walk may get around: it met a link or a way
 * out, something was moved, or the kernel or a system-call filter does not let it work at all. */
static bool needsWalk()
{
    static const int s_aReasons[] = {ELOOP, EXDEV, EAGAIN, ENOSYS, EPERM, EINVAL, E2BIG};

    for (const int iReason : s_aReasons)
        if (errno == iReason)
            return true;
    return false;
}

bool OV_instKeepsLink(int iFlags)
{
    return (iFlags & O_NOFOLLOW) || (iFlags & (O_CREAT | O_EXCL)) == (O_CREAT | O_EXCL);
}

/* Nearly every path holds no link at all, and takes one system call. */
int OV_instOpenBelow(OV_GuardedRoot *pRoot, const char *pPath, int iFlags, mode_t iMode)
{
    const char *pRest = pPath ? OV_instBelowRoot(pRoot, pPath) : nullptr;
    OV_Found found;

    if (!pPath)
        return failWith(EINVAL);
    if (!pRest)
        return open(pPath, withUsual(iFlags), iMode);
    int iRoot = OV_instOpenRoot(pRoot);
    if (iRoot < 0)
        return -1;
    int iFd = openWithoutLinks(iRoot, *pRest ? pRest : ".", withUsual(iFlags), iMode);
    if (iFd >= 0 || !needsWalk())
        return iFd;
    if (OV_instWalk(pRoot, pRest, OV_instKeepsLink(iFlags), &found) < 0)
        return -1;
    return OV_instOpenFound(&found, iFlags, iMode);
}

int OV_instOpenFound(const OV_Found *pFound, int iFlags, mode_t iMode)
{
    struct stat status;

    if (pFound->bDirectory && (iFlags & O_CREAT))
        return failWith(EISDIR);
    if (pFound->bDirectory)
        iFlags |= O_DIRECTORY;
    OwnedFd opened(openat(pFound->parent.dir.iFd, pFound->name.c_str(),
                          withUsual(iFlags) | O_NOFOLLOW, iMode));
    if (opened.iFd < 0 || !(iFlags & O_PATH) || (iFlags & O_NOFOLLOW))
        return opened.release();
    if (fstat(opened.iFd, &status) < 0) /* by path is enough for a link */
        return -1;
    return S_ISLNK(status.st_mode) ? failWith(ELOOP) : opened.release();
}
