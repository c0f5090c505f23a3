/* Random sequences of installing, adding, removing and removing all, each step in a process of its
 * own as a user would start it, against the model. SETUP_SEQUENCES asks for more of them. */
#include <gtest/gtest.h>

#include <random>
#include <unistd.h>

#include "engine/setupState.h"
#include "runs/asDialogs.h"
#include "runs/installModel.h"
#include "runs/run.h"

enum { MAINTENANCE = 2, UNATTENDED = 3, GROUP = 10, SUITE = 20, ALL = 90 };

enum Step { CHANGE, REMOVE_ALL, WITHOUT_DIALOGS, BY_NAME };

static std::mt19937 s_random;

static int upTo(int iMost) /* 0 to iMost */
{
    return static_cast<int>(s_random() % static_cast<unsigned>(iMost + 1));
}

/* ---- random products ---- */

/* Of words in braces one is taken. What others link to has one source and one mode only. */
static const char *const s_apLines[] = {
    "Mkdir '{app|app/doc|app/share|dir|dir/in|arc|app/links|../beside|only/empty}' {0755|0750}",
    "Mkdir '{app|app/doc|app/share|dir|dir/in|arc|app/links|../beside|only/empty}' {0755|0750}",
    "Mkdir '{app|dir|only/empty}' 0755",
    "SoftLink '{app|app|dir|missing}' '../app/tool' '{|links/}s{0|1}'",
    "HardLink 'app' 'tool' '{|links/}h{0|1}'",
    "HardLink '{dir|missing}' '../app/tool' '{|links/}h{0|1}'",
    "Untar 'a.tar' 1{| 'arc' 1} 'arc/one' 1 'arc/sub' 1 'arc/sub/two' 1",
    "Untar 'a.tar' 1 'arc/one' 1 'arc/sub/two' 1 'arc/sub/deep' 1 'arc/sub/deep/three' 1",
    "Copy 'src/f1' 'app/tool' 10 0755",
    "Copy 'src/f1' 'app/tool' 10 0755",
    "CopyZ 'src/{f0|f1|f2|f2|missing}' 'elsewhere' 10 0640",
    "Copy 'src/{f0|f1|f2}' '{|app/share/text|dir/in/x|setup|dir/y}' 10 {0644|0751}",
    "Copy 'src/{f0|f1|f2}' '{|app/doc/a|app/doc/b|dir/in/x|dir/y}' 10 {0644|0751}",
    "Copy 'src/{f0|f1|f2}' '{app/doc/a|arc/new|arc/sub/new|dir/y|dir}' 10 {0644|0751}",
    "Copy 'src/{f0|f1|f2}' '{app/share/text|dir/in/x|app/doc/b|setup}' 10 {0644|0751}",
    "Copy 'src/{f0|f0|f0|f1|f1|f2|f2|missing}' '{|app/doc/a|dir/y|app}' 10 0644",
};

static std::string randomLine()
{
    std::string line = s_apLines[s_random() % std::size(s_apLines)];
    for (size_t at = 0; (at = line.find('{', at)) != std::string::npos;) {
        size_t end = line.find('}', at);
        std::istringstream in(line.substr(at + 1, end - at - 1));
        std::vector<std::string> words;
        for (std::string word; std::getline(in, word, '|');)
            words.push_back(word);
        line.replace(at, end + 1 - at, words[s_random() % words.size()]);
    }
    return line;
}

/* Beneath the configurations 2 and 3 are groups and suites, which may be in several. */
static ModelProduct randomProduct()
{
    ModelProduct product;
    int iPackages = 2 + upTo(4), iGroups = GROUP + upTo(3), iSuites = SUITE + 2 + upTo(3);
    product.packages.resize(static_cast<size_t>(iPackages));
    for (auto &lines : product.packages)
        for (int iCount = 1 + upTo(5); iCount > 0; iCount--)
            lines.push_back(randomLine());
    for (int iId = SUITE; iId < iSuites; iId++) {
        product.suites[iId].resize(static_cast<size_t>(upTo(25) ? 1 + upTo(2) : 0));
        for (int &iPackage : product.suites[iId])
            iPackage = upTo(iPackages - 1);
    }
    for (int iId = MAINTENANCE; iId < iGroups; iId = iId == UNATTENDED ? GROUP : iId + 1)
        for (int iMember = std::max(iId, GROUP - 1) + 1; iMember < iSuites; iMember++)
            if (std::vector<int> &members = product.groups[iId];
                (iMember < iGroups || iMember >= SUITE) && upTo(1))
                members.push_back(iMember);
    for (int iId = MAINTENANCE; iId < iSuites; iId++)
        if ((product.groups.count(iId) || product.suites.count(iId)) && upTo(1))
            product.selected.insert(iId);
    return product;
}

static const ModelTree s_medium = {
    {"arc/one", "f0640 one"},   {"arc/sub", "d0711 "},    {"arc/sub/deep/three", "f0600 "},
    {"arc/sub/two", "f0755 2"}, {"src/f0", "f0644 zero"}, {"src/f1", "f0644 one"},
    {"src/f2", "f0644 "}};

