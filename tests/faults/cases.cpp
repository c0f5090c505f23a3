#include "faults/cases.h"

#include <cstring>
#include <csignal>
#include <fcntl.h>
#include <sched.h>
#include <set>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "runs/asDialogs.h"
#include "runs/run.h"

const char *const g_apWrongs[WRONGS] = {"crash",         "hang",        "left",
                                        "false success", "interrupted", "outside",
                                        "not healed",    "not at rest", "unverified"};
static const char *const s_apScenarios[SCENARIOS] = {"first", "change", "remove", "resume"};
static const Scenario s_allScenarios[] = {FIRST_RUN, CHANGE_RUN, REMOVE_RUN, RESUMED_RUN};
static const char *const s_apRoles[ROLES] = {"parent", "child", "command"};

/* ---- cases as texts ---- */

static std::string nameOf(int iAction)
{
    const char *pError = iAction > 0 ? strerrorname_np(iAction) : nullptr;

    return iAction == KILL_CALLER ? "KILL" : iAction == KILL_PARENT ? "KILLPARENT" : pError;
}

static std::string callName(const Fault &fault)
{
    return s_apRoles[fault.role] + ("." + std::string(callKinds()[fault.iKind].pName));
}

std::string Case::kind() const
{
    return s_apScenarios[scenario] + (" " + (bDisk ? "disk" : callName(fault)));
}

std::string Case::text() const
{
    return kind() + " " + std::to_string(fault.iNth) + " " + nameOf(fault.iAction);
}

bool readCase(const std::vector<std::string> &words, Case *pCase)
{
    std::vector<Fault> known = {{PARENT, 0, 0, ENOSPC}}; /* of a disk */

    for (Role role : {PARENT, CHILD, COMMAND})
        for (size_t i = 0; i < callKinds().size(); i++)
            for (int iAction : callKinds()[i].errors)
                known.push_back({role, i, 0, iAction});
    for (Scenario scenario : s_allScenarios)
        for (Fault fault : known) {
            fault.iNth = static_cast<unsigned>(atoi(words[2].c_str()));
            *pCase = {scenario, fault, words[1] == "disk"};
            if (pCase->text() == words[0] + " " + words[1] + " " + words[2] + " " + words[3])
                return true;
        }
    return false;
}

/* ---- trees ---- */

/* By path: kind, mode, names, and what a file holds or a link leads to. */
using Tree = std::map<std::string, std::string>;

static const std::string s_log = "prod/Setup/setup.log", s_history = "prod/SetupFiles/.h.his",
                         s_runFile = "prod/SetupFiles/.h.run";

static std::string setOfLines(const std::string &text)
{
    std::istringstream in(text);
    std::set<std::string> lines;

    for (std::string line; std::getline(in, line);)
        lines.insert(line);
    return testing::PrintToString(lines);
}

/* The log has times and the history may have a line twice. */
static Tree treeBelow(const std::string &root)
{
    Tree tree;

    for (const auto &entry : fs::recursive_directory_iterator(root)) {
        const std::string path = entry.path(), name = path.substr(root.size() + 1);
        struct stat status = {};
        std::ostringstream text;
        (void)lstat(path.c_str(), &status);
        text << std::oct << status.st_mode << " ";
        if (entry.is_symlink())
            text << fs::read_symlink(path).string();
        else if (name == s_history)
            text << setOfLines(readFile(path));
        else if (name == s_log)
            text.str("a log");
        else if (entry.is_regular_file())
            text << status.st_nlink << " " << readFile(path);
        tree[name] = text.str();
    }
    return tree;
}

/* The first of the differences, "" when there is none. */
static std::string difference(const Tree &wanted, const Tree &found, bool bMoreIsGood = false)
{
    for (const auto &[path, node] : wanted)
        if (!found.count(path))
            return path + " is missing";
        else if (found.at(path) != node)
            return path + " differs: " + found.at(path).substr(0, 60) + " instead of " +
                   node.substr(0, 60);
    for (const auto &[path, node] : found)
        if (!wanted.count(path) && !bMoreIsGood)
            return path + " is too much";
    return "";
}

