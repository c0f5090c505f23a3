/* The log, the history and the registry may lie where others write: what somebody has planted there
 * is left alone, and what somebody rightly has there is followed. */
#include <gtest/gtest.h>

#include "engine/engineTest.h"
#include "engine/history.h"
#include "engine/registry.h"

enum { STRANGER = 12345 };

static const std::string s_aFiles[] = {"D/log/setup.log", "D/SetupFiles/.Product.his"};

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
    /* A second name of the victim, in a directory that belongs to a stranger. */
    void plant(const std::string &path)
    {
        const std::string directory = fs::path(full(path)).parent_path();
        fs::create_directories(directory);
        ASSERT_EQ(0, chown(directory.c_str(), STRANGER, STRANGER));
        fs::create_hard_link(full("@/victim"), full(path));
    }
    void write()
    {
        (void)printed([this] {
            (void)told([this] {
                (void)OV_instInitLogfile(full(s_aFiles[0]).c_str());
                (void)OV_instUpdateLogfile("logged\n");
                OV_InitHistoryFile(m_dest.c_str(), "Product", "3.5");
                OV_UpdateHistoryFile(m_dest.c_str(), suite("S"));
            });
        });
    }
};

TEST_F(PlantedFiles, AreLeftAlone)
{
    for (const std::string &path : s_aFiles)
        plant(path);
    write();
    EXPECT_EQ("logged\n", got(s_aFiles[0]));
    EXPECT_NE("", got(s_aFiles[1]));
    for (const std::string &path : s_aFiles) {
        fs::remove(full(path));
        fs::create_symlink(full("@/victim"), full(path));
        ASSERT_EQ(0, lchown(full(path).c_str(), STRANGER, STRANGER));
    }
    write();
    EXPECT_EQ("untouched\n", got("@/victim"));
    plant("D/Application/registry");
    OV_instChangeResgitryPermission(m_dest.c_str());
    EXPECT_EQ(0600u, modeOf("@/victim"));
}

/* A backup made of second names must not end the maintenance of a tree. */
TEST_F(PlantedFiles, OwnSecondNamesAreFollowed)
{
    for (const std::string &path : s_aFiles) {
        put(path, "before\n");
        fs::create_hard_link(full(path), full("@/") + fs::path(path).filename().string());
    }
    write();
    EXPECT_EQ("before\nlogged\n", got("@/setup.log"));
    EXPECT_EQ("HistoryFileVersion 2\nProduct\n3.5\n@/medium\nPackage \"p\" Installed\n",
              got("@/.Product.his"));
    put("D/Application/registry", "");
    ASSERT_EQ(0, chmod(full("D/Application/registry").c_str(), 0600));
    OV_instChangeResgitryPermission(m_dest.c_str());
    EXPECT_EQ(0644u, modeOf("D/Application/registry"));
}

/* Root must not install what somebody's history leads to, which is modules as well, nor take his
 * word for what is installed. */
TEST_F(PlantedFiles, AHistoryOfAStrangersLeadsNowhere)
{
    const std::string before = OV_instGetSourceDirectory(), history = full(s_aFiles[1]);
    const std::string run = replaced(history, ".his", ".run");
    fs::create_directories(full("@/elsewhere"));
    for (const std::string &path : {history, run})
        for (const auto &[mode, owner] :
             {std::pair(0644, 0), {0664, 0}, {0666, 0}, {0644, +STRANGER}}) {
            const bool bBelieved = mode != 0666 && owner == 0;
            writeFile(path, std::string(path == run ? "Run" : "History") + "FileVersion " +
                                (path == run ? "1" : "2") + "\nProduct\n3.5\n" +
                                full("@/elsewhere") + "\nPackage \"p\" Installed\n");
            package("p")->iInstalled = 0;
            (void)OV_instSetSourceDirectory(before.c_str());
            ASSERT_EQ(0, chmod(path.c_str(), static_cast<mode_t>(mode)));
            ASSERT_EQ(0, chown(path.c_str(), static_cast<uid_t>(owner), 0));
            EXPECT_EQ(bBelieved, OV_UpdateSuiteHistory(CDInstPtr, nullptr, CDInstPtr->pSuiteHead,
                                                       m_dest.c_str(), "Product", "3.5"));
            EXPECT_EQ(bBelieved ? full("@/elsewhere") : before, OV_instGetSourceDirectory());
            EXPECT_EQ(bBelieved, package("p")->iInstalled);
            fs::remove(path);
        }
}
