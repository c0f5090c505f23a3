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
        WidgetList aRows = nullptr;
        Cardinal iRows = 0;
        XtVaGetValues(OV_instFindWidget(shown("mbCustom"), "rcCustomOptions"), XmNchildren, &aRows,
                      XmNnumChildren, &iRows, nullptr);
        return std::vector<Widget>(aRows, aRows + iRows);
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
    static void focus(size_t iRow) { XtCallCallbacks(rows().at(iRow), XmNfocusCallback, nullptr); }
    static std::string text(const char *pName) { return trimmed(label(shown("mbCustom"), pName)); }
    static std::string counts()
    {
        return "+" + text("laCustomRequiredValue1") + " -" + text("laCustomAvailableValue1");
    }
};

TEST_F(Custom, ShowsTheOptions)
{
    describe(s_caList);
    Widget dialog = show(20);

    EXPECT_EQ("x P 1.00 MB, o Q 2.00 MB, x R 3.00 MB, o (Group) 0.00 KB, ", list());
    EXPECT_EQ("About %d P", text("laCustomDescriptionItem"));
    EXPECT_EQ(m_root, text("laCustomFolderPath"));
    EXPECT_EQ("4.00 MB", text("laCustomRequiredValue"));
    EXPECT_EQ('B', text("laCustomAvailableValue").back());
    EXPECT_EQ("Continue", label(dialog, "OK"));
    EXPECT_FALSE(isManaged(dialog, "Help"));
    EXPECT_FALSE(isManaged(dialog, "foCustomComponentCount"));
    EXPECT_TRUE(isManaged(dialog, "pbCustomChangeOption"));
    EXPECT_EQ("Space required:", text("laCustomRequired"));
    EXPECT_EQ(0u, text("laCustom")
                      .find("In the Options list, select the items you want installed; "
                            "clear the items you"));
}

TEST_F(Custom, TogglesMoveTheFigures)
{
    describe(s_caList);
    show(20);
    toggle(1);
    EXPECT_EQ(1, config(22)->iSelected);
    EXPECT_EQ("6.00 MB", text("laCustomRequiredValue"));
    toggle(0);
    EXPECT_EQ(0, config(21)->iSelected);
    EXPECT_EQ("5.00 MB", text("laCustomRequiredValue"));
    ASSERT_TRUE(press(shown("mbCustom"), "pbCustomDescriptionItem"));
    EXPECT_EQ("x P 1.00 MB, x Q 2.00 MB, x R 3.00 MB, x Group 2.00 MB, ", list());
    EXPECT_EQ("6.00 MB", text("laCustomRequiredValue")) << "shared packages count once";
    EXPECT_EQ(1, config(28)->iSelected);
}

/* Clicks away the box that is waiting, from within its loop. */
static void answer(XtPointer asked, XtIntervalId *)
{
    const CorePart &core = OV_instGetMainTopLevelShell()->core;

    for (Cardinal i = 0; i < core.num_popups; i++)
        if (Widget box = XtNameToWidget(core.popup_list[i], "mbOkCancel")) {
            *static_cast<std::string *>(asked) +=
                DialogTest::labelOf(XmMessageBoxGetChild(box, XmDIALOG_MESSAGE_LABEL)) + "|";
            (void)OV_instActivateButton(XmMessageBoxGetChild(box, XmDIALOG_OK_BUTTON));
            return;
        }
}

TEST_F(Custom, WarnsWhenAVitalSuiteIsCleared)
{
    const std::string warning =
        "This component is an essential part of the\napplication. If it is not installed, the "
        "application\nwill not run properly|";
    std::string asked;
    describe(s_caList);
    show(20);
    for (int i = 0; i < 3; i++) { /* cleared, set, cleared */
        XtIntervalId timer =
            XtAppAddTimeOut(XtWidgetToApplicationContext(s_application), 50, answer, &asked);
        toggle(2);
        if (i == 1)
            XtRemoveTimeOut(timer);
    }
    EXPECT_EQ(warning + warning, asked);
    EXPECT_EQ(0, config(23)->iSelected);
    EXPECT_EQ("1.00 MB", text("laCustomRequiredValue"));
}

