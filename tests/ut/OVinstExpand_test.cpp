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
    static const _OV_InstExpansion aEmpty[] = {{'d', nullptr}};
    static const struct {
        const char *pText;
        const _OV_InstExpansion *aTable;
        const char *pExpected;
    } aRows[] = {
        {"%d/bin", aTable, "/opt/x/bin"},
        {"a%d%db", aTable, "a/opt/x/opt/xb"},
        {"%p", aTable, "%d"}, /* values are not expanded again */
        {"%l", aTable, "a value longer than its escape"},
        {"<%e%z>", aTable, "<>"},
        {"%%d", aTable, "d"},
        {"<%q>%D", aTable, "<>"},
        {"100%", aTable, "100"},
        {"", aTable, ""},
        {"%d plain %%%", aEmpty, " plain "},
    };
    for (const auto &row : aRows) {
        OwnedText text(OV_instExpandString(row.pText, row.aTable));
        EXPECT_STREQ(text.get(), row.pExpected) << row.pText;
    }
    EXPECT_EQ(OV_instExpandString(nullptr, aTable), nullptr);
    EXPECT_EQ(OV_instExpandString("x", nullptr), nullptr);
}
