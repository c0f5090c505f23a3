#include <gtest/gtest.h>

#include <csignal>

#include "windows/desk.h"

/* Two fail in the same breath: a file is where their directory should be. */
static const char s_caFailing[] = "Copy \"plain\" \"\" 5 0644\nCopy \"a\" \"plain/x\" 5 0644\n"
                                  "Copy \"b\" \"plain/x\" 5 0644\n";
static const char s_caMissing[] = "Copy \"plain\" \"\" 5 0644\nCopy \"absent\" \"\" 5 0644\n";

enum { YES = 0, NO = 1 };
enum { PROMPT_CONTINUE = 0, PROMPT_BROWSE = 1, PROMPT_ABORT = 2 };

struct WindowFaults : testing::Test {
    ShownMedium medium;
    Desk desk;

    WindowFaults()
    {
        for (const char *pName : {"plain", "a", "b"})
            medium.file(pName, "12345");
    }

    /* Starts it and presses the page's one button. */
    bool begin(const std::string &operations)
    {
        medium.offer(operations);
        return desk.start(medium, {{"dsWelcome", FIRST},
                                   {"dsEULA", FIRST},
                                   {"dsChangeDestination", 1},
                                   {"dsMainDlg", FIRST}});
    }
};

/* ---- ways to end ---- */

static const char s_caHistory[] = "SetupFiles/.h.his";

enum { MANY = 3000 };

static std::string picture(int i)
{
    return "Pictures/sample-" + std::to_string(i) + ".pic";
}

struct Ending {
    const char *pName;
    const char *pOperations; /* null for many files, with the child stopped among them */
    char cKilled;            /* then: the child, the parent, the server, or nobody: ' ' */
    int iStatus;
    std::string there; /* a file of the tree */
    std::string gone;  /* one that is not there */
    Steps steps;
};

static void PrintTo(const Ending &row, std::ostream *pOut)
{
    *pOut << row.pName;
}

// clang-format off
static const Ending s_aEndings[] = {
    {"ErrorsYes", s_caFailing, ' ', 0, s_caHistory, "x",
     {{s_caBox, YES, "error"}, {s_caBox, YES}, {s_caBox, FIRST, "not-completed"}}},
    {"ErrorNo", s_caFailing, ' ', 1, "plain", s_caHistory, {{s_caBox, NO}}},
    {"MissingContinue", s_caMissing, ' ', 0, s_caHistory, "absent",
     {{s_caBox, PROMPT_CONTINUE, "media-prompt"}, {s_caBox, FIRST}}},
    {"MissingAbort", s_caMissing, ' ', 1, "plain", s_caHistory, {{s_caBox, PROMPT_ABORT}}},
    {"Resume", nullptr, ' ', 0, picture(MANY - 1), "x",
     {{"dsProgress", FIRST, "progress", STAYS}, {s_caBox, NO, "quit"}, {s_caBox, FIRST}}},
    {"Quit", nullptr, ' ', 10, picture(0), picture(MANY - 1),
     {{"dsProgress", FIRST, nullptr, STAYS}, {s_caBox, YES}}},
    {"ChildDies", nullptr, 'c', 1, picture(0), picture(MANY - 1), {{s_caBox, FIRST}}},
    {"ParentDies", nullptr, 'p', 128 + SIGKILL, picture(0), picture(MANY - 1), {}},
    {"DisplayDies", nullptr, 's', 1, picture(0), picture(MANY - 1), {}},
};
// clang-format on

struct Endings : WindowFaults, testing::WithParamInterface<Ending> {
    std::string manyFiles()
    {
        std::string operations;

        for (int i = 0; i < MANY; i++) {
            medium.file(picture(i), std::string(5000, 'x'));
            operations += "Copy \"" + picture(i) + "\" \"\" 5000 0644\n";
        }
        return operations;
    }

