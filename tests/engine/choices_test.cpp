#include <gtest/gtest.h>

#include "engine/choices.h"
#include "engine/engineTest.h"

struct Choices : EngineTest {
    void SetUp() override
    {
        EngineTest::SetUp();
        load("Suite 'P'\nSuite 'Q'\nSuite 'R'\nConfigBegin\n1 MainDlg 'T' 'D' '' 2\n"
             "2 CusDlg 'All' '' '' 0 3 4\n3 Suite 'P' '' '' 1\n4 CusDlg 'Group' '' '' 1 5\n"
             "5 Suite 'Q' '' '' 0\nConfigEnd\n");
    }
};

TEST_F(Choices, FlagsReachDeepAndTellWhatIsMissing)
{
    static_cast<_OV_InstCusDlg *>(config(4)->pData)->aChildren[1] = 99;
    static_cast<_OV_InstCusDlg *>(config(4)->pData)->aChildren[2] = 2; /* round again */
    EXPECT_EQ("Error in SetSelectedFlafs\nError in SetSelectedFlafs\n", printed([] {
                  SetSelectedFlags(nullptr, 1);
                  SetSelectedFlags(config(2), 1);
              }));
    EXPECT_EQ("2:11 3:01 4:11 5:01 +", states());
    suite("P")->iState = suite("Q")->iState = suite("R")->iState = 1;
    EXPECT_EQ("Error in SetInstalledFlags\nError in SetInstalledFlags\n", printed([] {
                  SetInstalledFlags(nullptr, 0);
                  SetInstalledFlags(config(2), 0);
              }));
    EXPECT_EQ(0, suite("P")->iState + suite("Q")->iState);
    EXPECT_EQ(1, suite("R")->iState);
    EXPECT_EQ("2:11 3:01 4:11 5:01 +", states());
}

/* The configuration that was changed, the states, and what is then added and removed. */
TEST_F(Choices, AreCountedAndGivenUp)
{
    const auto count = [](const std::string &row) {
        OV_ChoiceCounts counts = {0, 0};
        for (int iId = 2; iId <= 5; iId++)
            config(iId)->iInstalled = config(iId)->iSelected = 0;
        setStates(row.substr(1));
        OV_instCountChoices(config(2), config(row[0] - '0'), &counts);
        return "+" + std::to_string(counts.iRemove) + " -" + std::to_string(counts.iAdd);
    };
    expectRows(count, R"(
        3 3:01 4:11 5:11 => +1 -0
        5 3:01 4:11 5:10 => +1 -1
        4 3:11 4:10 5:11 => +0 -2
        4 3:01 4:01 5:10 => +1 -1)");
    OV_instResetChoices(config(2));
    EXPECT_EQ("5:10 +", states()) << "the list's own members only";
    setStates("2:01 3:01 4:10");
    OV_instUndoChoices(config(2));
    EXPECT_EQ("2:01 4:11 5:11 +", states()) << "all but the list itself";
}
