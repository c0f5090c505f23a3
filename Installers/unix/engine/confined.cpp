#include "engine/confined.h"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "ut/owned.h"

/* The first version that lets files be linked from one directory to another, as archives do. */
enum { LANDLOCK_NEEDED = 2 };

static const uint64_t s_ulRefer = 1ULL << 13; /* LANDLOCK_ACCESS_FS_REFER, in younger headers */
static const uint64_t s_ulWriting =
    LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_REMOVE_DIR | LANDLOCK_ACCESS_FS_REMOVE_FILE |
    LANDLOCK_ACCESS_FS_MAKE_CHAR | LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_MAKE_REG |
    LANDLOCK_ACCESS_FS_MAKE_SOCK | LANDLOCK_ACCESS_FS_MAKE_FIFO | LANDLOCK_ACCESS_FS_MAKE_BLOCK |
    LANDLOCK_ACCESS_FS_MAKE_SYM | s_ulRefer;

int OV_instAllowBelow(OV_Confinement *pConfinement, int iDirectory)
{
    if (pConfinement->iDirs < OV_CONFINED_MOST) {
        pConfinement->aDirs[pConfinement->iDirs++] = iDirectory;
        return 0;
    }
    (void)close(iDirectory); /* a path descriptor */
    return -1;
}

void OV_instReleaseConfinement(OV_Confinement *pConfinement)
{
    while (pConfinement->iDirs > 0)
        (void)close(pConfinement->aDirs[--pConfinement->iDirs]); /* path descriptors */
}

static void allow(int iRules, int iPath, uint64_t ulAccess)
{
    struct landlock_path_beneath_attr beneath = {};

    beneath.allowed_access = ulAccess;
    beneath.parent_fd = iPath;
    (void)syscall(SYS_landlock_add_rule, iRules, LANDLOCK_RULE_PATH_BENEATH, &beneath, 0);
}

/* In the command's process. What the kernel cannot do is done without. */
static void confine(const OV_Confinement *pConfinement)
{
    struct landlock_ruleset_attr attributes = {};

    if (pConfinement->bOff)
        return;
    if (syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION) <
        LANDLOCK_NEEDED)
        return;
    attributes.handled_access_fs = s_ulWriting;
    OwnedFd rules(
        static_cast<int>(syscall(SYS_landlock_create_ruleset, &attributes, sizeof(attributes), 0)));
    OwnedFd nowhere(open("/dev/null", O_PATH | O_CLOEXEC));
    if (rules.iFd < 0)
        return;
    for (int i = 0; i < pConfinement->iDirs; i++)
        allow(rules.iFd, pConfinement->aDirs[i], s_ulWriting);
    allow(rules.iFd, nowhere.iFd, LANDLOCK_ACCESS_FS_WRITE_FILE);
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0)
        (void)syscall(SYS_landlock_restrict_self, rules.iFd, 0);
}

[[noreturn]] static void runCommand(const char *pCommand, int iWorking, int iInput, pid_t iStarter,
                                    const OV_Confinement *pConfinement)
{
    (void)prctl(PR_SET_PDEATHSIG, SIGKILL); /* fails for a bad signal only */
    if (getppid() == iStarter && fchdir(iWorking) == 0 && dup2(iInput, STDIN_FILENO) >= 0) {
        confine(pConfinement);
        (void)execl("/bin/sh", "sh", "-c", pCommand, static_cast<char *>(nullptr));
    }
    _exit(127);
}

int OV_instStartConfined(const char *pCommand, int iWorking, const OV_Confinement *pConfinement,
                         pid_t *piCommand)
{
    int aEnds[2];
    pid_t iStarter = getpid();

    if (pipe2(aEnds, O_CLOEXEC) < 0)
        return -1;
    OwnedFd input(aEnds[0]);
    OwnedFd output(aEnds[1]);
    *piCommand = fork();
    if (*piCommand == 0)
        runCommand(pCommand, iWorking, input.iFd, iStarter, pConfinement);
    return *piCommand < 0 ? -1 : output.release();
}

int OV_instWaitConfined(pid_t iCommand, int *piStatus)
{
    pid_t iEnded;

    do {
        iEnded = waitpid(iCommand, piStatus, 0);
    } while (iEnded < 0 && errno == EINTR);
    return iEnded < 0 ? -1 : 0;
}