    /* With what the child runs. */
    void stop()
    {
        const std::string number = std::to_string(desk.iProgram);
        const std::string children = "/proc/" + number + "/task/" + number + "/children";

        ASSERT_TRUE(soon([&] {
            return medium.has(picture(MANY / 3)) && desk.isShown("dsProgress");
        })) << desk.printed();
        const pid_t iChild = atoi(readFile(children).c_str());
        ASSERT_TRUE(iChild > 0 && kill(-iChild, SIGSTOP) == 0);
        for (const auto &[cWho, iProcess] :
             {std::pair{'c', iChild}, {'p', desk.iProgram}, {'s', desk.iServer}})
            if (cWho == GetParam().cKilled)
                (void)kill(iProcess, SIGKILL);
    }
};

TEST_P(Endings, LeaveNobodyBehind)
{
    const Ending &row = GetParam();

    ASSERT_TRUE(begin(row.pOperations ? row.pOperations : manyFiles()));
    if (!row.pOperations)
        stop();
    ASSERT_TRUE(desk.go(row.steps));
    EXPECT_EQ(row.iStatus, desk.status());
    EXPECT_TRUE(medium.has(row.there)) << row.there;
    EXPECT_FALSE(medium.has(row.gone)) << row.gone;
    EXPECT_TRUE(medium.nobodyLeft());
    if (row.cKilled != ' ') { /* whatever it had done */
        EXPECT_EQ(0, medium.install().iStatus);
        EXPECT_TRUE(medium.has(picture(MANY - 1)));
        EXPECT_NE(std::string::npos, medium.log().rfind("\nInstallation Completed\n"));
        EXPECT_FALSE(medium.has("SetupFiles/.h.run"));
    }
    if (row.cKilled == 's')
        desk.pDisplay = nullptr; /* closing it would end this process as well */
}

INSTANTIATE_TEST_SUITE_P(Windows, Endings, testing::ValuesIn(s_aEndings));

/* ---- the medium ---- */

TEST_F(WindowFaults, TheFileIsElsewhere)
{
    const char *const pBrowser = "Locate absent";
    const std::string other = medium.top + "/other";

    writeFile(other + "/absent", "found");
    ASSERT_TRUE(begin(s_caMissing));
    must("cp " + medium.place + "/cdinst.dat " + other); /* a whole medium; it is copied last */
    ASSERT_TRUE(desk.go({{s_caBox, PROMPT_BROWSE},
                         {pBrowser, LAST, "media-browser"}, /* Cancel: asked again */
                         {s_caBox, PROMPT_BROWSE},
                         {pBrowser, FIRST, nullptr, STAYS}, /* it is not there */
                         {s_caBox, FIRST, "media-not-there"}}));
    desk.choose(pBrowser, other);
    ASSERT_TRUE(desk.go({{pBrowser, FIRST}, {s_caBox, FIRST}}));
    EXPECT_EQ(0, desk.status());
    EXPECT_EQ("found", medium.installed("absent"));
    EXPECT_TRUE(medium.nobodyLeft());
}

/* The child asks for the file while the parent asks whether to quit. */
TEST_F(WindowFaults, BothProcessesAskAtOnce)
{
    const Steps stillAnswers = {{s_caBox, PROMPT_BROWSE}, {"Locate absent", LAST}};

    ASSERT_TRUE(begin(s_caMissing));
    for (int iAnswer : {NO, YES}) {
        ASSERT_TRUE(desk.showsButtons(s_caBox, 3)) << desk.printed();
        desk.move(s_caBox, 0, 0);
        ASSERT_TRUE(desk.go({{"dsProgress", FIRST, nullptr, STAYS}}));
        ASSERT_TRUE(desk.showsButtons(s_caBox, 2)) << desk.printed();
        ASSERT_TRUE(desk.go({{s_caBox, iAnswer}}));
        ASSERT_TRUE(desk.go(iAnswer == NO ? stillAnswers : Steps()));
    }
    EXPECT_EQ(10, desk.status());
    EXPECT_TRUE(medium.nobodyLeft());
    EXPECT_TRUE(desk.isGone(s_caBox)) << "the child's";
}

TEST_F(WindowFaults, ADescriptionThatCannotBeReadIsTold)
{
    medium.describe("Nonsense\n", "");
    ASSERT_TRUE(desk.start(medium, {{s_caBox, FIRST, "no-description"}}));
    EXPECT_EQ(1, desk.status());
}
