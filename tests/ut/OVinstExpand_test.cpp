#include <gtest/gtest.h>

#include "ut/OVinstExpand.h"
#include "ut/owned.h"

TEST(ExpandString, ReplacesKeysAndDropsTheRest)
{
    static const _OV_InstExpansion aTable[] = {
        {'d', "/opt/x"},
        {'p', "%d"},
        {'d', "late"},
        {'e', ""},
        {'l', "a value longer than its escape"},
        {'z', nullptr},
    };
    static const struct {
        const char *pText, *pExpected;
    } aRows[] = {
        {"%d/bin", "/opt/x/bin"},
        {"a%d%db", "a/opt/x/opt/xb"},
        {"%p", "%d"}, /* values are not expanded again */
        {"%l", "a value longer than its escape"},
        {"<%e%z>", "<>"},
        {"%%d", "d"},
        {"<%q>%D", "<>"},
        {"100%", "100"},
        {"", ""},
    };
    for (const auto &row : aRows) {
        OwnedText text(OV_instExpandString(row.pText, aTable));
        EXPECT_STREQ(text.get(), row.pExpected) << row.pText;
    }
    EXPECT_EQ(OV_instExpandString(nullptr, aTable), nullptr);
    EXPECT_EQ(OV_instExpandString("x", nullptr), nullptr);
}
