/* Random sequences of installing, adding, removing and removing all, each step in a process of its
 * own as a user would start it, against the model. SETUP_SEQUENCES asks for more of them. */
#include <gtest/gtest.h>

#include <random>
#include <unistd.h>

#include "description/reader.h"
#include "dialogs/Maintenance.h"
#include "engine/history.h"
#include "engine/installer.h"
#include "engine/moveFiles.h"
#include "engine/preInstall.h"
#include "engine/selection.h"
#include "engine/setupState.h"
#include "engine/sizes.h"
#include "engine/startup.h"
#include "runs/installModel.h"
#include "runs/run.h"

enum { MAINTENANCE = 2, UNATTENDED = 3, GROUP = 10, SUITE = 20 };

struct Step {
    enum { CHANGE, REMOVE_ALL, WITHOUT_DIALOGS } kind;
    std::map<int, bool> choices; /* configurations that are ticked or cleared */
};

static std::mt19937 s_random;

static int upTo(int iMost) /* 0 to iMost */
{
    return static_cast<int>(s_random() % static_cast<unsigned>(iMost + 1));
}

static bool oneIn(int iChances)
{
    return upTo(iChances - 1) == 0;
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
    int iPackages = 2 + upTo(4), iSuites = 2 + upTo(3), iGroups = upTo(3);

    for (int i = 0; i < iPackages; i++) {
        product.packages.emplace_back();
        for (int iLines = 1 + upTo(5); iLines > 0; iLines--)
            product.packages.back().push_back(randomLine());
    }
    for (int iId = SUITE; iId < SUITE + iSuites; iId++)
        for (int iCount = oneIn(25) ? 0 : 1 + upTo(2); iCount >= 0; iCount--)
            if (iCount)
                product.suites[iId].push_back(upTo(iPackages - 1));
            else if (product.suites[iId], oneIn(2))
                product.selected.insert(iId);
    for (int iId = MAINTENANCE; iId < GROUP + iGroups; iId = iId == UNATTENDED ? GROUP : iId + 1) {
        for (int iMember = GROUP; iMember < SUITE + iSuites; iMember++)
            if ((iMember >= SUITE || (iMember > iId && iMember < GROUP + iGroups)) && oneIn(2))
                product.groups[iId].push_back(iMember);
        if (product.groups[iId], oneIn(2))
            product.selected.insert(iId);
    }
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
    ModelMarks marks = {bMaintenance, {}, {}, {}, {}};
    int iPackage = 0, iSuite = SUITE;

    for (auto *pNode = CDInstPtr->pPackageHead; pNode; pNode = pNode->pNext, iPackage++)
        if (pNode->pPackage->iInstalled)
            marks.packages.insert(iPackage);
    for (auto *pSuite = CDInstPtr->pSuiteHead; pSuite; pSuite = pSuite->pNext, iSuite++)
        if (pSuite->iState)
            marks.suites.insert(iSuite);
    for (auto *pConfig = CDInstPtr->pConfigHead; pConfig; pConfig = pConfig->pNext) {
        if (pConfig->iInstalled)
            marks.installed.insert(pConfig->iId);
        if (pConfig->iSelected)
            marks.selected.insert(pConfig->iId);
    }
    return marks.text();
}

[[noreturn]] static void workAsTheDialogsDo(const Medium &medium, const Step &step)
{
    if (!freopen((medium.scratch / "output").c_str(), "w", stdout) ||
        OV_instSetRunningDirectory(medium.place.c_str()) != 0)
        _exit(2);
    OV_instPrepareEnvironment();
    CDInstPtr = OV_instReadCDinst((medium.place + "/cdinst.dat").c_str(), nullptr);
    if (!CDInstPtr || OV_instSetRootDestination(medium.dest.c_str()) != 0)
        _exit(3);
    (void)OV_instSetSizes(CDInstPtr);
    std::string dest = OV_instGetDestinationDirectory();
    _OV_InstConfigList *pConfig = OV_instGetConfigFromId(CDInstPtr, MAINTENANCE);
    int iFound = OV_UpdateSuiteHistory(CDInstPtr, pConfig, CDInstPtr->pSuiteHead, dest.c_str(),
                                       OV_instGetProductName(), OV_instGetProductVersion());
    if (iFound)
        OV_instSetMaintenanceExists();
    writeFile(medium.scratch / "marks", marksOfEngine(iFound != 0));
    for (auto [iId, bState] : step.choices)
        OV_instGetConfigFromId(CDInstPtr, iId)->iSelected = bState;
    OV_instSetLastDlg(pConfig);
    SetConfigToInstall(pConfig);
    if (step.kind == Step::CHANGE)
        (void)OV_instMoveFiles(nullptr, pConfig);
    if (step.kind == Step::REMOVE_ALL) {
        (void)OV_instPreInstallCheck(CDInstPtr, pConfig); /* nothing was changed: refused */
        SetSelectedFlags(pConfig, 0);
        (void)OV_instCommandLineInstall(CDInstPtr, pConfig, 1);
    }
    (void)fflush(nullptr);
    _exit(0);
}

