#include <gtest/gtest.h>

#include "windows/desk.h"

static const char s_caBox[] = "Orvane Message";
static const char s_caBrowser[] = "dsChangeDestinationSelection";

/* Buttons by their number on the page, row by row. */
enum { FIRST = 0, LAST = -1 };
enum { YES = 0, NO = 1 };
enum { DESTINATION_CHANGE = 0, DESTINATION_OK = 1 };
enum { MAIN_CUSTOM = 1 };
enum { LIST_CHANGE = 1, LIST_OK = -2 };
enum { MAINTAIN_CHANGE = 0, MAINTAIN_REMOVE = 1 };
enum { QUESTION_RESUME = 0, QUESTION_EXIT = 1 };
enum { PROMPT_CONTINUE = 0, PROMPT_BROWSE = 1 };

/* Replaces what the browser proposes: its field is the one above the buttons. */
static void choose(Desk &desk, const std::string &browser, const std::string &path)
{
    const Box ok = desk.buttons(browser).at(0);

    desk.click(ok.iX + ok.iWidth / 2, ok.iY - 50);
    desk.keys(browser, "ctrl+slash");
    desk.type(browser, path);
}

static bool nobodyLeft(const Medium &medium)
{
    return soon([&] { return processesNaming(medium.scratch / "").empty(); }, 5);
}

struct Stories : testing::Test {
    SampleMedium medium;
    Desk desk;

    std::string history() { return medium.installed("SetupFiles/.kivo.his"); }

    /* From the terminal: what the first run leaves is all that matters. */
    void installUnattended() { ASSERT_EQ(0, medium.install().iStatus); }

    bool startAtDestination()
    {
        desk.start(medium);
        return desk.leave("dsWelcome", FIRST) && desk.leave("dsEULA", FIRST) &&
               desk.window("dsChangeDestination") != 0;
    }

    /* From the progress dialog on. */
    void finish()
    {
        ASSERT_TRUE(desk.leave("dsViewlog", LAST)) << desk.printed();
        ASSERT_TRUE(desk.leave(s_caBox, FIRST));
        EXPECT_EQ(0, desk.status());
        EXPECT_EQ(std::string::npos, desk.printed().find("Warning")) << desk.printed();
        EXPECT_TRUE(nobodyLeft(medium));
    }
};

TEST_F(Stories, ANewInstallationInANewDirectory)
{
    const std::string chosen = medium.scratch / "opt/of its own";

    desk.start(medium);
    desk.picture("dsWelcome", "welcome");
    ASSERT_TRUE(desk.leave("dsWelcome", FIRST)) << desk.printed();
    desk.picture("dsEULA", "agreement");
    ASSERT_TRUE(desk.leave("dsEULA", FIRST));
    ASSERT_TRUE(desk.press("dsChangeDestination", DESTINATION_CHANGE));
    choose(desk, s_caBrowser, chosen);
    desk.picture(s_caBrowser, "destination-browser");
    ASSERT_TRUE(desk.press(s_caBrowser, FIRST));
    desk.picture(s_caBox, "destination-create");
    ASSERT_TRUE(desk.leave(s_caBox, NO));
    EXPECT_TRUE(desk.isShown(s_caBrowser));
    EXPECT_FALSE(std::filesystem::exists(chosen));
    ASSERT_TRUE(desk.press(s_caBrowser, FIRST));
    ASSERT_TRUE(desk.leave(s_caBox, YES));
    ASSERT_TRUE(desk.isGone(s_caBrowser));
    EXPECT_TRUE(std::filesystem::is_directory(chosen));
    desk.picture("dsChangeDestination", "destination");
    ASSERT_TRUE(desk.leave("dsChangeDestination", DESTINATION_OK));

    ASSERT_TRUE(desk.leave("dsMainDlg", MAIN_CUSTOM));
    ASSERT_TRUE(desk.check("dsCustomDlg", 2)); /* no gallery */
    ASSERT_TRUE(desk.leave("dsCustomDlg", LIST_OK));
    desk.picture("dsViewlog", "log-dialog");
    ASSERT_TRUE(desk.press("dsViewlog", FIRST));
    desk.picture("dsLogViewer", "log-window");
    EXPECT_GT(desk.place("dsLogViewer").iHeight, 600);
    ASSERT_TRUE(desk.leave("dsLogViewer", FIRST));
    finish();

    medium.tree = chosen + "/kivo/";
    EXPECT_TRUE(medium.has("Application/bin/kivo"));
    EXPECT_TRUE(medium.has("Documents/manual/index.html"));
    EXPECT_FALSE(medium.has("Gallery"));
    EXPECT_FALSE(std::filesystem::exists(medium.dest));
    const std::string log = medium.log();
    EXPECT_NE(std::string::npos, log.find("Installation Completed\n")) << log;
    EXPECT_NE(std::string::npos, history().find("Package \"manual\" Installed\n")) << history();
    EXPECT_EQ(std::string::npos, history().find("gallery")) << history();
}

