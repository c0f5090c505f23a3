/* Whole runs of the built program on media that the test writes. */
#ifndef OVINST_TESTS_RUNS_RUN_H
#define OVINST_TESTS_RUNS_RUN_H

#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

#include "support.h"

struct RunResult {
    int iStatus; /* exit status; 128 and the signal for a process that was killed */
    std::string out;
    std::string err;
};

/* The usual header (log "setup.log", history "h") with more lines behind it. */
std::string usualHeader(const std::string &more = "");

/* A medium below a scratch directory, and where it is installed. */
struct Medium {
    Scratch scratch;
    std::string place = scratch / "medium";
    std::string dest = scratch / "dest";
    std::string tree = dest + "/prod/"; /* the product's directory */
    std::vector<std::string> environment;

    Medium();

    void describe(const std::string &body, const std::string &header = usualHeader());

    void file(const std::string &name, const std::string &text)
    {
        writeFile(place + "/" + name, text);
    }

    /* "setup -cmdline -noroot -dest DEST", from the medium's directory. */
    RunResult install();
    RunResult run(std::vector<std::string> arguments);

    /* Another program, its path first. */
    RunResult start(std::vector<std::string> arguments);

    std::string installed(const std::string &name) { return readFile(tree + name); }
    bool has(const std::string &name) { return fs::exists(tree + name); }
    std::string log() { return installed("Setup/setup.log"); }
    std::string history() { return installed("SetupFiles/.h.his"); }

    /* Paths below the destination, directories with a slash, sorted. */
    std::vector<std::string> listing();
};

/* One package "all" with these operations, offered by the unattended configuration. */
std::string onePackage(const std::string &operations);

/* Packages, suites and configurations: each suite of the list under configuration 3. */
std::string offering(const std::string &packagesAndSuites, const std::vector<std::string> &suites);

/* Processes whose command line holds pText, zombies included. */
std::vector<pid_t> processesNaming(const std::string &text);

/* Waits up to iSeconds for it; false when it does not come true. */
bool soon(const std::function<bool()> &condition, int iSeconds = 20);

/* Runs a command that the test cannot do without. */
void must(const std::string &command);

#endif
