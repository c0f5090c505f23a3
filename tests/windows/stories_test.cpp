#include <gtest/gtest.h>

#include "windows/desk.h"

static const char s_caBrowser[] = "dsChangeDestinationSelection";

/* Things by their number on the page. */
enum { YES = 0, NO = 1 };
enum { DESTINATION_CHANGE = 0, DESTINATION_OK = 1 };
enum { MAIN_SUITE = 0, MAIN_CUSTOM = 1, MAIN_OTHER = 2 };
enum { LIST_ALL = 0, LIST_CHANGE = 1, LIST_OK = -2, LIST_CANCEL = -1 };
enum { GALLERY = CHECK + 2, DEVELOPMENT = CHECK + 3 };
enum { MAINTAIN_CHANGE = 0, MAINTAIN_REMOVE = 1 };
enum { QUESTION_RESUME = 0, QUESTION_EXIT = 1 };

static const Steps s_toDestination = {{"dsWelcome", FIRST}, {"dsEULA", FIRST}};

struct Stories : testing::Test {
    SampleMedium medium;
    Desk desk;

    /* From the terminal: what the first run leaves is all that matters. */
    void installUnattended() { ASSERT_EQ(0, medium.install().iStatus); }

    bool startAtMainPage()
    {
        return desk.start(medium, s_toDestination) &&
               desk.go({{"dsChangeDestination", DESTINATION_OK}});
    }

    /* From the progress dialog on. */
    void finish(const char *pPicture = nullptr)
    {
        ASSERT_TRUE(desk.go({{"dsViewlog", LAST}, {s_caBox, FIRST, pPicture}}));
        EXPECT_EQ(0, desk.status());
        EXPECT_EQ(std::string::npos, desk.printed().find("Warning")) << desk.printed();
        EXPECT_TRUE(medium.nobodyLeft());
    }
};

TEST_F(Stories, ANewInstallationInANewDirectory)
{
    const std::string chosen = medium.top + "/opt/Orvane 3";

    ASSERT_TRUE(desk.start(medium, {{"dsWelcome", FIRST, "welcome"},
                                    {"dsEULA", FIRST, "agreement"},
                                    {"dsChangeDestination", DESTINATION_CHANGE, nullptr, STAYS}}));
    desk.choose(s_caBrowser, chosen);
    ASSERT_TRUE(desk.go(
        {{s_caBrowser, FIRST, "destination-browser", STAYS}, {s_caBox, NO, "destination-create"}}));
    EXPECT_FALSE(fs::exists(chosen));
    ASSERT_TRUE(desk.go({{s_caBrowser, FIRST, nullptr, STAYS}, {s_caBox, YES}}));
    ASSERT_TRUE(desk.isGone(s_caBrowser));
    EXPECT_TRUE(fs::is_directory(chosen));
    desk.picture("dsChangeDestination", "destination");
    desk.keys("dsChangeDestination", "Return"); /* which is OK now */
    ASSERT_TRUE(desk.go({{"dsMainDlg", MAIN_OTHER, "main", STAYS}}));

    ASSERT_TRUE(desk.showsButtons("dsMainDlg", 4));
    ASSERT_TRUE(desk.go({{"dsMainDlg", LAST, "page", STAYS}}));
    ASSERT_TRUE(desk.showsButtons("dsMainDlg", 5));
    ASSERT_TRUE(desk.go({{"dsMainDlg", MAIN_CUSTOM},
                         {"dsCustomDlg", LIST_CANCEL},
                         {"dsMainDlg", MAIN_CUSTOM},
                         {"dsCustomDlg", LIST_ALL, "custom", STAYS}}));
    ASSERT_TRUE(desk.showsMarks("dsCustomDlg", "xxxxx"));
    /* A group's own mark leaves its members alone: they are not to come. */
    ASSERT_TRUE(desk.go({{"dsCustomDlg", GALLERY},
                         {"dsCustomDlg", DEVELOPMENT},
                         {"dsCustomDlg", LIST_CHANGE, nullptr, STAYS}}));
    ASSERT_TRUE(desk.showsMarks("dsCustomDlg", "xx"));
    ASSERT_TRUE(desk.go(
        {{"dsCustomDlg", CHECK + 1, "custom-nested"}, {"dsCustomDlg", LIST_OK, nullptr, STAYS}}));
    ASSERT_TRUE(desk.showsMarks("dsCustomDlg", "xx--x"));
    ASSERT_TRUE(desk.go({{"dsCustomDlg", LIST_OK},
                         {"dsViewlog", FIRST, "log-dialog", STAYS},
                         {"dsLogViewer", FIRST, "log-window"}}));
    finish("completed");

    medium.tree = chosen + "/kivo/";
    EXPECT_TRUE(medium.has("Application/bin/kivo"));
    EXPECT_TRUE(medium.has("Documents/manual/index.html"));
    EXPECT_FALSE(medium.has("Gallery"));
    EXPECT_FALSE(fs::exists(medium.dest));
    EXPECT_NE(std::string::npos, medium.log().find("Installation Completed\n")) << medium.log();
    EXPECT_NE(std::string::npos, medium.history().find("headers"));
    EXPECT_EQ(std::string::npos, medium.history().find("plugins"));
}

