/* Random sequences of installing, adding, removing and removing all, each step in a process of its
 * own as a user would start it, against the model. SETUP_SEQUENCES asks for another number of them,
 * SETUP_SEED for another first one. */
#include <gtest/gtest.h>

#include <algorithm>
#include <fcntl.h>
#include <random>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "description/reader.h"
#include "dialogs/Maintenance.h"
#include "engine/driver.h"
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

enum { MAINTENANCE = 2, UNATTENDED = 3, FIRST_SUITE = 20 };

enum StepKind { CHANGE, ONE_SUITE, REMOVE_ALL, REFUSED_THEN_REMOVE_ALL, WITHOUT_DIALOGS, LOOK };

struct Step {
    StepKind kind;
    int iConfig;
    std::map<int, int> choices; /* configurations that are ticked or cleared */
};

/* ---- random products ---- */

static std::mt19937 s_random;

static int upTo(int iMost) /* 0 to iMost */
{
    return static_cast<int>(s_random() % static_cast<unsigned>(iMost + 1));
}

static bool oneIn(int iChances)
{
    return upTo(iChances - 1) == 0;
}

static const std::string &anyOf(const std::vector<std::string> &texts)
{
    return texts[static_cast<size_t>(upTo(static_cast<int>(texts.size()) - 1))];
}

static ModelOper randomCopy()
{
    static const std::vector<std::string> s_targets = {
        "",        "app/share/text", "app/doc/a", "app/doc/b", "setup",
        "arc/new", "arc/sub/new",    "dir/in/x",  "dir/y",     "dir"};
    std::string source = oneIn(40) ? "src/missing" : "src/f" + std::to_string(upTo(3));

    if (oneIn(5))
        return {ModelOper::COPYZ, "CopyZ", source, "elsewhere", "", 0640, {}};
    return {ModelOper::COPY,          "Copy", source, oneIn(30) ? "app" : anyOf(s_targets), "",
            oneIn(2) ? 0644u : 0751u, {}};
}

/* A file that others link to has one source and one mode only. */
static ModelOper linkedCopy()
{
    return {ModelOper::COPY, "Copy", "src/f1", "app/tool", "", 0755, {}};
}

static ModelOper randomLink()
{
    std::string directory = oneIn(10) ? "missing" : oneIn(2) ? "app" : "dir";
    std::string name = (oneIn(2) ? "" : "links/") + std::to_string(upTo(1));

    if (oneIn(2))
        return {ModelOper::SOFTLINK, "SoftLink", directory, "../app/tool", name + "s", 0, {}};
    return {ModelOper::HARDLINK, "HardLink", directory, directory == "app" ? "tool" : "../app/tool",
            name + "h",          0,          {}};
}

static ModelOper randomArchive()
{
    static const std::vector<std::string> s_roots = {"", "", "<RootDest>", "<CommonDest>"};
    std::string root = anyOf(s_roots);
    bool bPacked = oneIn(4);
    ModelOper oper = {ModelOper::UNTAR,
                      std::string("Untar") + (bPacked ? "Z" : ""),
                      std::string(oneIn(2) ? "a0" : "a1") + (bPacked ? ".tbz" : ".tar"),
                      "",
                      root,
                      0,
                      {"arc/one", "arc/sub", "arc/sub/two"}};

    if (!root.empty())
        oper.keyword += "2";
    if (oneIn(2))
        oper.members.insert(oper.members.end(), {"arc/sub/deep", "arc/sub/deep/three"});
    if (oneIn(3))
        oper.members.insert(oper.members.begin(), "arc");
    return oper;
}

static ModelOper randomDirectory()
{
    static const std::vector<std::string> s_names = {"app",       "app/doc",   "app/share",
                                                     "dir",       "dir/in",    "arc",
                                                     "app/links", "../Orvane", "only/empty"};
    return {ModelOper::MKDIR, "Mkdir", anyOf(s_names), "", "", oneIn(3) ? 0750u : 0755u, {}};
}

static ModelOper randomOper()
{
    switch (upTo(9)) {
    case 0:
    case 1:
        return randomDirectory();
    case 2:
        return randomLink();
    case 3:
        return oneIn(2) ? randomArchive() : randomDirectory();
    case 4:
        return linkedCopy();
    default:
        return randomCopy();
    }
}

