/* The sample product's modules, driven as setup drives them. */
#include <gtest/gtest.h>

#include <X11/xpm.h>
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>

#include "engine/OVinstModule.h"
#include "ut/owned.h"

namespace fs = std::filesystem;

static void *load(const char *pName)
{
    void *pModule = dlopen((std::string(MODULES_DIR "/") + pName).c_str(), RTLD_LAZY);

    EXPECT_TRUE(pModule) << dlerror();
    return pModule;
}

static std::string contents(FILE *pFile)
{
    std::string text;

    rewind(pFile);
    for (int c; (c = getc(pFile)) != EOF;)
        text += static_cast<char>(c);
    return text;
}

class ModulesTest : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        char caName[] = "/tmp/modulesXXXXXX";
        ASSERT_TRUE(mkdtemp(caName));
        dest = std::string(caName) + "/";
    }
    void TearDown() override { fs::remove_all(dest); }

    /* One call of a function, with initModule before it; fills update and log. */
    int32_t call(const char *pFunction, const char *pText, OV_CustomPass ovPass, int32_t iMode)
    {
        OwnedFile pipe(tmpfile()), logFile(tmpfile());
        auto *pCalled = reinterpret_cast<OV_CustomFunction>(dlsym(module, pFunction));
        auto *pInit = reinterpret_cast<OV_CustomFunction>(dlsym(module, "initModule"));
        auto *pRoot = reinterpret_cast<struct _OV_instCDinst *>(&dest); /* opaque to a module */

        record = {};
        record.fpUpdate = ovPass == OV_CUSTOM_SIZE ? nullptr : pipe.get();
        record.fpLog = ovPass == OV_CUSTOM_SIZE ? nullptr : logFile.get();
        record.pRootDest = "/r/";
        record.pCommonDest = "/r/c/";
        record.pDest = dest.c_str();
        record.pFrom = "/m";
        record.pData = pText;
        record.pPackageName = "core";
        record.pSuiteName = ovPass == OV_CUSTOM_SIZE ? nullptr : "Suite";
        record.iDelete = iMode;
        record.iSize = iBlock;
        record.ovPass = ovPass;
        EXPECT_EQ(OV_INST_NO_ERROR, pInit(pRoot, &record));
        int32_t iResult = pCalled(pRoot, &record);
        update = contents(pipe.get());
        log = contents(logFile.get());
        return iResult;
    }

    /* The sum of the "+" records, which setup holds against the size pass. */
    long progress() const
    {
        std::istringstream lines(update);
        long lSum = 0;

        for (std::string line; std::getline(lines, line);)
            lSum += line[0] == '+' ? strtol(line.c_str(), nullptr, 10) : 0;
        return lSum;
    }

    void *module = load("kivosetup.so"); /* stays loaded: unloading would hide leaks */
    std::string dest, update, log;
    _OV_CustomData record = {};
    int32_t iBlock = 0;
};

TEST_F(ModulesTest, SizePassRoundsToBlocksAndRefusesBadData)
{
    const struct {
        const char *pText;
        int32_t iBlock;
        int32_t iSize; /* -1: refused */
    } aRows[] = {
        {"262144 Data/scene.cache", 4096, 262144    },
        {"1 c",                     4096, 4096      },
        {"4097 c",                  4096, 8192      },
        {"5000 c",                  1,    5000      },
        {"5000 c",                  0,    5000      },
        {"2147483647 c",            1,    2147483647},
        {"2147483647 c",            4096, -1        },
        {"2147483648 c",            1,    -1        },
        {"0 c",                     1,    -1        },
        {"-5 c",                    1,    -1        },
        {"12",                      1,    -1        },
        {"12 ",                     1,    -1        },
        {"12c",                     1,    -1        },
        {"",                        1,    -1        },
    };

    for (const auto &row : aRows) {
        SCOPED_TRACE(row.pText);
        iBlock = row.iBlock;
        int32_t iResult = call("reserveCache", row.pText, OV_CUSTOM_SIZE, OV_INST_INSTALL_MODE);
        EXPECT_EQ(row.iSize < 0 ? OV_INST_ERROR : OV_INST_NO_ERROR, iResult);
        EXPECT_EQ(row.iSize < 0 ? row.iBlock : row.iSize, record.iSize);
    }
}

