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

    /* Starts it and presses the page's one button; the page may stay. */
    bool begin(const std::string &operations, After after = GOES)
    {
        medium.offer(operations);
        return desk.start(medium, {{"dsWelcome", FIRST},
                                   {"dsEULA", FIRST},
                                   {"dsChangeDestination", 1},
                                   {"dsMainDlg", FIRST, nullptr, after}});
    }
};

/* ---- runs that end by themselves ---- */

struct Ending {
    const char *pName;
    const char *pOperations;
    int iStatus;
    size_t iErrors; /* how often the log tells of the missing directory */
    Steps steps;
};

struct Errors : WindowFaults, testing::WithParamInterface<Ending> {
};

// clang-format off
static const Ending s_aErrors[] = {
    {"GoingOnTwice", s_caFailing, 0, 2,
     {{s_caBox, YES, "error"}, {s_caBox, YES}, {s_caBox, FIRST, "not-completed"}}},
    {"No", s_caFailing, 1, 0, {{s_caBox, NO}}},
    {"GoingOnWithout", s_caMissing, 0, 0,
     {{s_caBox, PROMPT_CONTINUE, "media-prompt"}, {s_caBox, FIRST}}},
    {"Abort", s_caMissing, 1, 0, {{s_caBox, PROMPT_ABORT}}},
};
// clang-format on

TEST_P(Errors, AreAnswered)
{
    const std::string error = "Copyfile can't create destination directory for:\n";
    size_t iErrors = 0;

    ASSERT_TRUE(begin(GetParam().pOperations) && desk.go(GetParam().steps));
    EXPECT_EQ(GetParam().iStatus, desk.status());
    EXPECT_EQ("12345", medium.installed("plain"));
    EXPECT_EQ(GetParam().iStatus == 0, medium.has("SetupFiles/.h.his"));
    const std::string log = medium.log();
    for (size_t at = 0; (at = log.find(error, at)) != std::string::npos; at++)
        iErrors++;
    EXPECT_EQ(GetParam().iErrors, iErrors) << log;
    EXPECT_TRUE(medium.nobodyLeft());
}

INSTANTIATE_TEST_SUITE_P(Windows, Errors, testing::ValuesIn(s_aErrors),
                         [](const auto &row) { return row.param.pName; });

/* ---- runs that are stopped in the middle ---- */

struct Stop {
    const char *pName;
    char cKilled; /* the stopped child, the parent, the server, or nobody: ' ' */
    int iStatus;
    Steps steps;
};

struct Stops : WindowFaults, testing::WithParamInterface<Stop> {
};

// clang-format off
static const Stop s_aStops[] = {
    {"Resume", ' ', 0,
     {{"dsProgress", FIRST, "progress", STAYS}, {s_caBox, NO, "quit"}, {s_caBox, FIRST}}},
    {"Quit", ' ', 10, {{"dsProgress", FIRST, nullptr, STAYS}, {s_caBox, YES}}},
    {"Child", 'c', 1, {{s_caBox, FIRST}}},
    {"Parent", 'p', 128 + SIGKILL, {}},
    {"Display", 's', 1, {}},
};
// clang-format on

static pid_t childOf(pid_t iParent)
{
    const std::string number = std::to_string(iParent);

    return atoi(readFile("/proc/" + number + "/task/" + number + "/children").c_str());
}

TEST_P(Stops, LeaveNobodyBehind)
{
    std::string operations;
    pid_t iChild = 0;

    for (int i = 0; i < 3000; i++) {
        const std::string name = "Pictures/sample-" + std::to_string(i) + ".pic";
        medium.file(name, "12345");
        operations += "Copy \"" + name + "\" \"\" 5 0644\n";
    }
    ASSERT_TRUE(begin(operations));
    ASSERT_TRUE(soon([&] {
        return medium.has("Pictures/sample-1000.pic") && desk.isShown("dsProgress") &&
               (iChild = childOf(desk.iProgram)) > 0;
    })) << desk.printed();
    ASSERT_EQ(0, kill(-iChild, SIGSTOP)); /* with what it runs */
    for (const auto &[cWho, iProcess] :
         {std::pair{'c', iChild}, {'p', desk.iProgram}, {'s', desk.iServer}})
        if (cWho == GetParam().cKilled)
            (void)kill(iProcess, SIGKILL);
    ASSERT_TRUE(desk.go(GetParam().steps));
    EXPECT_EQ(GetParam().iStatus, desk.status());
    EXPECT_EQ(GetParam().iStatus == 0, medium.has("Pictures/sample-2999.pic"));
    EXPECT_TRUE(medium.nobodyLeft());
    if (GetParam().cKilled == 's')
        desk.pDisplay = nullptr; /* closing it would end this process as well */
}

INSTANTIATE_TEST_SUITE_P(Windows, Stops, testing::ValuesIn(s_aStops),
                         [](const auto &row) { return row.param.pName; });

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

/* ---- runs that do not begin ---- */

TEST_F(WindowFaults, ARunThatCannotStartLeavesThePage)
{
    writeFile(medium.tree + "Setup", "where the log's directory should be");
    ASSERT_TRUE(begin(s_caMissing, STAYS) && desk.go({{s_caBox, FIRST}}));
    EXPECT_NE(0u, desk.window("dsMainDlg"));
    EXPECT_FALSE(medium.has("plain"));
}

TEST_F(WindowFaults, ADescriptionThatCannotBeReadIsTold)
{
    medium.describe("Nonsense\n", "");
    ASSERT_TRUE(desk.start(medium, {{s_caBox, FIRST, "no-description"}}));
    EXPECT_EQ(1, desk.status());
}
