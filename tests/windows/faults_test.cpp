#include <gtest/gtest.h>

#include <csignal>

#include "windows/desk.h"

static const char s_caBox[] = "Orvane Message";

/* Without the log dialog at the end. */
static std::string quiet()
{
    return usualHeader("NoDisplayLog\n");
}

/* Operations that fail one after the other in the same breath: the directory is a file. */
static std::string failures(int iCount)
{
    std::string operations = "Copy \"plain\" \"\" 5 0644\n";

    for (int i = 0; i < iCount; i++)
        operations += "Copy \"file" + std::to_string(i) + "\" \"plain/x\" 5 0644\n";
    return operations;
}

/* Enough small files for a run that can be stopped in the middle. */
static void manyFiles(Medium &medium)
{
    std::string operations;

    for (int i = 0; i < 3000; i++) {
        const std::string name = "Pictures/sample-" + std::to_string(i) + ".pic";
        medium.file(name, "12345");
        operations += "Copy \"" + name + "\" \"\" 5 0644\n";
    }
    medium.describe(onePage(operations), quiet());
}

struct WindowFaults : testing::Test {
    Medium medium;
    Desk desk;

    void begin(int iFailures)
    {
        medium.file("plain", "plain");
        for (int i = 0; i < iFailures; i++)
            medium.file("file" + std::to_string(i), "12345");
        medium.describe(onePage(failures(iFailures)), quiet());
        ASSERT_TRUE(desk.startAtMainPage(medium)) << desk.printed();
        ASSERT_TRUE(desk.press("dsMainDlg", 0));
    }
    bool nobodyLeft() const
    {
        return soon([&] { return processesNaming(medium.scratch / "").empty(); }, 5);
    }
};

TEST_F(WindowFaults, GoingOnAfterEachOfSeveralErrors)
{
    begin(2);
    for (int i = 0; i < 2; i++) {
        ASSERT_NE(0u, desk.window(s_caBox)) << desk.printed();
        ASSERT_EQ(2u, desk.buttons(s_caBox).size());
        if (i == 0)
            desk.picture(s_caBox, "error");
        ASSERT_TRUE(desk.leave(s_caBox, 0)); /* the next box is at the same place */
    }
    ASSERT_TRUE(soon([&] { return desk.buttons(s_caBox).size() == 1; })) << desk.printed();
    desk.picture(s_caBox, "not-completed");
    ASSERT_TRUE(desk.press(s_caBox, 0));
    EXPECT_EQ(0, desk.status());
    EXPECT_TRUE(medium.has("plain"));
    const std::string error = "Copyfile can't create destination directory for:\n";
    /* The child runs on for a moment, so that its last line may stand between them. */
    const size_t iFirst = medium.log().find(error);
    ASSERT_NE(std::string::npos, iFirst) << medium.log();
    EXPECT_NE(std::string::npos, medium.log().find(error, iFirst + 1)) << medium.log();
    EXPECT_TRUE(nobodyLeft());
}

TEST_F(WindowFaults, NoAbortsAndTakesTheHistoryAway)
{
    begin(1);
    ASSERT_NE(0u, desk.window(s_caBox)) << desk.printed();
    ASSERT_TRUE(desk.press(s_caBox, 1));
    EXPECT_EQ(1, desk.status());
    EXPECT_FALSE(medium.has("SetupFiles/.h.his"));
    EXPECT_TRUE(nobodyLeft());
}

TEST_F(WindowFaults, ARunThatCannotStartLeavesThePage)
{
    medium.file("plain", "plain");
    medium.describe(onePage("Copy \"plain\" \"\" 5 0644\n"), quiet());
    writeFile(medium.tree + "Setup", "where the log's directory should be");
    ASSERT_TRUE(desk.startAtMainPage(medium)) << desk.printed();
    ASSERT_TRUE(desk.press("dsMainDlg", 0));
    ASSERT_TRUE(desk.press(s_caBox, 0));
    EXPECT_TRUE(desk.isGone(s_caBox));
    EXPECT_NE(0u, desk.window("dsMainDlg"));
    EXPECT_FALSE(medium.has("plain"));
}

