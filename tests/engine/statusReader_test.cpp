#include <gtest/gtest.h>

#include "engine/engineTest.h"
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

TEST_F(StatusReader, LongRecordsAreCutAtTheBuffersSize)
{
    int aEnds[2];
    ASSERT_EQ(0, pipe(aEnds));
    const std::string text(5000, 'x'), run = "-1 " + text + "\n+1 a\n# Installation completed\n";
    ASSERT_EQ(static_cast<ssize_t>(run.size()), write(aEnds[1], run.data(), run.size()));
    close(aEnds[1]);
    const std::string kept = text.substr(0, 4095 - 3) + "\n";
    EXPECT_EQ("Status: 50.00%\rStatus: 50.00%\r|Error: " + kept + "|" + kept +
                  "Installation Completed\n",
              shown([&] { OV_instReadRecords(aEnds[0], 2, -1); }));
    close(aEnds[0]);
}
