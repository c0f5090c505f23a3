#include <gtest/gtest.h>

#include "engine/engineTest.h"
#include "engine/sizes.h"

struct Sizes : EngineTest {
    /* Group 3 may hold the suites 4 (a) and 7 (a and c), and the group 5 with the suite 6 (a). */
    void loadTree(const std::string &members, const std::string &words)
    {
        load("Package 'a' ''\nCopy 'a' '' 10\nPackage 'c' ''\nCopy 'c' '' 40\nSuite 'A' a\n"
             "Suite 'C' a c\nConfigBegin\n3 CusDlg '' '' '' 0 " +
             members +
             "\n4 Suite 'A' '' '' 0\n5 CusDlg '' '' '' 0 6\n6 Suite 'A' '' '' 0\n"
             "7 Suite 'C' '' '' 0\nConfigEnd\n");
        ASSERT_EQ(0, OV_instSetSizes(CDInstPtr));
        setStates(words);
    }
    /* A pass of read sizes over group 3, with fresh marks. */
    static int64_t sizePass(int iAbsolute, int iPass)
    {
        OV_instResetPackagePasses(CDInstPtr->pPackageHead);
        return GetSizePass(CDInstPtr, config(3), 1, iAbsolute, iPass);
    }
};

static std::string pairOf(int64_t lFirst, int64_t lSecond)
{
    return std::to_string(lFirst) + " " + std::to_string(lSecond);
}

/* Bytes read, and written in blocks of 4096. */
TEST_F(Sizes, EveryAmountOfAPackageIsRoundedByItself)
{
    const auto sizes = [this](const std::string &lines) {
        load("Package 'p' ''\n" + lines + "\n");
        return pairOf(OV_instGetPackageSize(package("p"), 1, m_medium.c_str(), ""),
                      OV_instGetPackageSize(package("p"), 4096, m_medium.c_str(), ""));
    };
    expectRows(sizes, R"(
        Copy 'a' '' 0                           => 1 4096
        Copy 'a' '' 4096                        => 4096 4096
        CopyZ 'a' '' 4097                       => 4097 8192
        Copy 'a' '' 4097\nCopy 'b' '' 1         => 4098 12288
        Untar 't' 9999 'x' 4097 'y' 0           => 4098 12288
        UntarZ2 '<RootDest>' 't' 5 'x' 7 'y' 0  => 8 8192
        Untar 't' 9999                          => 0 0
        Mkdir 'd' 0755\nHardLink 'd' 'a' 'b'    => 2 8192
        Function 'tellAll' 'engineModule.so' '' => 1001 5096)");
    load("Package 'p' ''\nCopy 'a' '' 1\n");
    package("p")->pOperHead->lUnits = 0; /* the reader gives at least 1 */
    EXPECT_EQ(4096, OV_instGetPackageSize(package("p"), 4096, "", ""));
}

TEST_F(Sizes, WhatCannotBeSizedEndsTheProcess)
{
    load("Package 'p' ''\nFunction 'tellAll' 'engineModule.so' 'fail'\nConfigBegin\n"
         "3 CusDlg '' '' '' 0 4\n4 MainDlg '' '' ''\nConfigEnd\n");
    EXPECT_EXIT((void)OV_instSetSizes(CDInstPtr), testing::ExitedWithCode(1),
                "Error: Internal error getting size of package 'p' \\(tellAll\\)\n$");
    EXPECT_EXIT((void)sizePass(0, 1), testing::ExitedWithCode(1),
                "Error: OV_instGetSize called on a MainDialog\n$");
}

TEST_F(Sizes, SetSizesFillsEveryPackageAndTheFirstSuite)
{
    load("Package 'a' ''\nCopy 'a' '' 4097\nPackage 'b' ''\nMkdir 'b' 0755\n"
         "Suite 'A' a a\nSuite 'B' b\n");
    const int64_t lBlock = OV_instGetBlockSize(m_dest.c_str()); /* which is not there yet */
    EXPECT_EQ(0, OV_instSetSizes(CDInstPtr));
    const uint64_t ulWrite = static_cast<uint64_t>((4097 + lBlock - 1) / lBlock * lBlock);
    EXPECT_EQ(ulWrite, package("a")->lSize2);
    EXPECT_EQ(4097u, suite("A")->lReadSize) << "a package listed twice counts once";
    EXPECT_EQ(ulWrite, suite("A")->lWriteSize);
    load("");
    EXPECT_EQ(-1, OV_instSetSizes(CDInstPtr)) << "no packages";
    EXPECT_EQ(-1, OV_instGetAvailableSpace(m_dest.c_str())) << "only the path itself is tried";
    EXPECT_EQ(-1, OV_instGetBlockSize(full("M/cdinst.dat").c_str()));
}

