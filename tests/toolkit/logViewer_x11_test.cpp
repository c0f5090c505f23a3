#include <gtest/gtest.h>

#include "dialogs/Viewlog.h"
#include "ut/toolkit/logViewer.h"

#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>

#include "dialogs/dialogTest.h"
#include "ut/text.h"

struct LogViewer : DialogTest {

    /* Opens the log window, looks at it and presses Done; what was printed. */
    std::string view(const std::string &log, const std::function<void(Widget box)> &look)
    {
        snprintf(g_caLogName, sizeof g_caLogName, "%s", full(log).c_str());
        return printed([&] {
            (void)whileUsed({{"mbLogViewer:OK", look}}, [] { ViewLogfile(main()); });
        });
    }
};

TEST_F(LogViewer, ShowsWhateverALogHolds)
{
    static const std::string s_longLine(70000, 'x');
    static const struct {
        const char *pLocale; /* null for the one of the test program */
        std::string text, expected;
    } s_aRows[] = {
        {nullptr, "", ""},
        {nullptr, "100%s\n:::t\"a\"\nno end", "100%s\n:::t\"a\"\nno end"},
        {nullptr, s_longLine + "\nlast\n", s_longLine + "\nlast\n"},
        {nullptr, std::string("a\0b\n\xff\xfe\n", 7) + "c\n", "a?b\n??\nc\n"},
        {"C.UTF-8", "caf\xc3\xa9 \xe2\x82\xac \xc3(\n\xe2\x82", "caf\xc3\xa9 \xe2\x82\xac ?(\n??"},
    };
    const std::string before = setlocale(LC_CTYPE, nullptr), place = std::string(90, 'd') + "é";
    const std::string log = "@/" + place + "/" + place + "/setup.log";
    std::string text;
    const auto look = [&](Widget box) {
        Widget shown = OV_instFindWidget(box, "txLogViewer");
        text = textIn(shown);
        EXPECT_FALSE(resourceOf<Boolean>(shown, XmNeditable));
        EXPECT_EQ(600, shown->core.width);
        EXPECT_EQ(600, shown->core.height);
        EXPECT_LE(XtParent(box)->core.width, 660);
        const std::string path = OV_instDisplayable(g_caLogName);
        EXPECT_EQ(path, replaced(message(box), "\n", ""));
        EXPECT_EQ(path, title(box));
        EXPECT_FALSE(isManaged(box, "Help") || isManaged(box, "Cancel"));
    };

    for (const auto &row : s_aRows) {
        (void)setlocale(LC_CTYPE, row.pLocale ? row.pLocale : before.c_str());
        put(log, row.text);
        EXPECT_EQ("", view(log, look));
        EXPECT_EQ(row.expected, text);
    }
    (void)setlocale(LC_CTYPE, before.c_str());
    EXPECT_EQ(full("Unable to open @/none.log\n"), view("@/none.log", look));
    EXPECT_EQ("", text);
}

TEST_F(LogViewer, StandAloneViewerFollowsItsFile)
{
    const std::string path = full("@/app.log");
    Widget top = main(); /* realized, and as small as can be */
    const auto check = [&](const std::string &content, time_t when) {
        const struct timespec times[] = {{when, 0}, {when, 0}};
        put("@/app.log", content);
        (void)utimensat(AT_FDCWD, path.c_str(), times, 0);
        OV_instCheckLogfile((void *)path.c_str(), &g_xTimer);
        return textIn(OV_instFindWidget(XtNameToWidget(top, "form"), "text"));
    };
    ViewFile(top, path.c_str());
    EXPECT_EQ("one\n", check("one\n", 1000));
    EXPECT_EQ("one\none\ntwo\n", check("one\ntwo\n", 2000)); /* from the start once more */
    EXPECT_EQ("one\none\ntwo\n", check("one\n222\n", 3000)); /* of the same size */
    EXPECT_EQ("new\n", check("new\n", 4000));
    EXPECT_NEAR(600, OV_instFindWidget(XtNameToWidget(top, "form"), "text")->core.width, 20);
    XtDestroyWidget(top);
}

/* ---- the browser ---- */

/* A browser that writes down how it was started, and stays for a while. */
struct Browser : LogViewer {
    void prepare() override
    {
        put("@/bin/browser", full("#!/bin/sh\n{ printf '%s|' $# \"$1\"; ls -l /proc/$$/fd; "
                                  "grep -E 'SigIgn|SigBlk' /proc/self/status; } >@/half\nmv @/half "
                                  "@/opened\nexec sleep 3\n"));
        fs::permissions(full("@/bin/browser"), fs::perms::owner_all);
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
    const std::string question =
        "The HTML Browser (/usr/bin/firefox) was not found.\nA browser is required to open help "
        "files.\nSelect Find to locate the browser yourself.|";
    const char *const pFind = "fsbHtmlBrowser";
    const auto named = [](Widget box) { EXPECT_STREQ("Find HTML Browser", XtName(XtParent(box))); };
    const auto help = [] { OV_instHtmlHelpCB(main(), nullptr, nullptr); };

    /* Cancel tries to start what is not there, and fails silently. */
    EXPECT_EQ(question, whileUsed({"n"}, help, pFind));

    /* A search that is given up starts nothing, and the next one begins anew. */
    EXPECT_EQ(question, whileUsed({"y", {"fsbHtmlBrowser:x", named}}, help, pFind));

    /* What does not exist is refused, and the box stays. */
    int aEnds[2];
    ASSERT_EQ(0, pipe(aEnds)); /* a descriptor that would be inherited */
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR1);
    sigprocmask(SIG_BLOCK, &blocked, nullptr);
    signal(SIGTERM, SIG_IGN);
    OV_instSetHelpDirectory("/medium//Setup/Help/");
    EXPECT_EQ(question + "The file '@/bin/100%s' does not exist|",
              whileUsed(
                  {"y", ">@/bin/100%s", "y", ">@/bin/browser"},
                  [] { OV_instHtmlHelpCB(main(), "index.html", "https://x.example/"); }, pFind));
    signal(SIGTERM, SIG_DFL);
    sigprocmask(SIG_UNBLOCK, &blocked, nullptr);
    close(aEnds[0]);
    close(aEnds[1]);
    const std::string report = opened();
    EXPECT_EQ(0U, report.find("1|/medium/Setup/Help/index.html|")) << report;
    for (const char *pHas :
         {" 2 -> /dev/null\n", "SigBlk:\t0000000000000000", "SigIgn:\t0000000000000000"})
        EXPECT_NE(std::string::npos, report.find(pHas)) << pHas << report;
    for (const char *pHasNot : {"pipe:", "socket:"})
        EXPECT_EQ(std::string::npos, report.find(pHasNot)) << pHasNot << report;
    EXPECT_EQ(-1, waitpid(-1, nullptr, WNOHANG)); /* no child of ours, dead or alive */

    OV_instHtmlHelpCB(main(), nullptr, "https://x.example/a?b&c");
    EXPECT_EQ(0U, opened().find("1|https://x.example/a?b&c|"));

    /* The log's window offers help once the medium has any. */
    put("@/setup.log", "");
    (void)view("@/setup.log", [](Widget box) { EXPECT_TRUE(press(box, "Help")); });
    EXPECT_EQ(0U, opened().find("1|https://www."));
}
