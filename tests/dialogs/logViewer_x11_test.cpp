#include <gtest/gtest.h>

#include "dialogs/Viewlog.h"
#include "ut/HtmlHelp.h"
#include "ut/logViewer.h"

#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>

#include "dialogTest.h"

struct LogViewer : DialogTest {
    void SetUp() override
    {
        DialogTest::SetUp();
        if (IsSkipped())
            return;
        OV_instSetHelpDirectory(nullptr);
    }
    void TearDown() override
    {
        OV_instSetHelpDirectory(nullptr);
        DialogTest::TearDown();
    }
    static Widget shell() { return OV_instGetMainTopLevelShell(); }
    void setLog(const std::string &path) { strcpy(g_caLogName, full(path).c_str()); }

    /* Opens the log window, looks at it and presses Done. */
    std::string view(std::function<void(Widget box)> look)
    {
        Later done(shell(), 100, [&] {
            Widget box = openBox("mbLogViewer");
            ASSERT_NE(nullptr, box);
            look(box);
            EXPECT_TRUE(press(box, "OK"));
        });
        return printed([] { ViewLogfile(shell()); });
    }
    /* What is printed and shown of the log. */
    std::string viewed()
    {
        std::string text = "not shown";
        return view([&](Widget box) { text = textIn(OV_instFindWidget(box, "txLogViewer")); }) +
               text;
    }
};

TEST_F(LogViewer, DialogOpensTheLogAndWaitsForDone)
{
    put("@/setup.log", "Starting Installation\n");
    setLog("@/setup.log");
    std::string text;
    Later look(shell(), 150, [&] {
        Widget box = openBox("mbViewlog");
        ASSERT_NE(nullptr, box);
        Later inner(shell(), 150, [&] {
            text = textIn(OV_instFindWidget(openBox("mbLogViewer"), "txLogViewer"));
            closeFrame(XtParent(openBox("mbLogViewer")));
        });
        EXPECT_TRUE(press(box, "pushButton"));
        runFor(shell(), 300);
        EXPECT_EQ(nullptr, openBox("mbLogViewer"));
        EXPECT_TRUE(press(box, "OK"));
    });
    OV_instPopupViewlog(shell());
    EXPECT_EQ("Starting Installation\n", text);
}

TEST_F(LogViewer, WaitEndsWhenTheDialogGoes)
{
    Later go(shell(), 150, [] { XtDestroyWidget(XtParent(openBox("mbViewlog"))); });
    OV_instPopupViewlog(shell());
    OV_instPopupViewlog(nullptr);
    ViewLogfile(nullptr);
}

TEST_F(LogViewer, ShowsWhateverALogHolds)
{
    const std::string longLine(70000, 'x');
    const struct {
        std::string text, expected;
    } rows[] = {
        {"", ""},
        {"100%s\n:::t\"a\"\nno end", "100%s\n:::t\"a\"\nno end"},
        {longLine + "\nlast\n", longLine + "\nlast\n"},
        {std::string("a\0b\n\xff\xfe\n", 7) + "c\n", "a?b\n??\nc\n"},
    };
    for (const auto &row : rows) {
        put("@/setup.log", row.text);
        setLog("@/setup.log");
        EXPECT_EQ(row.expected, viewed());
    }
    setLog("@/none.log");
    EXPECT_EQ(full("Unable to open @/none.log\n"), viewed());
}

TEST_F(LogViewer, CharactersOfTheLocaleAreKept)
{
    const std::string before = setlocale(LC_CTYPE, nullptr);
    if (!setlocale(LC_CTYPE, "C.UTF-8"))
        GTEST_SKIP() << "no such locale";
    put("@/setup.log", "caf\xc3\xa9 \xe2\x82\xac \xc3(\n\xe2\x82");
    setLog("@/setup.log");
    EXPECT_EQ("caf\xc3\xa9 \xe2\x82\xac ?(\n??", viewed());
    setlocale(LC_CTYPE, before.c_str());
}

