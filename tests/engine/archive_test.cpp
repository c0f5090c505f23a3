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
    put("M/small", "no archive");
    put("D/there", "four");
    put("M/large", std::string(4 << 20, 'x')); /* more than any pipe holds */
    expectRows(run, R"(
        Untar '' 1 'f' 4      => 1 -1 Untar invalid parameters\n
        Untar 'no' 1 'f' 4    => 1 Can't open tarfile: noReturning Continue\n
        Untar 'directory' 1   => 1 -1 Untar couldn't read file M/directory\n
        Untar 'empty' 1 'f' 4 => 1 -1 Untar couldn't extract f from empty\n
        Untar 'small' 1 'f' 4 => 1 +4 M/small D/f\n-1 Untar couldn't extract f from small\n
        Untar 'small' 1 'there' 4 => 0 +4 M/small D/there\n
        UntarZ 'large' 1      => 1 -1 Untar couldn't write to pipe\n
        Untar2 'no' 'small' 1 => 1 -1 Can't change directory to: no\n)");
}

/* Of an archive that ends in the middle of its last member, so that tar complains. */
TEST_F(Archive, WhatTarComplainsOfIsLookedAt)
{
    put("@/in/a", std::string(700, 'a'));
    put("@/in/twice", "1");
    put("@/in/d/f", "");
    ASSERT_EQ(0,
              shell("cd @/in && ln a hard && ln -s none soft && tar -cf M/t a hard soft d twice &&"
                    " echo more >> twice && tar -rf M/t twice && echo last > last &&"
                    " tar -rf M/t last && head -c $(($(tar -tRf M/t | sed -n"
                    " 's/^block \\([0-9]*\\): last$/\\1/p') * 512 + 514)) M/t > M/cut"));
    const auto run = [this](const std::string &members) {
        std::string out;
        for (const auto &entry : fs::directory_iterator(m_dest))
            fs::remove_all(entry);
        (void)told([&] { out = runLines("Untar 'cut' 1 " + members); });
        const size_t failure = out.find("-1 ");
        return failure == out.npos ? "0" : trimmed(replaced(out.substr(failure), "\n", ""));
    };
    expectRows(run, R"(
        'a' 700 'hard' 700 'soft' 1 'd' 1 'd/f' 1       => 0
        './a' 700 '/hard' 1 'd/' 1 'd//f' 1             => 0
        'twice' 2 'twice' 6                             => 0
        'twice' 2                                       => -1 Untar couldn't extract twice from cut
        'a' 700 'd' 2                                   => -1 Untar couldn't extract d from cut
        'soft' 4                                        => -1 Untar couldn't extract soft from cut
        'a' 700 '../the.product/a' 700 => -1 Untar couldn't extract ../the.product/a from cut
        'a' 700 'last' 5 'none' 1                       => -1 Untar couldn't extract last from cut)");
    EXPECT_EQ("0 +1 M/t D/a\n", runLines("Untar 't' 1 'a' 1")) << "it is not asked for";
}

TEST_F(Archive, NamedFilesBecomeWritableWhereTheRunStarted)
{
    put("M/t", "");
    put("@/cwd/ro", "");
    put("D/ro", "");
    ASSERT_EQ(0, chmod(full("@/cwd/ro").c_str(), 0451) | chmod(full("D/ro").c_str(), 0451));
    fs::current_path(full("@/cwd"));
    put("@/outside", "");
    put("@/cwd/shared/ro", "");
    fs::create_symlink(full("@/outside"), full("@/cwd/link"));
    ASSERT_EQ(0, chmod(full("@/outside").c_str(), 0451) |
                     chmod(full("@/cwd/shared").c_str(), 0777) |
                     chmod(full("@/cwd/shared/ro").c_str(), 0451));
    const auto notMade = [](const std::string &name) {
        return "-1 Untar could not make \"" + name +
               "\" writable before\nextracting it from \"M/t\"\n";
    };
    EXPECT_EQ("1 " + notMade("/proc/self/limits") + notMade("link") + notMade("shared/ro") +
                  "-1 Untar couldn't extract unknown from t\n",
              runLines("Untar 't' 1 'ro' 1 'unknown' 1 '/proc/self/limits' 1 'link' 1"
                       " 'shared/ro' 1"));
    EXPECT_EQ(0451u, modeOf("@/outside"));
    EXPECT_EQ(0451u, modeOf("@/cwd/shared/ro")) << "somebody else may have put it there";
    EXPECT_EQ(0651u, modeOf("@/cwd/ro"));
    EXPECT_EQ(0451u, modeOf("D/ro")) << "not where it is unpacked: tar replaces it there";
}
