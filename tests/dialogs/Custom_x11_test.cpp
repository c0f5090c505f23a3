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
