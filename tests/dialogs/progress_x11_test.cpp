#include <gtest/gtest.h>

#include "dialogs/Progress.h"

#include <algorithm>
#include <sys/prctl.h>
#include <sys/wait.h>

#include "dialogTest.h"
#include "dialogs/progressReader.h"

/* ---- what is drawn ---- */

struct Drawn {
    unsigned iWidth = 0;
    std::vector<unsigned long> pixels;

    explicit Drawn(Widget area) : iWidth(resourceOf<Dimension>(area, XmNwidth))
    {
        const unsigned iHeight = resourceOf<Dimension>(area, XmNheight);
        XImage *pImage =
            XGetImage(XtDisplay(area), XtWindow(area), 0, 0, iWidth, iHeight, AllPlanes, ZPixmap);
        for (unsigned i = 0; pImage && i < iWidth * iHeight; i++)
            pixels.push_back(XGetPixel(pImage, (int)(i % iWidth), (int)(i / iWidth)));
        if (pImage)
            XDestroyImage(pImage);
    }
    bool has(unsigned long colour) const
    {
        return std::find(pixels.begin(), pixels.end(), colour) != pixels.end();
    }
    /* How many columns are filled from the left: at the upper edge there is no text. */
    unsigned filled(unsigned long fill) const
    {
        const auto end = pixels.begin() + iWidth;
        return (unsigned)(std::find_if(pixels.begin(), end, [&](auto p) { return p != fill; }) -
                          pixels.begin());
    }
};

struct Progress : DialogTest {
    Widget m_dialog = nullptr, m_area = nullptr;

    void show()
    {
        m_dialog = managed(CreatembProgress(main()));
        m_area = OV_instFindWidget(m_dialog, "daProgress");
    }
    unsigned long fill() const { return resourceOf<Pixel>(m_area, XmNforeground); }
    std::string file() const { return label(m_dialog, "laProgressDestination"); }

    /* Covers the bar with a colour that it does not have, so that drawing is noticed. */
    void cover() const
    {
        GC gc = XCreateGC(XtDisplay(m_area), XtWindow(m_area), 0, nullptr);
        XSetForeground(XtDisplay(m_area), gc, 0x00ff00);
        XFillRectangle(XtDisplay(m_area), XtWindow(m_area), gc, 0, 0, 5000, 5000);
        XFreeGC(XtDisplay(m_area), gc);
    }
    bool isCovered() const { return Drawn(m_area).has(0x00ff00); }
};

TEST_F(Progress, BarIsFilledUpToThePercentage)
{
    show();
    for (const auto &[iGiven, iShown] : {std::pair(1, 1), {33, 33}, {99, 99}, {250, 100}, {0, 0}}) {
        cover();
        OV_instProgressUpdate(iGiven, nullptr);
        const Drawn drawn(m_area);
        EXPECT_EQ(drawn.iWidth * (unsigned)iShown / 100, drawn.filled(fill())) << iGiven;
        EXPECT_FALSE(isCovered()) << iGiven;
    }
    /* The colour of the labels fills an area of another background. */
    XtVaSetValues(m_area, XmNbackground, (Pixel)0x102030, nullptr);
    OV_instProgressUpdate(40, nullptr);
    Widget path = OV_instFindWidget(m_dialog, "laProgressDestination");
    const Drawn drawn(m_area);
    EXPECT_EQ(drawn.iWidth * 40 / 100, drawn.filled(resourceOf<Pixel>(path, XmNbackground)));
    EXPECT_EQ(0x102030u, drawn.pixels[drawn.iWidth - 1]);
}

TEST_F(Progress, DrawsWhenThePercentageChangesAndWhenExposed)
{
    show();
    OV_instProgressUpdate(0, nullptr);
    XtDestroyWidget(XtParent(m_dialog));
    settle();
    show();
    cover();
    OV_instProgressUpdate(0, "first/file");
    EXPECT_TRUE(isCovered()) << "0 is what was drawn last";
    EXPECT_EQ("first/file", file());
    XClearArea(XtDisplay(m_area), XtWindow(m_area), 0, 0, 0, 0, True);
    settle();
    EXPECT_FALSE(isCovered());
    EXPECT_TRUE(Drawn(m_area).has(fill())) << "the text for 0";
    OV_instProgressUpdate(20, "a");
    cover();
    OV_instProgressUpdate(20, "b");
    EXPECT_TRUE(isCovered());
    OV_instProgressUpdate(-1, nullptr);
    EXPECT_EQ(Drawn(m_area).iWidth * 20 / 100, Drawn(m_area).filled(fill()));
    EXPECT_EQ("b", file());
    XtVaSetValues(XtParent(m_dialog), XmNwidth, 900, nullptr);
    settle();
    EXPECT_EQ(Drawn(m_area).iWidth * 20 / 100, Drawn(m_area).filled(fill())) << "resized";
}

TEST_F(Progress, LongPathsAreShownByTheirEnd)
{
    const auto x = [](size_t lCount) { return std::string(lCount, 'x'); };
    const std::pair<std::string, std::string> aRows[] = {
        {x(50) + "%s of 100%", x(50) + "%s of 100%"}, /* 60 characters */
        {x(50) + "/%s of 100%", ".../%s of 100%"},
        {"12" + x(59), "..." + x(58)},
        {"ab/" + x(58), "..." + x(58)},     /* a slash too far to the left */
        {x(60) + "/", "..." + x(57) + "/"}, /* one with nothing behind it */
        {x(60) + "/a/b", ".../a/b"},
    };

    show();
    for (const auto &[path, shown] : aRows) {
        OV_instProgressUpdate(-1, path.c_str());
        EXPECT_EQ(shown, file()) << path;
    }
}

