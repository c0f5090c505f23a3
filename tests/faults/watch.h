/* Runs that are watched from outside: each of the system calls listed here that any process of a
 * run makes waits until we let it go, fail it or kill somebody instead. The kernel does that (a
 * seccomp filter with a listener), so it holds for the C library's own calls and for tar, too. */
#ifndef OVINST_TESTS_FAULTS_WATCH_H
#define OVINST_TESTS_FAULTS_WATCH_H

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

/* Who makes a call: setup as it was started, the process that installs, a command of that one. */
enum Role { PARENT, CHILD, COMMAND, ROLES };

/* What may be done instead of an error: the caller, or the parent, is killed at that moment. */
enum { KILL_CALLER = -1, KILL_PARENT = -2 };

struct CallKind {
    const char *pName;
    std::vector<long> calls;
    std::vector<int> errors; /* that such a call can really have */
};

/* All kinds; the last one is "any" of them. */
const std::vector<CallKind> &callKinds();

/* At the iNth call of that kind and role. The default: never. */
struct Fault {
    Role role = PARENT;
    size_t iKind = 0;
    unsigned iNth = 0;
    int iAction = 0; /* an error number, or one of the above */
};

struct Watched {
    int iStatus = -1;      /* exit status; 128 and the signal for a process that was killed */
    bool bFired = false;   /* the fault's moment came */
    bool bHung = false;    /* had to be ended */
    bool bCrashed = false; /* setup itself ended by a signal that we did not send */
    bool bLeft = false;    /* two seconds after the parent a process of the run was still alive */
    std::map<std::pair<Role, size_t>, unsigned> calls; /* by role and kind */
};

/* Whether the kernel lets us, and the build does (sanitizers make calls of their own). */
bool canWatch();

/* Runs the body in a process of its own, prepared by what is not watched. Of the parent's calls so
 * many of each kind are passed over: those that the loader makes before main. */
Watched watch(const std::function<void()> &prepare, const std::function<void()> &body,
              const Fault &fault, const std::map<size_t, unsigned> &before = {});

#endif