TEST_F(Sizes, GroupsCombineTheirMembersByWhatChanges)
{
    static const char *const apStates[] = {"00", "01", "10", "11"}; /* installed, selected */
    static const int64_t aNet[][4] = {
        {0, 10, -10, 0}, {-10, 10, -10, 10}, {-10, 0, -10, -10}, {0, 10, -10, 0}};
    for (int i = 0; i < 16; i++) {
        loadTree("4", std::string("3:") + apStates[i / 4] + " 4:" + apStates[i % 4]);
        EXPECT_EQ(aNet[i / 4][i % 4], sizePass(0, 1)) << states();
        EXPECT_EQ(llabs(aNet[i / 4][i % 4]), sizePass(1, 1)) << states();
    }
    loadTree("5", "3:10 5:10 6:10"); /* the sign may turn twice */
    EXPECT_EQ(10, sizePass(0, 1));
}

/* Pass 0 and both passes. What stays is marked first, in whatever order; where nothing is selected
 * (exactly 1), nothing is marked. */
TEST_F(Sizes, SharedPackagesAreChargedOnce)
{
    const auto sizes = [this](const std::string &words) {
        loadTree("7 4", words);
        return pairOf(sizePass(0, 0), OV_instGetReadSize(CDInstPtr, config(3), 0));
    };
    expectRows(sizes, R"(
        3:11 7:01 4:11 => 0 40
        3:11 7:01 4:01 => 0 50
        3:11 7:10 4:10 => 0 -60
        3:01 7:11 4:01 => 50 50)");
    EXPECT_EQ(static_cast<int64_t>(package("a")->lSize2 + package("c")->lSize2),
              OV_instGetWriteSize(CDInstPtr, config(3), 0));
    (void)OV_instSetRootDestination("");
    EXPECT_EQ(-1, OV_instGetWriteSize(CDInstPtr, config(3), 0));
    EXPECT_EQ(50, OV_instGetReadSize(CDInstPtr, config(3), 0)) << "reading needs no destination";
}

/* Net and absolute. In the last row a comes with 4 and c goes with 7. */
TEST_F(Sizes, TrueSizeIsWhatTheRunWillReport)
{
    const auto sizes = [this](const std::string &words) {
        loadTree("7 4", words);
        package("c")->iCounted = package("c")->iInUse = 5;
        const int64_t lNet = OV_instGetTrueSize(CDInstPtr, config(3), 1, 0);
        EXPECT_EQ(0, package("a")->iCounted + package("c")->iCounted);
        return pairOf(lNet, OV_instGetTrueSize(CDInstPtr, config(3), 1, 1));
    };
    expectRows(sizes, R"(
        4:01 7:01     => 50 50
        4:10 7:10 +ac => -50 50
        4:01 7:10 +c  => -30 50)");
}

TEST(SpaceText, ChangesUnitAtItsBoundary)
{
    static const std::pair<int64_t, const char *> aRows[] = {
        {0, " 0.00 KB"},          {512, " 0.50 KB"},      {1048575, "1024.00 KB"},
        {1048576, " 1.00 MB"},    {13107200, "12.50 MB"}, {1073741823, "1024.00 MB"},
        {1073741824, " 1.00 GB"}, {-1048576, " 1.00 MB"}, {int64_t(1) << 60, "1073741824.00 GB"}};
    char caText[OV_SIZE_TEXT];
    for (const auto &[lBytes, pText] : aRows) {
        diskSpace2String(lBytes, caText);
        EXPECT_STREQ(pText, caText) << lBytes;
    }
    diskSpace2String(INT64_MIN, caText);
}

TEST_F(Sizes, TooLittleSpaceIsTold)
{
    char caText[OV_SIZE_TEXT] = "untouched";
    loadTree("4", "");
    OV_instGetFreeSpaceString(full("M/cdinst.dat").c_str(), caText);
    OV_instGetRequiredSpaceString(nullptr, config(4), caText);
    EXPECT_STREQ("untouched", caText);
    package("a")->lSize2 = 2048;
    OV_instGetRequiredSpaceString(caText, config(4), caText);
    EXPECT_STREQ(" 2.00 KB", caText);
    package("a")->lSize2 = uint64_t(1) << 60;
    const std::string text = printed([] { EXPECT_EQ(0, OV_instEnoughSpace(config(4))); });
    EXPECT_EQ(0u, text.find("Not Enough Disk Space\n1073741824.00 GB Needed, Only ")) << text;
    EXPECT_NE(std::string::npos, text.find("B AvailableReturning OK\n")) << text;
    EXPECT_EQ("+", states()) << "only a copy counts as chosen";
    load("Package 'a' ''\nSuite 'A' a a\nConfigBegin\n4 Suite 'A' '' '' 0\nConfigEnd\n");
    package("a")->lSize2 = static_cast<uint64_t>(OV_instGetAvailableSpace("/tmp") / 3 * 2);
    EXPECT_EQ(1, OV_instEnoughSpace(config(4))) << "a package listed twice needs its room once";
}
