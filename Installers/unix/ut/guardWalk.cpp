#include "ut/guardWalk.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "ut/trust.h"

enum {
    MAX_LINKS = 40, /* the kernel's own limit */
    MAX_OPEN = 200, /* directories of one walk; a process has some 1000 */
};

static const int s_iPathOnly = O_PATH | O_CLOEXEC | O_NOFOLLOW;

/* A resolution by hand. The directories on the way stay open, so that ".." leads back to where the
 * walk came from, wherever somebody has moved a directory meanwhile. */
struct Walk {
    OV_GuardedRoot *pRoot;
    std::vector<OV_WayPoint> way; /* each is in the one before */
    std::string rest;             /* still to be resolved, from the last of them */
    int iLinks = 0;               /* followed so far */
    bool bInside = true;          /* the first of them is the root */
    bool bByLink = false;         /* as in OV_Found */
    std::string confinedBy;       /* the link for whose sake nothing may leave the root any more */
};

static int failWith(int iError)
{
    errno = iError;
    return -1;
}

/* ---- the way ---- */

static std::string joined(const std::string &directory, const std::string &name)
{
    return directory + (directory.empty() || directory.back() != '/' ? "/" : "") + name;
}

/* What strangers can do through a directory itself, in words; empty when they can do nothing. */
static std::string blameFor(const std::string &path, const struct stat *pStatus,
                            uid_t destinationOwner, bool bWritable)
{
    if (!OV_instIsTrustedOwner(pStatus, destinationOwner))
        return path + ", which belongs to " + OV_instUserName(pStatus->st_uid);
    if (bWritable && !(pStatus->st_mode & S_ISVTX))
        return path + " of " + OV_instUserName(pStatus->st_uid) + ", which others can write to";
    return "";
}

/* Adds an opened directory. Once strangers have a hand in one, all that is deeper is theirs. */
static void addPlace(Walk *pWalk, OwnedFd *pDir, const struct stat *pStatus,
                     const std::string &path)
{
    const uid_t destinationOwner = pWalk->pRoot->status.st_uid;
    const bool bWritable = OV_instMayStrangersWrite(pStatus, destinationOwner, pDir->iFd);
    OV_WayPoint place;

    if (!pWalk->way.empty())
        place.blame = pWalk->way.back().blame;
    if (place.blame.empty())
        place.blame = blameFor(path, pStatus, destinationOwner, bWritable);
    place.bStrangersAdd = bWritable || !place.blame.empty();
    place.bShared = !place.blame.empty() || !OV_instIsOwn(pStatus->st_uid) ||
                    (pStatus->st_mode & (S_IWGRP | S_IWOTH));
    place.dir = std::move(*pDir);
    place.path = path;
    pWalk->way.push_back(std::move(place));
    if (pWalk->way.size() > MAX_OPEN) /* the first one is always needed */
        pWalk->way[pWalk->way.size() - MAX_OPEN].dir.reset(-1);
}

/* Begins anew with a directory that was opened. */
static int startAt(Walk *pWalk, int iOpened, bool bInside, const std::string &path)
{
    OwnedFd dir(iOpened);
    struct stat status;

    if (dir.iFd < 0 || fstat(dir.iFd, &status) < 0)
        return -1;
    pWalk->way.clear();
    pWalk->bInside = bInside;
    addPlace(pWalk, &dir, &status, path);
    return 0;
}

static int startAtRoot(Walk *pWalk)
{
    int iRoot = OV_instOpenRoot(pWalk->pRoot);

    if (iRoot < 0)
        return -1;
    return startAt(pWalk, fcntl(iRoot, F_DUPFD_CLOEXEC, 0), true, pWalk->pRoot->text);
}

/* Goes on in a directory that was opened; one that is the root is inside again. */
static int enter(Walk *pWalk, OwnedFd *pDir, const struct stat *pStatus, const std::string &path)
{
    if (!S_ISDIR(pStatus->st_mode))
        return failWith(ENOTDIR);
    if (!pWalk->bInside && OV_instIsRoot(pWalk->pRoot, pStatus))
        return startAtRoot(pWalk);
    addPlace(pWalk, pDir, pStatus, path);
    return 0;
}

/* ---- links ---- */

static int refuse(const std::string &which)
{
    OV_instTellRefusal(which + " and was not followed");
    return failWith(ELOOP);
}

/* The link in words, and if it is not its owner then its place that speaks against it. */
static std::string wordsFor(const Walk *pWalk, const std::string &path, uid_t owner)
{
    const OV_WayPoint *pPlace = &pWalk->way.back();
    std::string words = path + " is a link of " + OV_instUserName(owner);

    if (!OV_instIsOwn(owner))
        return words;
    return words + " below " +
           (pPlace->blame.empty() ? pPlace->path + ", which others can write to" : pPlace->blame);
}

/* Whether a link is root's or ours, and where it is because we have put it there. */
static bool leadsAnywhere(const OV_WayPoint *pPlace, const struct stat *pLink)
{
    return OV_instIsOwn(pLink->st_uid) && pPlace->blame.empty() &&
           !(pLink->st_nlink > 1 && pPlace->bStrangersAdd);
}

/* From here on the walk must not leave the root. Where it has, it ends, and so it does where there
 * is nothing that could be left. */
static int confine(Walk *pWalk, const std::string &path, uid_t owner)
{
    if (!pWalk->confinedBy.empty())
        return 0;
    pWalk->confinedBy = wordsFor(pWalk, path, owner);
    if (!pWalk->bInside)
        return refuse(pWalk->confinedBy + ", outside of " + pWalk->pRoot->text + ",");
    return pWalk->pRoot->text == "/" ? refuse(pWalk->confinedBy) : 0;
}

