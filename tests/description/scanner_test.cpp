#include <gtest/gtest.h>

#include "description/describe.h"
#include "description/scanner.h"
#include "ut/owned.h"

TEST(GetQuotedString, KeepsEveryEscapeButNewline)
{
    const struct {
        const char *pText;
        const char *pResult;
        const char *pRest; /* the whole text where the cursor must stay */
    } aRows[] = {
        {R"(1, "a\"b" 2)", R"(a\"b)", " 2"},
        {R"("" "x")", "", R"( "x")"},
        {"", "", ""},
        {R"(\"a" "b")", R"( )", R"(b")"},
        {R"(\\"a")", "a", ""},
        {R"("one\ntwo")", "one\ntwo", ""},
        {R"("a\\nb")", R"(a\\nb)", ""},
        {R"("a\\\nb\t\\")", "a\\\\\nb\\t\\\\", ""},
        {R"("abc)", "(null)", R"("abc)"},
        {R"("abc\)", "(null)", R"("abc\)"},
    };
    for (const auto &row : aRows) {
        const char *pCursor = row.pText;
        OwnedText text(getQuotedString(pCursor, &pCursor));
        EXPECT_EQ(row.pResult, shown(text.get())) << row.pText;
        EXPECT_STREQ(row.pRest, pCursor) << row.pText;
    }
}

TEST(ScanInteger, ReadsAnyBaseButStepsOverDecimalDigitsOnly)
{
    const struct {
        const char *pText;
        int64_t lValue;
        const char *pRest;
    } aRows[] = {
        {" size=-12,", 12, ","},
        {"08 ", 0, " "},
        {"0x1F", 31, "x1F"},
        {"", 0, ""},
        {"4294967297", INT64_C(4294967297), ""},
        {"9223372036854775807;", INT64_MAX, ";"},
    };
    for (const auto &row : aRows) {
        const char *pCursor = nullptr;
        int64_t lValue = -1;
        EXPECT_EQ(0, scanInteger(row.pText, &pCursor, &lValue)) << row.pText;
        EXPECT_EQ(row.lValue, lValue) << row.pText;
        EXPECT_STREQ(row.pRest, pCursor) << row.pText;
    }
    for (const char *pText :
         {"9223372036854775808", " 0xFFFFFFFFFFFFFFFF", "01777777777777777777777"}) {
        const char *pCursor = nullptr;
        int64_t lValue = 0;
        EXPECT_EQ(-1, scanInteger(pText, &pCursor, &lValue)) << pText;
    }
}
