/* The log, the history and the registry may lie where others write: what somebody has planted there
 * is left alone, and what somebody rightly has there stays his. */
#include <gtest/gtest.h>

#include "engine/engineTest.h"
#include "engine/history.h"
#include "engine/registry.h"

enum { STRANGER = 12345 };

static const char *const s_apFiles[] = {"D/log/setup.log", "D/SetupFiles/.Product.his"};

struct PlantedFiles : EngineTest {
    void SetUp() override
    {
        EngineTest::SetUp();
        if (getuid() != 0)
            GTEST_SKIP() << "needs root to make what is somebody else's";
        load("Package 'p' ''\nSuite 'S' p\n");
        put("@/victim", "untouched\n");
        ASSERT_EQ(0, chmod(full("@/victim").c_str(), 0600));
    }
    /* The parent directory belongs to a stranger then. */
    void giveAway(const std::string &path)
    {
        std::string directory = fs::path(full(path)).parent_path();
        fs::create_directories(directory);
        ASSERT_EQ(0, chown(directory.c_str(), STRANGER, STRANGER));
    }
    void write()
    {
        (void)printed([this] {
            (void)told([this] {
                (void)OV_instInitLogfile(full(s_apFiles[0]).c_str());
                (void)OV_instUpdateLogfile("logged\n");
                OV_InitHistoryFile(m_dest.c_str(), "Product", "3.5");
                OV_UpdateHistoryFile(m_dest.c_str(), suite("S"));
            });
        });
    }
    void expectWritten(const std::string &log, const std::string &history)
    {
        EXPECT_EQ("before\nlogged\n", got(log));
        EXPECT_EQ("HistoryFileVersion 2\nProduct\n3.5\n@/medium\nPackage \"p\" Installed\n",
                  got(history));
    }
};

TEST_F(PlantedFiles, AreLeftAlone)
{
    for (const std::string path : s_apFiles)
        giveAway(path);
    for (const std::string path : s_apFiles)
        fs::create_hard_link(full("@/victim"), full(path));
    write();
    for (const std::string path : s_apFiles) {
        fs::remove(full(path));
        fs::create_symlink(full("@/victim"), full(path));
        ASSERT_EQ(0, lchown(full(path).c_str(), STRANGER, STRANGER));
    }
    write();
    EXPECT_EQ("untouched\n", got("@/victim"));
}

TEST_F(PlantedFiles, WhatWasThereKeepsOwnerAndMode)
{
    for (const std::string path : s_apFiles) {
        giveAway(path);
        put(path, "before\n");
        ASSERT_EQ(0, chown(full(path).c_str(), STRANGER, STRANGER + 1));
        ASSERT_EQ(0, chmod(full(path).c_str(), 0640));
    }
    write();
    expectWritten(s_apFiles[0], s_apFiles[1]);
    for (const std::string path : s_apFiles) {
        struct stat info = {};
        ASSERT_EQ(0, stat(full(path).c_str(), &info));
        EXPECT_EQ(0640u, info.st_mode & 07777);
        EXPECT_TRUE(info.st_uid == STRANGER && info.st_gid == STRANGER + 1);
    }
}

/* A backup made of second names must not end the maintenance of a tree. */
TEST_F(PlantedFiles, OwnSecondNamesAreFollowed)
{
    for (const std::string path : s_apFiles) {
        put(path, "before\n");
        fs::create_hard_link(full(path), full("@/") + fs::path(path).filename().string());
    }
    write();
    expectWritten("@/setup.log", "@/.Product.his");
}

TEST_F(PlantedFiles, RegistryOpensNobodysFile)
{
    giveAway("D/Application/registry");
    fs::create_hard_link(full("@/victim"), full("D/Application/registry"));
    OV_instChangeResgitryPermission(m_dest.c_str());
    EXPECT_EQ(0600u, modeOf("@/victim"));
    fs::remove(full("D/Application/registry"));
    put("D/Application/registry", "");
    ASSERT_EQ(0, chmod(full("D/Application/registry").c_str(), 0600));
    OV_instChangeResgitryPermission(m_dest.c_str());
    EXPECT_EQ(0644u, modeOf("D/Application/registry"));
}

/* Root must not install what somebody's history leads to, which is modules as well. */
TEST_F(PlantedFiles, AHistoryOfAStrangersLeadsNowhere)
{
    const std::string before = OV_instGetSourceDirectory();
    const auto source = [&] {
        (void)OV_instSetSourceDirectory(before.c_str());
        EXPECT_EQ(1, OV_UpdateSuiteHistory(CDInstPtr, nullptr, CDInstPtr->pSuiteHead,
                                           m_dest.c_str(), "Product", "3.5"));
        return std::string(OV_instGetSourceDirectory());
    };
    const std::string history = full(s_apFiles[1]);

    fs::create_directories(full("@/elsewhere"));
    put(s_apFiles[1], "HistoryFileVersion 2\nProduct\n3.5\n" + full("@/elsewhere") + "\n");
    EXPECT_EQ(full("@/elsewhere"), source());
    ASSERT_EQ(0, chmod(history.c_str(), 0664));
    EXPECT_EQ(before, source());
    ASSERT_EQ(0, chmod(history.c_str(), 0644));
    ASSERT_EQ(0, chown(history.c_str(), STRANGER, STRANGER));
    EXPECT_EQ(before, source());
}