static std::string differenceToAll(const std::vector<Tree> &wanted, const Tree &found, bool bMore)
{
    std::string told;

    for (const Tree &each : wanted) {
        std::string differs = difference(each, found, bMore);
        if (differs.empty())
            return "";
        told += (told.empty() ? "" : ", and ") + differs;
    }
    return told;
}

/* What a run is for: without its records. */
static Tree product(Tree tree)
{
    for (auto it = tree.begin(); it != tree.end();)
        it = it->first.compare(0, 10, "prod/Setup") == 0 ? tree.erase(it) : std::next(it);
    return tree;
}

/* ---- the medium ---- */

static const char s_caTool[] =
    "#!/bin/sh\n"
    "case $2 in *regkey) file=$MWREGISTRY;; *) file=$MWREGISTRY.modules;; esac\n"
    "echo \"$*\" > \"$file.new\" && mv \"$file.new\" \"$file\"\n";

/* Every kind of operation. Suite 4 stays, 5 is added by the change and 6 goes. */
static const char s_caDescription[] =
    "Package 'shared' ''\nCopy 'src/a' 'shared/a' 30000 0640\n"
    "Package 'base' ''\nMkdir 'only/in' 0770\nCopy 'src/a' 'app/a' 30000 0644\n"
    "Copy 'tool' 'Application/mainwin/mw/bin-amd64_linux/mwperl' 200 0755\n"
    "HardLink 'app' 'a' 'doc/same'\nSoftLink 'app' 'a' 'links/soft'\n"
    "Untar 'plain.tar' 1 'arc/one' 150000 'arc/two' 300\n"
    "RegData 'K' 'n' 'k' '%dv'\nFunction 'tellAll' 'engineModule.so' 'x'\n"
    "Package 'more' ''\nCopyZ 'src/z' 'z' 20000 0600\nMkdir 'more/in' 0755\n"
    "HardLink 'src' 'z' '../more/hard'\nSoftLink 'more' '../app/a' 'soft'\n"
    "UntarZ 'packed.tar.bz2' 1 'pack/one' 120000 'pack/two' 300\nMkdir '../Orvane' 0755\n"
    "Untar2 '<CommonDest>' 'common.tar' 1 'com/one' 9000\n"
    "UntarZ2 '<RootDest>' 'root.tar.bz2' 1 'root/one' 9000\nSelfReg 'bin/m.so'\n"
    "Package 'old' ''\nMkdir 'old/in' 0755\nCopy 'src/a' 'old/in/a' 30000 0644\n"
    "Copy 'src/a' 'old/b' 30000 0600\nSoftLink 'old' 'b' 'soft'\nHardLink 'old' 'b' 'hard'\n"
    "Untar 'old.tar' 1 'olden' 1 'olden/one' 9000 'olden/two' 300\n"
    "Suite 'Base' shared base\nSuite 'More' more shared\nSuite 'Old' shared old\n"
    "ConfigBegin\n2 CusDlg 't' 't' '' 0 4 5 6\n3 CusDlg 't' 't' '' 0 4 5 6\n"
    "4 Suite 'Base' 'l' '' 1\n5 Suite 'More' 'l' '' 0\n6 Suite 'Old' 'l' '' 1\nConfigEnd\n";

/* Each file holds its name, again and again. */
static const char s_caFiles[] =
    "mkdir -p src arc pack com root olden SetupFiles ../outside && echo x > ../outside/file && "
    "for file in src/a:30000 src/z:20000 arc/one:150000 arc/two:300 pack/one:120000 pack/two:300 "
    "com/one:9000 root/one:9000 olden/one:9000 olden/two:300; do "
    "yes $file | head -c ${file#*:} > ${file%:*}; done && "
    "tar -cf plain.tar arc/* && tar -cf old.tar olden/* && "
    "tar -b 100 -cf common.tar com/* && " /* much padding */
    "tar -cjf packed.tar.bz2 pack/* && tar -cjf root.tar.bz2 root/*";

enum { KILLED_AT = 200 }; /* a call in the midst of the change */

