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