static void writeMedium(const std::string &place)
{
    for (const auto &[name, node] : s_medium)
        if (node[0] == 'f')
            writeFile(place + "/" + name, node.substr(6));
    for (const auto &[name, node] : s_medium)
        must("chmod " + node.substr(1, 4) + " " + place + "/" + name);
    must("cd " + place + " && tar -cf a.tar --no-recursion arc/sub $(find arc -type f)");
}

/* ---- the program's side ---- */

static std::string marksOfEngine(bool bMaintenance)
{
    ModelMarks marks = {bMaintenance, {}, {}, {}, {}, {}};
    for (auto *pNode = CDInstPtr->pPackageHead; pNode; pNode = pNode->pNext)
        if (pNode->pPackage->iInstalled)
            marks.packages.insert(atoi(pNode->pPackage->pName + 1));
    for (auto *pSuite = CDInstPtr->pSuiteHead; pSuite; pSuite = pSuite->pNext)
        if (pSuite->iState)
            marks.suites.insert(atoi(pSuite->pName + 1));
    for (auto *pConfig = CDInstPtr->pConfigHead; pConfig; pConfig = pConfig->pNext) {
        if (pConfig->iInstalled)
            marks.installed.insert(pConfig->iId);
        if (pConfig->iSelected)
            marks.selected.insert(pConfig->iId);
    }
    return marks.text();
}

static ModelTree treeOnDisk(const std::string &root)
{
    ModelTree tree;
    for (const auto &entry : fs::recursive_directory_iterator(root)) {
        bool bLink = entry.is_symlink(), bDirectory = !bLink && entry.is_directory();
        std::string path = entry.path();
        char caMode[8];
        snprintf(caMode, sizeof caMode, "%c%04o ",
                 bLink        ? 'l'
                 : bDirectory ? 'd'
                              : 'f',
                 static_cast<unsigned>(entry.symlink_status().permissions()));
        tree[path.substr(root.size() + 1)] =
            caMode + (bLink ? fs::read_symlink(path).string()
                      : bDirectory || path.find("/setup.log") != path.npos ? "" /* it has times */
                                                                           : readFile(path));
    }
    return tree;
}

/* ---- what is planned ---- */

/* The companion's words for a run: without suites that of an unattended setup. */
static std::vector<std::string> companion(const Medium &medium, const char *pCommand,
                                          const std::set<int> &suites)
{
    std::vector<std::string> words = {OVMEDIUM_PROGRAM, pCommand, "--dest", medium.dest};
    for (int iId : suites)
        words.insert(words.end(), {"--suite", "S" + std::to_string(iId)});
    words.push_back(medium.place);
    return words;
}

/* Whether the run did what was planned, and nothing else: by path, what came of its last step. */
static void expectAsPlanned(const std::string &plan, const std::string &dest,
                            const ModelTree &before, const ModelTree &after)
{
    static const std::set<std::string> s_own = {
        "prod/Setup", "prod/Setup/setup.log", "prod/SetupFiles", s_history,
        s_run,        "prod/cdinst.dat"};
    std::map<std::string, std::pair<std::string, size_t>> last;
    std::istringstream in(plan);
    std::string action, path;
    for (size_t iBytes; in >> action >> iBytes && std::getline(in, path);)
        if (path.compare(0, dest.size() + 2, " " + dest + "/") == 0)
            last[path.substr(dest.size() + 2)] = {action, iBytes};
        else if (path != " " + dest)
            break; /* behind the steps */
    for (const auto &[name, what] : last) {
        SCOPED_TRACE(name);
        const char *pKinds = what.first == "remove"  ? "-"
                             : what.first == "mkdir" ? "d"
                             : what.first == "link"  ? "lf"
                                                     : "f";
        ASSERT_TRUE(strchr(pKinds, kindAt(after, name))) << what.first << kindAt(after, name);
        ASSERT_TRUE(pKinds[0] != 'f' || what.second == after.at(name).size() - 6);
    }
    ModelTree both = before;
    both.insert(after.begin(), after.end());
    for (const auto &[name, node] : both)
        ASSERT_TRUE(last.count(name) || s_own.count(name) || name == "prod" ||
                    (before.count(name) && after.count(name) &&
                     before.at(name).substr(5) == after.at(name).substr(5)))
            << name << " is in no plan";
}

