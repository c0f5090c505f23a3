#include <gtest/gtest.h>

#include "dialogs/Custom.h"

#include "dialogTest.h"

static const char s_caList[] =
    "1 MainDlg 'T' 'D' '' 20\n20 CusDlg 'List' 'All of it' '' 0 21 22 23 24 25\n"
    "21 Suite 'P' 'About %d P' '' 1\n22 Suite 'Q' 'About Q' '' 0\n23 Suite 'R' 'About R' '' 1\n"
    "24 Suite 'H' 'Hidden' '' 0\n25 CusDlg 'Group' 'About it' '' 0 26 27\n"
    "26 Suite 'Q' '' '' 0\n27 CusDlg 'Deep' '' '' 0 28\n28 Suite 'Q' '' '' 0\n";

struct Custom : DialogTest {
    Widget show(int iId, int iMode = 0)
    {
        OV_instInstallationMode = iMode;
        OV_instConfigureCustomDlgCB(nullptr, config(iId), nullptr);
        settle();
        return shown("mbCustom");
    }
    static std::vector<Widget> rows()
    {
        Widget list = OV_instFindWidget(shown("mbCustom"), "rcCustomOptions");
        const WidgetList aRows = resourceOf<WidgetList>(list, XmNchildren);
        return std::vector<Widget>(aRows, aRows + resourceOf<Cardinal>(list, XmNnumChildren));
    }
    /* The rows as they are seen, "x name size," each; "(name)" for one that is greyed. */
    static std::string list()
    {
        std::string seen;
        for (Widget row : rows()) {
            Widget name = XtNameToWidget(row, "laCustomItemName");
            const std::string text = labelOf(name);
            seen += XmToggleButtonGetState(XtNameToWidget(row, "tbCustomItem")) ? "x " : "o ";
            seen += (XtIsSensitive(name) ? text : "(" + text + ")") + " " +
                    trimmed(labelOf(XtNameToWidget(row, "laCustomItemSize"))) + ", ";
        }
        return seen;
    }
    /* Presses a check box as the space bar does. */
    static void toggle(size_t iRow)
    {
        XEvent none = {};
        none.xany.display = XtDisplay(s_application);
        XtCallActionProc(XtNameToWidget(rows().at(iRow), "tbCustomItem"), "ArmAndActivate", &none,
                         nullptr, 0);
        settle();
    }
    static std::string text(const char *pName) { return trimmed(label(shown("mbCustom"), pName)); }
    static std::string counts()
    {
        return "+" + text("laCustomRequiredValue1") + " -" + text("laCustomAvailableValue1");
    }
};

TEST_F(Custom, TogglesMoveTheFigures)
{
    describe(s_caList);
    Widget dialog = show(20);
    EXPECT_EQ("x P 1.00 MB, o Q 2.00 MB, x R 3.00 MB, o (Group) 0.00 KB, ", list());
    EXPECT_EQ("About %d P", text("laCustomDescriptionItem"));
    EXPECT_EQ(m_root, text("laCustomFolderPath"));
    EXPECT_EQ("4.00 MB", text("laCustomRequiredValue"));
    EXPECT_EQ('B', text("laCustomAvailableValue").back());
    EXPECT_FALSE(isManaged(dialog, "Help") || isManaged(dialog, "foCustomComponentCount"));
    toggle(1);
    EXPECT_EQ(1, config(22)->iSelected);
    EXPECT_EQ("6.00 MB", text("laCustomRequiredValue"));
    toggle(0);
    EXPECT_EQ("5.00 MB", text("laCustomRequiredValue"));
    ASSERT_TRUE(press(dialog, "pbCustomDescriptionItem"));
    EXPECT_EQ("x P 1.00 MB, x Q 2.00 MB, x R 3.00 MB, x Group 2.00 MB, ", list());
    EXPECT_EQ("6.00 MB", text("laCustomRequiredValue")) << "shared packages count once";
    EXPECT_EQ(1, config(28)->iSelected);

    const char *const pWarning = "This component is an essential part of the\napplication. If it "
                                 "is not installed, the application\nwill not run properly|";
    for (const char *pTold : {pWarning, "", pWarning}) /* cleared, set, cleared */
        EXPECT_EQ(pTold, whileUsed(*pTold ? Steps{"y"} : Steps{}, [] { toggle(2); }));
    EXPECT_EQ(0, config(23)->iSelected);
}

/* Down to where there are only suites, and up again. */
TEST_F(Custom, ChangeOptionIsForGroups)
{
    describe(s_caList);
    Widget dialog = show(20);
    EXPECT_FALSE(press(dialog, "pbCustomChangeOption")) << "a suite is current";
    for (size_t iGroup : {3, 1}) {
        XtCallCallbacks(rows().at(iGroup), XmNfocusCallback, nullptr);
        ASSERT_TRUE(press(dialog, "pbCustomChangeOption"));
    }
    EXPECT_FALSE(isManaged(dialog, "pbCustomChangeOption")) << "nothing but suites";
    ASSERT_TRUE(press(dialog, "OK") && press(dialog, "Cancel"));
    EXPECT_EQ("x P 1.00 MB, o Q 2.00 MB, x R 3.00 MB, o (Group) 0.00 KB, ", list());
}

/* With pointer and keys: 21 rows in a place for eight, a long name, a long description, and a group
 * that needs Change Option. */
struct LongList : Custom {
    Widget m_dialog = nullptr;

