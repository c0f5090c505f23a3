#include <gtest/gtest.h>

#include <clocale>

#include "ut/toolkit/bxutils.h"
#include "toolkit/display.h"

/* Compound strings need no display, so these run everywhere. */
struct Notation : testing::Test {
    void SetUp() override { ASSERT_TRUE(setlocale(LC_CTYPE, "C.UTF-8")); }
};
struct Bxutils : OnDisplay {
};

static std::string converted(const char *pText)
{
    XmString made = StringToXmString(pText);
    const std::string shown = components(made);

    XmStringFree(made);
    return shown;
}

static const struct {
    const char *pText, *pComponents;
} s_aNotation[] = {
    /* literal texts */
    {"OK", "L 'OK'"},
    {"", "L"},
    {"say \"hi\": #1", "L 'say \"hi\": #1'"},
    {"C:\\new\\", "L 'C:\\new\\'"},
    {"two\nlines\n\n", "L 'two' / 'lines' / /"},
    {"stray \xff byte", "L 'stray \xff byte'"},
    /* segments and their separators; the toolkit joins texts that meet */
    {":t\"\"", "L /"},
    {":::t\"one\":t\"\":t\"three\"", "L 'one' / / 'three' /"},
    {":::t\"broken here\"\"and on\"", "L 'broken here' / 'and on'"},
    {"\"a\":f\"b\":T\"c\":F\"d\":1\"e\":0\"f\"", "L 'abc' / 'de' / 'f'"},
    {"\"a\" skipped, 'too' \"b\"", "L 'ab'"},
    {"\"a\nb\"", "L 'a' / 'b'"},
    /* tags */
    {"#bold\"a\"", "#bold L 'a'"},
    {"#bold\"a\"\"b\"", "#bold L 'a' #- L 'b'"},
    {"#title#bold\"a\"", "#bold L 'a'"},
    {":t#bold\"a\"", "#bold L 'a' /"},
    {"#\"a\"", "L 'a'"},
    {"#a\\:b:t\"x\"", "#a\\:b L 'x' /"},
    {"#bold", "L"},
    /* directions hold for their segment */
    {":r\"a\"\"b\"", "L R 'a' L 'b'"},
    {":t:r\"a\":R\"b\":f:l\"c\"", "L R 'a' / 'b' L 'c'"},
    {":r:t\"a\"", "L R L 'a' /"},
    {":t:t\"a\"", "L / 'a' /"},
    /* an option letter that is none ends its segment, and the tag with it */
    {":x\"a\"", "L 'a'"},
    {"#bold:x\"a\"", "L 'a'"},
    {":\\t\"a\"", "L 'a'"},
    /* escapes */
    {"\"a\\\"b\\\\c\\qd\"", "L 'a\"b\\cqd'"},
    {"\"a\\tb\\rc\\fd\\ve\"", "L 'a b\rc\fd\ve'"},
    {"\"no end", "L 'no end'"},
    {"\"a\"\\\"b\"c\"", "L 'ac'"},
    {"\"größe ✓\\\"\"", "L 'größe ✓\"'"},
    {"\"stray \xff\xc3 byte\"", "L 'stray \xff\xc3 byte'"},
};

TEST_F(Notation, ComponentByComponent)
{
    for (const auto &row : s_aNotation) {
        std::string shown = converted(row.pText);
        /* where the toolkit puts the tag before the first direction is its own affair */
        if (shown.compare(0, 8, "L #bold ") == 0)
            shown = "#bold L " + shown.substr(8);
        EXPECT_EQ(row.pComponents, shown) << row.pText;
    }
    EXPECT_EQ(nullptr, StringToXmString(nullptr));
    for (const std::string &text : {std::string(10, 'x'), std::string(100000, 'x')})
        EXPECT_EQ("L '" + text + "'", converted(("\"" + text + "\"").c_str()));
}

/* The items of a string table that the text converts to, as a widget's resource would get it. */
static std::vector<std::string> tableOf(Widget widget, const char *pText)
{
    XrmValue from = {(unsigned int)strlen(pText) + 1, (XPointer)pText};
    XrmValue to = {};
    std::vector<std::string> items;

    EXPECT_TRUE(XtConvertAndStore(widget, XmRString, &from, XmRXmStringTable, &to));
    for (XmString *pItem = *(XmString **)to.addr; *pItem; pItem++)
        items.push_back(components(*pItem));
    return items;
}

TEST_F(Bxutils, TablesSplitOutsideQuotes)
{
    typedef std::vector<std::string> Items;
    const std::pair<const char *, Items> rows[] = {
        {"a,\"b,c\",d", {"L 'a'", "L 'b,c'", "L 'd'"}},
        {"one\ntwo", {"L 'one'", "L 'two'"}},
        {"a,,b,", {"L 'a'", "L", "L 'b'", "L"}},
        {"a\\,b", {"L 'a\\,b'"}},
        {"\"a\\\",b\",c", {"L 'a\",b'", "L 'c'"}},
        {":t\"x\",#bold\"y\"", {"L 'x' /", "#bold L 'y'"}},
        {"größe,✓", {"L 'größe'", "L '✓'"}},
        {"\\", {"L '\\'"}},
        {"", {}},
    };

    ASSERT_TRUE(setlocale(LC_CTYPE, "C.UTF-8"));
    for (const auto &[pText, items] : rows) {
        EXPECT_EQ(items, tableOf(parent, pText)) << pText;
        EXPECT_EQ((int)items.size(), getCStrCount(pText)) << pText;
    }
}
