#include <gtest/gtest.h>

#include "description/describe.h"
#include "support.h"

/* What a line makes of a package that has no operation yet, and what it says meanwhile. */
static std::string parse(const std::string &line)
{
    Model model(newCDinst());
    EXPECT_EQ(0, addLines(model, {"Package \"core\", \"Core files\""}));
    bool bTaken = false;
    const std::string err = told([&] { bTaken = addLines(model, {line}) == 0; });
    const _OV_InstOper *pOper = model->pPackageHead->pPackage->pOperTail;
    EXPECT_NE(nullptr, pOper) << "linked even when it is rejected";
    return bTaken && pOper ? shown(pOper) + err : "rejected " + err;
}

TEST(PackageLine, RejectsWhatIsNoKeywordOrHasNoPackage)
{
    Model model(newCDinst());
    testing::internal::CaptureStderr();
    for (const char *pLine : {"copy \"a\"", "Copy2 \"a\"", "x_1-b\xe4", "\\,\xff.", "1 Copy \"a\"",
                              "\"\"", "Prefix \"a\"", "Env", "Alias x", "Copy \"a\"",
                              "SelfReg \"a\"", "Package \"p", "Package \"p\", \"l"})
        EXPECT_EQ(-1, AddLineToCDinst(pLine, model.get())) << pLine;
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    EXPECT_EQ(0, addLines(model, {" ,;Package"})); /* missing strings are empty */
    EXPECT_STREQ("", model->pPackageTail->pPackage->pLabel);
}

TEST(OperationLine, FillsItsRecordOrIsRejected)
{
    const char *const aaRows[][2] = {
        {R"(Copy "bin/a", "" 0, 0755)", "Copy|1|bin/a|(null)|493|0|0|"},
        {R"(CopyZ "bin/a" "b" 5000000000 1 2 3 4)", "CopyZ|5000000000|bin/a|b|1|2|3|"},
        {R"(Copy "a")", "Copy|1|a|(null)|0|0|0|"},
        {R"(Copy "a" "open 7 8)", "Copy|7|a|(null)|8|0|0|"},
        {R"(Copy "a" "b" 1 4294967297)", "Copy|1|a|b|1|0|0|"},
        {R"(Untar "x" 10 "a" 0 "b" 3)", "Untar|10|(null)|x|a|1|b|3|"},
        {R"(UntarZ "x" 10 "a" 2 )", "UntarZ|10|(null)|x|a|2||1|"},
        {R"(Untar "x")", "Untar|0|(null)|x|"},
        {R"(Untar "x" 4 "a")", "Untar|4|(null)|x|a|1|"},
        {R"(Untar "x" 4 5 6 "a" 7 8 9)", "Untar|4|(null)|x|a|7||8||9|"},
        {R"(Untar "x" 4 5\"6\\"b" 7\" 8)", "Untar|4|(null)|x|b|7||8|"},
        {R"(Untar "x" 0x2 "a" 6000000000)", "Untar|2|(null)|x|a|6000000000|"},
        {R"(Untar2 "<RootDest>" "x" 1 "a" 2)", "Untar2|1|<RootDest>|x|a|2|"},
        {R"(UntarZ2 "x")", "UntarZ2|0|x||"},
        {R"(Mkdir "d" 0755 2 3 4)", "Mkdir|1|d|493|2|3|"},
        {R"(HardLink "l", "t", "x")", "HardLink|1|l|t|x|1|"},
        {R"(SoftLink "l" "t")", "SoftLink|1|l|t||0|"},
        {R"(Function "f" "m.so" "d")", "Function|1|f|m.so|d|"},
        {R"(Shortcut "1" "2" "3" "4")", "Shortcut|1|1|2|3|4|"},
        {R"(Shortcut "1" "2" "3")", "Shortcut|1|1|2|3||"},
        {R"(Shortcut "1" "2" "3" "open)", "Shortcut|1|1|2|3|(null)|"},
        {R"(RegData "r" "k" "v" "%d/x")", "RegData|1|r|k|v|%d/x|"},
        {R"(SelfReg "m")", "SelfReg|1|m|"},
        {R"(Untar "x" 1 "a" 1 "b)", "rejected Error: invalid tar line\n"},
        {R"(Untar "x" 1 "a" 9223372036854775808)", "rejected Error: invalid tar line\n"},
    };
    for (const auto &apRow : aaRows)
        EXPECT_EQ(apRow[1], parse(apRow[0])) << apRow[0];
    for (const char *pLine :
         {R"(Untar "x" 9223372036854775808)", R"(UntarZ2 "r" "x)", R"(Copy "a)",
          R"(Copy "a" "b" 9223372036854775808)", R"(Mkdir "d" 1 2 0xffffffffffffffffff)",
          R"(SoftLink "l" "t" "x)", R"(Shortcut "1" "2" "3)"})
        EXPECT_EQ("rejected ", parse(pLine)) << pLine;
}

TEST(TarLine, GrowsByAHundredClearSlots)
{
    std::string line = "Untar \"x.tar\" 1";
    for (int i = 0; i < 250; i++)
        line += " \"dir/member\" 12";
    std::string(30000, 'x').clear(); /* memory that is given back is not zero by chance */
    Model model(newCDinst());
    ASSERT_EQ(0, addLines(model, {"Package \"p\"", line}));
    const _OV_InstTar *pTar = &model->pPackageHead->pPackage->pOperTail->body.tar;
    ASSERT_EQ(250, pTar->iCount);
    for (int i = 0; i < 300; i++) {
        ASSERT_EQ(i < 250, pTar->apMembers[i] != nullptr);
        EXPECT_EQ(i < 250 ? 12 : 0, pTar->aUnits[i]);
    }
}

TEST(SuiteLine, TakesPackagesFirstAndMarksSecond)
{
    Model model(newCDinst());
    ASSERT_EQ(0, addLines(model, {"Package \"core\"", "Package \"Vital\"",
                                  "Suite \"Base\" core,Hidden;Vital core"}));
    const _OV_InstSuiteList *pSuite = model->pSuiteTail;
    EXPECT_STREQ("Base", pSuite->pName);
    EXPECT_EQ(1, pSuite->iHidden);
    EXPECT_EQ(0, pSuite->iVital) << "a package of that name wins";
    std::string names;
    for (const _OV_InstPackageNode *pNode = pSuite->pPackHead; pNode; pNode = pNode->pNext)
        names += std::string(pNode->pPackage->pName) + " ";
    EXPECT_EQ("core Vital core ", names);

    testing::internal::CaptureStderr();
    EXPECT_EQ(-1, addLines(model, {"Suite \"S\" Hidden hidden core"}));
    EXPECT_EQ("Error: there is no package named 'hidden'\n",
              testing::internal::GetCapturedStderr());
    EXPECT_EQ(-1, addLines(model, {"Suite \"S core"}));
    EXPECT_NE(pSuite, model->pSuiteTail);
}