/* A medium of its own for each process, with the trees that undisturbed runs leave on it. */
struct Bench {
    Scratch place{access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp"};
    Medium medium;
    Tree outside;                       /* what must stay as it is */
    std::map<size_t, unsigned> loading; /* calls before main */
    Tree direct[SCENARIOS];             /* after the run */
    std::vector<Tree> whole[SCENARIOS]; /* after the next: what was begun is completed, */
    std::vector<Tree> other[SCENARIOS]; /* or nothing was left to be completed */
    std::set<std::string> verified;     /* what the companion knows of */

    Bench();
    Watched install(const Fault &fault = {}); /* unattended */
    Watched asDialogs(bool bRemoveAll, const std::set<int> &selected, const Fault &fault = {});
    Watched run(Scenario scenario, const Fault &fault = {});
    void restore(Scenario scenario);
    void keep(const std::string &name);
    Tree tree() const { return treeBelow(medium.dest); }
    Tree around() const;
    std::set<std::string> toldMissing();
};

/* Paths below the destination. */
std::set<std::string> Bench::toldMissing()
{
    std::istringstream in(
        medium.start({OVMEDIUM_PROGRAM, "verify", "--medium", medium.place, medium.dest}).out);
    std::set<std::string> missing;
    std::string word, path;

    while (in >> word && std::getline(in, path))
        if (word == "missing")
            missing.insert((fs::path("prod") / path.substr(1)).lexically_normal());
    return missing;
}

/* All that the run has no business with. */
Tree Bench::around() const
{
    Tree tree = treeBelow(medium.scratch.path.string());

    for (const char *pOurs : {"home/.auxchestrc", "stdout", "stderr", "output"})
        tree.erase(pOurs);
    return tree;
}

static void printTo(const std::string &path, int iStream)
{
    int iFd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);

    (void)dup2(iFd, iStream);
    (void)close(iFd);
}

static void prepareRun(const Medium &medium)
{
    (void)umask(022);
    printTo(medium.scratch / "stdout", 1);
    printTo(medium.scratch / "stderr", 2);
    clearenv();
    for (const std::string &setting : medium.environment)
        (void)putenv(const_cast<char *>(setting.c_str()));
    if (chdir(medium.place.c_str()) != 0)
        _exit(126);
}

Watched Bench::install(const Fault &fault)
{
    const auto start = [&] {
        execl("./setup", "./setup", "-cmdline", "-noroot", "-dest", medium.dest.c_str(), nullptr);
    };
    return watch([&] { prepareRun(medium); }, start, fault, loading);
}

Watched Bench::asDialogs(bool bRemoveAll, const std::set<int> &selected, const Fault &fault)
{
    return watch([&] { prepareRun(medium); },
                 [&] { workAsTheDialogsDo(medium, bRemoveAll, selected); }, fault);
}

Watched Bench::run(Scenario scenario, const Fault &fault)
{
    if (scenario == FIRST_RUN || scenario == RESUMED_RUN)
        return install(fault);
    return asDialogs(scenario == REMOVE_RUN, {2, 4, 5}, fault);
}

/* The tree that the scenario begins with, and a home that no run has seen. */
void Bench::restore(Scenario scenario)
{
    (void)fs::remove(medium.scratch / "home/.auxchestrc");
    for (const auto &entry : fs::directory_iterator(medium.dest)) /* it may be a mount point */
        fs::remove_all(entry.path());
    if (scenario != FIRST_RUN)
        must("cp -a " + (place / (scenario == RESUMED_RUN ? "killed" : "base")) + "/. " +
             medium.dest);
}

/* What is there is a scenario's beginning from now on. */
void Bench::keep(const std::string &name)
{
    (void)fs::remove(medium.dest + "/" + s_log);
    must("cp -a " + medium.dest + " " + (place / name));
}

