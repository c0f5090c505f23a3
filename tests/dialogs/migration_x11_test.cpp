#include <gtest/gtest.h>

#include "dialogs/Migration.h"

#include <Xm/List.h>

#include "dialogTest.h"

static const char s_caPreferences[] = "/Data/Preferences/cpm.cpm";

struct Migration : DialogTest {
    Widget m_dialog = nullptr;

    void TearDown() override
    {
        free(g_pPrefPath);
        g_pPrefPath = nullptr;
        g_iDoMigrate = 0;
        DialogTest::TearDown();
    }
    /* Three preferences, and much that is none, in the home of the test. */
    void makeHome()
    {
        for (const char *pVersion : {"v1", "v3", "v2 beta"})
            put(std::string("@/Orvane/") + pVersion + s_caPreferences, "");
        put("@/Orvane/empty/Data/Preferences/other", "");
        fs::create_directories(full(std::string("@/Orvane/folder") + s_caPreferences));
        put("@/Orvane/file", "");
    }
    void show() { m_dialog = managed(CreatemigrationDlg(main())); }
    std::string field(const char *pName)
    {
        return shortened(textIn(OV_instFindWidget(m_dialog, pName)));
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
    std::string browse(const char *pButton, const Steps &steps)
    {
        return whileUsed(steps, [&] { EXPECT_TRUE(press(m_dialog, pButton)); });
    }
    /* DoMigrate: "RESULT MESSAGE" and what was printed. */
    std::string migrate(const Steps &answer = {})
    {
        std::string message, out;
        int iResult = 0;
        out = printed([&] { message = whileUsed(answer, [&] { iResult = DoMigrate(main()); }); });
        return std::to_string(iResult) + " " + message + shortened(out);
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
    EXPECT_EQ("", browse("pushButtonBrowse", {"c"}));
    EXPECT_EQ("*'@/Orvane/v3' '@/Orvane/v2 beta' '@/Orvane/v1'", list());
    EXPECT_EQ(std::string(s_caRefused) + s_caRefused,
              browse("pushButtonBrowse",
                     {">@/else/100%s", "y", ">@/Orvane/folder", "y", ">@/else/old/"}));
    EXPECT_EQ("@/else/old", field("textFieldPath"));
    EXPECT_EQ(nullptr, g_pPrefPath);
    fs::current_path(full("@/else"));
    EXPECT_EQ("", browse("pushButtonBrowse", {">old"})); /* relative, and in the list already */
    EXPECT_EQ(" '@/Orvane/v3' '@/Orvane/v2 beta' '@/Orvane/v1'*'@/else/old'", list());
}

TEST_F(Migration, BrowsesForTheUsersRoot)
{
    const std::string question =
        "The folder:\n'@/new/100%s'\ndoes not exist. Do you want to create it?|";
    setenv("USER", "me", 1);
    show();
    EXPECT_EQ(question, browse("pushButtonBrowse1", {">@/new/100%s", "n", "c"}));
    EXPECT_FALSE(exists("@/new"));
    EXPECT_EQ("@", field("textFieldUserRoot"));
    EXPECT_EQ(question, browse("pushButtonBrowse1", {">@/new/100%s", "y"}));
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
    XmToggleButtonSetState(toggle, True, True);
    XmTextFieldSetString(OV_instFindWidget(m_dialog, "textFieldPath"), (char *)"/typed/");
    (void)whileUsed({"y"}, [&] { press(m_dialog, "pushButtonOk"); });
    EXPECT_EQ(1, g_iDoMigrate);
    EXPECT_STREQ("/typed", g_pPrefPath);
    XmToggleButtonSetState(toggle, False, True);
    (void)whileUsed({"y"}, [&] { press(m_dialog, "pushButtonOk"); });
    EXPECT_EQ(0, g_iDoMigrate);
    SetConfigToInstall(nullptr);
}

TEST_F(Migration, LeavingAsksFirst)
{
    show();
    EXPECT_EQ("Are you sure you want to Exit?\nSetup has not yet modified any files.|",
              whileUsed({"mbExitSetup:OK"}, [&] {
                  closeFrame(XtParent(m_dialog));
                  runFor(main(), 200);
              }));
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
    EXPECT_EQ(
        "1 Preferences migrated successfully.\n|(cd D/; Application/bin/kivo -migrate @/old)\n",
        migrate({"y"}));
    EXPECT_NE(std::string::npos, got(log).find("argument <-migrate>\nargument <@/old>\n"));
    EXPECT_EQ(nullptr, g_pPrefPath);

    choose("@/it's; touch $HOME/trap"); /* one word */
    EXPECT_EQ(0U, migrate({"y"}).find("1 Preferences migrated successfully.\n|"));
    EXPECT_FALSE(exists("@/trap"));
    choose("@/none");
    EXPECT_EQ("0 Unable to migrate preferences.\n|(cd D/; Application/bin/kivo -migrate @/none)\n",
              migrate({"y"}));
    EXPECT_EQ(full("@/none"), g_pPrefPath);
    fs::remove_all(m_dest);
    EXPECT_EQ("0 Unable to migrate preferences.\n|", migrate({"y"})); /* nothing is run elsewhere */
}