static ModelTree treeOnDisk(const std::string &root)
{
    ModelTree tree;

    for (const auto &entry : fs::recursive_directory_iterator(root)) {
        const fs::file_status status = entry.symlink_status();
        std::string path = entry.path(), text;
        char caMode[8];
        snprintf(caMode, sizeof caMode, "%04o ", static_cast<unsigned>(status.permissions()));
        if (entry.is_symlink())
            text = fs::read_symlink(path);
        else if (!entry.is_directory() && entry.path().filename() != "setup.log") /* it has times */
            text = readFile(path);
        tree[path.substr(root.size() + 1)] = (entry.is_symlink()     ? "l"
                                              : entry.is_directory() ? "d"
                                                                     : "f") +
                                             (caMode + text);
    }
    return tree;
}

static std::string textOf(const ModelTree &tree)
{
    std::string text;

    for (const auto &[path, node] : tree)
        text += path + " " + node + "\n";
    return text;
}

/* ---- steps ---- */

static Step randomStep(const InstallModel &model, const ModelMarks &marks)
{
    Step step = {Step::CHANGE, {}};

    if (oneIn(5))
        step.kind = Step::WITHOUT_DIALOGS;
    else if (marks.bMaintenance && oneIn(4))
        step.kind = Step::REMOVE_ALL;
    if (step.kind != Step::CHANGE)
        return step;
    for (const auto *pConfigs : {&model.product.groups, &model.product.suites})
        for (const auto &[iId, members] : *pConfigs)
            if (oneIn(3))
                step.choices[iId] = oneIn(2);
    if (marks.bMaintenance) /* as Add/Remove does it: the members themselves, not theirs */
        for (int iMember : model.product.groups.at(MAINTENANCE))
            step.choices.try_emplace(iMember, marks.installed.count(iMember) > 0);
    return step;
}

static void follow(InstallModel *pModel, const Step &step)
{
    int iConfig = step.kind == Step::WITHOUT_DIALOGS ? UNATTENDED : MAINTENANCE;
    ModelMarks marks = pModel->start(iConfig, iConfig == UNATTENDED);

    for (auto [iId, bState] : step.choices)
        if (bState)
            marks.selected.insert(iId);
        else
            marks.selected.erase(iId);
    if (step.kind == Step::REMOVE_ALL)
        marks.selected.clear();
    if (step.kind != Step::CHANGE || pModel->affectsPackages(marks, iConfig))
        pModel->run(marks, iConfig, step.kind == Step::REMOVE_ALL);
}

static void runSequence(Medium &medium, InstallModel &model)
{
    fs::remove_all(medium.dest);
    fs::create_directories(medium.dest);
    medium.describe(model.product.text());
    model.description = readFile(medium.place + "/cdinst.dat");
    for (int iStep = 0, iSteps = 3 + upTo(3); iStep < iSteps; iStep++) {
        ModelMarks marks = model.start(MAINTENANCE, false);
        Step step = randomStep(model, marks);
        SCOPED_TRACE("step " + std::to_string(iStep) + " of kind " + std::to_string(step.kind) +
                     ", choices " + testing::PrintToString(step.choices));
        if (step.kind == Step::WITHOUT_DIALOGS) {
            ASSERT_EQ(0, medium.install().iStatus);
        } else {
            ASSERT_EXIT(workAsTheDialogsDo(medium, step), testing::ExitedWithCode(0), "");
            ASSERT_EQ(marks.text(), readFile(medium.scratch / "marks"));
        }
        follow(&model, step);
        ASSERT_EQ(textOf(model.tree), textOf(treeOnDisk(medium.dest)));
        std::string log = medium.log();
        ASSERT_EQ(model.bFailed, log.find("\nError during the installation\n",
                                          log.rfind("Starting Installation\n")) != log.npos);
    }
}

TEST(ModelSequences, TreeHistoryAndMarksAreTheModels)
{
    const char *pCount = getenv("SETUP_SEQUENCES");
    unsigned iCount = pCount ? static_cast<unsigned>(strtoul(pCount, nullptr, 10)) : 200;
    /* In memory where that can be had: every run waits until its files are on the disk. */
    Scratch place(access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp");
    Medium medium;

    medium.dest = place / "dest";
    medium.tree = medium.dest + "/prod/";
    setenv("HOME", (medium.scratch / "home").c_str(), 1);
    writeMedium(medium.place);
    for (unsigned i = 1; i <= iCount && !HasFatalFailure(); i++) {
        s_random.seed(i);
        std::string header = "HistoryFileVersion 2\nTest Product\n3.5\n" + medium.place + "\n";
        InstallModel model = {s_medium, randomProduct(), header, "", {}, false};
        SCOPED_TRACE("seed " + std::to_string(i) + "\n" + model.product.text());
        runSequence(medium, model);
    }
}
