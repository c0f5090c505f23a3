#include <gtest/gtest.h>

#include "description/describe.h"
#include "support.h"

/* What a line makes of a section behind a suite called Base, and what it says meanwhile. */
static std::string parse(const std::string &line)
{
    Model model(newCDinst());
    EXPECT_EQ(0, addLines(model, {"Suite \"Base\""}));
    bool bTaken = false;
    const std::string err = told([&] { bTaken = AddLineToConfig(line.c_str(), model.get()) == 0; });
    if (!bTaken)
        return "rejected " + err;
    return (model->pConfigHead ? shown(model->pConfigHead) : "nothing ") + err;
}

TEST(ConfigLine, FillsItsRecordOrIsRejected)
{
    const char *const aaRows[][2] = {
        {R"(2 CusDlg "t" "x" "" 1 5 6)", "CusDlg|2|1|||t|x|5|6|"},
        {R"(2 CusDlg "t" "x" "" )", "CusDlg|2|0|||t|x|"},
        {R"(2 CusDlg "t" "x" "i,j" 1 5 0 6)", "CusDlg|2|1|i|j|t|x|5|"},
        {R"(1 MainDlg "t" "x" "" 2 3 4 5 6)", "MainDlg|1|0|||t|x|2|3|4|5|"},
        {R"(1 MainDlg "t")", "MainDlg|1|0|||t||"},
        {R"(x5, Suite "Base" "l" "a.xpm,b.xpm,c" 2)", "Suite|5|2|a.xpm|b.xpm,c|l|Base|"},
        {R"(5 Suite "Base")", "Suite|5|0||||Base|"},
        {R"(3 CusDlg "t" "x" "" 0 2 9)",
         "CusDlg|3|0|||t|x|2|Error: config id 2 must be greater than 3\n"},
        {R"(3 MainDlg "t" "x" "" 4 3 9)",
         "MainDlg|3|0|||t|x|4|3|Error: config id 3 must be greater than 3\n"},
        {R"(7 Suite "base" "l" "" 1)", "rejected Error: invalid suite name 'base'\n"},
    };
    for (const auto &apRow : aaRows)
        EXPECT_EQ(apRow[1], parse(apRow[0])) << apRow[0];
    for (const char *pLine : {R"(0 MainDlg "a" "b" "")", R"(4294967296 MainDlg "a")",
                              R"(9223372036854775808 MainDlg)", R"(7 MainDlg "a" "b" "icon")",
                              R"(7 MainDlg "a" "b)", R"(7 CusDlg "a" "b" "" 9223372036854775808)",
                              R"(7 CusDlg "a" "b" "" 1 9223372036854775808)", R"(7 Suite "Base)",
                              R"(7 Suite "Base" "l)"})
        EXPECT_EQ("rejected ", parse(pLine)) << pLine;
}

TEST(ConfigLine, TellsWhatIsNoConfiguration)
{
    for (const char *pLine : {R"(Copy "a")", R"(Suite "Base")", "ConfigBegin", R"(7 "a" "b" "")",
                              R"(7 maindlg "a" "b" "")", "7",
                              R"(0x7 MainDlg "a")" /* the word behind the number's 0 is x7 */})
        EXPECT_EQ(std::string("rejected Error: invalid configuration line: ") + pLine + "\n",
                  parse(pLine));
    Model model(newCDinst());
    EXPECT_EQ(0, addLines(model, {"ConfigEnd", "ConfigBegin now"}));
    EXPECT_EQ(1, OV_instParsingConfiguration);
    EXPECT_EQ("nothing ", parse("  ConfigEnd of it"));
    EXPECT_EQ(0, OV_instParsingConfiguration);
}

TEST(CustomDialog, StopsAtItsLastSlot)
{
    std::string line = R"(1 CusDlg "t" "x" "" 0)";
    std::string children;
    for (int i = 2; i < 300; i++) {
        line += " " + std::to_string(i);
        children += i < 258 ? std::to_string(i) + "|" : "";
    }
    EXPECT_EQ("CusDlg|1|0|||t|x|" + children, parse(line));
}
