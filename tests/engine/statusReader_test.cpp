#include <gtest/gtest.h>

#include "engine/engineTest.h"
#include "engine/records.h"
#include "engine/statusReader.h"

struct StatusReader : EngineTest {
    void SetUp() override
    {
        EngineTest::SetUp();
        ASSERT_EQ(0, OV_instInitLogfile(full("@/log").c_str()));
    }
    /* What reading prints, tells and logs. */
    template <typename Work> std::string shown(Work work)
    {
        std::string out;
        const std::string err = told([&] { out = printed(work); }), log = got("@/log");
        fs::resize_file(full("@/log"), 0);
        return out + "|" + err + "|" + log;
    }
};

TEST_F(StatusReader, AddsCountsAndTellsErrors)
{
    const auto handle = [this](const std::string &line) { /* of a total of 200 */
                                                          return shown([&] {
                                                              OV_instProcessUpdate(line.c_str(),
                                                                                   200);
                                                          });
    };
    OV_instProcessUpdate(nullptr, 0);
    expectRows(handle, R"(
        +25 a b               => Status: 12.50%\r||
        # Start installation  => Status: 12.50%\r||
                              => ||
        -1   Copy of %s       => |Error: Copy of %s\n|Copy of %s\n
        -1                    => |Error: \n|\n
        #Log: 5% of %s        => Status: 12.50%\r|| 5% of %s\n
        #log:x                => Status: 12.50%\r||
        0 Can't create file x => Status: 12.50%\r||
        175 without a sign    => Status:100.00%\r||
        +100 c                => Status:150.00%\r||)");
    EXPECT_EQ("Status:100.00%\r||", shown([] { OV_instProcessUpdate("+1 d", 0); }));
}

/* A record too long for one piece, and what stands behind it; a child that did not finish. */
TEST_F(StatusReader, ReadsThePipeToItsEnd)
{
    for (const std::string last : {"+2 in half", OV_RECORD_COMPLETED}) {
        const std::string records = "+1 " + std::string(9000, 'x') + "\n-1 told\n" + last;
        const bool bFinished = last[0] == '#';
        int aEnds[2];
        ASSERT_EQ(0, pipe(aEnds));
        const pid_t iChild = fork();
        if (iChild == 0)
            _exit(write(aEnds[1], records.data(), records.size()) < 0);
        close(aEnds[1]);
        const std::string quarter = "Status: 25.00%\r",
                          lost = "Setup did not complete successfully\n";
        EXPECT_EQ(quarter + quarter + quarter + (bFinished ? quarter : "Status: 75.00%\r") +
                      "|Error: told\n" + (bFinished ? "" : lost) + "|told\n" +
                      (bFinished ? "" : lost),
                  shown([&] { OV_instReadRecords(aEnds[0], 4, iChild); }));
        EXPECT_EQ(iChild, waitpid(iChild, nullptr, 0)) << "left to the caller";
        close(aEnds[0]);
    }
}
