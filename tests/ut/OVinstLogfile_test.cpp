#include <gtest/gtest.h>

#include "ut/OVinstLogfile.h"
#include "ut/guard.h"
#include "ut/owned.h"
#include "ut/scratchDir.h"

#include <regex>
#include <string>
#include <unistd.h>

namespace fs = std::filesystem;

class Logfile : public testing::Test
{
  protected:
    void SetUp() override { g_caLogName[0] = '\0'; }
    void TearDown() override { g_caLogName[0] = '\0'; }
    ScratchDir scratch;
    std::string base = scratch.path, log = base + "/log.txt";
};

TEST_F(Logfile, AppendsAHeaderForEveryRun)
{
    std::string head = "\n>>>>>>> SETUP Log File created on "
                       "[0-9]{4}-[0-9]{2}-[0-9]{2}-[0-9]{2}h[0-9]{2} <<<<<<<\n"
                       "Starting Installation\n";

    ASSERT_EQ(OV_instInitLogfile(log.c_str()), 0);
    EXPECT_TRUE(fs::is_empty(log));
    ASSERT_EQ(OV_instInitLogfileAndTimeStamp(log.c_str()), 0);
    EXPECT_EQ(OV_instUpdateLogfile("%s\n", "100%s"), 0);
    OwnedFile stream(OV_instOpenLogfile()); /* a module's, which writes after the next record */
    EXPECT_EQ(OV_instUpdateLogfile("no "), 0);
    EXPECT_GT(fputs("newline", stream.get()), 0);
    stream.reset();
    ASSERT_EQ(OV_instInitLogfileAndTimeStamp(g_caLogName), 0);
    EXPECT_TRUE(std::regex_match(readText(log), std::regex(head + "100%s\nno newline" + head)))
        << readText(log);
}

TEST_F(Logfile, WritesNothingWithoutALog)
{
    testing::internal::CaptureStderr();
    EXPECT_EQ(OV_instInitLogfile(nullptr), -1);
    EXPECT_EQ(OV_instInitLogfileAndTimeStamp(""), -1);
    EXPECT_EQ(OV_instInitLogfile(std::string(4097, 'x').c_str()), -1);
    EXPECT_STREQ(g_caLogName, "");
    EXPECT_EQ(OV_instOpenLogfile(), nullptr);
    EXPECT_EQ(OV_instUpdateLogfile("lost\n"), 0);
    EXPECT_EQ(OV_instUpdateLogfile(nullptr), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(Logfile, RemembersAPathThatCannotBeOpened)
{
    std::string path = base + "/none/%s.txt", longest = base + "/" + std::string(4096, 'x');
    longest.resize(4096);
    EXPECT_EQ(OV_instInitLogfile(longest.c_str()), -1);
    EXPECT_EQ(g_caLogName, longest);

    testing::internal::CaptureStderr();
    EXPECT_EQ(OV_instInitLogfileAndTimeStamp(path.c_str()), -1);
    EXPECT_EQ(g_caLogName, path);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

    testing::internal::CaptureStderr();
    EXPECT_EQ(OV_instUpdateLogfile("lost\n"), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Error: (OV_instUpdateLogfile) can't open '" + path + "'\n");
    fs::create_directory(base + "/none");
    EXPECT_EQ(OV_instUpdateLogfile("found\n"), 0);
    EXPECT_TRUE(fs::exists(path));
}

TEST_F(Logfile, StaysInsideTheDestination)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can plant another user's links";
    fs::create_directory(base + "/root");
    fs::create_symlink(log, base + "/root/log");
    ASSERT_EQ(lchown((base + "/root/log").c_str(), 65534, 65534), 0);
    OV_instSetGuardedRoot((base + "/root").c_str());
    EXPECT_EQ(OV_instInitLogfileAndTimeStamp((base + "/root/log").c_str()), -1);
    EXPECT_FALSE(fs::exists(log));
    OV_instSetGuardedRoot(nullptr);
}