TEST_F(Stories, AnInstallationIsChanged)
{
    must("sed -i -e '/\"Everything.\"/s/ 64//' -e '/\"\" 1 66 67 68/s/ 67 68//' " + medium.place +
         "/cdinst.dat"); /* no gallery, no plug-ins, nothing that is shared */
    installUnattended();
    ASSERT_TRUE(medium.has("Developer/include"));

    ASSERT_TRUE(desk.start(medium, {{"dsMaintenance", MAINTAIN_CHANGE, "maintenance"}}));
    ASSERT_TRUE(desk.showsMarks("dsCustomDlg", "xx-x-")); /* half of the group is there */
    ASSERT_TRUE(desk.go({{"dsCustomDlg", GALLERY}}));
    const Box group = desk.checks("dsCustomDlg").at(3);
    desk.click(group.iX + 60, group.iY + 5); /* its name */
    ASSERT_TRUE(desk.go({{"dsCustomDlg", LIST_CHANGE, nullptr, STAYS}}));
    ASSERT_TRUE(desk.showsMarks("dsCustomDlg", "x-"));
    ASSERT_TRUE(desk.go({{"dsCustomDlg", CHECK}, {"dsCustomDlg", LIST_OK, nullptr, STAYS}}));
    ASSERT_TRUE(desk.showsMarks("dsCustomDlg", "xxxx-"));
    ASSERT_TRUE(desk.go({{"dsCustomDlg", LIST_OK, "maintenance-custom"}}));
    finish();
    EXPECT_TRUE(medium.has("Gallery"));
    EXPECT_FALSE(medium.has("Developer"));
    EXPECT_TRUE(medium.has("Application/share/definitions")); /* the application needs it, too */
    EXPECT_EQ(std::string::npos, medium.history().find("headers")) << medium.history();

    ASSERT_TRUE(desk.start(medium, {{"dsMaintenance", MAINTAIN_CHANGE}}));
    EXPECT_TRUE(desk.showsMarks("dsCustomDlg", "xxx--"));
}

/* As a run leaves it that was killed while it removed the manual and installed what follows. */
TEST_F(Stories, AnUnfinishedRunIsCompleted)
{
    installUnattended();
    std::string runFile = replaced(medium.history(), "HistoryFileVersion 2", "RunFileVersion 1");
    for (const char *pName : {"manual", "gallery", "headers", "plugins"})
        runFile = replaced(runFile, "Package \"" + std::string(pName) + "\" Installed",
                           "Package \"" + std::string(pName) + "\" " +
                               (strcmp(pName, "manual") == 0 ? "Removing" : "Installing"));
    const auto whole = medium.listing();
    must("cd " + medium.tree + " && rm -r Gallery Developer/include");
    writeFile(medium.tree + "SetupFiles/.kivo.run", runFile);

    ASSERT_TRUE(
        desk.start(medium, {{s_caBox, FIRST, "unfinished"}, {"dsMaintenance", MAINTAIN_CHANGE}}));
    ASSERT_TRUE(desk.showsMarks("dsCustomDlg", "x-xxx"));
    ASSERT_TRUE(desk.go({{"dsCustomDlg", LIST_OK, "unfinished-list"}}));
    finish();
    EXPECT_FALSE(medium.has("Documents/manual/index.html"));
    EXPECT_FALSE(medium.has("SetupFiles/.kivo.run"));
    EXPECT_EQ(std::string::npos, medium.history().find("manual"));
    ASSERT_EQ(0, medium.install().iStatus);
    for (const std::string &path : whole)
        EXPECT_EQ(path.find("Documents/") == path.npos, fs::exists(medium.dest + "/" + path))
            << path;
}

