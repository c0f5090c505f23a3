#include "ut/guard.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "ut/OVinstFileUtils.h"
#include "ut/owned.h"

enum { MAX_LINKS = 40 }; /* the kernel's own limit */

/* What every descriptor gets: a planted fifo or terminal must neither block nor take over the
 * program, and no command that it starts inherits the descriptor. */
static const int s_iAlways = O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
static const int s_iPathAlways = O_PATH | O_CLOEXEC;

static const long s_lFchmodat2 = 452; /* younger than many C libraries */

/* A resolution done by hand, one component at a time. */
struct Walk {
    OwnedFd dir;           /* where caRest starts */
    char caRest[PATH_MAX]; /* still to be resolved */
    int iLinks;            /* followed so far */
};

struct StreamMode {
    const char *pMode;
    int iFlags;
};

static const StreamMode s_aStreamModes[] = {
    {"r",     O_RDONLY                     },
    {"r+",    O_RDWR                       },
    {"w",     O_WRONLY | O_CREAT | O_TRUNC },
    {"a",     O_WRONLY | O_CREAT | O_APPEND},
    {nullptr, 0                            },
};

static struct {
    char caRoot[PATH_MAX]; /* no slash at its end but that of "/"; empty: nothing is guarded */
    bool bNoOpenat2;       /* the kernel has no openat2: do not ask it again */
} s_guard;

static int failWith(int iError)
{
    errno = iError;
    return -1;
}

/* What follows the guarded root in pPath (empty for the root itself), or null when pPath is not
 * below it. Only the text is compared: setup composes every path from the root's own text. */
static const char *belowRoot(const char *pPath)
{
    if (!s_guard.caRoot[0])
        return nullptr;
    for (const char *pRoot = s_guard.caRoot; *pRoot; pRoot++) {
        if (*pPath++ != *pRoot)
            return nullptr;
        if (*pRoot == '/')
            pPath += strspn(pPath, "/");
    }
    if (*pPath && *pPath != '/' && pPath[-1] != '/') /* a longer name; "/" itself ends one */
        return nullptr;
    return pPath + strspn(pPath, "/");
}

/* The root is reached as the system resolves it: whoever started setup chose it, links and all.
 * Opened anew each time, since it may be removed and made again during a run. */
static int openRoot()
{
    return open(s_guard.caRoot, s_iPathAlways | O_DIRECTORY);
}

static int openWithoutLinks(int iDir, const char *pPath, int iFlags, mode_t iMode)
{
    struct open_how how = {};

    if (s_guard.bNoOpenat2)
        return failWith(ENOSYS);
    how.flags = static_cast<unsigned>(iFlags);
    how.mode = (iFlags & O_CREAT) ? iMode & 07777 : 0; /* it rejects a mode that has no use */
    how.resolve = RESOLVE_NO_SYMLINKS;
    int iFd = static_cast<int>(syscall(SYS_openat2, iDir, pPath, &how, sizeof how));
    if (iFd < 0 && errno == ENOSYS)
        s_guard.bNoOpenat2 = true;
    return iFd;
}

/* Whether openWithoutLinks failed for a reason that a walk may get around: it met a link, or the
 * kernel or a system-call filter does not let it work at all. */
static bool needsWalk()
{
    return errno == ELOOP || errno == ENOSYS || errno == EPERM || errno == EINVAL || errno == E2BIG;
}

static int startWalk(Walk *pWalk, int iDir, const char *pRest)
{
    if (iDir < 0)
        return -1;
    pWalk->dir.reset(iDir);
    if (strlen(pRest) >= sizeof pWalk->caRest)
        return failWith(ENAMETOOLONG);
    memmove(pWalk->caRest, pRest, strlen(pRest) + 1);
    return 0;
}

/* Moves the first component into pName, "." when there is none. */
static int takeComponent(Walk *pWalk, char *pName, size_t iSize)
{
    const char *pStart = pWalk->caRest + strspn(pWalk->caRest, "/");
    size_t iLength = strcspn(pStart, "/");

    if (iLength >= iSize)
        return failWith(ENAMETOOLONG);
    memcpy(pName, pStart, iLength);
    pName[iLength] = '\0';
    if (!iLength)
        strcpy(pName, ".");
    memmove(pWalk->caRest, pStart + iLength, strlen(pStart + iLength) + 1);
    return 0;
}

/* Puts the target of an opened link in front of what is still to be resolved. The link is read
 * through its own descriptor, so nobody can exchange it after its owner was checked. */