    void prepare() override
    {
        std::string ids, rows, about;
        for (int i = 1; i < 60; i++)
            about += "sentence number " + std::to_string(i) + ". ";
        for (int i = 100; i < 120; i++) {
            ids += " " + std::to_string(i);
            rows += std::to_string(i) + " Suite 'P' '" + about + "' '' 0\n";
        }
        describe("1 MainDlg 'T' 'D' '' 20\n20 CusDlg 'List' '' '' 0" + ids + " 120\n" + rows +
                 "120 CusDlg 'Group' 'About it' '' 0 121\n"
                 "121 CusDlg 'Deep' '' '' 0 122\n122 Suite 'Q' '' '' 1\n");
        char **ppName = &suite("P")->pName;
        free(*ppName);
        *ppName = strdup("A suite of a long name that takes a line or two, as the case may be");
        m_dialog = show(20);
        pointAt(m_dialog);
    }
    Widget find(const char *pName) const { return OV_instFindWidget(m_dialog, pName); }
    /* The number of the current option, and what has the keyboard. */
    std::string at() const
    {
        Widget focus = XmGetFocusWidget(m_dialog);
        return std::to_string(OV_instCustomCurrentOption(m_dialog)->iId) + " " +
               (focus ? XtName(focus) : "nothing");
    }
    void pointer(Widget over, const std::string &buttons)
    {
        XWarpPointer(XtDisplay(over), None, XtWindow(over), 0, 0, 0, 0, over->core.width - 20,
                     over->core.height / 2);
        settle();
        for (const std::string deed : {"mousedown ", "mouseup "})
            EXPECT_EQ(0, system(("xdotool " + deed + buttons).c_str()));
        settle();
        runFor(s_application, 60);
    }
};

TEST_F(LongList, NothingIsCovered)
{
    Widget list = find("rcCustomOptions"), row = rows().at(0);
    const int iSeen = XtParent(list)->core.width;
    EXPECT_EQ(iSeen, list->core.width);
    EXPECT_GE(iSeen, list->core.x + row->core.x + row->core.width);
    for (const char *pPart : {"laCustomItemName", "laCustomItemSize"}) {
        Widget part = XtNameToWidget(row, pPart);
        XtWidgetGeometry wanted = {};
        (void)XtQueryGeometry(part, nullptr, &wanted);
        EXPECT_LE(wanted.width, part->core.width) << pPart;
        EXPECT_LE(part->core.x + part->core.width, row->core.width) << pPart;
    }
    EXPECT_EQ("Options:", text("laCustomOptions") + text("laCustomOptionsOf"));

    EXPECT_EQ(0u, text("laCustomDescriptionItem").find("sentence number 1.")) << "cut above";
    key("Tab");
    EXPECT_EQ("100 sbCustomDescriptionItem", at());
    std::string read = text("laCustomDescriptionItem");
    while (read.find("number 59.") == read.npos && read.size() < 10000) {
        key("Next");
        read += " " + text("laCustomDescriptionItem");
    }
    for (int i = 1; i < 60; i++)
        EXPECT_NE(read.npos, replaced(read, "\n", " ").find("number " + std::to_string(i) + "."));
}

TEST_F(LongList, TheCurrentRowFollowsKeysAndPresses)
{
    Widget list = find("rcCustomOptions");
    key("Down Down Up");
    EXPECT_EQ("101 tbCustomItem", at());
    for (bool bOver : {false, true}) { /* where the toolkit would scroll by itself */
        key("Home");
        XWarpPointer(XtDisplay(list), None, XtWindow(bOver ? XtParent(list) : m_dialog), 0, 0, 0, 0,
                     5, 5);
        key("Next");
        EXPECT_LT("102 tbCustomItem", at()) << bOver;
        key("Prior");
        EXPECT_EQ("100 tbCustomItem", at()) << bOver;
    }
    const int iTop = list->core.y;
    pointer(XtParent(list), "5");
    EXPECT_GT(iTop, list->core.y);
    EXPECT_EQ("100 tbCustomItem", at()) << "the wheel scrolls";
    key("End Up");
    EXPECT_EQ("119 tbCustomItem", at());
    EXPECT_FALSE(XtIsSensitive(find("pbCustomChangeOption")));
    Widget name = XtNameToWidget(rows().at(20), "laCustomItemName");
    ASSERT_FALSE(XtIsSensitive(name));
    pointer(name, "1");
    EXPECT_EQ("120 tbCustomItem", at()) << "greyed";
    EXPECT_EQ("About it", text("laCustomDescriptionItem"));
}

/* Where Return continues, instead of choosing all once more. */
TEST_F(LongList, TheListHasTheKeyboardWhateverWasPressed)
{
    static int s_iOk;
    key("End");
    key("alt+c");
    EXPECT_EQ("121 tbCustomItem", at());
    EXPECT_EQ("Options: Group", text("laCustomOptions") + " " + text("laCustomOptionsOf"));
    key("Return"); /* the way back */
    EXPECT_EQ("120 tbCustomItem", at());
    key("Up alt+s");
    EXPECT_EQ("119 tbCustomItem", at());
    EXPECT_EQ(1, config(100)->iSelected);
    XtRemoveAllCallbacks(m_dialog, XmNokCallback);
    XtAddCallback(
        m_dialog, XmNokCallback, [](Widget, XtPointer, XtPointer) { s_iOk++; }, nullptr);
    key("Return");
    EXPECT_EQ(1, s_iOk);
}

TEST_F(Custom, CountsInMaintenance)
{
    describe(s_caList);
    setStates("20:11 21:11 22:00 23:11 25:11 26:11");
    Widget dialog = show(20, 1);
    ASSERT_TRUE(isManaged(dialog, "foCustomComponentCount"));
    EXPECT_EQ("+0 -0", counts());
    toggle(1);
    toggle(0);
    EXPECT_EQ("+1 -1", counts());
    ASSERT_TRUE(press(dialog, "pbCustomDescriptionItem"));
    EXPECT_EQ("+3 -0", counts()) << "the hidden one and the one far below count";
}
