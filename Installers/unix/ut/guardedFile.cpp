#include "ut/guardedFile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <unistd.h>

#include "ut/guardOpen.h"
#include "ut/guardWalk.h"
#include "ut/guardedRoot.h"
#include "ut/owned.h"
#include "ut/trust.h"

static const mode_t s_iKeptMode = 0644; /* of what setup keeps for itself */
static const mode_t s_iNewMode = 0600;  /* until the file is complete */

struct StreamMode {
    const char *pMode;
    int iFlags;
};

static const StreamMode s_aStreamModes[] = {
    {"r",     O_RDONLY           },
    {"r+",    O_RDWR             },
    {"w",     O_WRONLY           },
    {"a",     O_WRONLY | O_APPEND},
    {nullptr, 0                  },
};

/* What is to become of a file that is there, in the place of one to be written. */
enum Fate { FATE_USE, FATE_REPLACE_KEEPING, FATE_REPLACE };

static int failWith(int iError)
{
    errno = iError;
    return -1;
}

/* The flags for a stream's mode, or -1. */
static int flagsOf(const char *pMode)
{
    const StreamMode *pRow = s_aStreamModes;

    while (pRow->pMode && (!pMode || strcmp(pRow->pMode, pMode) != 0))
        pRow++;
    return pRow->pMode ? pRow->iFlags : failWith(EINVAL);
}

static FILE *streamOf(int iOpened, const char *pMode)
{
    OwnedFd file(iOpened);
    FILE *pFile = file.iFd < 0 ? nullptr : fdopen(file.iFd, pMode);

    if (pFile)
        (void)file.release(); /* the stream closes it */
    return pFile;
}

/* ---- replacing ---- */

/* A file of nobody else's with one name, which needs no look at its place. */
static bool isPlainlyOwn(const struct stat *pStatus)
{
    return S_ISREG(pStatus->st_mode) && pStatus->st_nlink == 1 && OV_instIsOwnObject(pStatus);
}

static bool isPlanted(const OV_Found *pFound, const struct stat *pStatus)
{
    return S_ISREG(pStatus->st_mode) && pStatus->st_nlink > 1 && pFound->parent.bShared;
}

/* A file that setup keeps for itself. */
static Fate fateOfKept(const OV_Found *pFound, const struct stat *pStatus, uid_t destinationOwner)
{
    const bool bTrusted = pFound->parent.blame.empty() || OV_instIsOwnObject(pStatus);

    if (isPlanted(pFound, pStatus))
        return OV_instIsTrustedOwner(pStatus, destinationOwner) ? FATE_REPLACE_KEEPING
                                                                : FATE_REPLACE;
    if (pFound->bByLink || (bTrusted && OV_instIsTrustedOwner(pStatus, destinationOwner)))
        return FATE_USE;
    return FATE_REPLACE;
}

/* A file of the product. */
static Fate fateOfTarget(const OV_Found *pFound, const struct stat *pStatus, uid_t)
{
    if (pFound->bByLink)
        return isPlanted(pFound, pStatus) ? FATE_REPLACE_KEEPING : FATE_USE;
    if (!S_ISREG(pStatus->st_mode))
        return FATE_REPLACE;
    return isPlainlyOwn(pStatus) ? FATE_USE : FATE_REPLACE_KEEPING;
}

/* Only root can give files away; others may still give them to their groups. */
static void takeOverOwner(int iFd, const struct stat *pOld)
{
    if (fchown(iFd, pOld->st_uid, pOld->st_gid) < 0)
        (void)fchown(iFd, static_cast<uid_t>(-1), pOld->st_gid); /* else it stays ours whole */
}

/* ---- writing ---- */

/* How one kind of file is written. */
struct Writing {
    Fate (*fpFate)(const OV_Found *pFound, const struct stat *pStatus, uid_t destinationOwner);
    const struct stat *pSource; /* not to be written to; may be null */
    int iFlags;
    bool bKept; /* it is setup's own, and its mode is set here */
};

/* What a new file begins with: a target is for nobody else to read until it is complete. Setup's
 * own files begin as they stay, or one that is killed at once would leave another mode. */
static mode_t firstMode(const Writing *pWriting)
{
    return pWriting->bKept ? s_iKeptMode : s_iNewMode;
}

static bool isSource(const Writing *pWriting, const struct stat *pStatus)
{
    const struct stat *pSource = pWriting->pSource;

    return pSource && pSource->st_dev == pStatus->st_dev && pSource->st_ino == pStatus->st_ino;
}

static int createFound(const Writing *pWriting, const OV_Found *pFound)
{
    struct stat status;
    OwnedFd file(
        OV_instOpenFound(pFound, pWriting->iFlags | O_CREAT | O_EXCL, firstMode(pWriting)));

    if (file.iFd >= 0 && fstat(file.iFd, &status) == 0)
        OV_instNoteCreated(&status);
    if (file.iFd >= 0 && pWriting->bKept)
        (void)fchmod(file.iFd, s_iKeptMode); /* where there are modes */
    return file.release();
}

