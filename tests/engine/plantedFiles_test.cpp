/* The log, the history and the registry may lie where others write: what somebody has planted there
 * is left alone, and what somebody rightly has there stays his. */
#include <gtest/gtest.h>

#include "engine/engineTest.h"
#include "engine/history.h"
#include "engine/registry.h"

enum { STRANGER = 12345 };

struct PlantedFiles : EngineTest {
    struct Writer {
        std::string path;
        std::function<void()> write;
        std::string text; /* what the writing leaves behind "before\n" */
    };
    std::vector<Writer> m_writers;

    void SetUp() override
    {
        EngineTest::SetUp();
        if (getuid() != 0)
            GTEST_SKIP() << "needs root to make what is somebody else's";
        load("Package 'p' ''\nSuite 'S' p\n");
        m_writers = {
            {"D/log/setup.log",
             [this] {
                 (void)OV_instInitLogfile(full("D/log/setup.log").c_str());
                 (void)OV_instUpdateLogfile("logged\n");
             },
             "before\nlogged\n"},
            {"D/SetupFiles/.Product.his",
             [this] {
                 OV_InitHistoryFile(m_dest.c_str(), "Product", "3.5");
                 OV_UpdateHistoryFile(m_dest.c_str(), suite("S"));
             },
             "HistoryFileVersion 2\nProduct\n3.5\n@/medium\nPackage \"p\" Installed\n"},
        };
        put("@/victim", "untouched\n");
        ASSERT_EQ(0, chmod(full("@/victim").c_str(), 0600));
    }

    /* A directory that belongs to a stranger. */
    void giveAway(const std::string &path)
    {
        std::string directory = fs::path(full(path)).parent_path();

        fs::create_directories(directory);
        ASSERT_EQ(0, chown(directory.c_str(), STRANGER, STRANGER));
    }
    static void writeSilently(const Writer &writer)
    {
        (void)printed([&] { (void)told([&] { writer.write(); }); });
    }
};

TEST_F(PlantedFiles, AreLeftAlone)
{
    for (const Writer &writer : m_writers)
        for (bool bSecondName : {false, true}) {
            SCOPED_TRACE(writer.path);
            giveAway(writer.path);
            if (bSecondName)
                fs::create_hard_link(full("@/victim"), full(writer.path));
            else
                fs::create_symlink(full("@/victim"), full(writer.path));
            ASSERT_EQ(0, bSecondName ? 0 : lchown(full(writer.path).c_str(), STRANGER, STRANGER));
            writeSilently(writer);
            EXPECT_EQ("untouched\n", got("@/victim"));
            fs::remove(full(writer.path));
        }
}

TEST_F(PlantedFiles, WhatWasThereKeepsOwnerAndMode)
{
    for (const Writer &writer : m_writers) {
        SCOPED_TRACE(writer.path);
        struct stat info = {};
        giveAway(writer.path);
        put(writer.path, "before\n");
        ASSERT_EQ(0, chown(full(writer.path).c_str(), STRANGER, STRANGER + 1));
        ASSERT_EQ(0, chmod(full(writer.path).c_str(), 0640));
        writeSilently(writer);
        EXPECT_EQ(writer.text, got(writer.path));
        ASSERT_EQ(0, stat(full(writer.path).c_str(), &info));
        EXPECT_EQ(0640u, info.st_mode & 07777);
        EXPECT_EQ(STRANGER, static_cast<int>(info.st_uid));
        EXPECT_EQ(STRANGER + 1, static_cast<int>(info.st_gid));
    }
}

/* A backup made of second names must not end the maintenance of a tree. */
TEST_F(PlantedFiles, OwnSecondNamesAreFollowed)
{
    for (const Writer &writer : m_writers) {
        SCOPED_TRACE(writer.path);
        put(writer.path, "before\n");
        fs::create_hard_link(full(writer.path), full("@/backup"));
        writeSilently(writer);
        EXPECT_EQ(writer.text, got("@/backup"));
        fs::remove(full("@/backup"));
    }
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