TEST_F(ModulesTest, CacheComesAndGoesInTheInitPassOnly)
{
    for (OV_CustomPass ovPass : {OV_CUSTOM_PRE, OV_CUSTOM_REGISTRY, OV_CUSTOM_POST}) {
        EXPECT_EQ(OV_INST_NO_ERROR, call("reserveCache", "25000 c", ovPass, OV_INST_INSTALL_MODE));
        EXPECT_EQ("", update);
        EXPECT_FALSE(fs::exists(dest + "c"));
    }
    EXPECT_EQ(OV_INST_NO_ERROR,
              call("reserveCache", "25000 c", OV_CUSTOM_INIT, OV_INST_INSTALL_MODE));
    EXPECT_EQ(25000, progress());
    EXPECT_NE(std::string::npos,
              update.find("#Log:KIVO: reserved 25000 bytes for " + dest + "c\n"));
    EXPECT_EQ("reserveCache: package core, pass 3, mode 0, unattended run\n", log);
    EXPECT_EQ(25000u, fs::file_size(dest + "c"));
    std::ifstream cache(dest + "c");
    std::string head(400, '\0');
    cache.read(head.data(), 400);
    EXPECT_STREQ(("KIVO cache\nroot /r/\ncommon /r/c/\nproduct " + dest +
                  "\nmedium /m\npackage core\nsuite Suite\n")
                     .c_str(),
                 head.c_str());

    for (int32_t iMode :
         {OV_INST_DELETE_MODE, OV_INST_DELETE_ALL_MODE}) { /* also when it is gone */
        EXPECT_EQ(OV_INST_NO_ERROR, call("reserveCache", "25000 c", OV_CUSTOM_INIT, iMode));
        EXPECT_EQ(25000, progress());
        EXPECT_FALSE(fs::exists(dest + "c"));
    }
}

TEST_F(ModulesTest, CacheReplacesAPlantedLinkAndReportsWhatItCannotWrite)
{
    std::ofstream(dest + "victim") << "precious";
    fs::create_symlink(dest + "victim", dest + "c");
    EXPECT_EQ(OV_INST_NO_ERROR, call("reserveCache", "9 c", OV_CUSTOM_INIT, OV_INST_INSTALL_MODE));
    EXPECT_EQ(8u, fs::file_size(dest + "victim"));
    EXPECT_FALSE(fs::is_symlink(dest + "c"));

    EXPECT_EQ(OV_INST_ERROR, call("reserveCache", "9 no/c", OV_CUSTOM_INIT, OV_INST_INSTALL_MODE));
    EXPECT_EQ("-1 KIVO: can't create " + dest + "no/c\n", update);
    fs::create_directories(dest + "d/e");
    EXPECT_EQ(OV_INST_ERROR, call("reserveCache", "9 d", OV_CUSTOM_INIT, OV_INST_DELETE_MODE));
    EXPECT_EQ("-1 KIVO: can't remove " + dest + "d\n", update);
}

TEST_F(ModulesTest, CheckFilesCountsRegularFilesAfterTheInstallation)
{
    fs::create_directories(dest + "m/n");
    fs::create_symlink("nowhere", dest + "m/link");
    EXPECT_EQ(OV_INST_NO_ERROR, call("checkFiles", "m", OV_CUSTOM_SIZE, OV_INST_INSTALL_MODE));
    EXPECT_EQ(0, record.iSize);
    EXPECT_EQ(OV_INST_NO_ERROR, call("checkFiles", "m", OV_CUSTOM_INIT, OV_INST_INSTALL_MODE));
    EXPECT_EQ(OV_INST_NO_ERROR, call("checkFiles", "m", OV_CUSTOM_POST, OV_INST_DELETE_MODE));
    EXPECT_EQ("", update + log);
    for (const char *pDirectory : {"m", "missing"}) {
        EXPECT_EQ(OV_INST_ERROR,
                  call("checkFiles", pDirectory, OV_CUSTOM_POST, OV_INST_INSTALL_MODE));
        EXPECT_EQ("-1 KIVO: no files of the package in " + dest + pDirectory + "\n", update);
    }
    std::ofstream(dest + "m/a") << 1;
    std::ofstream(dest + "m/n/b") << 2;
    EXPECT_EQ(OV_INST_NO_ERROR, call("checkFiles", "m", OV_CUSTOM_POST, OV_INST_INSTALL_MODE));
    EXPECT_EQ("checkFiles: 2 files in " + dest + "m\n", log);
}

TEST_F(ModulesTest, IconsAreWholePictures)
{
    void *pIcons = load("kivoicons.so");

    for (const char *pName :
         {"kivo_typical", "kivo_custom", "kivo_other", "kivo_compact", "kivo_developer"}) {
        SCOPED_TRACE(pName);
        auto **apLines = static_cast<char **>(dlsym(pIcons, pName));
        ASSERT_TRUE(apLines);
        XpmImage picture = {};
        ASSERT_EQ(XpmSuccess, XpmCreateXpmImageFromData(apLines, &picture, nullptr));
        EXPECT_EQ(48u, picture.width);
        EXPECT_EQ(48u, picture.height);
        EXPECT_LT(10u, picture.ncolors);
        XpmFreeXpmImage(&picture);
    }
}
