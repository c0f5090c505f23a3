#include <gtest/gtest.h>

#include "engine/archive.h"
#include "engine/engineTest.h"
#include "ut/brokenPipes.h"

struct Archive : EngineTest {
    void SetUp() override
    {
        EngineTest::SetUp();
        OV_instCatchBrokenPipes();
        put("D/file", "");
    }
    int shell(const std::string &command) { return system(full(command).c_str()); }
};

TEST(LastFedFile, FollowsTheFractionOfTheArchive)
{
    const uint64_t ulHuge = uint64_t(1) << 62;
    EXPECT_EQ(0, OV_instLastFedFile(3, 10239, 30720));
    EXPECT_EQ(1, OV_instLastFedFile(3, 10240, 30720));
    EXPECT_EQ(2, OV_instLastFedFile(3, 40960, 30720));
    EXPECT_EQ(INT32_MAX - 1, OV_instLastFedFile(INT32_MAX, ulHuge, ulHuge));
}

TEST_F(Archive, IsUnpackedAndReportedInTheOrderOfItsEntry)
{
    const auto run = [this](const std::string &line) {
        const std::string text = runLines(line);
        EXPECT_EQ(25000u, got("D/sub/a").size());
        EXPECT_EQ("b", got("D/b`$(c)"));
        fs::remove_all(m_dest + "sub");
        return text;
    };
    put("@/in/sub/a", std::string(25000, 'a'));
    put("@/in/b`$(c)", "b");
    ASSERT_EQ(0, shell("cd @/in && tar -cf 'M/t $x' . && bzip2 -k 'M/t $x'"));
    fs::current_path(m_medium);
    expectRows(run, R"(
        Untar 't $x' 1                            => 0
        Untar 't $x' 1 'sub/a' 250 'b`$(c)' 1     => 0 +250 M/t $x D/sub/a\n+1 M/t $x D/b`$(c)\n
        UntarZ 't $x.bz2' 1 'unknown' 0 'sub/a' 2 => 0 +1 M/t $x.bz2 D/unknown\n
                                                     +2 M/t $x.bz2 D/sub/a\n)");
    EXPECT_EQ(m_medium, fs::current_path().string() + "/");
}

TEST_F(Archive, FailuresAreTold)
{
    const auto run = [this](const std::string &line) {
        std::string text;
        (void)told([&] { text = runLines(line); }); /* by the commands */
        return text;
    };
    put("M/directory/x", "");
    put("M/empty", "");
    put("M/small", "no archive");              /* tar's status is not examined */
    put("M/large", std::string(4 << 20, 'x')); /* more than any pipe holds */
    expectRows(run, R"(
        Untar '' 1 'f' 4      => 1 -1 Untar invalid parameters\n
        Untar 'no' 1 'f' 4    => 1 Can't open tarfile: noReturning Continue\n
        Untar 'directory' 1   => 1 -1 Untar couldn't read file M/directory\n
        Untar 'empty' 1 'f' 4 => 0
        Untar 'small' 1 'f' 4 => 0 +4 M/small D/f\n
        UntarZ 'large' 1      => 1 -1 Untar couldn't write to pipe\n
        Untar2 'no' 'small' 1 => 1 -1 Can't change directory to: no\n)");
}

TEST_F(Archive, NamedFilesBecomeWritableWhereTheRunStarted)
{
    put("M/t", "");
    put("@/cwd/ro", "");
    put("D/ro", "");
    ASSERT_EQ(0, chmod(full("@/cwd/ro").c_str(), 0451) | chmod(full("D/ro").c_str(), 0451));
    fs::current_path(full("@/cwd"));
    EXPECT_EQ("0 -1 Untar could not make \"/proc/self/limits\" writable before\n"
              "extracting it from \"M/t\"\n",
              runLines("Untar 't' 1 'ro' 1 'unknown' 1 '/proc/self/limits' 1"));
    EXPECT_EQ(0651u, modeOf("@/cwd/ro"));
    EXPECT_EQ(0451u, modeOf("D/ro")) << "not where it is unpacked: tar replaces it there";
}