/* A new file in the place of what was found. A change of owner takes bits of the mode away, so it
 * comes first. */
static int replaceFound(const Writing *pWriting, const OV_Found *pFound, const struct stat *pOld,
                        bool bKeeping)
{
    if (unlinkat(pFound->parent.dir.iFd, pFound->name.c_str(), 0) < 0)
        return -1;
    OwnedFd file(createFound(pWriting, pFound));
    if (file.iFd >= 0 && bKeeping)
        takeOverOwner(file.iFd, pOld);
    if (file.iFd >= 0 && bKeeping && pWriting->bKept)
        (void)fchmod(file.iFd, pOld->st_mode & 0777); /* likewise */
    return file.release();
}

/* Another user's file that is to be emptied and that only he may write to, in a directory where we
 * may replace it: one of root's, say, who has maintained our tree for a while. */
static bool isReplaceable(const Writing *pWriting, const OV_Found *pFound,
                          const struct stat *pStatus)
{
    return !(pWriting->iFlags & O_APPEND) && !pFound->bByLink && S_ISREG(pStatus->st_mode) &&
           pStatus->st_uid != geteuid();
}

/* Opens what was found, or a new file in its place; what is looked at is what was opened, except
 * where nobody can open it. */
static int openLooked(const Writing *pWriting, OV_GuardedRoot *pRoot, const OV_Found *pFound)
{
    OwnedFd file(OV_instOpenFound(pFound, pWriting->iFlags, 0));
    struct stat status = pFound->status;
    const int iError = file.iFd < 0 ? errno : 0;

    if (iError == ENOENT)
        return createFound(pWriting, pFound);
    if (iError == ETXTBSY && isSource(pWriting, &status))
        return failWith(EALREADY);
    if (iError && iError != EACCES && iError != ENXIO) /* a fifo or socket without another end */
        return failWith(iError);
    if (!iError && fstat(file.iFd, &status) < 0)
        return -1;
    if (isSource(pWriting, &status))
        return failWith(EALREADY);
    const Fate iFate = pWriting->fpFate(pFound, &status, pRoot->status.st_uid);
    if (iFate == FATE_REPLACE || iFate == FATE_REPLACE_KEEPING)
        return replaceFound(pWriting, pFound, &status, iFate == FATE_REPLACE_KEEPING);
    if (iError == EACCES && isReplaceable(pWriting, pFound, &status))
        return replaceFound(pWriting, pFound, &status, false);
    return iError ? failWith(iError) : file.release();
}

/* Creates the file, which has not been there. */
static int createAtOnce(const Writing *pWriting, OV_GuardedRoot *pRoot, const char *pPath)
{
    struct stat status;
    OwnedFd file(
        OV_instOpenBelow(pRoot, pPath, pWriting->iFlags | O_CREAT | O_EXCL, firstMode(pWriting)));

    if (file.iFd < 0 || !pWriting->bKept)
        return file.release();
    if (fstat(file.iFd, &status) == 0)
        OV_instNoteCreated(&status);
    (void)fchmod(file.iFd, s_iKeptMode); /* where there are modes */
    return file.release();
}

/* Opens the file for writing, whatever is in it left for now. Most files are new, or ours with one
 * name: those need no look at their place. Outside of the root nothing does. */
static int openForWriting(const Writing *pWriting, const char *pPath, bool *pbNew)
{
    OV_GuardedRoot *pRoot = OV_instGuardedRoot();
    const char *pRest = pPath ? OV_instBelowRoot(pRoot, pPath) : nullptr;
    struct stat status;
    OV_Found found;

    OwnedFd file(createAtOnce(pWriting, pRoot, pPath));
    *pbNew = file.iFd >= 0;
    if (file.iFd >= 0 || errno != EEXIST)
        return file.release();
    file.reset(pRest ? OV_instOpenBelow(pRoot, pPath, pWriting->iFlags | O_NOFOLLOW, 0)
                     : OV_instOpenBelow(pRoot, pPath, pWriting->iFlags | O_CREAT, s_iNewMode));
    if (!pRest && file.iFd < 0)
        return -1;
    if (file.iFd >= 0 && fstat(file.iFd, &status) == 0 && (!pRest || isPlainlyOwn(&status)))
        return isSource(pWriting, &status) ? failWith(EALREADY) : file.release();
    if (OV_instWalk(pRoot, pRest, false, &found) < 0)
        return -1;
    return openLooked(pWriting, pRoot, &found);
}

static int openEmpty(const Writing *pWriting, const char *pPath)
{
    struct stat status;
    bool bNew = false;
    OwnedFd file(openForWriting(pWriting, pPath, &bNew));

    if (file.iFd < 0 || bNew)
        return file.release();
    if (fstat(file.iFd, &status) < 0)
        return -1;
    /* A device has nothing to be emptied. */
    if (S_ISREG(status.st_mode) && status.st_size && ftruncate(file.iFd, 0) < 0)
        return -1;
    return file.release();
}

