#include "engine/links.h"

#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "engine/fileOps.h"
#include "engine/records.h"
#include "ut/OVinstFileUtils.h"
#include "ut/guard.h"
#include "ut/owned.h"
#include "ut/strprint.h"
#include "ut/text.h"

/* One link to be made: pLast in iParent is to lead to the target. A hard link's target is opened,
 * itself and the directory that it is in by the name pFrom; -1 where that cannot be done. */
struct Link {
    const char *pTarget;
    int iTarget;
    int iFrom;
    const char *pFrom;
    int iParent;
    const char *pLast;
};

/* What differs between the two kinds of link. */
struct LinkKind {
    const char *pWord;
    bool bHard;
    int (*make)(const Link *pLink);
};

/* Links by name, where the system has no other way, and takes back a link to what somebody has put
 * in the target's place meanwhile. */
static int makeByName(const Link *pLink)
{
    struct stat wanted;
    struct stat made;

    if (fstat(pLink->iTarget, &wanted) < 0 ||
        linkat(pLink->iFrom, pLink->pFrom, pLink->iParent, pLink->pLast, 0) < 0)
        return -1;
    if (fstatat(pLink->iParent, pLink->pLast, &made, AT_SYMLINK_NOFOLLOW) == 0 &&
        made.st_dev == wanted.st_dev && made.st_ino == wanted.st_ino)
        return 0;
    (void)unlinkat(pLink->iParent, pLink->pLast, 0); /* the failure is told */
    return -1;
}

/* By way of the opened file, so that nobody can put another in its place. Without /proc that takes
 * root's rights. */
static int makeHard(const Link *pLink)
{
    const std::string way = "/proc/self/fd/" + std::to_string(pLink->iTarget);

    if (linkat(AT_FDCWD, way.c_str(), pLink->iParent, pLink->pLast, AT_SYMLINK_FOLLOW) == 0 ||
        linkat(pLink->iTarget, "", pLink->iParent, pLink->pLast, AT_EMPTY_PATH) == 0)
        return 0;
    return makeByName(pLink);
}

static int makeSoft(const Link *pLink)
{
    return symlinkat(pLink->pTarget, pLink->iParent, pLink->pLast);
}

/* A hard link's target, relative to the directory. No stranger's link may lead to it: it would make
 * a file from outside part of the product. */
static void openLinkTarget(const char *pPath, OwnedFd *pFrom, Link *pLink)
{
    pFrom->reset(OV_instGuardedOpenParent(pPath, &pLink->pFrom));
    pLink->iFrom = pFrom->iFd;
    if (pFrom->iFd >= 0)
        pLink->iTarget = openat(pFrom->iFd, pLink->pFrom, O_PATH | O_NOFOLLOW | O_CLOEXEC);
}

/* The link's parent directory, opened; it is made when it is missing. -1 when it cannot be. */
static int openLinkParent(const char *pDirectory, const char *pName, char **ppPath,
                          const char **ppLast)
{
    *ppPath = pName[0] == '/' ? strdup(pName) : OV_instBuildPath(pDirectory, pName, nullptr);
    if (!*ppPath || OV_instMakeParent(*ppPath) < 0)
        return -1;
    return OV_instGuardedOpenParent(*ppPath, ppLast);
}

static int replaceByLink(const LinkKind *pKind, const Link *pLink, const char *pName, FILE *pStream)
{
    (void)unlinkat(pLink->iParent, pLink->pLast, 0); /* what stays makes the link fail */
    if (pKind->make(pLink) == 0)
        return 0;
    OV_instSendUpdate(pStream, "-1 %s linking file %s to %s\n", pKind->pWord, pName,
                      pLink->pTarget);
    return 1;
}

static int cannotChange(const LinkKind *pKind, const char *pDirectory, const char *pTarget,
                        const char *pName, FILE *pStream)
{
    OV_instSendUpdate(pStream, "-1 %s can't change directory to: %s:%s->%s\n", pKind->pWord,
                      pDirectory, pTarget, pName);
    return 1;
}

static int makeLink(const LinkKind *pKind, const char *pDirectory, const char *pTarget,
                    const char *pName, FILE *pStream)
{
    OwnedText saved(getcwd(nullptr, 0));
    Link link = {pTarget, -1, -1, nullptr, -1, nullptr};
    char *pPath = nullptr;
    OwnedFd from;

    if (!saved) {
        OV_instSendUpdate(pStream, "-1 %s can't get current working directory\n", pKind->pWord);
        return 1;
    }
    OwnedFd directory(OV_instGuardedOpenDir(pDirectory));
    if (directory.iFd < 0)
        return cannotChange(pKind, pDirectory, pTarget, pName, pStream);
    OwnedFd parent(openLinkParent(pDirectory, pName, &pPath, &link.pLast));
    OwnedText path(pPath);
    if (parent.iFd < 0) {
        /* The decompression's message: who looks for it knows it so. */
        OV_instSendUpdate(pStream, "-1 Uncompress can't create destination directory for:\n%s\n",
                          pName);
        return 1;
    }
    link.iParent = parent.iFd;
    OwnedText targetPath(pTarget[0] == '/' ? strdup(pTarget)
                                           : OV_instBuildPath(pDirectory, pTarget, nullptr));
    if (pKind->bHard && targetPath)
        openLinkTarget(targetPath.get(), &from, &link);
    OwnedFd target(link.iTarget);
    if (fchdir(directory.iFd) < 0)
        return cannotChange(pKind, pDirectory, pTarget, pName, pStream);
    int iResult = replaceByLink(pKind, &link, pName, pStream);
    if (chdir(saved.get()) < 0) {
        OV_instSendUpdate(pStream, "-1 %s can't change directory back to: %s\n", pKind->pWord,
                          saved.get());
        return 1;
    }
    OV_instSendUpdate(pStream, "+1 %s %s\n", pKind->pWord, pName);
    return iResult;
}

static int linkOperation(const LinkKind *pKind, const char *pDirectory, const char *pTarget,
                         const char *pName, int64_t lSize, FILE *pStream, int iDelete)
{
    if (!OV_instIsText(pDirectory) || !OV_instIsText(pTarget) || !OV_instIsText(pName)) {
        OV_instSendUpdate(pStream, "-1 %s invalid parameters\n", pKind->pWord);
        return 1;
    }
    if (!iDelete)
        return makeLink(pKind, pDirectory, pTarget, pName, pStream);
    OwnedText path(OV_instStrPrint("%s/%s", pDirectory, pName));
    if (path)
        (void)OVinstDeleteFile(path.get(), pStream, lSize); /* it tells, and does not count */
    return 0;
}

int OV_instHardlink(const char *pDirectory, const char *pTarget, const char *pName, int64_t lSize,
                    FILE *pStream, int iDelete)
{
    static const LinkKind s_kind = {"Hardlink", true, makeHard};

    return linkOperation(&s_kind, pDirectory, pTarget, pName, lSize, pStream, iDelete);
}

int OV_instSoftlink(const char *pDirectory, const char *pTarget, const char *pName, int64_t lSize,
                    FILE *pStream, int iDelete)
{
    static const LinkKind s_kind = {"Softlink", false, makeSoft};

    return linkOperation(&s_kind, pDirectory, pTarget, pName, lSize, pStream, iDelete);
}