/* Configurations 2 and 3 and groups beneath them; suites come behind, some in several groups. */
static void addConfigs(ModelProduct *pProduct)
{
    int iGroups = upTo(3), iSuites = static_cast<int>(pProduct->suites.size());

    for (int iId : {MAINTENANCE, UNATTENDED})
        pProduct->configs.push_back({iId, -1, upTo(1), {}});
    for (int i = 0; i < iGroups; i++) {
        pProduct->configs.push_back({10 + i, -1, upTo(1), {}});
        for (int iAbove : {+MAINTENANCE, +UNATTENDED, 9 + i})
            for (ModelConfig &config : pProduct->configs)
                if (config.iId == iAbove && oneIn(2))
                    config.members.push_back(10 + i);
    }
    for (int i = 0; i < iSuites; i++) {
        for (ModelConfig &config : pProduct->configs)
            if (oneIn(2) && config.iSuite < 0)
                config.members.push_back(FIRST_SUITE + i);
        pProduct->configs.push_back({FIRST_SUITE + i, i, upTo(1), {}});
    }
    for (ModelConfig &config : pProduct->configs) /* what names nothing, or leads back */
        if (config.iSuite < 0 && oneIn(8))
            config.members.push_back(oneIn(2) ? 99 : MAINTENANCE);
}

static ModelProduct randomProduct()
{
    ModelProduct product;
    int iPackages = 2 + upTo(4), iSuites = 2 + upTo(3);

    for (int i = 0; i < iPackages; i++) {
        product.packages.emplace_back();
        for (int iOpers = 1 + upTo(5); iOpers > 0; iOpers--)
            product.packages.back().push_back(randomOper());
    }
    for (int i = 0; i < iSuites; i++) {
        product.suites.push_back({"Suite " + std::to_string(i), {}});
        for (int iCount = oneIn(25) ? 0 : 1 + upTo(2); iCount > 0; iCount--)
            product.suites.back().packages.push_back(upTo(iPackages - 1));
    }
    addConfigs(&product);
    return product;
}

/* ---- the medium ---- */

static std::string textOfLength(const std::string &start, size_t iLength)
{
    return start + std::string(iLength - start.size(), '.');
}

static ModelMedium makeMedium(const std::string &place)
{
    ModelMedium medium;

    medium.files = {{"src/f0", "zero"},
                    {"src/f1", textOfLength("one", 10240)},
                    {"src/f2", textOfLength("two", 25000)},
                    {"src/f3", ""}};
    for (const auto &[name, text] : medium.files)
        writeFile(place + "/" + name, text);
    for (std::string number : {"0", "1"}) {
        std::string stage = place + "/stage" + number + "/";
        ModelArchive archive = {{"arc/one", {'f', 0640, "one of " + number}},
                                {"arc/sub", {'d', 0711, ""}},
                                {"arc/sub/two", {'f', 0755, textOfLength(number, 20000)}},
                                {"arc/sub/deep/three", {'f', 0600, ""}}};
        std::string names;
        for (const auto &[name, node] : archive) {
            if (node.cKind == 'f')
                writeFile(stage + name, node.content);
            names += " " + name;
        }
        for (const auto &[name, node] : archive)
            chmod((stage + name).c_str(), node.iMode);
        must("cd " + stage + " && tar --no-recursion -cf ../a" + number + ".tar" + names +
             " && bzip2 -c ../a" + number + ".tar > ../a" + number + ".tbz");
        for (const char *pSuffix : {".tar", ".tbz"})
            medium.archives["a" + number + pSuffix] = archive;
    }
    return medium;
}

/* ---- the program's side ---- */

static std::string marksOfEngine(const ModelProduct &product, int iFound)
{
    ModelMarks marks = {iFound != 0, {}, {}, {}, {}};
    int iNumber = 0;

    for (auto *pNode = CDInstPtr->pPackageHead; pNode; pNode = pNode->pNext, iNumber++)
        if (pNode->pPackage->iInstalled)
            marks.packages.insert(iNumber);
    iNumber = 0;
    for (auto *pSuite = CDInstPtr->pSuiteHead; pSuite; pSuite = pSuite->pNext, iNumber++)
        if (pSuite->iState)
            marks.suites.insert(iNumber);
    for (const ModelConfig &config : product.configs) {
        marks.installed[config.iId] = OV_instGetConfigFromId(CDInstPtr, config.iId)->iInstalled;
        marks.selected[config.iId] = OV_instGetConfigFromId(CDInstPtr, config.iId)->iSelected;
    }
    return marks.text();
}

static void confirm(_OV_InstConfigList *pConfig)
{
    OV_instSetLastDlg(pConfig);
    SetConfigToInstall(pConfig);
    (void)OV_instMoveFiles(nullptr, pConfig);
}

