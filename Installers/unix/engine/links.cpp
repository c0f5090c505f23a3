#include "engine/links.h"

#include <cstring>
#include <fcntl.h>
#include <unistd.h>

#include "engine/fileOps.h"
#include "engine/records.h"
#include "ut/OVinstFileUtils.h"
#include "ut/guard.h"
#include "ut/owned.h"
#include "ut/strprint.h"
#include "ut/text.h"

/* One link to be made: pLast in iParent is to lead to the target. */
struct Link {
    const char *pTarget;
    int iTarget; /* the target itself, opened; hard links only, -1 where it cannot be */
    int iParent;
    const char *pLast;
};

/* What differs between the two kinds of link. */
struct LinkKind {
    const char *pWord;
    bool bHard;
    int (*make)(const Link *pLink);
};

/* By way of the opened file, so that nobody can put another in its place. */
static int makeHard(const Link *pLink)
{
    char caOpened[64];

    (void)snprintf(caOpened, sizeof(caOpened), "/proc/self/fd/%d", pLink->iTarget);
    return linkat(AT_FDCWD, caOpened, pLink->iParent, pLink->pLast, AT_SYMLINK_FOLLOW);
}

static int makeSoft(const Link *pLink)
{
    return symlinkat(pLink->pTarget, pLink->iParent, pLink->pLast);
}

/* A hard link's target, relative to the directory. No stranger's link may lead to it: it would make
 * a file from outside part of the product. */
static int openLinkTarget(const char *pDirectory, const char *pTarget)
{
    OwnedText path(pTarget[0] == '/' ? strdup(pTarget)
                                     : OV_instBuildPath(pDirectory, pTarget, nullptr));

    return path ? OV_instGuardedOpen(path.get(), O_PATH | O_NOFOLLOW, 0) : -1;
}

static bool isDirectory(const char *pPath)
{
    OwnedFd directory(OV_instGuardedOpenDir(pPath));

    return directory.iFd >= 0;
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

static int changeInto(const char *pDirectory)
{
    OwnedFd directory(OV_instGuardedOpenDir(pDirectory));

    return directory.iFd < 0 ? -1 : fchdir(directory.iFd);
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

static int makeLink(const LinkKind *pKind, const char *pDirectory, const char *pTarget,
                    const char *pName, FILE *pStream)
{
    char caSaved[OV_INST_PATH_SIZE + 1];
    const char *pLast = nullptr;
    char *pPath = nullptr;

    if (!getcwd(caSaved, sizeof(caSaved))) {
        OV_instSendUpdate(pStream, "-1 %s can't get current working directory\n", pKind->pWord);
        return 1;
    }
    if (!isDirectory(pDirectory)) {
        OV_instSendUpdate(pStream, "-1 %s can't change directory to: %s:%s->%s\n", pKind->pWord,
                          pDirectory, pTarget, pName);
        return 1;
    }
    OwnedFd parent(openLinkParent(pDirectory, pName, &pPath, &pLast));
    OwnedText path(pPath);
    if (parent.iFd < 0) {
        /* The decompression's message: who looks for it knows it so. */
        OV_instSendUpdate(pStream, "-1 Uncompress can't create destination directory for:\n%s\n",
                          pName);
        return 1;
    }
    OwnedFd target(pKind->bHard ? openLinkTarget(pDirectory, pTarget) : -1);
    if (changeInto(pDirectory) < 0) {
        OV_instSendUpdate(pStream, "-1 %s can't change directory to: %s:%s->%s\n", pKind->pWord,
                          pDirectory, pTarget, pName);
        return 1;
    }
    const Link link = {pTarget, target.iFd, parent.iFd, pLast};
    int iResult = replaceByLink(pKind, &link, pName, pStream);
    if (chdir(caSaved) < 0) {
        OV_instSendUpdate(pStream, "-1 %s can't change directory back to: %s\n", pKind->pWord,
                          caSaved);
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
        (void)OVinstDeleteFile(path.get(), pStream, lSize); /* a file that stays is no failure */
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
