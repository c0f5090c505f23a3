#include "medium/restore.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "engine/fileOps.h"
#include "medium/examine.h"
#include "ut/guard.h"
#include "ut/owned.h"
#include "ut/replaceFile.h"

static const char s_caBeside[] = ".ovmedium.new";

enum { COPY_SIZE = 256 * 1024 };

/* Where an object is to be. */
struct Spot {
    OwnedFd parent;
    const char *pName = nullptr;
    bool bReplaces = false; /* there is a regular file */
    struct stat old = {};
};

static int openPlace(const std::string &path, Spot *pPlace)
{
    pPlace->parent.reset(OV_instGuardedOpenParent(path.c_str(), &pPlace->pName));
    if (pPlace->parent.iFd < 0 && errno == ENOENT && OV_instMakeParent(path.c_str()) == 0)
        pPlace->parent.reset(OV_instGuardedOpenParent(path.c_str(), &pPlace->pName));
    if (pPlace->parent.iFd < 0)
        return -1;
    if (fstatat(pPlace->parent.iFd, pPlace->pName, &pPlace->old, AT_SYMLINK_NOFOLLOW) < 0)
        return errno == ENOENT ? 0 : -1;
    pPlace->bReplaces = S_ISREG(pPlace->old.st_mode);
    if (!S_ISDIR(pPlace->old.st_mode))
        return 0;
    errno = EISDIR;
    return -1;
}

/* The judged bits as expected, the others as they were, or as the umask lets them be. */
static mode_t wantedMode(const OV_Expected *pObject, const struct stat *pOld)
{
    const mode_t iOthers = ~pObject->iJudged & 07777;

    if (pOld)
        return (pObject->iMode & pObject->iJudged) | (pOld->st_mode & iOthers);
    const mode_t iMask = umask(0);
    (void)umask(iMask);
    return (pObject->iMode & pObject->iJudged) | (pObject->iMode & iOthers & 0777 & ~iMask);
}

/* Only root can give files away; a group that the runner is in can be had by him, too. */
static void keepOwner(int iFd, const struct stat *pOld)
{
    if (fchown(iFd, pOld->st_uid, pOld->st_gid) < 0)
        (void)!fchown(iFd, static_cast<uid_t>(-1), pOld->st_gid);
}

template <typename Fill>
static int restore(const std::string &path, const OV_Expected *pObject, Fill fill)
{
    Spot place;
    OV_Replacement replacement;

    if (openPlace(path, &place) < 0 ||
        OV_instBeginNewFile(&replacement, dup(place.parent.iFd), s_caBeside, place.pName, 0600) < 0)
        return -1;
    const int iFd = fileno(replacement.pStream);
    bool bGood = fill(iFd) == 0;
    if (bGood && place.bReplaces)
        keepOwner(iFd, &place.old);
    bGood = bGood && fchmod(iFd, wantedMode(pObject, place.bReplaces ? &place.old : nullptr)) == 0;
    const int iError = errno;
    if (OV_instEndReplacement(&replacement, bGood) == 0)
        return 0;
    if (!bGood)
        errno = iError;
    return -1;
}

static int copyAll(int iFrom, int iTo)
{
    std::vector<char> block(COPY_SIZE);

    for (;;) {
        const ssize_t iRead = OV_mediumReadFull(iFrom, block.data(), block.size());
        if (iRead <= 0)
            return static_cast<int>(iRead);
        if (OV_instWriteAll(iTo, block.data(), static_cast<size_t>(iRead)) < 0)
            return -1;
    }
}

int OV_mediumRestoreFile(const std::string &path, const OV_Expected *pObject)
{
    struct stat info;
    OwnedFd source(OV_mediumOpenSource(pObject->source, &info));

    if (source.iFd < 0) {
        errno = ENOENT;
        return -1;
    }
    return restore(path, pObject, [&](int iFd) { return copyAll(source.iFd, iFd); });
}

static int copyMember(OV_MemberWalk *pWalk, int iTo, int64_t *plSize)
{
    OV_MemberPiece piece = {};
    int iNext;

    while ((iNext = OV_mediumNextPiece(pWalk, &piece)) > 0) {
        if (lseek(iTo, piece.lOffset, SEEK_SET) < 0 ||
            OV_instWriteAll(iTo, static_cast<const char *>(piece.pBytes), piece.iCount) < 0)
            return -1;
        *plSize = piece.lOffset + static_cast<int64_t>(piece.iCount);
    }
    if (iNext < 0)
        errno = EIO;
    return iNext;
}

int OV_mediumRestoreMember(const std::string &path, const OV_Expected *pObject,
                           OV_MemberWalk *pWalk)
{
    return restore(path, pObject, [&](int iFd) {
        int64_t lSize = 0;
        return copyMember(pWalk, iFd, &lSize) == 0 ? ftruncate(iFd, lSize) : -1;
    });
}

/* Renames what was made beside the place over it. Two names of one file stay two, so the other one
 * is removed by itself. */
static int putInPlace(const Spot *pPlace)
{
    const int iResult = renameat(pPlace->parent.iFd, s_caBeside, pPlace->parent.iFd, pPlace->pName);
    const int iError = errno;

    (void)unlinkat(pPlace->parent.iFd, s_caBeside, 0); /* there is none after a real renaming */
    errno = iError;
    return iResult;
}

static int clearBeside(int iParent)
{
    return unlinkat(iParent, s_caBeside, 0) < 0 && errno != ENOENT ? -1 : 0;
}

int OV_mediumRestoreSoftLink(const std::string &path, const std::string &text)
{
    Spot place;

    if (openPlace(path, &place) < 0 || clearBeside(place.parent.iFd) < 0 ||
        symlinkat(text.c_str(), place.parent.iFd, s_caBeside) < 0)
        return -1;
    return putInPlace(&place);
}

/* By way of the opened file, so that nobody can put another in its place; by its name where /proc
 * is not there. */
static int linkBeside(const std::string &target, int iParent)
{
    OwnedFd opened(OV_instGuardedOpen(target.c_str(), O_PATH | O_NOFOLLOW, 0));
    const std::string name = "/proc/self/fd/" + std::to_string(opened.iFd);
    const char *pName = nullptr;

    if (opened.iFd < 0)
        return -1;
    if (linkat(AT_FDCWD, name.c_str(), iParent, s_caBeside, AT_SYMLINK_FOLLOW) == 0)
        return 0;
    if (errno != ENOENT && errno != ENOTDIR)
        return -1;
    OwnedFd parent(OV_instGuardedOpenParent(target.c_str(), &pName));
    return parent.iFd < 0 ? -1 : linkat(parent.iFd, pName, iParent, s_caBeside, 0);
}

int OV_mediumRestoreHardLink(const std::string &path, const std::string &target)
{
    Spot place;

    if (openPlace(path, &place) < 0 || clearBeside(place.parent.iFd) < 0 ||
        linkBeside(target, place.parent.iFd) < 0)
        return -1;
    return putInPlace(&place);
}

int OV_mediumRestoreMode(const std::string &path, const OV_Expected *pObject)
{
    OV_TreeObject found;

    if (!OV_mediumLook(path, &found) || found.iError) {
        errno = found.iError ? found.iError : EACCES;
        return -1;
    }
    return OV_instGuardedChmod(path.c_str(), wantedMode(pObject, &found.info));
}

void OV_mediumSweep(const std::string &directory)
{
    OwnedFd opened(OV_instGuardedOpenDir(directory.c_str()));

    if (opened.iFd >= 0)
        (void)unlinkat(opened.iFd, s_caBeside, 0); /* there seldom is one */
}
