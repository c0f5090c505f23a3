#include <gtest/gtest.h>

#include <algorithm>
#include <sys/wait.h>

#include "engine/engineTest.h"
#include "engine/records.h"

static void gather(const char *pLine, void *pLines)
{
    *static_cast<std::string *>(pLines) += std::string(pLine) + "|";
}

/* Reads with bars between them; lines of at most 8 bytes, and behind ";" the rest. */
TEST(SplitRecords, HandsOutEachLineWhenItsEndArrives)
{
    const auto split = [](const std::string &reads) {
        OV_RecordSplitter splitter = OV_instNewSplitter(8);
        std::istringstream in(reads);
        std::string lines, rest;
        for (std::string read; std::getline(in, read, '|');) {
            std::replace(read.begin(), read.end(), '0', '\0'); /* which cuts its line short */
            OV_instSplitRecords(&splitter, read.data(), read.size(), gather, &lines);
        }
        OV_instSplitRest(&splitter, gather, &rest);
        OV_instSplitRest(&splitter, gather, &rest); /* nothing is left */
        OV_instFreeSplitter(&splitter);
        return lines + ";" + rest;
    };
    expectRows(split, R"(
        +1 a\n+2 b\n              => +1 a|+2 b|;
        +1 a\n+2| |b\n            => +1 a|+2 b|;
        +1 a|\n|+2                => +1 a|;+2|
        \n\na\n                   => ||a|;
        12345678\nx\n             => 12345678||x|;
        12345678912345678\n+1 a\n => 12345678|91234567|8|+1 a|;
        1234567|89|1\nb           => 12345678|91|;b|
        a0b\nc\n                  => a|c|;)");
}

TEST(RecordCount, IsTheLeadingNumber)
{
    const auto count = [](const std::string &line) {
        const char *pText = nullptr;
        const int64_t lCount = OV_instRecordCount(line.c_str(), &pText);
        return std::to_string(lCount) + "|" + pText;
    };
    expectRows(count, R"(
        +123 a b              => 123|a b
        -1   Copyfile failed  => -1|Copyfile failed
        -1                    => -1|
        0 Can't create        => 0|Can't create
        # Start               => 0|# Start
        +0x10 a               => 0|x10 a
        +5000000000 big       => 5000000000|big
                              => 0|)");
}

TEST(CatchBrokenPipes, FailsHereAndStillKillsCommands)
{
    int aEnds[2];
    ASSERT_EQ(0, pipe(aEnds));
    close(aEnds[0]);
    OV_instCatchBrokenPipes();
    EXPECT_EQ(-1, write(aEnds[1], "x", 1));
    EXPECT_EQ(EPIPE, errno);
    const int iStatus = system("kill -PIPE $$; exit 3");
    EXPECT_TRUE(WIFSIGNALED(iStatus) && WTERMSIG(iStatus) == SIGPIPE) << iStatus;
    close(aEnds[1]);
    signal(SIGPIPE, SIG_DFL);
    signal(SIGXFSZ, SIG_DFL);
}
