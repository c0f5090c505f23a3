#include <gtest/gtest.h>

#include "description/describe.h"
#include "description/scanner.h"
#include "ut/owned.h"

static const char *const s_apWords[] = {"Copy", "Mkdir", nullptr};
static const char *const s_apNone[] = {nullptr};

TEST(GetToken, TakesTheNextRunOfWordCharacters)
{
    const struct {
        const char *pText;
        const char *const *apKeywords;
        int bCase;
        const char *pToken;
        const char *pRest;
    } aRows[] = {
        {" ,Copy \"a\"", s_apWords, 1, "Copy", " \"a\""},
        {"Copy2 x", s_apWords, 1, "(null)", " x"},
        {"copy", s_apWords, 1, "(null)", ""},
        {"mkDIR,", s_apWords, 0, "mkDIR", ","},
        {"x_1-b\xe4", nullptr, 1, "x_1-b", "\xe4"},
        {" \"\\,\xff. ", nullptr, 1, "(null)", ""},
        {"", nullptr, 1, "(null)", ""},
        {"word in no list", s_apNone, 1, "(null)", " in no list"},
    };
    for (const auto &row : aRows) {
        const char *pCursor = nullptr;
        OwnedText token(getToken(row.pText, row.apKeywords, &pCursor, row.bCase));
        EXPECT_EQ(row.pToken, shown(token.get())) << row.pText;
        EXPECT_EQ(row.pRest, shown(pCursor)) << row.pText;
    }
}

TEST(GetTokenList, StopsSilentlyAtTheFirstRefusedWord)
{
    std::string text;
    for (int iCount = 0; iCount <= 21; iCount++, text += "Copy, ") {
        char **apTokens = getTokenList((text + "Move Copy").c_str(), s_apWords, 1);
        ASSERT_NE(nullptr, apTokens);
        for (int i = 0; i < iCount; i++)
            EXPECT_STREQ("Copy", apTokens[i]);
        EXPECT_EQ(nullptr, apTokens[iCount]);
        freeTokenList(apTokens);
    }
    freeTokenList(nullptr);
}

TEST(GetQuotedString, KeepsEveryEscapeButNewline)
{
    const struct {
        const char *pText;
        const char *pResult;
        const char *pRest; /* the whole text where the cursor must stay */
    } aRows[] = {
        {R"(1, "a\"b" 2)", R"(a\"b)", " 2"},
        {R"("" "x")", "", R"( "x")"},
        {R"(no quote, 5)", "", R"(no quote, 5)"},
        {"", "", ""},
        {R"(\"a" "b")", R"( )", R"(b")"},
        {R"(\\"a")", "a", ""},
        {R"("one\ntwo")", "one\ntwo", ""},
        {R"("a\\nb")", R"(a\\nb)", ""},
        {R"("a\\\nb\t\\")", "a\\\\\nb\\t\\\\", ""},
        {R"("abc)", "(null)", R"("abc)"},
        {R"("abc\")", "(null)", R"("abc\")"},
        {R"("abc\)", "(null)", R"("abc\)"},
        {R"(abc\)", "", R"(abc\)"},
    };
    for (const auto &row : aRows) {
        const char *pCursor = row.pText;
        OwnedText text(getQuotedString(pCursor, &pCursor));
        EXPECT_EQ(row.pResult, shown(text.get())) << row.pText;
        EXPECT_STREQ(row.pRest, pCursor) << row.pText;
    }
}

TEST(GetInteger, ReadsAnyBaseButStepsOverDecimalDigitsOnly)
{
    const struct {
        const char *pText;
        int64_t lValue;
        const char *pRest;
    } aRows[] = {
        {" size=-12,", 12, ","},
        {"017", 15, ""},
        {"08 ", 0, " "},
        {"0x1F", 31, "x1F"},
        {"", 0, ""},
        {"none\"", 0, ""},
        {"4294967297", INT64_C(4294967297), ""},
        {"9223372036854775807;", INT64_MAX, ";"},
    };
    for (const auto &row : aRows) {
        const char *pCursor = nullptr;
        int64_t lValue = -1;
        EXPECT_EQ(row.lValue, getInteger(row.pText, &pCursor)) << row.pText;
        EXPECT_STREQ(row.pRest, pCursor) << row.pText;
        EXPECT_EQ(0, scanInteger(row.pText, &pCursor, &lValue)) << row.pText;
        EXPECT_EQ(row.lValue, lValue) << row.pText;
    }
    for (const char *pText :
         {"9223372036854775808", " 0xFFFFFFFFFFFFFFFF", "01777777777777777777777"}) {
        const char *pCursor = nullptr;
        int64_t lValue = 0;
        EXPECT_EQ(-1, scanInteger(pText, &pCursor, &lValue)) << pText;
    }
}