TEST_F(Stories, AnInstallationIsChanged)
{
    medium.change("\"Everything.\" \"\" 1 61 62 63 64 65", "\"Everything.\" \"\" 1 61 62 63 65");
    medium.change("\"\" 1 66 67 68", "\"\" 1 66");
    installUnattended();
    ASSERT_TRUE(medium.has("Developer/include"));
    ASSERT_FALSE(medium.has("Gallery"));

    desk.start(medium);
    desk.picture("dsMaintenance", "maintenance");
    ASSERT_TRUE(desk.leave("dsMaintenance", MAINTAIN_CHANGE)) << desk.printed();
    ASSERT_EQ("xx-x-", desk.marks("dsCustomDlg")); /* half of the group is there */
    ASSERT_TRUE(desk.check("dsCustomDlg", 2));     /* the gallery comes */
    const Box group = desk.checks("dsCustomDlg")[3];
    desk.click(group.iX + 60, group.iY + 5); /* its name */
    ASSERT_TRUE(desk.press("dsCustomDlg", LIST_CHANGE));
    ASSERT_TRUE(soon([&] { return desk.marks("dsCustomDlg") == "x-"; }));
    ASSERT_TRUE(desk.check("dsCustomDlg", 0)); /* the developer kit goes */
    ASSERT_TRUE(desk.press("dsCustomDlg", LIST_OK));
    ASSERT_TRUE(soon([&] { return desk.marks("dsCustomDlg") == "xxxx-"; }));
    desk.picture("dsCustomDlg", "maintenance-custom");
    ASSERT_TRUE(desk.leave("dsCustomDlg", LIST_OK));
    finish();
    EXPECT_TRUE(medium.has("Gallery"));
    EXPECT_FALSE(medium.has("Developer"));
    EXPECT_TRUE(medium.has("Application/share/definitions")); /* the application needs it, too */
    EXPECT_EQ(std::string::npos, history().find("headers")) << history();

    desk.start(medium);
    ASSERT_TRUE(desk.leave("dsMaintenance", MAINTAIN_CHANGE)) << desk.printed();
    EXPECT_EQ("xxx--", desk.marks("dsCustomDlg"));
}

TEST_F(Stories, AllIsRemoved)
{
    installUnattended();
    const auto before = medium.listing();

    desk.start(medium);
    ASSERT_TRUE(desk.press("dsMaintenance", MAINTAIN_REMOVE)) << desk.printed();
    desk.picture(s_caBox, "remove-all");
    ASSERT_TRUE(desk.leave(s_caBox, NO));
    EXPECT_TRUE(desk.isShown("dsMaintenance"));
    EXPECT_EQ(before, medium.listing());
    ASSERT_TRUE(desk.press("dsMaintenance", MAINTAIN_REMOVE));
    ASSERT_TRUE(desk.leave(s_caBox, YES));
    EXPECT_TRUE(desk.isGone("dsMaintenance"));
    finish();
    EXPECT_EQ((std::vector<std::string>{"kivo/", "kivo/Setup/", "kivo/Setup/setup.log",
                                        "kivo/SetupFiles/", "kivo/setup"}),
              medium.listing()); /* the removal's log, the history's place, and setup itself */
}

