/* One disturbed run of setup each, with what must hold after it: setup never says of an incomplete
 * installation that it is complete, the next run completes it, and nothing else is touched. */
#ifndef OVINST_TESTS_FAULTS_CASES_H
#define OVINST_TESTS_FAULTS_CASES_H

#include "faults/watch.h"

/* The last is the unattended run after a change that was killed. */
enum Scenario { FIRST_RUN, CHANGE_RUN, REMOVE_RUN, RESUMED_RUN, SCENARIOS };

/* Written "first child.write 17 ENOSPC": scenario, role and kind of call, which one, the error. For
 * "first disk 400 ENOSPC" the destination is a file system of that many KiB. */
struct Case {
    Scenario scenario = FIRST_RUN;
    Fault fault;
    bool bDisk = false;

    std::string kind() const; /* the first two words */
    std::string text() const;
};

/* From four words; false when they cannot be understood. */
bool readCase(const std::vector<std::string> &words, Case *pCase);

/* What can go wrong. */
enum Wrong {
    CRASHED,
    HUNG,
    LEFT,
    FALSE_SUCCESS,
    INTERRUPTED,
    OUTSIDE,
    NOT_HEALED,
    NOT_AT_REST,
    UNVERIFIED, /* the companion tells of something else than what is missing */
    WRONGS
};
extern const char *const g_apWrongs[WRONGS];

struct Verdict {
    bool abWrong[WRONGS];
    std::string detail; /* a word on each, and with them what the run told */

    bool isGood() const { return detail.empty(); }
};

/* How many calls undisturbed runs make. */
struct Counts {
    std::map<std::pair<Role, size_t>, unsigned> calls[SCENARIOS];
    unsigned iDiskKiB; /* that the first run needs */
};
Counts countCalls();

/* Every call with each of its errors (kills are too many), and the first run on file systems from
 * empty to large enough.
 */
std::vector<Case> allFaults(const Counts &counts);
std::vector<Case> fullDisks(const Counts &counts, unsigned iSizes);

/* Judges them all, in several processes; tell gets each when it is done. In one case that is asked
 * for by itself, bTellAll has all that the run told put into the detail. */
void judgeAll(const std::vector<Case> &cases, unsigned iProcesses,
              const std::function<void(const Case &, const Verdict &)> &tell,
              bool bTellAll = false);

/* For tests: the cases that are not good, with their details, "" without any. */
std::string badOnes(const std::vector<Case> &cases);

/* Whether file systems can be mounted for the "disk" cases. */
bool canMount();

#endif