TEST_F(LogViewer, WindowIsReadOnlyAndNamesTheLog)
{
    const std::string directory = "@/" + std::string(90, 'd') + "/" + std::string(90, 'e');
    put(directory + "/setup.log", "text\n");
    setLog(directory + "/setup.log");
    EXPECT_EQ("", view([&](Widget box) {
                  Widget text = OV_instFindWidget(box, "txLogViewer");
                  EXPECT_FALSE(resourceOf<Boolean>(text, XmNeditable));
                  EXPECT_NEAR(600, text->core.width, 20); /* it keeps to whole characters */
                  EXPECT_NEAR(600, text->core.height, 20);
                  EXPECT_LE(XtParent(box)->core.width, 660);
                  EXPECT_EQ(g_caLogName, replaced(message(box), "\n", ""));
                  EXPECT_FALSE(isManaged(box, "Help"));
                  EXPECT_FALSE(isManaged(box, "Cancel"));
              }));
}

/* ---- the stand-alone viewer ---- */

TEST_F(LogViewer, StandAloneViewerFollowsItsFile)
{
    static constexpr const char s_caMissing[] = "Can't stat @/app.log\n";
    const std::string path = full("@/app.log");
    Widget top = XtVaCreatePopupShell("viewer", topLevelShellWidgetClass, shell(), nullptr);
    const auto check = [&](time_t when) {
        struct timespec times[] = {{when, 0}, {when, 0}};
        (void)utimensat(AT_FDCWD, path.c_str(), times, 0);
        return shortened(printed([&] { OV_instCheckLogfile((void *)path.c_str(), &g_xTimer); }));
    };
    put("@/app.log", "one\n");
    ViewFile(top, path.c_str());
    Widget text = OV_instFindWidget(XtNameToWidget(top, "form"), "text");
    ASSERT_NE(nullptr, text);
    EXPECT_FALSE(resourceOf<Boolean>(text, XmNeditable));
    runFor(top, 1000);
    EXPECT_EQ("", textIn(text));
    runFor(top, 700);
    EXPECT_EQ("one\n", textIn(text)); /* by its timer */

    put("@/app.log", "one\ntwo\n");
    XtIntervalId other = g_xTimer + 1;
    OV_instCheckLogfile((void *)path.c_str(), &other);
    EXPECT_EQ("one\n", textIn(text));
    EXPECT_EQ("", check(1000));
    EXPECT_EQ("one\none\ntwo\n", textIn(text)); /* from the start once more */
    put("@/app.log", "one\n222\n");
    (void)check(2000); /* of the same size */
    put("@/app.log", "longer than that\n");
    (void)check(1000); /* of the same time */
    EXPECT_EQ("one\none\ntwo\n", textIn(text));
    put("@/app.log", "new\n");
    (void)check(3000);
    EXPECT_EQ("new\n", textIn(text));
    fs::remove(path);
    EXPECT_EQ(s_caMissing, check(4000));
    fs::create_directory(path);
    EXPECT_EQ("", check(5000)); /* a directory can be opened, and holds no text */
    XtDestroyWidget(top);
    settle();
    EXPECT_EQ("", check(6000));
}

TEST_F(LogViewer, QuitEndsTheViewersProcess)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe"); /* with a connection of its own */
    EXPECT_EXIT(
        {
            Widget top = XtVaCreatePopupShell("viewer", topLevelShellWidgetClass, shell(), nullptr);
            ViewFile(top, "/nowhere");
            menuCB(top, (XtPointer)2, nullptr); /* no such entry */
            Widget quit = XtNameToWidget(top, "*quit");
            XtCallCallbacks(quit, XmNactivateCallback, nullptr);
            _exit(7);
        },
        testing::ExitedWithCode(0), "");
    GTEST_FLAG_SET(death_test_style, "fast");
}

/* ---- the browser ---- */

/* A browser that writes down how it was started, and stays for a while. */
struct Browser : LogViewer {
    void SetUp() override
    {
        LogViewer::SetUp();
        put("@/bin/browser",
            full("#!/bin/sh\n{ printf '%s|' $# \"$1\"; ls -l /proc/$$/fd; "
                 "grep -E 'SigIgn|SigBlk' /proc/self/status; cut -d' ' -f4 /proc/$$/stat; "
                 "} >@/half\nmv @/half @/opened\nexec sleep 3\n"));
        fs::permissions(full("@/bin/browser"), fs::perms::owner_all);
    }
    /* Answers the box about a browser that is not there by searching for ours. */
    void find(
        const std::string &chosen, std::function<void()> then = [] {})
    {
        Widget box = openBox("fsbHtmlBrowser");
        ASSERT_NE(nullptr, box);
        EXPECT_STREQ("Find HTML Browser", XtName(XtParent(box)));
        XmTextFieldSetString(XtNameToWidget(box, "Text"), (char *)full(chosen).c_str());
        then();
        EXPECT_TRUE(press(box, "OK"));
    }
    std::string opened()
    {
        for (int i = 0; i < 100 && !exists("@/opened"); i++)
            usleep(20000);
        std::string text = got("@/opened");
        fs::remove(full("@/opened"));
        return text;
    }
};