TEST_F(Stories, ASuiteIsInstalledAndAllIsRemoved)
{
    /* The question whether to leave stays open meanwhile. */
    ASSERT_TRUE(startAtMainPage() && desk.go({{"dsMainDlg", LAST, nullptr, STAYS}}));
    desk.move("dsExitSetup", 0, 0);
    ASSERT_TRUE(desk.go({{"dsMainDlg", MAIN_SUITE}}) && desk.window("dsViewlog"));
    EXPECT_FALSE(desk.isShown("dsProgress"));
    EXPECT_FALSE(desk.isShown("dsExitSetup"));
    finish();
    EXPECT_TRUE(medium.has("Application/bin/kivo"));
    EXPECT_NE(std::string::npos, medium.history().find("core")) << medium.history();
    const auto before = medium.listing();

    ASSERT_TRUE(desk.start(medium, {{"dsMaintenance", MAINTAIN_REMOVE, nullptr, STAYS}}) &&
                desk.window(s_caBox));
    desk.picture(s_caBox, "remove-all");
    desk.keys(s_caBox, "Return"); /* which is no "Yes" */
    ASSERT_TRUE(desk.isGone(s_caBox));
    EXPECT_EQ(before, medium.listing());
    ASSERT_TRUE(desk.go({{"dsMaintenance", MAINTAIN_REMOVE, nullptr, STAYS}, {s_caBox, YES}}));
    EXPECT_TRUE(desk.isGone("dsMaintenance"));
    finish();
    EXPECT_EQ((std::vector<std::string>{"kivo/", "kivo/Setup/", "kivo/Setup/setup.log",
                                        "kivo/SetupFiles/", "kivo/setup"}),
              medium.listing()); /* the removal's log, the history's place, and setup itself */
}

/* ---- leaving ---- */

/* The page goes on being live below the question, which is not asked twice. */
static void resumeAndExit(Desk &desk, const std::string &page)
{
    SCOPED_TRACE(page);
    const Step exit = {page.c_str(), LAST, nullptr, STAYS};
    const size_t iButtons = desk.buttons(page).size();

    ASSERT_TRUE(desk.go({exit}));
    desk.move("dsExitSetup", 0, 0);
    ASSERT_TRUE(desk.go({exit}));
    usleep(100000); /* for a second one to come */
    ASSERT_TRUE(desk.go({{"dsExitSetup", QUESTION_RESUME, "exit-question"}}));
    EXPECT_FALSE(desk.isShown("dsExitSetup"));
    EXPECT_EQ(iButtons, desk.buttons(page).size());
    ASSERT_TRUE(desk.go({exit,
                         {"dsExitSetup", QUESTION_EXIT, nullptr, STAYS},
                         {"dsExitSetupFinish", FIRST, "exit-notice"}}));
    EXPECT_EQ(10, desk.status());
}

TEST_F(Stories, EveryPageCanBeLeft)
{
    ASSERT_TRUE(desk.start(medium));
    resumeAndExit(desk, "dsWelcome");
    ASSERT_TRUE(desk.start(medium, s_toDestination));
    resumeAndExit(desk, "dsChangeDestination");
    ASSERT_TRUE(startAtMainPage());
    resumeAndExit(desk, "dsMainDlg");
    ASSERT_TRUE(desk.start(medium, {{"dsWelcome", FIRST}, {"dsEULA", LAST}}));
    EXPECT_EQ(0, desk.status()) << "declined";
    EXPECT_FALSE(fs::exists(medium.dest));

    installUnattended();
    const auto before = medium.listing();
    ASSERT_TRUE(desk.start(medium));
    resumeAndExit(desk, "dsMaintenance");
    EXPECT_EQ(before, medium.listing());
    EXPECT_TRUE(medium.nobodyLeft());
}

