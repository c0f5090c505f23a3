#include <gtest/gtest.h>

#include <climits>
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
    {"größe – ✓", "L 'größe – ✓'"},
    {"stray \xff byte", "L 'stray \xff byte'"},
    /* segments and their separators; the toolkit joins texts that meet */
    {"\"OK\"", "L 'OK'"},
    {"\"\"", "L"},
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
    {"#bold:t\"a\"", "#bold L 'a' /"},
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
    {":t:x\"a\"", "L / 'a'"},
    {":", "L"},
    {":\\t\"a\"", "L 'a'"},
    /* escapes */
    {"\"a\\\"b\\\\c\\qd\"", "L 'a\"b\\cqd'"},
    {"\"a\\tb\\rc\\fd\\ve\"", "L 'a\tb\rc\fd\ve'"},
    {"\"a\\nb\"", "L 'a' / 'b'"},
    {"\"no end", "L 'no end'"},
    {"\"slash\\", "L 'slash\\'"},
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
}

TEST_F(Notation, SegmentsLongerThanAllBefore)
{
    for (size_t lLength : {10, 1000, 100000}) {
        const std::string text(lLength, 'x');
        EXPECT_EQ("L '" + text + "'", converted(("\"" + text + "\"").c_str()));
    }
}

/* What a warning said: name, type, class, text. */
static std::string s_warning;

