#include <gtest/gtest.h>

#include "windows/desk.h"

/* The buttons of a page and of a list, as they lie on the screen. */
enum { PAGE_CUSTOM = 1, PAGE_OTHER = 2, PAGE_EXIT = -1 };
enum { LIST_ALL = 0, LIST_CHANGE = 1, LIST_OK = -2, LIST_CANCEL = -1 };

TEST(Windows, ASuiteButtonInstalls)
{
    SampleMedium medium;
    Desk desk;

    ASSERT_TRUE(desk.startAtMainPage(medium)) << desk.printed();
    ASSERT_TRUE(desk.press("dsMainDlg", 0));
    ASSERT_TRUE(desk.press("dsViewlog", -1)) << desk.printed();
    ASSERT_NE(0u, desk.window("Orvane Message"));
    EXPECT_FALSE(desk.isShown("dsMainDlg"));
    EXPECT_FALSE(desk.isShown("dsProgress"));
    desk.picture("Orvane Message", "completed");
    ASSERT_TRUE(desk.press("Orvane Message", 0));
    EXPECT_EQ(0, desk.status());
    EXPECT_TRUE(medium.has("Application/bin/kivo"));
    EXPECT_NE(std::string::npos, medium.installed("SetupFiles/.kivo.his").find("core"));
    EXPECT_EQ(std::vector<pid_t>(), processesNaming(medium.place));
}

TEST(Windows, PagesAndListsThereAndBack)
{
    SampleMedium medium;
    Desk desk;

    ASSERT_TRUE(desk.startAtMainPage(medium)) << desk.printed();
    desk.picture("dsMainDlg", "main");
    const size_t iFirst = desk.buttons("dsMainDlg").size();
    ASSERT_TRUE(desk.press("dsMainDlg", PAGE_OTHER));
    EXPECT_TRUE(soon([&] { return desk.buttons("dsMainDlg").size() == iFirst - 1; }));
    desk.picture("dsMainDlg", "page");
    ASSERT_TRUE(desk.press("dsMainDlg", PAGE_EXIT));
    EXPECT_TRUE(soon([&] { return desk.buttons("dsMainDlg").size() == iFirst; }));
    ASSERT_TRUE(desk.press("dsMainDlg", PAGE_CUSTOM));
    ASSERT_NE(0u, desk.window("dsCustomDlg"));
    EXPECT_FALSE(desk.isShown("dsMainDlg"));
    ASSERT_TRUE(desk.press("dsCustomDlg", LIST_CANCEL));
    ASSERT_NE(0u, desk.window("dsMainDlg"));
    ASSERT_TRUE(desk.press("dsMainDlg", PAGE_CUSTOM));
    desk.picture("dsCustomDlg", "custom");
    ASSERT_EQ(5u, desk.checks("dsCustomDlg").size());

    ASSERT_TRUE(desk.press("dsCustomDlg", LIST_ALL));
    ASSERT_TRUE(desk.check("dsCustomDlg", 2)); /* no gallery */
    ASSERT_TRUE(desk.check("dsCustomDlg", 3)); /* a group's own mark leaves its members alone */
    ASSERT_TRUE(desk.press("dsCustomDlg", LIST_CHANGE));
    ASSERT_TRUE(soon([&] { return desk.checks("dsCustomDlg").size() == 2; }));
    desk.picture("dsCustomDlg", "custom-nested");
    ASSERT_TRUE(desk.check("dsCustomDlg", 1)); /* the developer kit alone */
    ASSERT_TRUE(desk.press("dsCustomDlg", LIST_OK));
    ASSERT_TRUE(soon([&] { return desk.checks("dsCustomDlg").size() == 5; }));
    ASSERT_TRUE(desk.press("dsCustomDlg", LIST_OK));
    ASSERT_TRUE(desk.press("dsViewlog", -1)) << desk.printed();
    ASSERT_NE(0u, desk.window("Orvane Message"));
    desk.keys("Orvane Message", "Return");
    EXPECT_EQ(0, desk.status());
    EXPECT_TRUE(medium.has("Application/bin/kivo"));
    EXPECT_TRUE(medium.has("Documents"));
    EXPECT_FALSE(medium.has("Gallery"));
    const std::string history = medium.installed("SetupFiles/.kivo.his");
    EXPECT_NE(std::string::npos, history.find("headers"));
    EXPECT_EQ(std::string::npos, history.find("plugins"));
}

/* Tab goes through the first page in the order that is seen, Return presses, Escape leaves. */
TEST(Windows, TheKeyboardAlone)
{
    SampleMedium medium;
    Desk desk;

    ASSERT_TRUE(desk.startAtMainPage(medium)) << desk.printed();
    desk.keys("dsMainDlg", "Tab space");
    ASSERT_NE(0u, desk.window("dsCustomDlg"));
    desk.keys("dsCustomDlg", "Escape");
    ASSERT_NE(0u, desk.window("dsMainDlg"));
}