TEST_F(Stories, ADestinationThatHoldsAnInstallation)
{
    const std::string occupied = medium.dest;

    installUnattended();
    medium.dest = medium.top + "/elsewhere";
    ASSERT_TRUE(desk.start(medium, s_toDestination) && desk.window("dsChangeDestination"));
    const Box change = desk.buttons("dsChangeDestination").at(DESTINATION_CHANGE);
    desk.click(change.iX - 100, change.iY + 10); /* the field beside it */
    desk.type("dsChangeDestination", medium.dest + "/typed");
    desk.keys("dsChangeDestination", "Return");
    ASSERT_TRUE(desk.go(
        {{s_caBox, NO}, {"dsChangeDestination", DESTINATION_CHANGE, "destination-typed", STAYS}}));
    desk.choose(s_caBrowser, occupied);
    ASSERT_TRUE(desk.go({{s_caBrowser, FIRST, nullptr, STAYS},
                         {s_caBox, NO, "previous-installation"},
                         {s_caBrowser, FIRST, nullptr, STAYS},
                         {s_caBox, YES},
                         {"dsMaintenance", MAINTAIN_CHANGE}}));
    EXPECT_TRUE(desk.showsMarks("dsCustomDlg", "xxxxx"));
    EXPECT_FALSE(desk.isShown(s_caBrowser));
    EXPECT_FALSE(desk.isShown("dsChangeDestination"));
}

/* In pixels of the browser, which has a fixed size: the lists' first lines. */
TEST_F(Stories, TheBrowsersSelectionFollowsWhatIsListed)
{
    const auto clickTwice = [this](int iX, int iY) {
        const Box browser = desk.place(s_caBrowser);
        desk.click(browser.iX + iX, browser.iY + iY);
        desk.click(browser.iX + iX, browser.iY + iY);
    };

    fs::create_directories(medium.dest + "/empty");
    ASSERT_TRUE(desk.start(medium, s_toDestination) &&
                desk.go({{"dsChangeDestination", DESTINATION_CHANGE, nullptr, STAYS}}) &&
                desk.window(s_caBrowser));
    clickTwice(60, 207);  /* the folder, */
    clickTwice(300, 120); /* which has none in it */
    ASSERT_TRUE(desk.go({{s_caBrowser, FIRST}}));
    ASSERT_TRUE(desk.go({{"dsChangeDestination", DESTINATION_CHANGE, nullptr, STAYS}}) &&
                desk.window(s_caBrowser));
    clickTwice(60, 188); /* ".." */
    ASSERT_TRUE(desk.go({{s_caBrowser, FIRST},
                         {"dsChangeDestination", DESTINATION_OK},
                         {"dsMainDlg", MAIN_SUITE}}));
    finish();
    EXPECT_FALSE(medium.has("../empty/kivo"));
    EXPECT_TRUE(medium.has("Application/bin/kivo"));
}

/* ---- the keyboard, and a small screen ---- */

TEST(SmallScreen, AWholeInstallationByTheKeyboardAlone)
{
    static const struct {
        const char *pShell;
        const char *pPicture;
        const char *pKeys;
        After after;
    } s_aRows[] = {
        {"dsWelcome", "small-welcome", "Return", GOES},
        {"dsEULA", "small-agreement", "Next Return", GOES},
        {"dsChangeDestination", "small-destination", "Return", GOES},
        {"dsMainDlg", "small-main", "Tab space", GOES},
        {"dsCustomDlg", "small-custom", "Escape", GOES},
        {"dsMainDlg", "small-main", "Tab space", GOES},
        {"dsCustomDlg", "small-custom", "Down Down space Return", GOES},
        {"dsViewlog", "small-log-dialog", "Tab space", STAYS},
        {"dsLogViewer", "small-log-window", "Return", GOES},
        {"dsViewlog", "small-log-dialog", "Escape", GOES},
        {s_caBox, "small-completed", "Return", GOES},
    };
    SampleMedium medium;
    Desk desk("800x600x24");

    ASSERT_TRUE(desk.start(medium));
    for (const auto &row : s_aRows) {
        SCOPED_TRACE(row.pShell);
        const Box place = desk.place(row.pShell);
        EXPECT_TRUE(place.iX >= 0 && place.iX + place.iWidth <= 800) << desk.printed();
        EXPECT_TRUE(place.iY >= 0 && place.iY + place.iHeight <= 600) << place.iHeight;
        desk.picture(row.pShell, row.pPicture);
        desk.keys(row.pShell, row.pKeys);
        ASSERT_TRUE(row.after == STAYS || desk.isGone(row.pShell));
    }
    EXPECT_EQ(0, desk.status());
    EXPECT_TRUE(medium.has("Application/bin/kivo"));
    EXPECT_FALSE(medium.has("Gallery"));
}