TEST_F(Custom, ChangeOptionOpensGroupsInPlaceAndComesBack)
{
    describe(s_caList);
    Widget dialog = show(20);
    EXPECT_FALSE(press(dialog, "pbCustomChangeOption")) << "a suite is current";
    focus(3);
    EXPECT_EQ("About it", text("laCustomDescriptionItem"));
    ASSERT_TRUE(press(dialog, "pbCustomChangeOption"));
    EXPECT_EQ(dialog, shown("mbCustom"));
    EXPECT_EQ("o Q 2.00 MB, o Deep 0.00 KB, ", list());
    EXPECT_EQ("Continue", label(dialog, "OK"));
    toggle(0);
    focus(1);
    ASSERT_TRUE(press(dialog, "pbCustomChangeOption"));
    EXPECT_FALSE(isManaged(dialog, "pbCustomChangeOption")) << "nothing but suites";
    ASSERT_TRUE(press(dialog, "OK"));
    EXPECT_EQ("x Q 2.00 MB, o Deep 0.00 KB, ", list());
    ASSERT_TRUE(press(dialog, "Cancel"));
    EXPECT_EQ("x P 1.00 MB, o Q 2.00 MB, x R 3.00 MB, o (Group) 2.00 MB, ", list());
    EXPECT_EQ(nullptr, config(25)->pParent);
    EXPECT_EQ(nullptr, config(27)->pParent);
}

TEST_F(Custom, CountsInMaintenance)
{
    describe(s_caList);
    setStates("20:11 21:11 22:00 23:11 25:11 26:11");
    Widget dialog = show(20, 1);
    ASSERT_TRUE(isManaged(dialog, "foCustomComponentCount"));
    EXPECT_EQ("Components to Add:", text("laCustomRequired1"));
    EXPECT_EQ("Components to Remove:", text("laCustomAvailable1"));
    EXPECT_EQ("+0 -0", counts());
    toggle(1);
    EXPECT_EQ("+1 -0", counts());
    toggle(0);
    EXPECT_EQ("+1 -1", counts());
    toggle(3); /* a group cleared drops every installed suite, and hides what is added */
    EXPECT_EQ("+0 -3", counts());
    toggle(3);
    EXPECT_EQ("+1 -1", counts());
    ASSERT_TRUE(press(dialog, "pbCustomDescriptionItem"));
    EXPECT_EQ("+3 -0", counts()) << "the hidden one and the one far below count";
}

TEST_F(Custom, SetsResourcesFromText)
{
    char caText[] = "laCustomFolder.labelString = New: a=b.c \nnonsense\n\n"
                    " pbCustomDescriptionItem . sensitive=False\nabsent.width = 3";
    describe(s_caList);
    Widget dialog = show(20);
    EXPECT_EQ("Callback Error (BxSetValuesCB):\n\tSyntax Error - specify BxSetValuesCB data as\n\t "
              "   <Widget Name>.<Resource> = <Value>",
              printed([&] { BxSetValuesCB(dialog, caText, nullptr); }));
    EXPECT_EQ("New: a=b.c", text("laCustomFolder"));
    EXPECT_FALSE(XtIsSensitive(OV_instFindWidget(dialog, "pbCustomDescriptionItem")));
}

TEST_F(Custom, WithoutAListTheProcessEnds)
{
    OV_instSetLastDlg(nullptr);
    EXPECT_EXIT(OV_instCustomOKCB(nullptr, nullptr, nullptr), testing::ExitedWithCode(1), "");
    EXPECT_EXIT(OV_instCustomCancelCB(nullptr, nullptr, nullptr), testing::ExitedWithCode(1), "");
}