/* In this order: the browser that was chosen stays chosen. */
TEST_F(Browser, IsSearchedForAndStartedOnItsOwn)
{
    if (fs::exists("/usr/bin/firefox"))
        GTEST_SKIP() << "there is a browser";
    std::string question, refusal;

    /* Cancel tries to start what is not there, and fails silently. */
    Later cancel(shell(), 150, [&] {
        question = message(openBox());
        EXPECT_TRUE(press(openBox(), "Cancel"));
    });
    OV_instHtmlHelpCB(shell(), nullptr, nullptr);
    EXPECT_EQ("The HTML Browser (/usr/bin/firefox) was not found.\nA browser is required to open "
              "help files.\nSelect Find to locate the browser yourself.",
              question);
    EXPECT_EQ(nullptr, openBox());

    /* A search that is given up starts nothing, and the next one begins anew. */
    Later ask(shell(), 150, [] { EXPECT_TRUE(press(openBox(), "OK")); });
    Later give(shell(), 600, [] { closeFrame(XtParent(openBox("fsbHtmlBrowser"))); });
    OV_instHtmlHelpCB(shell(), nullptr, nullptr);
    EXPECT_EQ(nullptr, openBox("fsbHtmlBrowser"));

    /* What does not exist is refused, and the box stays. */
    Later again(shell(), 150, [] { EXPECT_TRUE(press(openBox(), "OK")); });
    Later wrong(shell(), 600, [&] { find("@/bin/100%s"); });
    Later refused(shell(), 900, [&] {
        refusal = message(openBox());
        EXPECT_TRUE(press(openBox(), "OK"));
        find("@/bin/browser");
    });
    int aEnds[2];
    ASSERT_EQ(0, pipe(aEnds)); /* a descriptor that would be inherited */
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR1);
    sigprocmask(SIG_BLOCK, &blocked, nullptr);
    signal(SIGTERM, SIG_IGN);
    OV_instSetHelpDirectory("/medium//Setup/Help/");
    OV_instHtmlHelpCB(shell(), "index.html", "https://x.example/");
    signal(SIGTERM, SIG_DFL);
    sigprocmask(SIG_UNBLOCK, &blocked, nullptr);
    close(aEnds[0]);
    close(aEnds[1]);
    EXPECT_EQ(full("The file '@/bin/100%s' does not exist"), refusal);
    const std::string report = opened();
    EXPECT_EQ(0U, report.find("1|/medium/Setup/Help/index.html|")) << report;
    EXPECT_NE(std::string::npos, report.find(" 2 -> /dev/null\n")) << report;
    EXPECT_EQ(std::string::npos, report.find("pipe:")) << report;
    EXPECT_EQ(std::string::npos, report.find("socket:")) << report;
    EXPECT_NE(std::string::npos, report.find("SigBlk:\t0000000000000000")) << report;
    EXPECT_NE(std::string::npos, report.find("SigIgn:\t0000000000000000")) << report;
    EXPECT_EQ(std::string::npos, report.find("\n" + std::to_string(getpid()) + "\n")) << report;
    EXPECT_EQ(-1, waitpid(-1, nullptr, WNOHANG)); /* no child of ours, dead or alive */

    OV_instHtmlHelpCB(shell(), nullptr, "https://x.example/a?b&c");
    EXPECT_EQ(0U, opened().find("1|https://x.example/a?b&c|"));

    /* The log's window offers help once the medium has any. */
    (void)view([](Widget box) { EXPECT_TRUE(press(box, "Help")); });
    EXPECT_EQ(0U, opened().find("1|https://www."));
}