static int followLink(Walk *pWalk, int iLink, uid_t owner)
{
    char caTarget[PATH_MAX];

    if ((owner != 0 && owner != geteuid()) || ++pWalk->iLinks > MAX_LINKS)
        return failWith(ELOOP);
    ssize_t iLength = readlinkat(iLink, "", caTarget, sizeof caTarget);
    if (iLength <= 0)
        return iLength ? -1 : failWith(ENOENT);
    if (static_cast<size_t>(iLength) + strlen(pWalk->caRest) >= sizeof caTarget)
        return failWith(ENAMETOOLONG);
    strcpy(caTarget + iLength, pWalk->caRest);

    if (caTarget[0] != '/')
        return startWalk(pWalk, pWalk->dir.release(), caTarget);
    const char *pBelow = belowRoot(caTarget);
    return startWalk(pWalk, pBelow ? openRoot() : open("/", s_iPathAlways | O_DIRECTORY),
                     pBelow ? pBelow : caTarget);
}

/* Opens the last component, which was a link of nobody when it was looked at; O_NOFOLLOW makes one
 * that was planted since then fail. */
static int openLast(Walk *pWalk, const char *pName, OwnedFd *pFound, mode_t iFound, int iFlags,
                    mode_t iMode)
{
    if (pWalk->caRest[0]) { /* only slashes are left, and they ask for a directory */
        if (iFlags & O_CREAT)
            return failWith(EISDIR);
        iFlags |= O_DIRECTORY;
    }
    if (!(iFlags & O_PATH))
        return openat(pWalk->dir.iFd, pName, iFlags | O_NOFOLLOW, iMode);
    if ((iFlags & O_DIRECTORY) && !S_ISDIR(iFound))
        return failWith(ENOTDIR);
    return pFound->release();
}

/* Whether a link in the last place is the object itself and not to be followed. */
static bool keepsLastLink(int iFlags)
{
    return (iFlags & O_NOFOLLOW) || (iFlags & (O_CREAT | O_EXCL)) == (O_CREAT | O_EXCL);
}

static int openByWalk(const char *pRest, int iFlags, mode_t iMode)
{
    Walk walk = {OwnedFd(), {}, 0};

    if (startWalk(&walk, openRoot(), pRest) < 0)
        return -1;
    for (;;) {
        char caName[NAME_MAX + 1];
        if (takeComponent(&walk, caName, sizeof caName) < 0)
            return -1;
        bool bLast = walk.caRest[strspn(walk.caRest, "/")] == '\0';
        OwnedFd found(openat(walk.dir.iFd, caName, s_iPathAlways | O_NOFOLLOW));
        struct stat status = {};
        if (found.iFd >= 0 && fstat(found.iFd, &status) < 0)
            return -1;
        if (found.iFd < 0 && !(bLast && errno == ENOENT && (iFlags & O_CREAT)))
            return -1;
        if (S_ISLNK(status.st_mode) && !(bLast && !walk.caRest[0] && keepsLastLink(iFlags))) {
            if (followLink(&walk, found.iFd, status.st_uid) < 0)
                return -1;
            continue;
        }
        if (bLast)
            return openLast(&walk, caName, &found, status.st_mode, iFlags, iMode);
        walk.dir.reset(found.release());
    }
}

/* Nearly every path holds no link at all, not even above the root, and takes one system call. */
static int openGuarded(const char *pPath, int iFlags, mode_t iMode)
{
    const char *pRest = pPath ? belowRoot(pPath) : nullptr;

    if (!pPath)
        return failWith(EINVAL);
    if (!pRest)
        return open(pPath, iFlags, iMode);
    int iFd = openWithoutLinks(AT_FDCWD, pPath, iFlags, iMode);
    if (iFd >= 0 || !needsWalk())
        return iFd;

    OwnedFd root(openRoot());
    if (root.iFd < 0)
        return -1;
    iFd = openWithoutLinks(root.iFd, *pRest ? pRest : ".", iFlags, iMode);
    if (iFd >= 0 || !needsWalk())
        return iFd;
    return openByWalk(pRest, iFlags, iMode);
}

void OV_instSetGuardedRoot(const char *pRoot)
{
    size_t iLength = pRoot ? strlen(pRoot) : 0;

    s_guard.caRoot[0] = '\0';
    if (iLength >= sizeof s_guard.caRoot) /* nothing below such a path can be opened */
        return;
    if (iLength)
        strcpy(s_guard.caRoot, pRoot);
    (void)OV_instRemoveExtraSlash(s_guard.caRoot); /* fails for null only */
    iLength = strlen(s_guard.caRoot);
    if (iLength > 1 && s_guard.caRoot[iLength - 1] == '/')
        s_guard.caRoot[iLength - 1] = '\0';
}

int OV_instGuardedOpenDir(const char *pDirectory)
{
    return openGuarded(pDirectory, s_iPathAlways | O_DIRECTORY, 0);
}

int OV_instGuardedOpen(const char *pPath, int iFlags, mode_t iMode)
{
    /* openat2 rejects what has no meaning for a path descriptor */
    return openGuarded(pPath, iFlags | ((iFlags & O_PATH) ? O_CLOEXEC : s_iAlways), iMode);
}