Bench::Bench()
{
    medium.dest = place / "dest";
    medium.tree = medium.dest + "/prod/";
    fs::create_directories(medium.dest);
    for (const char *pSetting : {"DISPLAY=:77", "OVINST_STRICT=1"})
        medium.environment.push_back(pSetting);
    must("cd " + medium.place + " && " + s_caFiles);
    medium.file("tool", s_caTool);
    fs::copy(TEST_MODULE_DIR "/engineModule.so", medium.place + "/SetupFiles");
    medium.describe(replaced(s_caDescription, "'", "\""));
    outside = around();
    const auto version = [] { execl("./setup", "./setup", "-version", nullptr); };
    for (const auto &[key, iCount] : watch([&] { prepareRun(medium); }, version, {}).calls)
        loading[key.second] = iCount;
    loading.erase(2); /* writing belongs to main */

    (void)asDialogs(false, {2, 4, 6});
    keep("base");
    restore(CHANGE_RUN);
    (void)run(CHANGE_RUN, {CHILD, callKinds().size() - 1, KILLED_AT, KILL_CALLER});
    keep("killed");
    /* The tree after such a run, and after one more, unattended. */
    const auto after = [&](Scenario scenario, Tree *pDirect, const std::function<void()> &work) {
        restore(scenario);
        work();
        if (pDirect)
            *pDirect = tree();
        (void)install();
        return tree();
    };
    const auto plainly = [&](Scenario scenario) {
        return after(scenario, &direct[scenario], [&] { (void)run(scenario); });
    };
    const Tree base = after(CHANGE_RUN, nullptr, [] {});
    whole[FIRST_RUN] = other[FIRST_RUN] = {plainly(FIRST_RUN)};
    for (const auto &[path, node] : direct[FIRST_RUN])
        if (path.compare(0, 15, "prod/SetupFiles") != 0 && path != "prod")
            fs::remove_all(medium.dest + "/" + path);
    verified = toldMissing();
    EXPECT_GT(verified.size(), 10u) << "everything is missing";
    whole[CHANGE_RUN] = {plainly(CHANGE_RUN)};
    other[CHANGE_RUN] = {base, whole[CHANGE_RUN][0]};
    whole[REMOVE_RUN] = {after(REMOVE_RUN, nullptr, [&] { (void)asDialogs(false, {}); })};
    other[REMOVE_RUN] = {base, plainly(REMOVE_RUN)};
    whole[RESUMED_RUN] = other[RESUMED_RUN] = {plainly(RESUMED_RUN)};
}

/* ---- judging ---- */

static bool isPending(const std::string &runFile)
{
    return runFile.find("\" Installing\n") != std::string::npos ||
           runFile.find("\" Removing\n") != std::string::npos;
}

static void note(Verdict *pVerdict, Wrong wrong, const std::string &detail)
{
    pVerdict->abWrong[wrong] = true;
    pVerdict->detail += std::string(g_apWrongs[wrong]) + ": " + detail + "\n";
}

static void noteRun(Verdict *pVerdict, const Watched &run, const char *pWhich)
{
    if (run.bCrashed)
        note(pVerdict, CRASHED, pWhich);
    if (run.bHung)
        note(pVerdict, HUNG, pWhich);
    if (run.bLeft)
        note(pVerdict, LEFT, pWhich);
}

/* A shell takes a script that it cannot read for an empty one, and says that all is well. */
static bool isTheShellsFault(const Case &test, const std::string &differs)
{
    return test.fault.role == COMMAND && test.fault.iAction == EIO &&
           callKinds()[test.fault.iKind].pName == std::string("read") &&
           differs.compare(0, 25, "prod/Application/registry") == 0;
}

/* What is said of the run itself. Files that stay behind after a removal are no failure. */
static void judgeClaims(const Bench &bench, const Case &test, const Watched &run, Verdict *pVerdict)
{
    const std::string log = readFile(bench.medium.dest + "/" + s_log);
    const std::string differs = difference(product(bench.direct[test.scenario]),
                                           product(bench.tree()), test.scenario != FIRST_RUN);

    if (differs.empty() || isTheShellsFault(test, differs))
        return;
    if (log.find("Installation Completed\n") != std::string::npos &&
        log.find("Warning: ") == std::string::npos)
        note(pVerdict, FALSE_SUCCESS, "the log says completed, but " + differs);
    if (run.iStatus == 0 && (test.scenario == FIRST_RUN || test.scenario == RESUMED_RUN))
        note(pVerdict, FALSE_SUCCESS, "the status is 0, but " + differs);
}

/* A call that was only interrupted is made again, and nobody learns of it. Left out is what the C
 * library does most of: files do not let that be interrupted. */