FILE *OV_instGuardedFopen(const char *pPath, const char *pMode)
{
    const int iFlags = flagsOf(pMode);

    if (iFlags < 0)
        return nullptr;
    if (pMode[0] == 'r')
        return streamOf(OV_instOpenBelow(OV_instGuardedRoot(), pPath, iFlags, 0), pMode);
    const Writing writing = {fateOfKept, nullptr, iFlags, true};
    bool bNew = false;
    return streamOf(pMode[0] == 'w' ? openEmpty(&writing, pPath)
                                    : openForWriting(&writing, pPath, &bNew),
                    pMode);
}

int OV_instGuardedOpenTarget(const char *pPath, const struct stat *pSource)
{
    const Writing writing = {fateOfTarget, pSource, O_WRONLY, false};

    return openEmpty(&writing, pPath);
}

FILE *OV_instGuardedFopenTarget(const char *pPath)
{
    return streamOf(OV_instGuardedOpenTarget(pPath, nullptr), "w");
}

/* ---- believing ---- */

/* Why an opened object is not to be trusted, to be put behind its path; empty when it is. */
static std::string whyNotTrusted(const OV_Found *pFound, const struct stat *pStatus, int iFd,
                                 uid_t destinationOwner)
{
    if (!OV_instIsTrustedOwner(pStatus, destinationOwner))
        return " belongs to " + OV_instUserName(pStatus->st_uid);
    if (OV_instMayStrangersWrite(pStatus, destinationOwner, iFd))
        return " of " + OV_instUserName(pStatus->st_uid) + " can be written to by others";
    if (pFound && !pFound->parent.blame.empty())
        return " is below " + pFound->parent.blame;
    if (pFound && pFound->parent.bStrangersAdd && pStatus->st_nlink > 1 &&
        S_ISREG(pStatus->st_mode))
        return " has a second name in " + pFound->parent.path + ", which others can write to";
    return "";
}

static int refuse(const std::string &path, const std::string &why, int iError)
{
    OV_instTellRefusal(path + why + " and was not used");
    return failWith(iError);
}

/* Opens a file by its path, and where it is below the root together with its place. */
static int openWithPlace(OV_GuardedRoot *pRoot, const char *pPath, int iFlags, OV_Found *pFound)
{
    const char *pRest = OV_instBelowRoot(pRoot, pPath);

    if (!pRest)
        return OV_instOpenBelow(pRoot, pPath, iFlags, 0);
    if (OV_instOpenRoot(pRoot) < 0 || OV_instWalk(pRoot, pRest, false, pFound) < 0)
        return -1;
    return OV_instOpenFound(pFound, iFlags, 0);
}

static int openBelieved(OV_GuardedRoot *pRoot, const char *pPath, int iFlags)
{
    struct stat status;
    OV_Found found;
    OwnedFd file(openWithPlace(pRoot, pPath, iFlags, &found));

    if (file.iFd < 0 || fstat(file.iFd, &status) < 0)
        return -1;
    if (!S_ISREG(status.st_mode))
        return refuse(pPath, " is no regular file", EACCES);
    if (status.st_size > OV_BELIEVED_MOST)
        return refuse(pPath, " is too large", EFBIG);
    const bool bBelow = OV_instBelowRoot(pRoot, pPath) != nullptr;
    std::string why =
        whyNotTrusted(bBelow ? &found : nullptr, &status, file.iFd, pRoot->status.st_uid);
    return why.empty() ? file.release() : refuse(pPath, why, EACCES);
}

FILE *OV_instGuardedFopenBelieved(const char *pRoot, const char *pPath, const char *pMode)
{
    const int iFlags = flagsOf(pMode);
    OV_GuardedRoot own;

    if (iFlags < 0 || !pPath || pMode[0] != 'r') {
        errno = EINVAL;
        return nullptr;
    }
    if (!pRoot)
        return streamOf(openBelieved(OV_instGuardedRoot(), pPath, iFlags), pMode);
    OV_instNameRoot(&own, pRoot);
    return streamOf(openBelieved(&own, pPath, iFlags), pMode);
}

bool OV_instIsTrusted(const char *pPath)
{
    OV_GuardedRoot *pRoot = OV_instGuardedRoot();
    struct stat status;
    struct stat byName;
    OV_Found found;

    if (!pPath || stat(pPath, &byName) < 0)
        return false;
    if (!OV_instBelowRoot(pRoot, pPath))
        return true;
    OwnedFd object(openWithPlace(pRoot, pPath, O_PATH, &found));
    if (object.iFd < 0 || fstat(object.iFd, &status) < 0)
        return false;
    std::string why = whyNotTrusted(&found, &status, object.iFd, pRoot->status.st_uid);
    if (why.empty() && (status.st_dev != byName.st_dev || status.st_ino != byName.st_ino))
        why = " was exchanged";
    return why.empty() || refuse(pPath, why, EACCES) == 0;
}