/* Where nobody else can, second names are our own or a backup's. What lies outside the guarded root
 * was chosen by whoever started setup. */
bool OV_instIsPlanted(int iFd, const char *pPath)
{
    const char *pName = nullptr;
    struct stat status;

    if (!belowRoot(pPath) || fstat(iFd, &status) < 0)
        return false;
    if (!S_ISREG(status.st_mode) || status.st_nlink < 2)
        return false;
    OwnedFd parent(OV_instGuardedOpenParent(pPath, &pName));
    if (parent.iFd < 0 || fstat(parent.iFd, &status) < 0)
        return true;
    return (status.st_uid != 0 && status.st_uid != geteuid()) ||
           (status.st_mode & (S_IWGRP | S_IWOTH));
}

FILE *OV_instGuardedFopen(const char *pPath, const char *pMode)
{
    const StreamMode *pRow = s_aStreamModes;

    while (pRow->pMode && (!pMode || strcmp(pRow->pMode, pMode) != 0))
        pRow++;
    if (!pRow->pMode) {
        errno = EINVAL;
        return nullptr;
    }
    OwnedFd file(OV_instGuardedOpen(pPath, pRow->iFlags & ~O_TRUNC, 0666));
    if (file.iFd < 0)
        return nullptr;
    if ((pRow->iFlags & O_CREAT) && OV_instIsPlanted(file.iFd, pPath)) {
        errno = EMLINK;
        return nullptr;
    }
    if ((pRow->iFlags & O_TRUNC) && ftruncate(file.iFd, 0) < 0 && errno != EINVAL)
        return nullptr; /* EINVAL: a device, which has nothing to be emptied */
    FILE *pFile = fdopen(file.iFd, pMode);
    if (pFile)
        (void)file.release(); /* the stream closes it */
    return pFile;
}

int OV_instGuardedOpenParent(const char *pPath, const char **ppName)
{
    const char *pSlash = pPath ? strrchr(pPath, '/') : nullptr;
    const char *pName = pSlash ? pSlash + 1 : pPath;
    char caParent[PATH_MAX] = ".";

    if (!pName || !*pName)
        return failWith(EINVAL);
    if (pSlash) {
        /* with its slash, for the sake of "/" */
        size_t iLength = static_cast<size_t>(pName - pPath);
        if (iLength >= sizeof caParent)
            return failWith(ENAMETOOLONG);
        memcpy(caParent, pPath, iLength);
        caParent[iLength] = '\0';
    }
    *ppName = pName;
    return OV_instGuardedOpenDir(caParent);
}

int OV_instGuardedRemove(const char *pPath)
{
    const char *pName = nullptr;
    char caPath[PATH_MAX];
    size_t iLength = pPath ? strlen(pPath) : 0;

    if (!iLength || iLength >= sizeof caPath)
        return failWith(!pPath ? EINVAL : iLength ? ENAMETOOLONG : ENOENT);
    strcpy(caPath, pPath);
    while (iLength > 1 && caPath[iLength - 1] == '/')
        caPath[--iLength] = '\0';
    bool bDirectory = pPath[iLength] == '/'; /* asked for by its slash: never the link before it */

    OwnedFd parent(OV_instGuardedOpenParent(caPath, &pName));
    if (parent.iFd < 0)
        return -1;
    if (!bDirectory && unlinkat(parent.iFd, pName, 0) == 0)
        return 0;
    if (!bDirectory && errno != EISDIR)
        return -1;
    return unlinkat(parent.iFd, pName, AT_REMOVEDIR);
}

int OV_instGuardedChmod(const char *pPath, mode_t iMode)
{
    OwnedFd file(openGuarded(pPath, s_iPathAlways, 0));
    char caLink[sizeof "/proc/self/fd/" + 3 * sizeof(int)];

    if (file.iFd < 0)
        return -1;
    if (OV_instIsPlanted(file.iFd, pPath))
        return failWith(EMLINK);
    /* A path descriptor needs no read permission, but fchmod refuses it. */
    (void)snprintf(caLink, sizeof caLink, "/proc/self/fd/%d", file.iFd); /* fits any int */
    if (chmod(caLink, iMode) == 0)
        return 0;
    if (errno != ENOENT && errno != ENOTDIR) /* else /proc is not mounted */
        return -1;
    return static_cast<int>(syscall(s_lFchmodat2, file.iFd, "", iMode, AT_EMPTY_PATH));
}

int OV_instGuardedOpenIn(const char *pRoot, const char *pPath, int iFlags, mode_t iMode)
{
    char caOuter[PATH_MAX];

    strcpy(caOuter, s_guard.caRoot);
    OV_instSetGuardedRoot(pRoot);
    int iFd = OV_instGuardedOpen(pPath, iFlags, iMode);
    int iError = errno;
    strcpy(s_guard.caRoot, caOuter);
    errno = iError;
    return iFd;
}
