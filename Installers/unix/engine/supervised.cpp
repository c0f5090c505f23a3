#include "engine/supervised.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <map>
#include <set>
#include <string>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "ut/owned.h"

enum {
    STARTER_DIED = SIGUSR1, /* to the supervisor, which has all signals blocked */
    ROUNDS_MOST = 1000,     /* of killing: a process that waits for a disk dies later by itself */
    ROUND_MSEC = 5
};

static const int s_aiPassedBy[] = {SIGINT, SIGQUIT}; /* by the caller, as system() does */
enum { PASSED_BY = sizeof(s_aiPassedBy) / sizeof(s_aiPassedBy[0]) };

/* How the caller handles signals, for the command to find it so. */
struct Handling {
    struct sigaction aActions[PASSED_BY];
    struct sigaction child;
    sigset_t mask;
};

static void passBySignals(Handling *pSaved)
{
    struct sigaction ignored = {};
    sigset_t childSignal;

    ignored.sa_handler = SIG_IGN;
    for (int i = 0; i < PASSED_BY; i++) /* none of these fails for good signals */
        (void)sigaction(s_aiPassedBy[i], &ignored, &pSaved->aActions[i]);
    (void)sigaction(SIGCHLD, nullptr, &pSaved->child);
    (void)sigemptyset(&childSignal);
    (void)sigaddset(&childSignal, SIGCHLD);
    (void)sigprocmask(SIG_BLOCK, &childSignal, &pSaved->mask);
}

static void restoreSignals(const Handling *pSaved)
{
    for (int i = 0; i < PASSED_BY; i++)
        (void)sigaction(s_aiPassedBy[i], &pSaved->aActions[i], nullptr);
    (void)sigaction(SIGCHLD, &pSaved->child, nullptr);
    (void)sigprocmask(SIG_SETMASK, &pSaved->mask, nullptr);
}

/* ---- ending what was started ---- */

/* The process's parent; 0 when it is gone. */
static pid_t parentOf(const char *pProcess)
{
    OwnedFile stat(fopen(("/proc/" + std::string(pProcess) + "/stat").c_str(), "re"));
    char caLine[256] = "";
    int iParent = 0;

    if (!stat || !fgets(caLine, sizeof(caLine), stat.get()))
        return 0;
    const char *pBehindName = strrchr(caLine, ')'); /* a name may hold anything */
    if (!pBehindName || sscanf(pBehindName, ") %*c %d", &iParent) != 1)
        return 0;
    return iParent;
}

static std::map<pid_t, pid_t> parents()
{
    std::map<pid_t, pid_t> found;
    DIR *pProcesses = opendir("/proc");

    while (const struct dirent *pEntry = pProcesses ? readdir(pProcesses) : nullptr) {
        const pid_t iProcess = static_cast<pid_t>(strtol(pEntry->d_name, nullptr, 10));
        if (iProcess > 0)
            found[iProcess] = parentOf(pEntry->d_name);
    }
    if (pProcesses)
        (void)closedir(pProcesses); /* was only read */
    return found;
}

/* What lost its own parent is the supervisor's child, so all that is left descends from it. */
static void killDescendants()
{
    const std::map<pid_t, pid_t> all = parents();
    std::set<pid_t> ours = {getpid()};

    for (size_t iBefore = 0; iBefore != ours.size();) {
        iBefore = ours.size();
        for (const auto &[iProcess, iParent] : all)
            if (ours.count(iParent))
                ours.insert(iProcess);
    }
    ours.erase(getpid());
    for (pid_t iProcess : ours)
        (void)kill(iProcess, SIGKILL); /* it may have ended by itself */
}

[[noreturn]] static void endAll(pid_t iShell, bool bOwnGroup)
{
    const struct timespec pause = {0, ROUND_MSEC * 1000000L};

    for (int i = 0; i < ROUNDS_MOST; i++) {
        if (bOwnGroup && iShell > 0)
            (void)kill(-iShell, SIGKILL); /* a group's number is not used again while it lasts */
        killDescendants();
        while (waitpid(-1, nullptr, WNOHANG) > 0)
            ;
        if (waitpid(-1, nullptr, WNOHANG) < 0 && errno == ECHILD)
            break;
        (void)nanosleep(&pause, nullptr); /* a shorter one does no harm */
    }
    _exit(1);
}

/* ---- the supervisor ---- */

/* Forked by the caller. It has left the caller's group, so that neither the terminal's keys nor
 * stopping the run keep it from its task; the shell stays in the group, where they reach it. */
struct Supervisor {
    pid_t iStarter;
    pid_t iGroup;   /* of the starter */
    int iLine;      /* to the caller, which hears the status and says so */
    bool bOwnGroup; /* the shell gets a group: without /proc all else that is to be killed by */
    pid_t iShell;
};