/* ---- leaving ---- */

/* The page goes on being live below the question, which is not asked twice. */
static void askAndResume(Desk &desk, const std::string &page, int iExit)
{
    SCOPED_TRACE(page);
    const std::vector<Box> before = desk.buttons(page);
    const Box exit = before.at(iExit < 0 ? before.size() - 1 : (size_t)iExit);

    ASSERT_TRUE(desk.press(page, iExit));
    ASSERT_NE(0u, desk.window("dsExitSetup"));
    desk.move("dsExitSetup", 0, 0);
    desk.click(exit.iX + exit.iWidth / 2, exit.iY + exit.iHeight / 2);
    usleep(100000); /* for a second one to come */
    ASSERT_TRUE(desk.leave("dsExitSetup", QUESTION_RESUME));
    EXPECT_FALSE(desk.isShown("dsExitSetup"));
    EXPECT_EQ(before.size(), desk.buttons(page).size());
}

static void askAndExit(Desk &desk, const std::string &page, int iExit)
{
    SCOPED_TRACE(page);
    ASSERT_TRUE(desk.press(page, iExit));
    ASSERT_TRUE(desk.press("dsExitSetup", QUESTION_EXIT));
    ASSERT_TRUE(desk.press("dsExitSetupFinish", FIRST));
    EXPECT_EQ(10, desk.status());
}

TEST_F(Stories, EveryPageCanBeLeft)
{
    desk.start(medium);
    askAndResume(desk, "dsWelcome", LAST);
    askAndExit(desk, "dsWelcome", LAST);
    ASSERT_TRUE(startAtDestination());
    askAndResume(desk, "dsChangeDestination", LAST);
    askAndExit(desk, "dsChangeDestination", LAST);
    ASSERT_TRUE(desk.startAtMainPage(medium));
    askAndResume(desk, "dsMainDlg", LAST);
    ASSERT_TRUE(desk.press("dsMainDlg", LAST));
    desk.picture("dsExitSetup", "exit-question");
    ASSERT_TRUE(desk.press("dsExitSetup", QUESTION_EXIT));
    desk.picture("dsExitSetupFinish", "exit-notice");
    ASSERT_TRUE(desk.press("dsExitSetupFinish", FIRST));
    EXPECT_EQ(10, desk.status());
    EXPECT_FALSE(std::filesystem::exists(medium.dest));

    desk.start(medium);
    ASSERT_TRUE(desk.leave("dsWelcome", FIRST));
    ASSERT_TRUE(desk.press("dsEULA", LAST));
    EXPECT_EQ(0, desk.status()) << "declined";
}

TEST_F(Stories, MaintenanceCanBeLeft)
{
    installUnattended();
    const auto before = medium.listing();
    desk.start(medium);
    askAndResume(desk, "dsMaintenance", LAST);
    askAndExit(desk, "dsMaintenance", LAST);
    EXPECT_EQ(before, medium.listing());
    EXPECT_TRUE(nobodyLeft(medium));
}

/* ---- earlier installations ---- */

TEST_F(Stories, ADestinationThatHoldsAnInstallation)
{
    const std::string occupied = medium.dest;

    installUnattended();
    medium.dest = medium.scratch / "elsewhere";
    ASSERT_TRUE(startAtDestination());
    ASSERT_TRUE(desk.press("dsChangeDestination", DESTINATION_CHANGE));
    choose(desk, s_caBrowser, occupied);
    ASSERT_TRUE(desk.press(s_caBrowser, FIRST));
    desk.picture(s_caBox, "previous-installation");
    ASSERT_TRUE(desk.leave(s_caBox, NO));
    EXPECT_TRUE(desk.isShown(s_caBrowser));
    ASSERT_TRUE(desk.press(s_caBrowser, FIRST));
    ASSERT_TRUE(desk.leave(s_caBox, YES));
    ASSERT_TRUE(desk.isGone(s_caBrowser));
    ASSERT_TRUE(desk.leave("dsMaintenance", MAINTAIN_CHANGE));
    EXPECT_EQ("xxxxx", desk.marks("dsCustomDlg"));
    EXPECT_FALSE(desk.isShown("dsChangeDestination"));
}

