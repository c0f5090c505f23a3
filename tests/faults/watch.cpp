#include "faults/watch.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <new>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

enum { RUN_SECONDS = 20, LEFT_SECONDS = 2, FCHMODAT2 = 452 };

/* ---- the calls ---- */

#ifdef SYS_open /* younger machines have the "at" forms only */
#define OLD(call) call,
#else
#define OLD(call)
#endif

const std::vector<CallKind> &callKinds()
{
    static std::vector<CallKind> s_kinds = {
        {"open", {OLD(SYS_open) SYS_openat, SYS_openat2}, {EIO, ENOSPC, EINTR}},
        {"read", {SYS_read, SYS_pread64, SYS_readv}, {EIO, EINTR}},
        {"write", {SYS_write, SYS_writev, SYS_pwrite64}, {EIO, ENOSPC, EINTR}},
        {"close", {SYS_close}, {EIO, EINTR}},
        {"stat", {OLD(SYS_stat) OLD(SYS_lstat) SYS_newfstatat, SYS_fstat, SYS_statx}, {EIO}},
        {"list", {SYS_getdents64}, {EIO}},
        {"rename", {OLD(SYS_rename) SYS_renameat, SYS_renameat2}, {EIO, ENOSPC}},
        {"mkdir", {OLD(SYS_mkdir) SYS_mkdirat}, {EIO, ENOSPC}},
        {"link", {OLD(SYS_link) SYS_linkat}, {EIO, ENOSPC}},
        {"symlink", {OLD(SYS_symlink) SYS_symlinkat}, {EIO, ENOSPC}},
        {"unlink", {OLD(SYS_unlink) OLD(SYS_rmdir) SYS_unlinkat}, {EIO}},
        {"chmod", {OLD(SYS_chmod) SYS_fchmod, SYS_fchmodat, FCHMODAT2}, {EIO}},
        {"chown", {OLD(SYS_chown) OLD(SYS_lchown) SYS_fchown, SYS_fchownat}, {EPERM}},
        {"sync", {SYS_fsync, SYS_fdatasync, SYS_syncfs}, {EIO, ENOSPC}},
        {"fork", {OLD(SYS_fork) OLD(SYS_vfork) SYS_clone, SYS_clone3}, {EAGAIN}},
        {"exec", {SYS_execve}, {EIO, ENOMEM}},
        {"pipe", {OLD(SYS_pipe) SYS_pipe2}, {EMFILE}},
        {"sendfile", {SYS_sendfile}, {EIO, ENOMEM, EINTR}},
        {"truncate", {SYS_ftruncate}, {EIO, EINTR}},
        {"flock", {SYS_flock}, {ENOLCK, EINTR}},
        {"chdir", {SYS_chdir, SYS_fchdir}, {EIO}},
        {"wait", {SYS_wait4, SYS_waitid}, {EINTR}},
        {"poll", {OLD(SYS_poll) OLD(SYS_select) SYS_ppoll, SYS_pselect6}, {EINTR, ENOMEM}},
        {"any", {}, {KILL_CALLER, KILL_PARENT}},
    };
    return s_kinds;
}

static size_t kindOf(long lCall)
{
    for (size_t i = 0; i < callKinds().size(); i++)
        for (long lEach : callKinds()[i].calls)
            if (lEach == lCall)
                return i;
    return callKinds().size();
}

/* ---- in the process that is going to be watched ---- */

static int startListening()
{
    std::vector<long> calls = {SYS_exit_group}; /* so that a crash is told from an end */
    std::vector<sock_filter> filter;

    for (const CallKind &kind : callKinds())
        calls.insert(calls.end(), kind.calls.begin(), kind.calls.end());
    filter.push_back(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)));
    for (size_t i = 0; i < calls.size(); i++)
        filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(calls[i]),
                                  static_cast<unsigned char>(calls.size() - i), 0));
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_USER_NOTIF));
    sock_fprog program = {static_cast<unsigned short>(filter.size()), filter.data()};
    (void)prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    const unsigned iListener = SECCOMP_FILTER_FLAG_NEW_LISTENER;
    const unsigned iUndisturbed = 1U << 5; /* by signals; in younger kernels */
    long lFd = syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, iListener | iUndisturbed, &program);
    if (lFd < 0)
        lFd = syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, iListener, &program);
    return static_cast<int>(lFd);
}

/* ---- watching ---- */

struct Watch {
    const Fault &fault;
    std::map<size_t, unsigned> before;
    int iListener;
    pid_t iParent;
    std::map<pid_t, Role> roles;
    bool abEnded[ROLES]; /* by a call of its own, or by us */
    Watched result;
};

static pid_t parentOf(pid_t iProcess)
{
    std::ifstream file("/proc/" + std::to_string(iProcess) + "/stat");
    std::string text;
    char cState;
    pid_t iParent = -1;

    while (file >> text && text.back() != ')')
        ;
    file >> cState >> iParent;
    return iParent;
}

static Role roleOf(Watch *pWatch, pid_t iProcess)
{
    auto [found, bNew] = pWatch->roles.try_emplace(iProcess, COMMAND);

    if (bNew && iProcess == pWatch->iParent)
        found->second = PARENT;
    else if (bNew && parentOf(iProcess) == pWatch->iParent)
        found->second = CHILD;
    return found->second;
}

/* Counts the call, and tells whether it is the one. */
static bool isTheMoment(Watch *pWatch, Role role, size_t iKind)
{
    bool bIs = false;

    if (role == PARENT && pWatch->before[iKind] > 0) {
        pWatch->before[iKind]--;
        return false;
    }
    for (size_t i : {iKind, callKinds().size() - 1})
        bIs |= ++pWatch->result.calls[{role, i}] == pWatch->fault.iNth &&
               role == pWatch->fault.role && i == pWatch->fault.iKind;
    return bIs;
}

