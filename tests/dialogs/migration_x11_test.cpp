#include <gtest/gtest.h>

#include "dialogs/Migration.h"

#include <Xm/List.h>
#include <Xm/TextF.h>

#include "dialogTest.h"
#include "dialogs/userHome.h"

static const char s_caPreferences[] = "/Data/Preferences/cpm.cpm";

struct Migration : DialogTest {
    Widget m_dialog = nullptr;

    void SetUp() override
    {
        DialogTest::SetUp();
        if (IsSkipped())
            return;
        if (!OV_instGetMainTopLevelShell())
            (void)OV_instCreateMainTopLevelShell(s_application);
        SetDefaultUserHome(nullptr);
        describe("1 MainDlg 'T' 'D' '' 10\n10 Suite 'P' '' '' 1\n");
    }
    void TearDown() override
    {
        SetDefaultUserHome(nullptr);
        free(g_pPrefPath);
        g_pPrefPath = nullptr;
        g_iDoMigrate = 0;
        DialogTest::TearDown();
    }
    static Widget shell() { return OV_instGetMainTopLevelShell(); }
    /* Three preferences, and much that is none, in the home of the test. */
    void makeHome()
    {
        for (const char *pVersion : {"v1", "v3", "v2 beta"})
            put(std::string("@/Orvane/") + pVersion + s_caPreferences, "");
        put("@/Orvane/empty/Data/Preferences/other", "");
        fs::create_directories(full(std::string("@/Orvane/folder") + s_caPreferences));
        put("@/Orvane/file", "");
    }
    void show()
    {
        m_dialog = CreatemigrationDlg(shell());
        XtManageChild(m_dialog);
        settle();
    }
    std::string field(const char *pName)
    {
        char *pText = XmTextFieldGetString(OV_instFindWidget(m_dialog, pName));
        std::string text = pText;
        XtFree(pText);
        return shortened(text);
    }
    /* The list's items, the selected ones with a star. */
    std::string list()
    {
        Widget shown = OV_instFindWidget(m_dialog, "migrationList");
        XmStringTable items = resourceOf<XmStringTable>(shown, XmNitems);
        std::string text;
        for (int i = 0; i < resourceOf<int>(shown, XmNitemCount); i++)
            text += (XmListPosSelected(shown, i + 1) ? "*" : " ") + components(items[i]).substr(2);
        return shortened(text);
    }
    /* Answers the browser with one path after the other, each 300 ms; a message is kept and its
     * second button pressed where it has one. */
    std::string browse(const char *pButton, const std::vector<std::string> &paths,
                       const char *pAnswer = "OK")
    {
        std::string messages;
        std::vector<std::unique_ptr<Later>> steps;
        unsigned long lAt = 0;
        for (const std::string &path : paths) {
            steps.push_back(std::make_unique<Later>(shell(), lAt += 300, [&, path] {
                Widget box = openBox("fsbChangeDestinationSelection");
                ASSERT_NE(nullptr, box);
                XmTextFieldSetString(XtNameToWidget(box, "Text"), (char *)full(path).c_str());
                EXPECT_TRUE(press(box, path.empty() ? "Cancel" : "OK"));
            }));
            steps.push_back(std::make_unique<Later>(shell(), lAt += 200, [&] {
                if (Widget box = openBox()) {
                    messages +=
                        shortened(labelOf(XmMessageBoxGetChild(box, XmDIALOG_MESSAGE_LABEL)) + "|");
                    EXPECT_TRUE(press(box, pAnswer));
                }
            }));
        }
        EXPECT_TRUE(press(m_dialog, pButton));
        EXPECT_EQ(nullptr, openBox("fsbChangeDestinationSelection"));
        return messages;
    }
    /* DoMigrate with its message answered: "RESULT MESSAGE" and what was printed. */
    std::string migrate()
    {
        std::string message;
        int iResult = 0;
        Later answer(shell(), 400, [&] {
            if (Widget box = openBox()) {
                message = labelOf(XmMessageBoxGetChild(box, XmDIALOG_MESSAGE_LABEL));
                EXPECT_TRUE(press(box, "OK"));
            }
        });
        const std::string out = shortened(printed([&] { iResult = DoMigrate(shell()); }));
        return std::to_string(iResult) + " " + message + out;
    }
    void choose(const std::string &path)
    {
        g_iDoMigrate = 1;
        free(g_pPrefPath);
        g_pPrefPath = strdup(full(path).c_str());
    }
};