static int refuseToLeave(const Walk *pWalk)
{
    return refuse(pWalk->confinedBy + ", leads out of " + pWalk->pRoot->text);
}

static int followAbsolute(Walk *pWalk)
{
    const char *pTarget = pWalk->rest.c_str();
    const char *pBelow = OV_instBelowRealRoot(pWalk->pRoot, pTarget);

    if (!pBelow && !pWalk->confinedBy.empty())
        return refuseToLeave(pWalk);
    if (!pBelow)
        return startAt(pWalk, open("/", O_PATH | O_DIRECTORY | O_CLOEXEC), false, "/");
    pWalk->rest = std::string(pBelow);
    return startAtRoot(pWalk);
}

/* Puts the target of an opened link in front of what is still to be resolved. The link is read
 * through its own descriptor, so nobody can exchange it after its owner was looked at. */
static int followLink(Walk *pWalk, int iLink, const struct stat *pLink, const std::string &name,
                      bool bLast)
{
    const std::string path = joined(pWalk->way.back().path, name);
    std::string target(PATH_MAX, '\0');

    if (++pWalk->iLinks > MAX_LINKS)
        return failWith(ELOOP);
    const bool bFree = pWalk->confinedBy.empty() && leadsAnywhere(&pWalk->way.back(), pLink);
    if (!bFree && confine(pWalk, path, pLink->st_uid) < 0)
        return -1;
    ssize_t iLength = readlinkat(iLink, "", &target[0], target.size());
    if (iLength <= 0)
        return iLength ? -1 : failWith(ENOENT);
    target.resize(static_cast<size_t>(iLength));
    if (target.size() + pWalk->rest.size() >= PATH_MAX)
        return failWith(ENAMETOOLONG);
    pWalk->rest.insert(0, target);
    pWalk->bByLink = bLast && bFree;
    return target[0] == '/' ? followAbsolute(pWalk) : 0;
}

/* ---- components ---- */

/* Out of the first directory of the way. Above the root lies what a path of the description's, or a
 * link that leads anywhere, may well mean. */
static int leaveFirst(Walk *pWalk)
{
    OwnedFd above(openat(pWalk->way[0].dir.iFd, "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
    struct stat status;

    if (above.iFd < 0 || fstat(above.iFd, &status) < 0)
        return -1;
    if (OV_instIsRoot(pWalk->pRoot, &status)) /* that of the system */
        return startAtRoot(pWalk);
    if (!pWalk->confinedBy.empty())
        return refuseToLeave(pWalk);
    const std::string path = joined(pWalk->way[0].path, "..");
    return startAt(pWalk, above.release(), false, path);
}

static int goUp(Walk *pWalk)
{
    if (pWalk->way.size() == 1)
        return leaveFirst(pWalk);
    pWalk->way.pop_back();
    return pWalk->way.back().dir.iFd < 0 ? failWith(ELOOP) : 0; /* too deep to come back */
}

static std::string takeComponent(Walk *pWalk)
{
    const size_t iStart = strspn(pWalk->rest.c_str(), "/");
    const size_t iEnd = iStart + strcspn(pWalk->rest.c_str() + iStart, "/");
    std::string name = pWalk->rest.substr(iStart, iEnd - iStart);

    pWalk->rest.erase(0, iEnd);
    return name.empty() ? "." : name;
}

/* Looks at a component without following it. As a directory first, which is what nearly all are,
 * and makes an automounter mount it. */
static int lookAt(const Walk *pWalk, const std::string &name, bool bLast, OwnedFd *pFound,
                  struct stat *pStatus)
{
    const int iDir = pWalk->way.back().dir.iFd;

    pFound->reset(bLast ? -1 : openat(iDir, name.c_str(), s_iPathOnly | O_DIRECTORY));
    if (pFound->iFd < 0 && (bLast || errno == ENOTDIR))
        pFound->reset(openat(iDir, name.c_str(), s_iPathOnly));
    return pFound->iFd < 0 ? -1 : fstat(pFound->iFd, pStatus);
}

static int endWalk(Walk *pWalk, const std::string &name, OV_Found *pFound)
{
    pFound->parent = std::move(pWalk->way.back());
    pFound->name = name;
    pFound->bDirectory = !pWalk->rest.empty(); /* only slashes are left */
    pFound->bByLink = pWalk->bByLink;
    return 0;
}

int OV_instWalk(OV_GuardedRoot *pRoot, const char *pRest, bool bKeepLink, OV_Found *pFound)
{
    Walk walk;

    walk.pRoot = pRoot;
    walk.rest = pRest;
    if (startAtRoot(&walk) < 0)
        return -1;
    for (;;) {
        std::string name = takeComponent(&walk);
        const bool bLast = walk.rest.find_first_not_of('/') == std::string::npos;
        OwnedFd component;

        pFound->status = {};
        if (name == ".." && goUp(&walk) < 0)
            return -1;
        if (name == "..")
            name = ".";
        if (name == "." && !bLast)
            continue;
        if (lookAt(&walk, name, bLast, &component, &pFound->status) < 0)
            return bLast && errno == ENOENT ? endWalk(&walk, name, pFound) : -1;
        if (S_ISLNK(pFound->status.st_mode) && !(bLast && walk.rest.empty() && bKeepLink)) {
            if (followLink(&walk, component.iFd, &pFound->status, name, bLast) < 0)
                return -1;
            continue;
        }
        if (bLast)
            return endWalk(&walk, name, pFound);
        if (enter(&walk, &component, &pFound->status, joined(walk.way.back().path, name)) < 0)
            return -1;
    }
}

std::string OV_instFoundPath(const OV_Found *pFound)
{
    return pFound->name == "." ? pFound->parent.path : joined(pFound->parent.path, pFound->name);
}