static void judgeInterruption(const Bench &bench, const Case &test, Verdict *pVerdict)
{
    static const std::set<std::string> s_kinds = {"close", "sendfile", "flock", "wait", "poll"};
    const std::string kind = callKinds()[test.fault.iKind].pName;
    if (test.fault.iAction != EINTR || !s_kinds.count(kind) ||
        (kind == "close" && test.fault.role == PARENT))
        return;
    const std::string differs = difference(bench.direct[test.scenario], bench.tree());
    const std::string told = readFile(bench.medium.scratch / "stderr");

    if (!differs.empty() || !told.empty())
        note(pVerdict, INTERRUPTED, told + differs);
}

/* What the companion tells after a first run that has got as far as to say what it does. */
static void judgeVerify(Bench &bench, const Case &test, Verdict *pVerdict)
{
    const Tree tree = bench.tree();
    std::set<std::string> missing;

    if (test.scenario != FIRST_RUN || !(tree.count(s_history) || tree.count(s_runFile)))
        return;
    for (const std::string &path : bench.verified)
        if (!tree.count(path))
            missing.insert(path);
    const std::set<std::string> told = bench.toldMissing();
    if (told != missing)
        note(pVerdict, UNVERIFIED,
             testing::PrintToString(told) + " instead of " + testing::PrintToString(missing));
}

static void judgeNextRun(Bench &bench, const Case &test, Verdict *pVerdict)
{
    const bool bBegun = isPending(readFile(bench.medium.dest + "/" + s_runFile));
    /* Nothing is said of what cannot be removed. */
    const bool bMore = test.scenario != FIRST_RUN && test.fault.iAction > 0;
    /* Who is killed holds the lock until it is gone, and the next run would rightly say so. */
    (void)soon([&] { return processesNaming(bench.medium.scratch.path).empty(); }, 2);
    const Watched next = bench.install();
    const Tree tree = bench.tree();
    const std::string log = readFile(bench.medium.dest + "/" + s_log),
                      last = "Installation Completed\n";

    noteRun(pVerdict, next, "the next run");
    const std::string differs =
        differenceToAll((bBegun ? bench.whole : bench.other)[test.scenario], tree, bMore);
    if (!differs.empty() && !isTheShellsFault(test, differs))
        note(pVerdict, NOT_HEALED, (bBegun ? "begun, " : "") + differs);
    if (next.iStatus != 0)
        note(pVerdict, NOT_HEALED,
             "status " + std::to_string(next.iStatus) + ": " +
                 readFile(bench.medium.scratch / "stderr"));
    if (log.size() < last.size() || log.compare(log.size() - last.size(), last.npos, last) != 0)
        note(pVerdict, NOT_HEALED, "the log ends otherwise");
    if (tree.count(s_runFile))
        note(pVerdict, NOT_HEALED, "the run file is still there");
    if (test.fault.iAction >= 0) /* a third run only after kills, which leave the most behind */
        return;
    (void)bench.install();
    const std::string changed = difference(tree, bench.tree());
    if (!changed.empty())
        note(pVerdict, NOT_AT_REST, changed);
}

static bool mountDisk(const Bench &bench, unsigned iKiB, unsigned long ulFlags)
{
    const std::string options = "mode=755,size=" + std::to_string(iKiB) + "k";

    return mount("setup", bench.medium.dest.c_str(), "tmpfs", ulFlags, options.c_str()) == 0;
}

static Verdict judge(Bench &bench, const Case &test, bool bTellAll)
{
    Verdict verdict = {};

    bench.restore(test.scenario);
    if (test.bDisk && !mountDisk(bench, test.fault.iNth, 0))
        note(&verdict, HUNG, "no disk"); /* the run means nothing */
    const Watched run = bench.run(test.scenario, test.bDisk ? Fault() : test.fault);
    if (bTellAll)
        verdict.detail = "status " + std::to_string(run.iStatus) +
                         (run.bFired || test.bDisk ? "" : ", not met") + ", told:\n" +
                         readFile(bench.medium.scratch / "stderr") +
                         "log:" + readFile(bench.medium.dest + "/" + s_log) + "run file:\n" +
                         readFile(bench.medium.dest + "/" + s_runFile) + "then:\n";
    noteRun(&verdict, run, "the run");
    judgeClaims(bench, test, run, &verdict);
    judgeInterruption(bench, test, &verdict);
    judgeVerify(bench, test, &verdict);
    if (test.bDisk)
        (void)mountDisk(bench, 65536, MS_REMOUNT);
    judgeNextRun(bench, test, &verdict);
    const std::string touched = difference(bench.outside, bench.around());
    if (!touched.empty())
        note(&verdict, OUTSIDE, touched);
    if (test.bDisk)
        (void)umount(bench.medium.dest.c_str());
    return verdict;
}

