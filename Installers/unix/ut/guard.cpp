#include "ut/guard.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "ut/guardOpen.h"
#include "ut/guardWalk.h"
#include "ut/guardedRoot.h"
#include "ut/owned.h"
#include "ut/trust.h"

static const long s_lFchmodat2 = 452; /* younger than many C libraries */

static int failWith(int iError)
{
    errno = iError;
    return -1;
}

/* ---- the root ---- */

void OV_instSetGuardedRoot(const char *pRoot)
{
    OV_instNameRoot(OV_instGuardedRoot(), pRoot);
    OV_instReopenGuardedRoot();
}

void OV_instReopenGuardedRoot()
{
    OV_GuardedRoot *pRoot = OV_instGuardedRoot();

    OV_instForgetRefusals();
    pRoot->opened.reset(-1);
    if (!pRoot->text.empty())
        (void)OV_instOpenRoot(pRoot); /* where it is not there yet, its first use opens it */
}

const char *OV_instBelowGuardedRoot(const char *pPath)
{
    const OV_GuardedRoot *pRoot = OV_instGuardedRoot();

    return pRoot->opened.iFd >= 0 && pPath ? OV_instBelowRoot(pRoot, pPath) : nullptr;
}

/* ---- opening ---- */

int OV_instGuardedOpenDir(const char *pDirectory)
{
    return OV_instGuardedOpen(pDirectory, O_PATH | O_DIRECTORY, 0);
}

int OV_instGuardedOpen(const char *pPath, int iFlags, mode_t iMode)
{
    return OV_instOpenBelow(OV_instGuardedRoot(), pPath, iFlags, iMode);
}

int OV_instGuardedOpenIn(const char *pRoot, const char *pPath, int iFlags, mode_t iMode)
{
    OV_GuardedRoot root;

    OV_instNameRoot(&root, pRoot);
    return OV_instOpenBelow(&root, pPath, iFlags, iMode);
}

/* What has one name, or lies outside the root, needs no look at its place. What does need one is
 * opened anew from there, so that what is looked at is what is opened. */
int OV_instGuardedOpenOwn(const char *pPath, int iFlags)
{
    OwnedFd file(OV_instGuardedOpen(pPath, iFlags, 0));
    struct stat status;
    OV_Found found;

    if (file.iFd < 0 || fstat(file.iFd, &status) < 0)
        return -1;
    const char *pRest = OV_instBelowRoot(OV_instGuardedRoot(), pPath);
    if (!pRest || !S_ISREG(status.st_mode) || status.st_nlink < 2)
        return file.release();
    if (OV_instWalk(OV_instGuardedRoot(), pRest, OV_instKeepsLink(iFlags), &found) < 0)
        return -1;
    file.reset(OV_instOpenFound(&found, iFlags, 0));
    if (file.iFd < 0 || fstat(file.iFd, &status) < 0)
        return -1;
    if (S_ISREG(status.st_mode) && status.st_nlink > 1 && found.parent.bShared)
        return failWith(EMLINK);
    return file.release();
}

int OV_instGuardedOpenParent(const char *pPath, const char **ppName)
{
    const char *pSlash = pPath ? strrchr(pPath, '/') : nullptr;
    const char *pName = pSlash ? pSlash + 1 : pPath;

    if (!pName || !*pName)
        return failWith(EINVAL);
    *ppName = pName;
    /* with its slash, for the sake of "/" */
    return OV_instGuardedOpenDir(pSlash ? std::string(pPath, pName).c_str() : ".");
}

/* ---- removing ---- */

int OV_instGuardedRemove(const char *pPath)
{
    std::string path = pPath ? pPath : "";
    const size_t iLength = path.size();
    const char *pName = nullptr;

    if (path.empty())
        return failWith(pPath ? ENOENT : EINVAL);
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    bool bDirectory = path.size() < iLength; /* asked for by its slash: never the link before it */

    OwnedFd parent(OV_instGuardedOpenParent(path.c_str(), &pName));
    if (parent.iFd < 0)
        return -1;
    if (!bDirectory && unlinkat(parent.iFd, pName, 0) == 0)
        return 0;
    if ((!bDirectory && errno != EISDIR) || unlinkat(parent.iFd, pName, AT_REMOVEDIR) < 0)
        return -1;
    const char *pRest = OV_instBelowGuardedRoot(path.c_str());
    if (pRest && !*pRest)
        OV_instGuardedRoot()->opened.reset(-1); /* it may be made again */
    return 0;
}

/* ---- modes ---- */

/* A path descriptor needs no read permission, but fchmod refuses it. ENOSYS when the system has no
 * other way either. */
static int chmodByPath(int iFd, mode_t iMode)
{
    const std::string way = "/proc/self/fd/" + std::to_string(iFd);

    if (chmod(way.c_str(), iMode) == 0)
        return 0;
    if (errno != ENOENT && errno != ENOTDIR && errno != EACCES) /* else there is no /proc */
        return -1;
    return static_cast<int>(syscall(s_lFchmodat2, iFd, "", iMode, AT_EMPTY_PATH));
}

/* By way of the object opened anew, which must be the same. iMode as for chmod. */
static int chmodReopened(int iFd, int iAgain, mode_t iMode)
{
    OwnedFd again(iAgain);
    struct stat one;
    struct stat other;

    if (again.iFd < 0 || fstat(iFd, &one) < 0 || fstat(again.iFd, &other) < 0)
        return -1;
    if (one.st_dev != other.st_dev || one.st_ino != other.st_ino)
        return failWith(ELOOP);
    return fchmod(again.iFd, iMode);
}

int OV_instGuardedChmod(const char *pPath, mode_t iMode)
{
    OwnedFd file(OV_instGuardedOpenOwn(pPath, O_PATH));

    if (file.iFd < 0)
        return -1;
    if (chmodByPath(file.iFd, iMode) == 0)
        return 0;
    return errno == ENOSYS || errno == EPERM
               ? chmodReopened(file.iFd, OV_instGuardedOpen(pPath, O_RDONLY, 0), iMode)
               : -1;
}

/* The mode that a new directory was asked for is no reason to do without it. */
static void giveMode(int iParent, const char *pName, int iDir, const struct stat *pStatus,
                     mode_t iMode)
{
    static const int s_iFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

    iMode |= pStatus->st_mode & S_ISGID;
    if ((pStatus->st_mode & 07777) == iMode || chmodByPath(iDir, iMode) == 0)
        return;
    (void)chmodReopened(iDir, openat(iParent, pName, s_iFlags), iMode);
}

/* With its mode from the first moment on: whoever is killed behind it leaves no other. */
static int makeWithMode(int iParent, const char *pName, mode_t iMode)
{
    const mode_t iMask = umask(0);
    const int iResult = mkdirat(iParent, pName, iMode);
    const int iError = errno;

    (void)umask(iMask);
    errno = iError;
    return iResult;
}

int OV_instGuardedMkdir(const char *pPath, mode_t iMode)
{
    const char *pName = nullptr;
    struct stat status;
    OwnedFd parent(OV_instGuardedOpenParent(pPath, &pName));

    if (parent.iFd < 0 || makeWithMode(parent.iFd, pName, iMode) < 0)
        return -1;
    OwnedFd made(openat(parent.iFd, pName, O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (made.iFd < 0 || fstat(made.iFd, &status) < 0)
        return 1;
    giveMode(parent.iFd, pName, made.iFd, &status, iMode);
    return 0;
}