static void removeEverything(_OV_InstConfigList *pConfig)
{
    SetSelectedFlags(pConfig, 0);
    (void)OV_instCommandLineInstall(CDInstPtr, pConfig, OV_INST_DELETE_MODE);
}

static void startAsTheDialogsDo(const Medium &medium, const ModelProduct &product)
{
    (void)OV_instSetRunningDirectory(medium.place.c_str());
    CDInstPtr = OV_instReadCDinst((medium.place + "/cdinst.dat").c_str(), nullptr);
    if (!CDInstPtr)
        _exit(2);
    (void)OV_instSetRootDestination(medium.dest.c_str());
    (void)OV_instSetSizes(CDInstPtr);
    std::string dest = OV_instGetDestinationDirectory();
    int iFound = OV_UpdateSuiteHistory(CDInstPtr, OV_instGetConfigFromId(CDInstPtr, MAINTENANCE),
                                       CDInstPtr->pSuiteHead, dest.c_str(), OV_instGetProductName(),
                                       OV_instGetProductVersion());
    if (iFound)
        OV_instSetMaintenanceExists();
    writeFile(medium.scratch / "marks", marksOfEngine(product, iFound));
}

[[noreturn]] static void runUnattended(const Medium &medium)
{
    std::string program = medium.place + "/setup", dest = medium.dest;
    char caOption[][10] = {"-cmdline", "-noroot", "-dest"};
    char *apWords[] = {program.data(), caOption[0], caOption[1], caOption[2], dest.data(), nullptr};
    char *pDescription = nullptr, *pDestination = nullptr;

    OV_instProcessArgs(5, apWords, &pDescription, &pDestination);
    _exit(3); /* it ends the process itself */
}

[[noreturn]] static void takeStep(const Medium &medium, const ModelProduct &product,
                                  const Step &step)
{
    int iOutput = open((medium.scratch / "output").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);

    dup2(iOutput, STDOUT_FILENO);
    dup2(iOutput, STDERR_FILENO);
    umask(022);
    setenv("HOME", (medium.scratch / "home").c_str(), 1);
    if (chdir(medium.place.c_str()) < 0)
        _exit(2);
    OV_instPrepareEnvironment();
    if (step.kind == WITHOUT_DIALOGS)
        runUnattended(medium);
    startAsTheDialogsDo(medium, product);
    _OV_InstConfigList *pConfig = OV_instGetConfigFromId(CDInstPtr, step.iConfig);
    if (step.kind == REFUSED_THEN_REMOVE_ALL) /* nothing was changed */
        (void)OV_instPreInstallCheck(CDInstPtr, pConfig);
    for (auto [iId, iState] : step.choices)
        OV_instGetConfigFromId(CDInstPtr, iId)->iSelected = iState;
    if (step.kind == CHANGE || step.kind == ONE_SUITE)
        confirm(pConfig);
    else if (step.kind != LOOK)
        removeEverything(pConfig);
    (void)fflush(nullptr);
    _exit(0);
}

static int statusOf(const Medium &medium, const ModelProduct &product, const Step &step)
{
    int iStatus = 0;
    (void)fflush(nullptr);
    pid_t iChild = fork();

    if (iChild == 0)
        takeStep(medium, product, step);
    waitpid(iChild, &iStatus, 0);
    return WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : 128 + WTERMSIG(iStatus);
}

static ModelTree treeOnDisk(const std::string &root)
{
    ModelTree tree;

    for (const auto &entry : std::filesystem::recursive_directory_iterator(root)) {
        struct stat info = {};
        std::string path = entry.path(), name = path.substr(root.size() + 1);
        lstat(path.c_str(), &info);
        unsigned iMode = info.st_mode & 07777;
        if (S_ISLNK(info.st_mode))
            tree[name] = {'l', iMode, std::filesystem::read_symlink(path)};
        else if (S_ISDIR(info.st_mode))
            tree[name] = {'d', iMode, ""};
        else
            tree[name] = {'f', iMode, readFile(path)};
    }
    return tree;
}

/* ---- steps ---- */