TEST_F(Migration, OffersWhatHoldsPreferences)
{
    makeHome();
    show();
    EXPECT_EQ("*'@/Orvane/v3' '@/Orvane/v2 beta' '@/Orvane/v1'", list());
    EXPECT_EQ("@/Orvane/v3", field("textFieldPath"));
    EXPECT_EQ("@", field("textFieldUserRoot"));
    EXPECT_EQ(full("@/Orvane/v3"), g_pPrefPath);
    EXPECT_EQ("Setup can automatically migrate any selected preferences from a previous version \n"
              "of ORVANE|KIVO to the current installation.\n\nSelect a preferences path below, or "
              "click 'Browse' for another location.",
              label(m_dialog, "labelDescription2"));

    Widget toggle = OV_instFindWidget(m_dialog, "toggleButtonMigrate");
    for (bool bOn : {false, true, false}) {
        XmToggleButtonSetState(toggle, bOn, True);
        for (const char *pName :
             {"labelDescription2", "migrationList", "textFieldPath", "pushButtonBrowse"})
            EXPECT_EQ(bOn, XtIsSensitive(OV_instFindWidget(m_dialog, pName))) << pName;
    }
    XmListSelectPos(OV_instFindWidget(m_dialog, "migrationList"), 2, True);
    EXPECT_EQ("@/Orvane/v2 beta", field("textFieldPath"));
}

TEST_F(Migration, HomeWithoutPreferences)
{
    show();
    EXPECT_EQ("", list());
    EXPECT_EQ("", field("textFieldPath"));
    EXPECT_EQ(nullptr, g_pPrefPath);
    XtDestroyWidget(XtParent(m_dialog));
    unsetenv("HOME");
    SetDefaultUserHome(nullptr);
    show();
    EXPECT_EQ("", list());
    EXPECT_EQ("", field("textFieldUserRoot"));
}

TEST_F(Migration, BrowsesForPreferences)
{
    static const char s_caRefused[] = "The selected directory does not seem to contain any valid "
                                      "preferences.\nPlease, choose another one.|";
    makeHome();
    put(std::string("@/else/old") + s_caPreferences, "");
    fs::create_directories(full("@/else/100%s"));
    show();
    XmToggleButtonSetState(OV_instFindWidget(m_dialog, "toggleButtonMigrate"), True, True);
    EXPECT_EQ("", browse("pushButtonBrowse", {""})); /* Cancel */
    EXPECT_EQ("*'@/Orvane/v3' '@/Orvane/v2 beta' '@/Orvane/v1'", list());
    EXPECT_EQ(std::string(s_caRefused) + s_caRefused,
              browse("pushButtonBrowse", {"@/else/100%s", "@/Orvane/folder", "@/else/old/"}));
    EXPECT_EQ("@/else/old", field("textFieldPath"));
    EXPECT_EQ(nullptr, g_pPrefPath);
    EXPECT_EQ(" '@/Orvane/v3' '@/Orvane/v2 beta' '@/Orvane/v1'*'@/else/old'", list());

    fs::current_path(full("@/else"));
    EXPECT_EQ("", browse("pushButtonBrowse", {"old"})); /* relative, and in the list already */
    EXPECT_EQ(" '@/Orvane/v3' '@/Orvane/v2 beta' '@/Orvane/v1'*'@/else/old'", list());
}