/* The third line of a history is the product's version. */
static void sayVersion(const std::string &version, const Medium &medium)
{
    must("sed -i '3s/.*/" + version + "/' " + medium.tree + "SetupFiles/.kivo.his");
}

TEST_F(Stories, AnotherVersionIsTold)
{
    static const struct {
        const char *pVersion;
        const char *pPicture; /* null where nothing is told: whole numbers count */
    } s_aRows[] = {
        {"2.9", "version-older"},
        {"12.0", "version-newer"},
        {"3.0", nullptr},
    };

    installUnattended();
    for (const auto &row : s_aRows) {
        SCOPED_TRACE(row.pVersion);
        sayVersion(row.pVersion, medium);
        desk.start(medium);
        if (row.pPicture) {
            ASSERT_TRUE(desk.showsButtons(s_caBox, 1)) << desk.printed();
            EXPECT_FALSE(desk.isShown("dsMaintenance"));
            desk.picture(s_caBox, row.pPicture);
            ASSERT_TRUE(desk.leave(s_caBox, FIRST));
        }
        EXPECT_NE(0u, desk.window("dsMaintenance"));
    }
    EXPECT_FALSE(desk.isShown(s_caBox));
    must("sed -i '1s/2/1/' " + medium.tree + "SetupFiles/.kivo.his");
    desk.start(medium);
    EXPECT_NE(0u, desk.window("dsWelcome")) << "an old form of history";
}

/* ---- the keyboard, a small screen, and what a medium may lack ---- */

static void expectOnScreen(Desk &desk, const std::string &shell, int iWidth, int iHeight)
{
    const Box place = desk.place(shell);

    EXPECT_TRUE(place.iX >= 0 && place.iY >= 0) << shell;
    EXPECT_LE(place.iX + place.iWidth, iWidth) << shell;
    EXPECT_LE(place.iY + place.iHeight, iHeight) << shell;
}

TEST(SmallScreen, AWholeInstallationByTheKeyboardAlone)
{
    static const struct {
        const char *pShell;
        const char *pPicture;
        const char *pKeys; /* after which the window goes */
    } s_aRows[] = {
        {"dsWelcome", "small-welcome", "Return"},
        {"dsEULA", "small-agreement", "Next Return"},
        {"dsChangeDestination", "small-destination", "Return"},
        {"dsMainDlg", "small-main", "Tab space"},
        {"dsCustomDlg", "small-custom", "Tab Tab Tab space Return"},
        {"dsViewlog", "small-log-dialog", "Return"},
        {s_caBox, "small-completed", "Return"},
    };
    SampleMedium medium;
    Desk desk("800x600x24");

    desk.start(medium);
    for (const auto &row : s_aRows) {
        ASSERT_NE(0u, desk.window(row.pShell)) << row.pShell << desk.printed();
        expectOnScreen(desk, row.pShell, 800, 600);
        desk.picture(row.pShell, row.pPicture);
        desk.keys(row.pShell, row.pKeys);
        ASSERT_TRUE(desk.isGone(row.pShell)) << row.pShell;
    }
    EXPECT_EQ(0, desk.status());
    EXPECT_TRUE(medium.has("Application/bin/kivo"));
    EXPECT_FALSE(medium.has("Gallery"));
}

