#include <gtest/gtest.h>

#include "engine/configWalk.h"
#include "engine/engineTest.h"
#include "engine/selection.h"
#include "engine/sizes.h"

/* 90 names nothing, 7 is a group without members. */
static const char s_caTree[] =
    "Package 'a' ''\nSuite 'A' a\nSuite 'B'\nConfigBegin\n2 MainDlg '' '' '' 3\n"
    "3 CusDlg '' '' '' 0 4 90 5 8\n4 Suite 'A' '' '' 0\n5 CusDlg '' '' '' 0 6 7\n"
    "6 Suite 'B' '' '' 0\n7 CusDlg '' '' '' 0\n8 Suite 'A' '' '' 0\nConfigEnd\n";

struct Selection : EngineTest {
    void SetUp() override
    {
        EngineTest::SetUp();
        load(s_caTree);
    }
    static std::string walked(int iFirst, bool bThroughPages = false)
    {
        OwnedWalk walk(OV_instStartWalk(CDInstPtr, config(iFirst), bThroughPages));
        std::string visits;
        while (OV_ConfigVisit *pVisit = OV_instNextVisit(walk.get()))
            visits += (pVisit->bLeaving ? "-" : "+") + std::to_string(pVisit->pConfig->iId);
        return visits;
    }
};

TEST_F(Selection, WalkEntersMembersInTableOrderAndNothingThatItIsInside)
{
    EXPECT_EQ("+3+4-4+5+6-6+7-7-5+8-8-3", walked(3));
    EXPECT_EQ("+2-2", walked(2)) << "a page holds no members";
    EXPECT_EQ("+2+3+4-4+5+6-6+7-7-5+8-8-3-2", walked(2, true)) << "but leads to its successor";
    EXPECT_EQ("", walked(90, true));
    OwnedWalk outer(OV_instStartWalk(CDInstPtr, config(3)));
    EXPECT_EQ(config(3), OV_instNextEntry(outer.get())->pConfig);
    EXPECT_EQ("+3+4-4+5+6-6+7-7-5+8-8-3", walked(3)) << "walks may nest";
    EXPECT_EQ(config(4), OV_instNextEntry(outer.get())->pConfig);
    const auto loadCycles = [this] {
        load("Suite 'A'\nConfigBegin\n3 CusDlg '' '' '' 0 5 4 3\n4 CusDlg '' '' '' 0 6 3\n"
             "5 CusDlg '' '' '' 0 6 6 5\n6 Suite 'A' '' '' 0\nConfigEnd\n");
    };
    (void)told(loadCycles); /* ids that do not grow */
    EXPECT_EQ("+3+5+6-6+6-6-5+4+6-6-4-3", walked(3));
    EXPECT_EQ("+4+6-6+3+5+6-6+6-6-5-3-4", walked(4));
}

TEST_F(Selection, WalkIsBoundedWhereMembersAreShared)
{
    std::string body = "Suite 'A'\nConfigBegin\n", shared = "100 CusDlg '' '' '' 0";
    for (int i = 10; i < 50; i++) { /* every group holds the next one twice */
        const std::string next = " " + std::to_string(i + 1);
        body += std::to_string(i) + " CusDlg '' '' '' 0" + next + next + "\n";
    }
    for (int i = 101; i < 201; i++) { /* a hundred groups share one suite */
        shared += " " + std::to_string(i);
        body += std::to_string(i) + " CusDlg '' '' '' 0 300\n";
    }
    load(body + shared + "\n300 Suite 'A' '' '' 0\nConfigEnd\n");
    EXPECT_EQ(2u * 3 * (1 + 2 + 4 + 8 + 16 + 32 + 34 * 64), walked(10).size());
    EXPECT_EQ(1, OV_instFindAndMarkConfig(CDInstPtr, config(100), suite("A"), 1));
    EXPECT_EQ(1, config(200)->iSelected) << "the suite is found in every group that holds it";
}

TEST_F(Selection, DeepChainsNeedNoStack)
{
    const int DEPTH = 100000;
    std::string body = "Suite 'A'\nConfigBegin\n";
    for (int i = 1; i < DEPTH; i++)
        body += std::to_string(i) + " CusDlg '' '' '' 1 " + std::to_string(i + 1) + "\n";
    load(body + std::to_string(DEPTH) + " Suite 'A' '' '' 0\nConfigEnd\n");
    OV_instMarkAllConfig(config(1), 1);
    EXPECT_EQ(1, config(DEPTH)->iSelected);
    config(DEPTH - 1)->iSelected = 0;
    EXPECT_EQ(0, OV_instIsAllConfigSelected(config(1), 1)) << "leaves the walk at its deepest";
    EXPECT_EQ(1, OV_instFindAndMarkConfig(CDInstPtr, config(1), suite("A"), 1));
    EXPECT_EQ(1, config(DEPTH - 1)->iSelected) << "no marks are left from the walk before";
    EXPECT_EQ(0, GetSizePass(CDInstPtr, config(1), 1, 1, 1));
}

TEST_F(Selection, OddInputIsPassedOver)
{
    setStates("4:02"); /* selected is exactly 1 */
    EXPECT_EQ(0, OV_instNumPackagesAffected(CDInstPtr, config(3)));
    EXPECT_EQ(0, OV_instFindAndMarkConfig(CDInstPtr, config(2), suite("A"), 1));
    EXPECT_EQ("3:11 4:11 8:11 +a", states()) << "a page only leads on";
    static_cast<_OV_InstSuiteChoice *>(config(6)->pData)->pSuite = nullptr;
    EXPECT_EQ("Null pList to UpdateInstalledFlag\n",
              printed([] { OV_instFindAndMarkConfig(CDInstPtr, config(5), nullptr, 1); }));
    EXPECT_EQ(1, config(6)->iInstalled) << "and it counts as found";
}

TEST_F(Selection, StoreRestoresTheSlotAboveItsTop)
{
    const auto restore = [](int iTimes) {
        while (iTimes-- > 0)
            (void)OV_instRestoreLastDlg();
        return OV_InstGetLastConfig();
    };
    (void)printed([&] { restore(OV_CONFIG_STORE + 1); }); /* whatever was left in it */
    for (int iId : {2, 3, 5})
        OV_instSetLastDlg(config(iId)); /* 2 comes to lie in slot 1, 3 in slot 2 */
    EXPECT_EQ(config(5), restore(0));
    EXPECT_EQ(config(3), restore(2));
    EXPECT_EQ(config(2), restore(1));
    EXPECT_EQ("Underflow in config store\nOverflow in config store\n", printed([&] {
                  restore(1);
                  for (int i = 0; i <= OV_CONFIG_STORE; i++)
                      OV_instSetLastDlg(config(i < OV_CONFIG_STORE ? 3 : 4));
              }));
    EXPECT_EQ(config(3), restore(1)) << "the entry that overflowed";
    (void)printed([&] { restore(OV_CONFIG_STORE + 1); });
}
