#include "engine/confined.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <linux/landlock.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/select.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

/* The first version that lets files be linked from one directory to another, as archives do. */
enum { LANDLOCK_NEEDED = 2 };

static const uint64_t s_ulRefer = 1ULL << 13; /* LANDLOCK_ACCESS_FS_REFER, in younger headers */
static const uint64_t s_ulWriting =
    LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_REMOVE_DIR | LANDLOCK_ACCESS_FS_REMOVE_FILE |
    LANDLOCK_ACCESS_FS_MAKE_CHAR | LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_MAKE_REG |
    LANDLOCK_ACCESS_FS_MAKE_SOCK | LANDLOCK_ACCESS_FS_MAKE_FIFO | LANDLOCK_ACCESS_FS_MAKE_BLOCK |
    LANDLOCK_ACCESS_FS_MAKE_SYM | s_ulRefer;

static const int s_iDirectory = O_PATH | O_DIRECTORY | O_CLOEXEC;

/* ---- which directory it is ---- */

/* All zero when it cannot be examined, which no directory is. */
static OV_DirectoryId idOf(int iDirectory)
{
    struct statx info = {};

    if (statx(iDirectory, "", AT_EMPTY_PATH, STATX_INO | STATX_MNT_ID, &info) < 0)
        return {};
    return {info.stx_mnt_id, uint64_t{info.stx_dev_major} << 32 | info.stx_dev_minor, info.stx_ino};
}

static int copyOf(int iDirectory)
{
    return fcntl(iDirectory, F_DUPFD_CLOEXEC, 0);
}

/* Whether it is one that is known to be allowed, or lies below one. Goes up by "..", which needs
 * neither names nor /proc; what was passed is known from then on. */
static bool isAllowed(OV_Confinement *pConfinement, int iDirectory)
{
    OwnedFd here(copyOf(iDirectory));
    OV_DirectoryId id = idOf(here.iFd);
    std::vector<OV_DirectoryId> passed;

    while (here.iFd >= 0 && id != OV_DirectoryId()) {
        if (pConfinement->allowed.count(id)) {
            pConfinement->allowed.insert(passed.begin(), passed.end());
            return true;
        }
        passed.push_back(id);
        here.reset(openat(here.iFd, "..", s_iDirectory));
        OV_DirectoryId above = idOf(here.iFd);
        if (above == id) /* the top */
            break;
        id = above;
    }
    return false;
}

/* ---- Landlock ---- */

static int newRules()
{
    struct landlock_ruleset_attr attributes = {};

    if (syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION) <
        LANDLOCK_NEEDED)
        return -1;
    attributes.handled_access_fs = s_ulWriting;
    return static_cast<int>(
        syscall(SYS_landlock_create_ruleset, &attributes, sizeof(attributes), 0));
}

static int addRule(int iRules, int iPath, uint64_t ulAccess)
{
    struct landlock_path_beneath_attr beneath = {};

    beneath.allowed_access = ulAccess;
    beneath.parent_fd = iPath;
    return static_cast<int>(
        syscall(SYS_landlock_add_rule, iRules, LANDLOCK_RULE_PATH_BENEATH, &beneath, 0));
}

static bool enterRules(int iRules)
{
    OwnedFd nowhere(open("/dev/null", O_PATH | O_CLOEXEC));

    (void)addRule(iRules, nowhere.iFd, LANDLOCK_ACCESS_FS_WRITE_FILE); /* without it, no messages */
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           syscall(SYS_landlock_restrict_self, iRules, 0) == 0;
}

/* ---- the view ---- */

enum ViewResult { VIEW_ENTERED, VIEW_IMPOSSIBLE, VIEW_BROKEN };