static Step randomStep(const InstallModel &model, const ModelMarks &marks)
{
    std::vector<StepKind> kinds = {CHANGE, CHANGE, CHANGE, WITHOUT_DIALOGS};
    if (marks.bMaintenance)
        kinds.insert(kinds.end(), {CHANGE, CHANGE, REMOVE_ALL, REFUSED_THEN_REMOVE_ALL});
    else
        kinds.insert(kinds.end(), {ONE_SUITE});
    Step step = {
        kinds[static_cast<size_t>(upTo(static_cast<int>(kinds.size()) - 1))], MAINTENANCE, {}};

    if (step.kind == ONE_SUITE)
        step.iConfig = FIRST_SUITE;
    if (step.kind == WITHOUT_DIALOGS)
        step.iConfig = UNATTENDED;
    if (step.kind != CHANGE && step.kind != ONE_SUITE)
        return step;
    if (marks.bMaintenance) /* as Add/Remove does it: the members themselves, not theirs */
        for (int iMember : model.pProduct->configs[0].members)
            if (marks.installed.count(iMember))
                step.choices[iMember] = marks.installed.at(iMember);
    for (const ModelConfig &config : model.pProduct->configs)
        if (oneIn(3))
            step.choices[config.iId] = upTo(1);
    if (step.kind == ONE_SUITE)
        step.choices[FIRST_SUITE] = 1;
    return step;
}

static void follow(InstallModel *pModel, const Step &step)
{
    ModelMarks marks = pModel->start(step.iConfig == UNATTENDED ? UNATTENDED : MAINTENANCE,
                                     step.kind == WITHOUT_DIALOGS);

    for (auto [iId, iState] : step.choices)
        marks.selected[iId] = iState;
    if (step.kind == REMOVE_ALL || step.kind == REFUSED_THEN_REMOVE_ALL) {
        for (auto &[iId, iState] : marks.selected)
            iState = 0;
        pModel->run(marks, step.iConfig, true);
    } else if (step.kind == WITHOUT_DIALOGS ||
               (step.kind != LOOK && pModel->affectsPackages(marks, step.iConfig))) {
        pModel->run(marks, step.iConfig, false);
    }
}

/* How the last run ended; messages that the reader logs may stand behind it. */
static std::string lastOutcome(const Medium &medium)
{
    std::string log = readFile(medium.dest + "/the.product/Setup/setup.log");

    log.erase(0, log.rfind("Starting Installation\n"));
    return log.find("\nError during the installation\n") != log.npos ? "failed"
           : log.find("\nInstallation Completed\n") != log.npos      ? "completed"
                                                                     : "cut";
}

static void runSequence(Medium &medium, const ModelMedium &contents)
{
    ModelProduct product = randomProduct();
    InstallModel model = {&contents, &product, medium.place, {}, false};
    bool bRan = false;

    std::filesystem::remove_all(medium.dest);
    std::filesystem::create_directories(medium.dest);
    writeFile(medium.place + "/cdinst.dat", product.text());
    for (int iStep = 0, iSteps = 3 + upTo(3); iStep <= iSteps; iStep++) {
        ModelMarks marks = model.start(MAINTENANCE);
        Step step = randomStep(model, marks);
        if (iStep == iSteps)
            step = {LOOK, MAINTENANCE, {}};
        std::string what = "step " + std::to_string(iStep) + " of kind " +
                           std::to_string(step.kind) + " on " + std::to_string(step.iConfig) + ":";
        for (auto [iId, iState] : step.choices)
            what += " " + std::to_string(iId) + "=" + std::to_string(iState);
        SCOPED_TRACE(what);

        ASSERT_EQ(0, statusOf(medium, product, step)) << readFile(medium.scratch / "output");
        if (step.kind != WITHOUT_DIALOGS) {
            ASSERT_EQ(marks.text(), readFile(medium.scratch / "marks"));
        }
        follow(&model, step);
        bRan = bRan || !model.tree.empty();
        if (bRan) {
            ASSERT_EQ(model.bFailed ? "failed" : "completed", lastOutcome(medium));
        }
        ASSERT_EQ(textOf(model.tree), textOf(treeOnDisk(medium.dest)));
    }
}

static unsigned setting(const char *pName, unsigned iDefault)
{
    const char *pValue = getenv(pName);

    return pValue ? static_cast<unsigned>(strtoul(pValue, nullptr, 10)) : iDefault;
}

TEST(ModelSequences, TreeHistoryAndMarksAreTheModels)
{
    unsigned iFirst = setting("SETUP_SEED", 1), iCount = setting("SETUP_SEQUENCES", 200);
    /* In memory where that can be had: every run waits until its files are on the disk. */
    Scratch place(access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp");
    Medium medium;
    medium.dest = place / "dest";
    ModelMedium contents = makeMedium(medium.place);

    printf("%u sequences from seed %u\n", iCount, iFirst);
    for (unsigned i = 0; i < iCount && !HasFatalFailure(); i++) {
        SCOPED_TRACE("seed " + std::to_string(iFirst + i));
        s_random.seed(iFirst + i);
        runSequence(medium, contents);
        if (HasFatalFailure())
            printf("%s", readFile(medium.place + "/cdinst.dat").c_str());
    }
}