/* A descriptor is closed whatever error that has: something else takes its number. */
static void closeThere(const Watch *pWatch, const seccomp_notif &call)
{
    seccomp_notif_addfd other = {};
    const int iNull = open("/dev/null", O_RDWR | O_CLOEXEC);

    other.id = call.id;
    other.flags = SECCOMP_ADDFD_FLAG_SETFD;
    other.srcfd = static_cast<unsigned>(iNull);
    other.newfd = static_cast<unsigned>(call.data.args[0]);
    other.newfd_flags = O_CLOEXEC;
    (void)ioctl(pWatch->iListener, SECCOMP_IOCTL_NOTIF_ADDFD, &other);
    close(iNull);
}

static void answer(Watch *pWatch)
{
    seccomp_notif call = {};
    seccomp_notif_resp reply = {};

    if (ioctl(pWatch->iListener, SECCOMP_IOCTL_NOTIF_RECV, &call) < 0)
        return; /* it was killed meanwhile */
    const pid_t iCaller = static_cast<pid_t>(call.pid);
    const Role role = roleOf(pWatch, iCaller);
    reply.id = call.id;
    reply.flags = SECCOMP_USER_NOTIF_FLAG_CONTINUE;
    if (call.data.nr == SYS_exit_group) {
        pWatch->abEnded[role] = true;
        if (role == PARENT)
            pWatch->abEnded[CHILD] = true; /* it dies with its parent */
    } else if (isTheMoment(pWatch, role, kindOf(call.data.nr))) {
        const int iAction = pWatch->fault.iAction;
        pWatch->result.bFired = true;
        if (iAction < 0) {
            const bool bParent = iAction == KILL_PARENT || role == PARENT;
            (void)kill(bParent ? pWatch->iParent : iCaller, SIGKILL);
            pWatch->abEnded[PARENT] |= bParent;
            pWatch->abEnded[CHILD] |= bParent || role == CHILD;
        } else {
            if (call.data.nr == SYS_close)
                closeThere(pWatch, call);
            reply.flags = 0;
            reply.error = -iAction;
        }
    }
    (void)ioctl(pWatch->iListener, SECCOMP_IOCTL_NOTIF_SEND, &reply);
}

/* Until no process of the run is left. */
static void follow(Watch *pWatch)
{
    using Clock = std::chrono::steady_clock;
    auto end = Clock::now() + std::chrono::seconds(RUN_SECONDS);
    bool bParent = true;

    for (;;) {
        pollfd waiting = {pWatch->iListener, POLLIN, 0};
        (void)poll(&waiting, 1, bParent ? 10 : 50);
        if (waiting.revents & POLLIN)
            answer(pWatch);
        int iStatus = 0;
        for (pid_t iEnded;
             (waiting.revents & POLLIN) == 0 && (iEnded = waitpid(-1, &iStatus, WNOHANG)) > 0;) {
            if (iEnded != pWatch->iParent)
                continue; /* left to us by its parent */
            bParent = false;
            end = std::min(end, Clock::now() + std::chrono::seconds(LEFT_SECONDS));
            pWatch->result.iStatus =
                WIFSIGNALED(iStatus) ? 128 + WTERMSIG(iStatus) : WEXITSTATUS(iStatus);
        }
        if (!bParent && (waiting.revents & POLLHUP))
            return;
        if (Clock::now() > end) {
            (bParent ? pWatch->result.bHung : pWatch->result.bLeft) = true;
            pWatch->abEnded[CHILD] = pWatch->abEnded[PARENT] = true;
            (void)kill(-pWatch->iParent, SIGKILL); /* its group */
            end = Clock::time_point::max();
        }
    }
}

/* The listener that the process has under that number, which it has put there. */
static int takeListener(pid_t iProcess, const std::atomic<int> *piThere)
{
    while (!*piThere && waitpid(iProcess, nullptr, WNOHANG) == 0)
        usleep(100);
    const int iProcessFd = static_cast<int>(syscall(SYS_pidfd_open, iProcess, 0));
    const int iFd = static_cast<int>(syscall(SYS_pidfd_getfd, iProcessFd, piThere->load(), 0));
    close(iProcessFd);
    return iFd;
}

Watched watch(const std::function<void()> &prepare, const std::function<void()> &body,
              const Fault &fault, const std::map<size_t, unsigned> &before)
{
    void *pShared = mmap(nullptr, sizeof(std::atomic<int>), PROT_READ | PROT_WRITE,
                         MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    auto *piListener = new (pShared) std::atomic<int>(0);

    (void)prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0);
    const pid_t iParent = fork();
    if (iParent == 0) {
        (void)setpgid(0, 0);
        prepare();
        *piListener = startListening();
        if (*piListener > 0)
            body();
        _exit(127);
    }
    Watch watch = {fault, before, takeListener(iParent, piListener), iParent, {}, {}, {}};
    (void)munmap(pShared, sizeof(std::atomic<int>));
    if (watch.iListener < 0) {
        (void)waitpid(iParent, nullptr, 0);
        return {};
    }
    follow(&watch);
    close(watch.iListener);
    const bool bChild = watch.result.calls.count({CHILD, callKinds().size() - 1}) > 0;
    watch.result.bCrashed = !watch.abEnded[PARENT] || (bChild && !watch.abEnded[CHILD]);
    return watch.result;
}

bool canWatch()
{
#ifdef __SANITIZE_ADDRESS__
    return false;
#else
    return watch([] {}, [] { _exit(7); }, {}).iStatus == 7;
#endif
}
