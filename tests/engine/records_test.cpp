#include <gtest/gtest.h>

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
    const auto row = [](const std::string &reads) {
        OV_RecordSplitter splitter = OV_instNewSplitter(8);
        std::istringstream in(reads);
        std::string lines, rest;
        for (std::string read; std::getline(in, read, '|');) {
            if (read[0] == 'a')
                read[1] = '\0'; /* cuts its line short */
            OV_instSplitRecords(&splitter, read.data(), read.size(), gather, &lines);
        }
        OV_instSplitRest(&splitter, gather, &rest);
        OV_instSplitRest(&splitter, gather, &rest); /* nothing is left */
        OV_instFreeSplitter(&splitter);
        return lines + ";" + rest;
    };
    expectRows(R"(
        +1 a\n+2 b\n                 => +1 a|+2 b|;
        +1 a\n+2| |b\n               => +1 a|+2 b|;
        +1 a|\n|+2                   => +1 a|;+2|
        \n\na\n                      => ||a|;
        12345678\nx\n                => 12345678||x|;
        123456789012345678\n+1 a\n   => 12345678|90123456|78|+1 a|;
        1234567|89|0\nb              => 12345678|90|;b|
        a0b\nc\n                     => a|c|;)",
               row);
}

TEST(RecordCount, IsTheLeadingNumber)
{
    const auto row = [](const std::string &line) {
        const char *pText = nullptr;
        const int64_t lCount = OV_instRecordCount(line.c_str(), &pText);
        return std::to_string(lCount) + "|" + pText;
    };
    expectRows(R"(
        +123 a b              => 123|a b
        -1   Copyfile failed => -1|Copyfile failed
        -1                    => -1|
        0 Can't create        => 0|Can't create
        # Start               => 0|# Start
        +0x10 a               => 0|x10 a
        +5000000000 big       => 5000000000|big
                              => 0|)",
               row);
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
}