/* ---- what is read ---- */

/* A run that the test plays the child's records of. The child itself only waits to be stopped and
 * killed. What a run counts is never taken back, so each is in a process of its own. */
struct ProgressReader : Progress {
    pid_t m_child = -1;
    int m_write = -1;

    void start(uint64_t ulTotal)
    {
        int aEnds[2];
        load("NoDisplayLog\nPackage 'p' ''\nSuite 'S' p\n");
        ASSERT_EQ(0, pipe(aEnds));
        m_write = aEnds[1];
        m_child = fork();
        if (m_child == 0) {
            (void)prctl(PR_SET_PDEATHSIG, SIGKILL);
            (void)setpgid(0, 0);
            (void)close(aEnds[0]);
            (void)close(aEnds[1]);
            for (;;)
                pause();
        }
        ASSERT_GT(m_child, 0); /* a run that signals -1 would signal everybody */
        SetProgressBarTotalSize(ulTotal);
        snprintf(g_caLogName, sizeof g_caLogName, "%s", full("@/log").c_str());
        OV_instCreateProgressBar(main(), aEnds[0], m_child);
        const CorePart &core = main()->core;
        for (Cardinal i = 0; i < core.num_popups && !m_dialog; i++)
            m_dialog = XtNameToWidget(core.popup_list[i], "mbProgress");
    }
    void killChild() const
    {
        if (m_child > 0) /* -1 would be everybody */
            (void)kill(m_child, SIGKILL);
    }
    void feed(const std::string &bytes)
    {
        ASSERT_EQ((ssize_t)bytes.size(), write(m_write, bytes.data(), bytes.size()));
        runFor(s_application, 60);
    }
    /* Percentage, file and action as they are shown. */
    std::string state()
    {
        m_area = OV_instFindWidget(m_dialog, "daProgress");
        const Drawn drawn(m_area);
        return std::to_string((drawn.filled(fill()) * 100 + drawn.iWidth - 1) / drawn.iWidth) +
               "% " + file() + " " + label(m_dialog, "laProgressAction");
    }
    /* Feeds records at which the process ends; every question in between is told on standard error.
     */
    void finish(const std::string &records, const std::string &answers)
    {
        static std::string s_scratch;
        s_scratch = m_scratch.path;
        atexit([] { fs::remove_all(s_scratch); });
        Steps steps;
        for (const char cAnswer : answers)
            steps.push_back(Step(cAnswer == 'y' ? "y" : "n", [](Widget box) {
                fprintf(stderr, "<%s>", replaced(message(box), "\n", "|").c_str());
            }));
        (void)!write(m_write, records.data(), records.size());
        (void)whileUsed(steps, [] { runFor(s_application, 5000); });
        exit(77); /* still here */
    }
    void expectEnd(int iStatus, const std::string &told, const std::string &records,
                   const std::string &answers, bool bKill)
    {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        EXPECT_EXIT((start(100), bKill ? killChild() : void(), finish(records, answers)),
                    testing::ExitedWithCode(iStatus), told);
        GTEST_FLAG_SET(death_test_style, "fast");
    }
};

TEST_F(ProgressReader, RecordsMoveTheBar)
{
    inChild(
        [this] {
            start(200);
            EXPECT_FALSE(XtIsManaged(m_dialog));
            feed("# Start installation\n# Removing files\n");
            EXPECT_TRUE(XtIsManaged(m_dialog));
            EXPECT_EQ("0%  Removing files:", state());
            feed("+20 src/one dest/one\n");
            EXPECT_EQ("10% dest/one Removing files:", state());
            feed("+4");
            feed("0 %s");
            EXPECT_EQ("10% dest/one Removing files:", state());
            feed("\n+5\nWarning: no\n0 Can't create file x\n\n# Installing files");
            EXPECT_EQ("30% %s Removing files:", state());
            feed("\n# Removing files, not\n+1 mkdir made\n#Log:100%s of it\n");
            EXPECT_EQ("30% made Destination files:", state());
            EXPECT_EQ("100%s of it\n", got("@/log"));
            feed("+18446744073709551000 much\n");
            EXPECT_EQ("100% much Destination files:", state());
            feed("# Pass Installation completed\n");
            EXPECT_EQ(nullptr, shown("mbProgress"));
            feed("# Updating the registry\n");
            EXPECT_NE(nullptr, openBox("mbMessage"));
            feed("# Done updating the registry\n+3 more\n");
            EXPECT_EQ(nullptr, openBox("mbMessage"));
            killChild();
        },
        true);
}

TEST_F(ProgressReader, EndsOfRuns)
{
    const std::string asks = "Do you wish to continue\\?",
                      fails = "<Setup did not complete successfully\\|>$";

    expectEnd(1, "^<can't %s\\|" + asks + "><-1\\|" + asks + ">$", "-1 can't %s\n-1\n", "yn",
              false);
    expectEnd(1, "^" + fails, "+1 half", "y", true); /* held open */
    expectEnd(0, "^<Setup completed successfully\\|>$", "# Installation completed\n", "y", true);
    expectEnd(0, "^<x\\|" + asks + ">" + fails,
              "-1 x\n# Error during installation\n# Installation completed\n", "yy", true);
}
