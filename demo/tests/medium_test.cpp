/* The sample medium: whether its description tells the truth, and whether it installs. */
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <regex>
#include <set>
#include <vector>

#include "OVinstModule.h"

#include "description/model.h"
#include "description/reader.h"
#include "support.h"
#include "ut/owned.h"

using Model = std::unique_ptr<_OV_instCDinst, decltype(&OV_instFreeCDinst)>;

static const std::string s_medium = MEDIUM_DIR;

static Model readMedium()
{
    return Model(OV_instReadCDinst((s_medium + "/cdinst.dat").c_str(), nullptr), OV_instFreeCDinst);
}

/* For a shell command; the names of a build tree hold no quotes, but may hold blanks. */
static std::string word(const std::string &path)
{
    return "'" + path + "'";
}

static std::string output(const std::string &command)
{
    OwnedPipe pipe(popen(command.c_str(), "r"));
    std::string text;

    for (int c; (c = getc(pipe.get())) != EOF;)
        text += static_cast<char>(c);
    return text;
}

static std::vector<const _OV_InstOper *> operations(const Model &model)
{
    std::vector<const _OV_InstOper *> all;

    for (auto *pNode = model->pPackageHead; pNode; pNode = pNode->pNext)
        for (auto *pOper = pNode->pPackage->pOperHead; pOper; pOper = pOper->pNext)
            all.push_back(pOper);
    return all;
}

static bool isArchive(const _OV_InstOper *pOper)
{
    return pOper->iType >= OV_OPER_UNTAR && pOper->iType <= OV_OPER_UNTARZ2;
}

/* Member names and sizes as tar itself lists them; an empty file weighs 1 in the description. */
static std::string listing(const std::string &archive)
{
    return output("tar -tvf " + word(archive) +
                  " | awk '{ size = $3 ? $3 : 1; for (i = 0; i < 5; i++) sub(/^[^ ]+ +/, \"\");"
                  " print size, $0 }'");
}

TEST(Medium, MembersAndSizesAreTrue)
{
    Model model = readMedium();
    ASSERT_TRUE(model);
    std::set<int> kinds;

    for (const _OV_InstOper *pOper : operations(model)) {
        kinds.insert(pOper->iType);
        if (pOper->iType == OV_OPER_COPY || pOper->iType == OV_OPER_COPYZ) {
            EXPECT_EQ(pOper->lUnits, static_cast<int64_t>(
                                         fs::file_size(s_medium + "/" + pOper->body.copy.pSource)))
                << pOper->body.copy.pSource;
        }
        if (!isArchive(pOper))
            continue;
        const _OV_InstTar &tar = pOper->body.tar;
        std::ostringstream told;
        for (int i = 0; i < tar.iCount; i++)
            told << tar.aUnits[i] << " " << tar.apMembers[i] << "\n";
        EXPECT_EQ(listing(s_medium + "/" + tar.pArchive), told.str()) << tar.pArchive;
    }
    EXPECT_EQ(12u, kinds.size()) << "a sample of every kind of operation but the idle one";
}

/* Everything that the description lists lies where it belongs, and is whole. The one file that the
 * installation itself goes on to write keeps its beginning. */
static void expectInstalled(const Model &model, const std::string &root)
{
    const std::string dest = root + "/kivo/";

    for (const _OV_InstOper *pOper : operations(model)) {
        const auto &body = pOper->body;
        if (pOper->iType == OV_OPER_COPY) {
            std::string path = dest + (body.copy.pDest ? body.copy.pDest : body.copy.pSource);
            std::string wanted = readFile(s_medium + "/" + body.copy.pSource),
                        found = readFile(path);
            if (path == dest + "Application/registry")
                found.resize(wanted.size());
            EXPECT_TRUE(wanted == found) << path << ": " << found.size() << " bytes";
        } else if (isArchive(pOper)) {
            std::string base = !body.tar.pDestRoot                               ? dest
                               : std::string("<RootDest>") == body.tar.pDestRoot ? root
                                                                                 : root + "/Orvane";
            EXPECT_EQ("", output("tar -df " + word(s_medium + "/" + body.tar.pArchive) + " -C " +
                                 base + " 2>&1 | grep -v 'd differs$'"));
        }
    }
}

