#include <gtest/gtest.h>

#include <algorithm>

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
        12345678\nx\n             => 12345678|x|;
        12345678912345678\n+1 a\n => 12345678|+1 a|;
        1234567|89|1\nb           => 12345678|;b|
        1234567891|-1 b           => ;12345678|
        a0b\nc\n                  => a|c|;)");
}

TEST(SendUpdate, WritesNoRecordBesidesItsOwn)
{
    Records pipe;

    OV_instSendUpdate(pipe.pStream, "+%zu %s %s\n", static_cast<size_t>(7), "a\n-1 b", "\n\n# c\n");
    OV_instSendUpdate(pipe.pStream, "-1 of:\n%s %ld %lld %d%s\n", "x%sy", -5000000000L,
                      5000000000LL, 3, "");
    EXPECT_EQ("+7 a?-1 b ??# c?\n-1 of:\nx%sy -5000000000 5000000000 3\n", pipe.take());
}