[[noreturn]] static void runShell(const char *pCommand, const Supervisor *pSelf,
                                  const Handling *pSaved)
{
    (void)setpgid(0, pSelf->bOwnGroup ? 0 : pSelf->iGroup); /* both are in this session */
    restoreSignals(pSaved);
    (void)execl("/bin/sh", "sh", "-c", pCommand, static_cast<char *>(nullptr));
    _exit(127);
}

/* Ends with its task done, unless the caller died together with the command, as when their group is
 * killed: then its end of the line is closed without a word. */
[[noreturn]] static void report(const Supervisor *pSelf, int iStatus)
{
    char cHeard = 0;

    if (send(pSelf->iLine, &iStatus, sizeof(iStatus), MSG_NOSIGNAL) == sizeof(iStatus) &&
        recv(pSelf->iLine, &cHeard, 1, 0) == 1)
        _exit(0);
    endAll(pSelf->iShell, pSelf->bOwnGroup);
}

/* Nothing that the run has open is to stay open for the supervisor's sake. */
static void closeOthers(Supervisor *pSelf)
{
    const int iKept = STDERR_FILENO + 1;

    if (pSelf->iLine != iKept && dup2(pSelf->iLine, iKept) < 0)
        return;
    pSelf->iLine = iKept;
    (void)syscall(SYS_close_range, iKept + 1, ~0U, 0); /* an older kernel leaves them open */
}

[[noreturn]] static void supervise(Supervisor *pSelf, const sigset_t *pAwaited)
{
    for (;;) {
        int iStatus = 0;
        pid_t iEnded;

        if (getppid() != pSelf->iStarter)
            endAll(pSelf->iShell, pSelf->bOwnGroup);
        while ((iEnded = waitpid(-1, &iStatus, WNOHANG)) > 0)
            if (iEnded == pSelf->iShell)
                report(pSelf, iStatus);
        (void)sigwaitinfo(pAwaited, nullptr); /* an interruption is as good */
    }
}

[[noreturn]] static void superviseCommand(const char *pCommand, Supervisor *pSelf,
                                          const Handling *pSaved)
{
    struct sigaction standard = {};
    sigset_t awaited;
    sigset_t all;

    (void)sigfillset(&all);
    (void)sigprocmask(SIG_BLOCK, &all, nullptr);
    standard.sa_handler = SIG_DFL;
    (void)sigaction(SIGCHLD, &standard, nullptr); /* if it was ignored, nothing could be reaped */
    (void)sigemptyset(&awaited);
    (void)sigaddset(&awaited, SIGCHLD);
    (void)sigaddset(&awaited, STARTER_DIED);
    (void)prctl(PR_SET_CHILD_SUBREAPER, 1); /* an older kernel has none; the group is left */
    (void)prctl(PR_SET_PDEATHSIG, STARTER_DIED);
    if (getppid() != pSelf->iStarter)
        _exit(1);
    (void)setpgid(0, 0); /* fails for the leader of a session only, which it is not */
    pSelf->iShell = fork();
    if (pSelf->iShell == 0)
        runShell(pCommand, pSelf, pSaved);
    if (pSelf->iShell < 0)
        report(pSelf, -1);
    closeOthers(pSelf);
    supervise(pSelf, &awaited);
}

/* The command's status as the supervisor tells it; its own when it was killed. */
static int statusOf(int iLine, pid_t iSupervisor)
{
    const char cHeard = 1;
    int iStatus = 0;
    int iOwn = 0;
    ssize_t iRead;
    pid_t iEnded;

    do {
        iRead = recv(iLine, &iStatus, sizeof(iStatus), 0);
    } while (iRead < 0 && errno == EINTR);
    (void)!send(iLine, &cHeard, 1, MSG_NOSIGNAL); /* a supervisor that was killed hears nothing */
    do {
        iEnded = waitpid(iSupervisor, &iOwn, 0);
    } while (iEnded < 0 && errno == EINTR);
    if (iRead == static_cast<ssize_t>(sizeof(iStatus)))
        return iStatus;
    return iEnded < 0 || iOwn == 0 ? -1 : iOwn;
}

int OV_instRunSupervised(const char *pCommand)
{
    Supervisor self = {getpid(), getpgrp(), -1, access("/proc/self/stat", R_OK) < 0, -1};
    Handling saved;
    int aEnds[2];

    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, aEnds) < 0)
        return -1;
    OwnedFd ours(aEnds[0]);
    OwnedFd theirs(aEnds[1]);
    self.iLine = theirs.iFd;
    passBySignals(&saved);
    const pid_t iSupervisor = fork();
    if (iSupervisor == 0) {
        ours.reset(-1); /* or the caller's death would not be noticed on it */
        superviseCommand(pCommand, &self, &saved);
    }
    theirs.reset(-1);
    const int iStatus = iSupervisor < 0 ? -1 : statusOf(ours.iFd, iSupervisor);
    restoreSignals(&saved);
    return iStatus;
}