/* What has been chosen by name: with nothing to do the run is left out. */
static void applyByName(Medium &medium, InstallModel &model, ModelMarks &marks)
{
    std::set<int> suites;
    for (const auto &[iId, packages] : model.product.suites)
        if (!upTo(1) || suites.empty())
            suites.insert(iId);
    for (const auto &[iId, packages] : model.product.suites)
        if (suites.count(iId))
            marks.selected.insert(iId);
        else
            marks.selected.erase(iId);
    const ModelTree before = model.tree;
    const RunResult plan = medium.start(companion(medium, "plan", suites));
    const bool bBlocked = ("\n" + plan.out).find("\nblocked ") != std::string::npos;
    ASSERT_EQ(bBlocked, plan.iStatus) << plan.out << plan.err;
    model.settle(marks, ALL);
    const bool bRuns = !bBlocked && (!marks.bMaintenance || model.tree.count(s_run) ||
                                     model.affectsPackages(marks, ALL));
    if (bRuns)
        model.run(marks, ALL, false);
    auto words = companion(medium, "apply", suites);
    words.push_back("--noroot");
    const RunResult result = medium.start(words);
    ASSERT_EQ(bBlocked || (bRuns && model.bFailed), result.iStatus) << result.out << result.err;
    if (bRuns)
        expectAsPlanned(plan.out, medium.dest, before, treeOnDisk(medium.dest));
}

static void installAsPlanned(Medium &medium)
{
    const ModelTree before = treeOnDisk(medium.dest);
    const RunResult plan = medium.start(companion(medium, "plan", {}));

    ASSERT_EQ(before, treeOnDisk(medium.dest));
    ASSERT_EQ(0, medium.install().iStatus);
    if (plan.iStatus == 0) /* what comes behind something that is blocked may be otherwise */
        expectAsPlanned(plan.out, medium.dest, before, treeOnDisk(medium.dest));
}

static void runSequence(Medium &medium, InstallModel &model)
{
    fs::remove_all(medium.dest);
    fs::create_directories(medium.dest);
    medium.describe(model.product.text(), usualHeader("NoChestRC\n"));
    model.description = readFile(medium.place + "/cdinst.dat");
    for (const auto &[iId, packages] : model.product.suites)
        model.product.groups[ALL].push_back(iId); /* as the companion makes it */
    for (int iStep = 0, iSteps = 3 + upTo(3); iStep < iSteps; iStep++) {
        bool bMaintenance = medium.has("SetupFiles/.h.his");
        Step step = !upTo(4)                   ? WITHOUT_DIALOGS
                    : !upTo(4)                 ? BY_NAME
                    : bMaintenance && !upTo(3) ? REMOVE_ALL
                                               : CHANGE;
        int iConfig = step == WITHOUT_DIALOGS ? UNATTENDED : step == BY_NAME ? ALL : MAINTENANCE;
        ModelMarks marks = model.start(iConfig, step == WITHOUT_DIALOGS);
        std::string found = marks.text();
        for (const auto *pConfigs : {&model.product.groups, &model.product.suites})
            for (const auto &[iId, members] : *pConfigs)
                if (step == REMOVE_ALL || (step == CHANGE && !upTo(5)))
                    marks.selected.erase(iId);
                else if (step == CHANGE && !upTo(4))
                    marks.selected.insert(iId);
        SCOPED_TRACE("step " + std::to_string(iStep) + " of kind " + std::to_string(step) + ": " +
                     found + " becomes " + marks.text());
        if (step == BY_NAME) {
            ASSERT_NO_FATAL_FAILURE(applyByName(medium, model, marks));
        } else if (step == WITHOUT_DIALOGS) {
            ASSERT_NO_FATAL_FAILURE(installAsPlanned(medium));
        } else {
            const auto noteMarks = [&](bool bInstalled) {
                writeFile(medium.scratch / "marks", marksOfEngine(bInstalled));
            };
            ASSERT_EXIT(workAsTheDialogsDo(medium, step == REMOVE_ALL, marks.selected, noteMarks),
                        testing::ExitedWithCode(0), "");
            ASSERT_EQ(found, readFile(medium.scratch / "marks"));
        }
        model.settle(marks, iConfig);
        if (step != BY_NAME && (step != CHANGE || model.affectsPackages(marks, iConfig)))
            model.run(marks, iConfig, step == REMOVE_ALL);
        ASSERT_EQ(model.tree, treeOnDisk(medium.dest));
        const std::string log = medium.log();
        const std::string last =
            model.bFailed ? "\nError during the installation\n" : "\nInstallation Completed\n";
        ASSERT_TRUE(
            log.empty() || /* nothing was ever begun */
            (log.size() > last.size() && !log.compare(log.size() - last.size(), last.npos, last)))
            << log;
    }
}

TEST(ModelSequences, TreeHistoryAndMarksAreTheModels)
{
    const char *pCount = getenv("SETUP_SEQUENCES");
    unsigned iCount = pCount ? static_cast<unsigned>(atoi(pCount)) : 200;
    /* In memory where that can be had: every run waits until its files are on the disk. */
    Scratch place(access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp");
    Medium medium;

    medium.dest = place / "dest";
    medium.tree = medium.dest + "/prod/";
    writeMedium(medium.place);
    for (unsigned i = 1; i <= iCount && !HasFatalFailure(); i++) {
        s_random.seed(i);
        std::string header = "HistoryFileVersion 2\nTest Product\n3.5\n" + medium.place + "\n";
        InstallModel model = {s_medium, randomProduct(), header, "", {}, false, {}};
        SCOPED_TRACE("seed " + std::to_string(i) + "\n" + model.product.text());
        runSequence(medium, model);
    }
}