TEST(Medium, InstallsCompletelyAndCallsTheRegistryTools)
{
    Scratch scratch;
    const std::string root = scratch / "root", dest = root + "/kivo/";
    const std::string command = "HOME=" + scratch.path.string() +
                                " DISPLAY= " + word(s_medium + "/setup") +
                                " -cmdline -noroot -dest " + root + " 2>&1 >/dev/null";
    Model model = readMedium();
    ASSERT_TRUE(model);

    EXPECT_EQ("", output(command));
    expectInstalled(model, root);
    EXPECT_EQ(0644u, modeOf(dest + "Application/registry"));
    EXPECT_EQ(0755u, modeOf(dest + "Application/bin/kivo"));
    EXPECT_EQ(2u, fs::hard_link_count(dest + "Application/bin/kivo3.5"));
    EXPECT_EQ("bin/kivo", fs::read_symlink(dest + "Application/kivo"));
    EXPECT_TRUE(fs::exists(dest + "Documents/start.html"));
    EXPECT_EQ(262144u, fs::file_size(dest + "Data/Cache/scene.cache"));

    EXPECT_TRUE(std::regex_match(
        readFile(dest + "Setup/setup.log"),
        std::regex("\n>>>>>>> SETUP Log File created on .* <<<<<<<\nStarting Installation\n"
                   "KIVO: reserved 262144 bytes for \\S+/Data/Cache/scene.cache\n"
                   "KIVO: found [0-9]+ files in \\S+/Documents/manual\nInstallation Completed\n")))
        << readFile(dest + "Setup/setup.log");

    const std::string calls = readFile(dest + "Application/registry");
    const std::string aExpected[] = {
        "argument <Software\\Orvane\\KIVO\\3.5>\nargument <InstallDir>\nargument <" + dest +
            ">\nOV_HOME " + dest + "\n",
        "argument <KIVO.Scene\\shell\\open\\command>\nargument <Default>\nargument <\"" + dest +
            "Application/bin/kivo\" -open>\n",
        "program cmdreg\nargument <" + dest + "Application/modules/render.rgs>\nargument <" + dest +
            "Application/modules/import.rgs>\n",
    };
    for (const std::string &expected : aExpected)
        EXPECT_NE(std::string::npos, calls.find(expected)) << expected << "not in\n" << calls;
}

/* ---- the module ---- */

struct Module : testing::Test {
    Scratch scratch;
    const std::string root = scratch / "", dest = root + "kivo/",
                      cache = dest + "Data/Cache/scene.cache";
    Records records;
    void *pModule = dlopen((s_medium + "/SetupFiles/kivosetup.so").c_str(), RTLD_NOW);

    Module() { fs::create_directories(dest + "Data/Cache"); }
    ~Module() override { dlclose(pModule); }

    int32_t reserve(OV_InstMode mode, const char *pData = "20000 Data/Cache/scene.cache")
    {
        auto reserveCache = reinterpret_cast<OV_CustomFunction>(dlsym(pModule, "reserveCache"));
        _OV_CustomData data = {};

        data.fpUpdate = records.pStream;
        data.pRootDest = root.c_str();
        data.pDest = dest.c_str();
        data.pData = pData;
        data.iDelete = mode;
        data.ovPass = OV_CUSTOM_INIT;
        return reserveCache(nullptr, &data);
    }
};

TEST_F(Module, ReplacesAndRemovesItsOwnFile)
{
    EXPECT_EQ(OV_INST_NO_ERROR, reserve(OV_INST_INSTALL_MODE));
    fs::resize_file(cache, 100);
    EXPECT_EQ(OV_INST_NO_ERROR, reserve(OV_INST_INSTALL_MODE));
    EXPECT_EQ(20000u, fs::file_size(cache));
    EXPECT_EQ(OV_INST_NO_ERROR, reserve(OV_INST_DELETE_MODE));
    EXPECT_TRUE(fs::is_empty(dest + "Data/Cache"));
    records.take();
    EXPECT_EQ(OV_INST_NO_ERROR, reserve(OV_INST_DELETE_MODE)); /* somebody was quicker */
    EXPECT_EQ("+20000 " + cache + "\n", records.take());
    EXPECT_EQ(OV_INST_NO_ERROR, reserve(OV_INST_DELETE_MODE, "20000 a\n-1 abort"));
    EXPECT_EQ("+20000 " + dest + "a?-1 abort\n", records.take()); /* one record */
}

TEST_F(Module, LeavesWhatItHasNotMade)
{
    const std::string state = "cd " + word(scratch.path) + " && find . -ls";
    writeFile(scratch / "own", "KIVO cache\nof somewhere else\n");
    writeFile(scratch / "other/scene.cache", "KIVO cache\nof somewhere else\n");

    for (const char *pPlant : {"echo notes >scene.cache", "ln -s ../../../own scene.cache",
                               "cd .. && rm -r Cache && ln -s ../../other Cache",
                               "cd ../../.. && mv kivo real && ln -s real kivo"}) {
        SCOPED_TRACE(pPlant);
        output("cd " + word(dest + "Data/Cache") + " && rm -f scene.cache && " + pPlant);
        const std::string before = output(state);
        EXPECT_EQ(OV_INST_ERROR, reserve(OV_INST_INSTALL_MODE));
        EXPECT_EQ("-1 KIVO: can't create " + cache + "\n", records.take());
        EXPECT_EQ(OV_INST_NO_ERROR, reserve(OV_INST_DELETE_MODE));
        EXPECT_EQ(0u, records.take().find("+20000 " + cache + "\n"));
        EXPECT_EQ(before, output(state));
    }
}