static void keepWarning(String pName, String pType, String pClass, String pText, String *,
                        Cardinal *)
{
    s_warning = std::string(pName) + "|" + pType + "|" + pClass + "|" + pText;
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

TEST_F(Bxutils, ConvertersWarnOfArgumentsAndAskForRoom)
{
    XtErrorMsgHandler fpBefore = XtAppSetWarningMsgHandler(context(), keepWarning);
    XrmValue from = {3, (XPointer) "ab"};
    XrmValue to = {};
    XrmValue nothing = {};
    Cardinal iArgs;
    char cSmall;

    for (auto [pName, fpConvert, fpDestroy] :
         {std::tuple{"XmString", &CvtStringToXmString, &XmStringCvtDestroy},
          {"XmStringTable", &CvtStringToXmStringTable, &XmStringTableCvtDestroy}}) {
        to = {};
        iArgs = 1;
        EXPECT_TRUE(fpConvert(XtDisplay(parent), &from, &iArgs, &from, &to, nullptr));
        EXPECT_EQ(std::string("wrongParameters|XtToolkitError|cvtStringTo") + pName +
                      "|String to " + pName + " converter needs no extra arguments",
                  s_warning);
        fpDestroy(context(), &to, nullptr, nullptr, &iArgs);
    }

    iArgs = 0;
    s_warning.clear();
    to = {1, &cSmall};
    EXPECT_FALSE(CvtStringToXmString(XtDisplay(parent), &from, &iArgs, &from, &to, nullptr));
    EXPECT_EQ(sizeof(XmString), to.size);
    EXPECT_FALSE(
        CvtStringToXmString(XtDisplay(parent), &from, &iArgs, &nothing, &nothing, nullptr));
    EXPECT_EQ("", s_warning);
    XtAppSetWarningMsgHandler(context(), fpBefore);
}

TEST_F(Bxutils, ConvertGivesValuesOrAddresses)
{
    XtErrorMsgHandler fpBefore = XtAppSetWarningMsgHandler(context(), keepWarning);
    Boolean ok = False;

    EXPECT_EQ(-5, CONVERT(parent, "-5", XmRInt, 4, &ok));
    EXPECT_TRUE(ok);
    EXPECT_EQ(-3, CONVERT(parent, "-3", XmRPosition, 2, &ok));
    EXPECT_EQ(True, CONVERT(parent, "true", XmRBoolean, 1, &ok));
    EXPECT_EQ("L 'a'", components((XmString)CONVERT(parent, "\"a\"", XmRXmString, 8, &ok)));
    EXPECT_STREQ("as it is", (char *)CONVERT(parent, "as it is", XmRString, 8, &ok));
    EXPECT_EQ(1.5f, *(float *)CONVERT(parent, "1.5", "Float", 4, &ok));
    EXPECT_TRUE(ok);
    EXPECT_EQ(0, CONVERT(parent, "5", "NoSuchType", 4, &ok));
    EXPECT_FALSE(ok);
    EXPECT_EQ(0, CONVERT(parent, "five", XmRInt, 4, &ok));
    EXPECT_FALSE(ok);
    XtAppSetWarningMsgHandler(context(), fpBefore);
}

TEST_F(Bxutils, WidgetsByNameSearchUpwards)
{
    Widget top = XtCreateWidget("top", xmFormWidgetClass, parent, nullptr, 0);
    Widget left = XtCreateWidget("left", xmFormWidgetClass, top, nullptr, 0);
    Widget right = XtCreateWidget("right", xmLabelWidgetClass, top, nullptr, 0);
    Widget inner = XtCreateWidget("inner", xmLabelWidgetClass, left, nullptr, 0);

    testing::internal::CaptureStdout();
    WidgetList aFound = BxWidgetIdsFromNames(inner, "TestCB", " x [ right , nowhere,inner ] ");
    EXPECT_EQ("Callback Error (TestCB):\n\tCannot find widget *nowhere\n",
              testing::internal::GetCapturedStdout());
    EXPECT_EQ(right, aFound[0]);
    EXPECT_EQ(inner, aFound[1]);
    EXPECT_EQ(nullptr, aFound[2]);
    XtFree((char *)aFound);
    aFound = BxWidgetIdsFromNames(inner, "TestCB", " ");
    EXPECT_EQ(nullptr, aFound[0]);
    XtFree((char *)aFound);
    EXPECT_EQ(application, BxFindTopShell(inner));
    EXPECT_EQ(nullptr, BxFindTopShell(nullptr));
    XtDestroyWidget(top);
}

TEST(Numbers, AreReadWholeOrNotAtAll)
{
    const std::tuple<const char *, unsigned, int, unsigned> rows[] = {
        {"12345", 3, 1, 123},     {"0042", 4, 1, 42}, {"12", 3, 0, 7},
        {"1x3", 3, 0, 7},         {"x", 1, 0, 7},     {"4294967295", 10, 1, UINT_MAX},
        {"4294967296", 10, 0, 7}, {"5", 0, 0, 7},
    };

    for (const auto &[pText, iLength, iResult, iValue] : rows) {
        unsigned int iRead = 7;
        EXPECT_EQ(iResult, atoui(pText, iLength, &iRead)) << pText;
        EXPECT_EQ(iValue, iRead) << pText;
    }
}

/* What the display's resources say; "-" for nothing. */
static std::string said(Widget widget, const char *pName)
{
    char *pType = nullptr;
    XrmValue value;

    return XrmGetResource(XtDatabase(XtDisplay(widget)), pName, pName, &pType, &value) ? value.addr
                                                                                       : "-";
}

TEST_F(Bxutils, AppDefaultsComeAndGo)
{
    _UIAppDefault aTable[] = {
        {"Part", "inst", "sub", "res", nullptr},      {"Part", "inst", "", "res2", nullptr},
        {"Part", "inst", nullptr, "res3", nullptr},   {"Part", "", nullptr, "res4", nullptr},
        {"Part", "inst", nullptr, "absent", nullptr}, {nullptr, nullptr, nullptr, nullptr, nullptr},
    };
    const char *const apLater[] = {"Part.inst.res2: other", nullptr}; /* overrides nothing */
    const char *const apLines[] = {"Part.inst.sub.res: one", "Part.inst.res2: two\\n2",
                                   "Part.inst.res3: \\ three", "Part.Part.res4: fo\\\\ur", nullptr};
    Widget dialog = XtCreateWidget("dialog", xmFormWidgetClass, parent, nullptr, 0);

    setDefaultResources("", parent, apLines);
    setDefaultResources("", parent, apLater);
    InitAppDefaults(parent, aTable);
    EXPECT_STREQ("one", aTable[0].pValue);
    EXPECT_STREQ("two\n2", aTable[1].pValue);
    EXPECT_EQ(nullptr, aTable[4].pValue);

    SetAppDefaults(dialog, aTable, nullptr);
    EXPECT_EQ("-", said(parent, "setup.TopLevelShell.dialog.inst.x.sub.res"));
    SetAppDefaults(dialog, aTable, "name");
    EXPECT_EQ("one", said(parent, "setup.TopLevelShell.dialog.inst.x.sub.res"));
    EXPECT_EQ("two\n2", said(parent, "setup.TopLevelShell.dialog.inst.res2"));
    EXPECT_EQ(" three", said(parent, "setup.TopLevelShell.dialog.name.x.inst.res3"));
    EXPECT_EQ("fo\\ur", said(parent, "setup.TopLevelShell.dialog.x.name.res4"));
    EXPECT_EQ("-", said(parent, "setup.TopLevelShell.other.inst.res2"));
    InitAppDefaults(parent, aTable); /* values are replaced, not leaked */
    for (_UIAppDefault *pRow = aTable; pRow->pInstance; pRow++)
        XtFree(pRow->pValue);
    XtDestroyWidget(dialog);
}