TEST_F(WindowFaults, AMissingFileIsAskedForAndAbortEndsTheRun)
{
    medium.describe(onePage("Copy \"absent\" \"\" 5 0644\n"), quiet());
    ASSERT_TRUE(desk.startAtMainPage(medium)) << desk.printed();
    ASSERT_TRUE(desk.press("dsMainDlg", 0));
    ASSERT_TRUE(soon([&] { return desk.isShown(s_caBox) && desk.buttons(s_caBox).size() == 3; }))
        << desk.printed();
    desk.picture(s_caBox, "media-prompt");
    ASSERT_TRUE(desk.press(s_caBox, 2));
    EXPECT_EQ(1, desk.status());
    EXPECT_FALSE(medium.has("SetupFiles/.h.his"));
    EXPECT_TRUE(nobodyLeft());
}

TEST_F(WindowFaults, CancelResumesOrQuits)
{
    manyFiles(medium);
    ASSERT_TRUE(desk.startAtMainPage(medium)) << desk.printed();
    ASSERT_TRUE(desk.press("dsMainDlg", 0));
    const pid_t iChild = desk.stopAt("dsProgress");
    ASSERT_NE(0u, desk.window("dsProgress"));
    desk.picture("dsProgress", "progress");
    ASSERT_TRUE(desk.press("dsProgress", 0));
    desk.picture(s_caBox, "quit");
    ASSERT_TRUE(desk.press(s_caBox, 1));
    ASSERT_TRUE(soon([&] { return desk.buttons(s_caBox).size() == 1; })) << "it went on to its end";
    EXPECT_TRUE(medium.has("Pictures/sample-2999.pic"));
    ASSERT_TRUE(desk.press(s_caBox, 0));
    EXPECT_EQ(0, desk.status());
    EXPECT_GT(iChild, 0);

    must("rm -rf " + medium.dest);
    ASSERT_TRUE(desk.startAtMainPage(medium)) << desk.printed();
    ASSERT_TRUE(desk.press("dsMainDlg", 0));
    (void)desk.stopAt("dsProgress");
    ASSERT_TRUE(desk.press("dsProgress", 0));
    ASSERT_TRUE(desk.press(s_caBox, 0));
    EXPECT_EQ(10, desk.status());
    EXPECT_FALSE(medium.has("Pictures/sample-2999.pic"));
    EXPECT_TRUE(nobodyLeft());
}

TEST_F(WindowFaults, AChildThatDiesIsTold)
{
    manyFiles(medium);
    ASSERT_TRUE(desk.startAtMainPage(medium)) << desk.printed();
    ASSERT_TRUE(desk.press("dsMainDlg", 0));
    ASSERT_EQ(0, kill(desk.stopAt("dsProgress"), SIGKILL));
    ASSERT_NE(0u, desk.window(s_caBox));
    EXPECT_TRUE(desk.isGone("dsProgress"));
    ASSERT_TRUE(desk.press(s_caBox, 0));
    EXPECT_EQ(1, desk.status());
    EXPECT_TRUE(nobodyLeft());
}

TEST_F(WindowFaults, NobodyOutlivesTheParentOrTheDisplay)
{
    manyFiles(medium);
    ASSERT_TRUE(desk.startAtMainPage(medium)) << desk.printed();
    ASSERT_TRUE(desk.press("dsMainDlg", 0));
    (void)desk.stopAt("dsProgress");
    kill(desk.iProgram, SIGKILL);
    EXPECT_EQ(128 + SIGKILL, desk.status());
    EXPECT_TRUE(nobodyLeft());

    must("rm -rf " + medium.dest);
    ASSERT_TRUE(desk.startAtMainPage(medium)) << desk.printed();
    ASSERT_TRUE(desk.press("dsMainDlg", 0));
    (void)desk.stopAt("dsProgress");
    kill(desk.iServer, SIGKILL);
    EXPECT_EQ(1, desk.status());
    EXPECT_TRUE(nobodyLeft());
    desk.pDisplay = nullptr; /* closing it would end this process as well */
}

TEST_F(WindowFaults, ADescriptionThatCannotBeReadIsTold)
{
    medium.describe("Nonsense\n", "");
    desk.start(medium);
    ASSERT_NE(0u, desk.window(s_caBox)) << desk.printed();
    desk.picture(s_caBox, "no-description");
    ASSERT_TRUE(desk.press(s_caBox, 0));
    EXPECT_EQ(1, desk.status());
}