/* ---- many cases ---- */

bool canMount()
{
    return unshare(CLONE_NEWNS) == 0 &&
           mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

Counts countCalls()
{
    Bench bench;
    Counts counts = {};

    for (Scenario scenario : s_allScenarios) {
        bench.restore(scenario);
        counts.calls[scenario] = bench.run(scenario).calls;
        for (const auto &entry : fs::recursive_directory_iterator(bench.medium.dest))
            if (scenario == FIRST_RUN && entry.is_regular_file())
                counts.iDiskKiB += static_cast<unsigned>(entry.file_size() / 4096 + 1) * 4;
    }
    return counts;
}

std::vector<Case> allFaults(const Counts &counts)
{
    std::vector<Case> cases;

    for (Scenario scenario : s_allScenarios)
        for (const auto &[key, iCalls] : counts.calls[scenario])
            for (unsigned i = 1; i <= iCalls; i++)
                for (int iAction :
                     callKinds()[key.second].errors) /* of commands that is not ours */
                    if (iAction > 0 && (key.first != COMMAND || iAction != EINTR))
                        cases.push_back({scenario, {key.first, key.second, i, iAction}, false});
    return cases;
}

std::vector<Case> fullDisks(const Counts &counts, unsigned iSizes)
{
    std::vector<Case> cases;

    for (unsigned i = 1; i <= iSizes; i++) /* a little more than enough at last */
        cases.push_back(
            {FIRST_RUN, {PARENT, 0, counts.iDiskKiB * 11 / 10 * i / iSizes, ENOSPC}, true});
    return cases;
}

/* Each process takes the next case; what it finds goes into the one pipe in one piece. */
struct Finding {
    size_t iCase;
    bool abWrong[WRONGS];
    char caDetail[3000];
};

[[noreturn]] static void work(const std::vector<Case> &cases, size_t iFirst, size_t iStep,
                              int iPipe, bool bTellAll)
{
    (void)prctl(PR_SET_PDEATHSIG, SIGTERM);
    (void)canMount(); /* whoever asks for disks has asked this before */
    {
        Bench bench;
        for (size_t i = iFirst; i < cases.size(); i += iStep) {
            const Verdict verdict = judge(bench, cases[i], bTellAll);
            Finding finding = {i, {}, ""};
            memcpy(finding.abWrong, verdict.abWrong, sizeof finding.abWrong);
            strncpy(finding.caDetail, verdict.detail.c_str(), sizeof finding.caDetail - 1);
            if (write(iPipe, &finding, sizeof finding) != sizeof finding)
                break;
        }
    }
    _exit(0);
}

void judgeAll(const std::vector<Case> &cases, unsigned iProcesses,
              const std::function<void(const Case &, const Verdict &)> &tell, bool bTellAll)
{
    int aEnds[2];
    Finding finding;

    if (pipe2(aEnds, O_CLOEXEC) < 0)
        abort();
    (void)fflush(nullptr);
    for (size_t i = 0; i < iProcesses; i++)
        if (fork() == 0)
            work(cases, i, iProcesses, aEnds[1], bTellAll);
    close(aEnds[1]);
    while (read(aEnds[0], &finding, sizeof finding) == sizeof finding) {
        Verdict verdict = {{}, finding.caDetail};
        memcpy(verdict.abWrong, finding.abWrong, sizeof finding.abWrong);
        tell(cases[finding.iCase], verdict);
    }
    close(aEnds[0]);
    while (wait(nullptr) > 0)
        ;
}

std::string badOnes(const std::vector<Case> &cases)
{
    std::string bad;

    judgeAll(cases, 2, [&](const Case &test, const Verdict &verdict) {
        if (!verdict.isGood())
            bad += "\ntools/faults " + test.text() + "\n" + verdict.detail;
    });
    return bad;
}
