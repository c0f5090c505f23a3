#include <gtest/gtest.h>

#include "engine/engineTest.h"
#include "engine/statusReader.h"

struct StatusReader : EngineTest {
};

/* What a record of a total of 200 prints, tells and logs. */
TEST_F(StatusReader, AddsCountsAndTellsErrors)
{
    OV_instProcessUpdate(nullptr, 0);
    const auto row = [this](const std::string &line) {
        std::string out;
        fs::remove(full("@/log"));
        EXPECT_EQ(0, OV_instInitLogfile(full("@/log").c_str()));
        const std::string err =
            told([&] { out = printed([&] { OV_instProcessUpdate(line.c_str(), 200); }); });
        return out + "|" + err + "|" + got("@/log");
    };
    expectRows(R"(
        +25 a b               => Status: 12.50%\r||
        # Start installation  => Status: 12.50%\r||
                              => ||
        -1   Copy of %s       => |Error: Copy of %s\n|Copy of %s\n
        -1                    => |Error: \n|\n
        #Log: 5% of %s        => Status: 12.50%\r|| 5% of %s\n
        #log:x                => Status: 12.50%\r||
        0 Can't create file x => Status: 12.50%\r||
        175 without a sign    => Status:100.00%\r||
        +100 c                => Status:150.00%\r||)",
               row);
    EXPECT_EQ("Status:100.00%\r", printed([] { OV_instProcessUpdate("+1 d", 0); }));
}

TEST_F(StatusReader, ReadsThePipeToItsEnd)
{
    const std::string records = "+1 " + std::string(9000, 'x') + "\n-1 told\n+2 without an end";
    int aEnds[2];
    ASSERT_EQ(0, pipe(aEnds));
    ASSERT_EQ(static_cast<ssize_t>(records.size()),
              write(aEnds[1], records.data(), records.size()));
    close(aEnds[1]);
    std::string out;
    EXPECT_EQ("Error: told\n",
              told([&] { out = printed([&] { OV_instReadRecords(aEnds[0], 4); }); }));
    EXPECT_EQ("Status: 25.00%\rStatus: 25.00%\rStatus: 25.00%\rStatus: 75.00%\r", out)
        << "a long record in three pieces, and nothing behind it lost";
    close(aEnds[0]);
}