TEST_F(Migration, BrowsesForTheUsersRoot)
{
    setenv("USER", "me", 1);
    show();
    EXPECT_EQ("The folder:\n'@/new/100%s'\ndoes not exist. Do you want to create it?|",
              browse("pushButtonBrowse1", {"@/new/100%s", ""}, "Cancel"));
    EXPECT_FALSE(exists("@/new"));
    EXPECT_EQ("@", field("textFieldUserRoot"));
    EXPECT_EQ("The folder:\n'@/new/100%s'\ndoes not exist. Do you want to create it?|",
              browse("pushButtonBrowse1", {"@/new/100%s"}));
    EXPECT_EQ(0755U, modeOf("@/new/100%s"));
    EXPECT_EQ("@/new/100%s/me", field("textFieldUserRoot"));
    unsetenv("USER");
}

TEST_F(Migration, ContinueKeepsTheChoiceOnlyWithTheToggle)
{
    makeHome();
    /* A list without anything chosen: nothing to install, so the dialog stays. */
    describe("1 CusDlg 'L' 'D' '' 10\n10 Suite 'P' '' '' 1\n");
    SetConfigToInstall(config(1));
    show();
    Widget toggle = OV_instFindWidget(m_dialog, "toggleButtonMigrate");
    const auto press = [&] {
        Later answer(shell(), 200, [&] {
            if (openBox())
                (void)DialogTest::press(openBox(), "OK");
        });
        EXPECT_TRUE(DialogTest::press(m_dialog, "pushButtonOk"));
        runFor(shell(), 300);
    };
    XmToggleButtonSetState(toggle, True, True);
    XmTextFieldSetString(OV_instFindWidget(m_dialog, "textFieldPath"), (char *)"/typed/");
    press();
    EXPECT_EQ(1, g_iDoMigrate);
    EXPECT_STREQ("/typed", g_pPrefPath);
    XmToggleButtonSetState(toggle, False, True);
    press();
    EXPECT_EQ(0, g_iDoMigrate);
    SetConfigToInstall(nullptr);
}

TEST_F(Migration, LeavingAsksFirst)
{
    show();
    std::string message;
    Later resume(shell(), 200, [&] {
        Widget box = openBox("mbExitSetup");
        ASSERT_NE(nullptr, box);
        message = labelOf(XmMessageBoxGetChild(box, XmDIALOG_MESSAGE_LABEL));
        EXPECT_TRUE(press(box, "OK"));
    });
    closeFrame(XtParent(m_dialog));
    runFor(shell(), 500);
    EXPECT_EQ("Are you sure you want to Exit?\nSetup has not yet modified any files.", message);
    EXPECT_TRUE(XtIsManaged(m_dialog));
}

/* With the sample medium's stand-in for the application. */
TEST_F(Migration, RunsTheApplication)
{
    const std::string log = "D/Application/registry-calls.log";
    put("D/Application/bin/kivo", readFile(SETUP_SOURCE_DIR "/demo/files/standin.sh"));
    fs::permissions(full("D/Application/bin/kivo"), fs::perms::owner_all);
    put(std::string("@/old") + s_caPreferences, "");
    put(std::string("@/it's; touch $HOME/trap") + s_caPreferences, "");

    EXPECT_EQ("1 ", migrate()); /* nothing was chosen */
    g_iDoMigrate = 1;
    EXPECT_EQ("1 ", migrate());
    choose("@/old");
    EXPECT_EQ("1 Preferences migrated successfully.\n"
              "(cd D/; Application/bin/kivo -migrate @/old)\n",
              migrate());
    EXPECT_NE(std::string::npos, got(log).find("argument <-migrate>\nargument <@/old>\n"));
    EXPECT_EQ(nullptr, g_pPrefPath);
    EXPECT_EQ("1 ", migrate());

    choose("@/it's; touch $HOME/trap"); /* one word */
    EXPECT_EQ(0U, migrate().find("1 Preferences migrated successfully.\n"));
    EXPECT_FALSE(exists("@/trap"));
    choose("@/none");
    EXPECT_EQ("0 Unable to migrate preferences.\n"
              "(cd D/; Application/bin/kivo -migrate @/none)\n",
              migrate());
    EXPECT_EQ(full("@/none"), g_pPrefPath);
    fs::remove_all(m_dest);
    EXPECT_EQ("0 Unable to migrate preferences.\n", migrate()); /* nothing is run elsewhere */
}