static bool ownView()
{
    return unshare(CLONE_NEWNS) == 0 &&
           mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

/* The place once more, in this view; what somebody has put there since then is not it. The mount's
 * number is another one in every view. */
static int reopen(const OV_ConfinedPlace &place)
{
    OwnedFd found(open(place.path.c_str(), s_iDirectory));
    const OV_DirectoryId id = idOf(found.iFd);

    return std::get<1>(id) == std::get<1>(place.id) && std::get<2>(id) == std::get<2>(place.id)
               ? found.release()
               : -1;
}

/* Two descriptors for every place, which exec closes; the programs keep the limit they had. */
static bool makeRoomFor(size_t iPlaces, struct rlimit *pBefore)
{
    if (getrlimit(RLIMIT_NOFILE, pBefore) < 0)
        return false;
    const rlim_t needed = 2 * iPlaces + FD_SETSIZE;
    const struct rlimit enough = {std::max(needed, pBefore->rlim_cur),
                                  std::max(needed, pBefore->rlim_max)};
    return needed <= pBefore->rlim_cur || setrlimit(RLIMIT_NOFILE, &enough) == 0;
}

/* Makes everything read-only but the places, whose own mounts are put over them. Between mounts no
 * file can be linked; so where there are several, and only those who are trusted could plant
 * something, Landlock alone has to do. */
static ViewResult enterView(const OV_Confinement *pConfinement)
{
    struct mount_attr readOnly = {};
    struct rlimit files;
    std::vector<int> places; /* closed by exec */
    std::vector<int> mounts; /* likewise */

    if (pConfinement->places.size() > 1 && pConfinement->rules.iFd >= 0 &&
        !pConfinement->bOpenToStrangers)
        return VIEW_IMPOSSIBLE;
    OwnedFd top(open("/", s_iDirectory));
    if (pConfinement->allowed.count(idOf(top.iFd)) ||
        !makeRoomFor(pConfinement->places.size(), &files) || !ownView())
        return VIEW_IMPOSSIBLE; /* also where all is allowed */
    for (const OV_ConfinedPlace &place : pConfinement->places) {
        places.push_back(reopen(place));
        mounts.push_back(open_tree(
            places.back(), "", OPEN_TREE_CLONE | OPEN_TREE_CLOEXEC | AT_EMPTY_PATH | AT_RECURSIVE));
        if (mounts.back() < 0)
            return VIEW_IMPOSSIBLE;
    }
    readOnly.attr_set = MOUNT_ATTR_RDONLY;
    if (mount_setattr(AT_FDCWD, "/", AT_RECURSIVE, &readOnly, sizeof(readOnly)) < 0)
        return VIEW_IMPOSSIBLE;
    for (size_t i = 0; i < places.size(); i++)
        if (move_mount(mounts[i], "", places[i], "",
                       MOVE_MOUNT_F_EMPTY_PATH | MOVE_MOUNT_T_EMPTY_PATH) < 0)
            return VIEW_BROKEN;
    (void)setrlimit(RLIMIT_NOFILE, &files); /* it had that before */
    return fchdir(mounts[0]) == 0 ? VIEW_ENTERED : VIEW_BROKEN;
}

/* ---- both ---- */

int OV_instAllowBelow(OV_Confinement *pConfinement, int iDirectory, const char *pPath)
{
    if (pConfinement->places.empty()) {
        pConfinement->working.reset(copyOf(iDirectory));
        pConfinement->rules.reset(newRules());
    } else if (isAllowed(pConfinement, iDirectory)) {
        return 0;
    }
    const OV_DirectoryId id = idOf(iDirectory);
    if (id == OV_DirectoryId() || pConfinement->working.iFd < 0)
        return -1;
    if (pConfinement->rules.iFd >= 0 &&
        addRule(pConfinement->rules.iFd, iDirectory, s_ulWriting) < 0)
        return -1;
    pConfinement->places.push_back({pPath, id});
    pConfinement->allowed.insert(id);
    return 0;
}

bool OV_instCanConfine(const OV_Confinement *pConfinement)
{
    int iStatus = 0;
    pid_t iEnded;

    if (pConfinement->rules.iFd >= 0)
        return true;
    const pid_t iProbe = fork();
    if (iProbe == 0)
        _exit(enterView(pConfinement) == VIEW_ENTERED ? 0 : 1);
    if (iProbe < 0)
        return false;
    do {
        iEnded = waitpid(iProbe, &iStatus, 0);
    } while (iEnded < 0 && errno == EINTR);
    return iEnded == iProbe && iStatus == 0;
}

bool OV_instEnterConfinement(const OV_Confinement *pConfinement)
{
    const ViewResult view = enterView(pConfinement);

    if (view == VIEW_BROKEN)
        return false;
    if (view == VIEW_IMPOSSIBLE && fchdir(pConfinement->working.iFd) < 0)
        return false;
    const bool bRules = pConfinement->rules.iFd >= 0 && enterRules(pConfinement->rules.iFd);
    return bRules || view == VIEW_ENTERED || !pConfinement->bRequired;
}