TEST_F(Stories, IconsThatAreMissingLeaveTheirButtonsThere)
{
    medium.change("kivoicons.so,kivo_typical", "absent.so,kivo_typical");
    medium.change("kivoicons.so,kivo_custom", "kivoicons.so,kivo_absent");
    ASSERT_TRUE(desk.startAtMainPage(medium)) << desk.printed();
    desk.picture("dsMainDlg", "main-without-icons");
    ASSERT_TRUE(desk.leave("dsMainDlg", MAIN_CUSTOM));
    EXPECT_NE(0u, desk.window("dsCustomDlg"));
}

/* ---- the medium ---- */

struct Media : testing::Test {
    Medium medium;
    Desk desk;
    const std::string other = medium.scratch / "other";

    void begin()
    {
        medium.file("plain", "plain");
        medium.describe(onePage("Copy \"plain\" \"\" 5 0644\nCopy \"absent\" \"\" 5 0644\n"),
                        usualHeader("NoDisplayLog\n"));
        ASSERT_TRUE(desk.startAtMainPage(medium)) << desk.printed();
        ASSERT_TRUE(desk.leave("dsMainDlg", FIRST));
        ASSERT_TRUE(desk.showsButtons(s_caBox, 3)) << desk.printed();
    }
    void finish()
    {
        ASSERT_TRUE(desk.showsButtons(s_caBox, 1)) << desk.printed();
        ASSERT_TRUE(desk.leave(s_caBox, FIRST));
        EXPECT_EQ(0, desk.status());
        EXPECT_TRUE(medium.has("plain"));
        EXPECT_TRUE(nobodyLeft(medium));
    }
};

TEST_F(Media, GoingOnWithoutTheFile)
{
    begin();
    ASSERT_TRUE(desk.leave(s_caBox, PROMPT_CONTINUE));
    finish();
    EXPECT_FALSE(medium.has("absent"));
}

TEST_F(Media, TheFileIsElsewhere)
{
    begin();
    writeFile(other + "/absent", "found");
    must("cp " + medium.place + "/cdinst.dat " + other); /* a whole medium; it is copied last */
    ASSERT_TRUE(desk.leave(s_caBox, PROMPT_BROWSE));
    desk.picture("Locate absent", "media-browser");
    ASSERT_TRUE(desk.leave("Locate absent", LAST)) << "Cancel";
    ASSERT_TRUE(desk.showsButtons(s_caBox, 3)) << "asked again";
    ASSERT_TRUE(desk.leave(s_caBox, PROMPT_BROWSE));
    ASSERT_TRUE(desk.press("Locate absent", FIRST));
    ASSERT_TRUE(desk.showsButtons(s_caBox, 1)) << "it is not there";
    desk.picture(s_caBox, "media-not-there");
    ASSERT_TRUE(desk.leave(s_caBox, FIRST));
    choose(desk, "Locate absent", other);
    ASSERT_TRUE(desk.leave("Locate absent", FIRST));
    finish();
    EXPECT_EQ("found", medium.installed("absent"));
}

/* The child asks for the file while the parent asks whether to quit. */
TEST_F(Media, BothProcessesAskAtOnce)
{
    begin();
    desk.move(s_caBox, 0, 0);
    ASSERT_TRUE(desk.press("dsProgress", FIRST));
    ASSERT_TRUE(desk.showsButtons(s_caBox, 2)) << desk.printed();
    ASSERT_TRUE(desk.leave(s_caBox, NO));
    ASSERT_TRUE(desk.showsButtons(s_caBox, 3));
    ASSERT_TRUE(desk.leave(s_caBox, PROMPT_CONTINUE));
    finish();

    must("rm -rf " + medium.dest);
    begin();
    desk.move(s_caBox, 0, 0);
    ASSERT_TRUE(desk.press("dsProgress", FIRST));
    ASSERT_TRUE(desk.showsButtons(s_caBox, 2)) << desk.printed();
    ASSERT_TRUE(desk.leave(s_caBox, YES));
    EXPECT_EQ(10, desk.status());
    EXPECT_TRUE(nobodyLeft(medium));
    EXPECT_TRUE(desk.isGone(s_caBox, 1)) << "the child's";
}
