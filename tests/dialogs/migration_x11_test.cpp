#include <gtest/gtest.h>

#include "dialogs/Migration.h"

#include <Xm/List.h>

#include "dialogTest.h"

static const std::string s_preferences = "/Data/Preferences/cpm.cpm";

struct Migration : DialogTest {
    void TearDown() override
    {
        free(g_pPrefPath);
        g_pPrefPath = nullptr;
        g_iDoMigrate = 0;
        DialogTest::TearDown();
    }
    /* DoMigrate: "RESULT MESSAGE" and what was printed. */
    std::string migrate(const Steps &answer = {})
    {
        std::string message;
        int iResult = 0;
        const std::string out =
            printed([&] { message = whileUsed(answer, [&] { iResult = DoMigrate(main()); }); });
        return std::to_string(iResult) + " " + message + shortened(out);
    }
};

TEST_F(Migration, ContinueKeepsTheChoiceOnlyWithTheToggle)
{
    for (const char *pPath : {"@/Orvane/v1", "@/Orvane/v3", "@/else/old"})
        put(pPath + s_preferences, "");
    /* A list without anything chosen: nothing to install, so the dialog stays. */
    describe("1 CusDlg 'L' 'D' '' 10\n10 Suite 'P' '' '' 1\n");
    SetConfigToInstall(config(1));
    Widget dialog = managed(CreatemigrationDlg(main()));
    Widget toggle = OV_instFindWidget(dialog, "toggleButtonMigrate");
    Widget path = OV_instFindWidget(dialog, "textFieldPath");
    EXPECT_EQ(full("@/Orvane/v3"), textIn(path));
    XmToggleButtonSetState(toggle, True, True);
    (void)whileUsed({">@/else/old/"}, [&] { EXPECT_TRUE(press(dialog, "pushButtonBrowse")); });
    for (bool bOn : {true, false}) {
        XmToggleButtonSetState(toggle, bOn, True);
        (void)whileUsed({"y"}, [&] { press(dialog, "pushButtonOk"); });
        EXPECT_EQ(bOn, g_iDoMigrate);
        EXPECT_EQ(full("@/else/old"), g_pPrefPath);
    }
    SetConfigToInstall(nullptr);
}

/* With the sample medium's stand-in for the application. */
TEST_F(Migration, RunsTheApplication)
{
    const std::string old = "it's; touch $HOME/trap"; /* one word */
    put("D/Application/bin/kivo", readFile(SETUP_SOURCE_DIR "/demo/files/standin.sh"));
    fs::permissions(full("D/Application/bin/kivo"), fs::perms::owner_all);
    put("@/" + old + s_preferences, "");

    g_pPrefPath = strdup(full("@/" + old).c_str());
    EXPECT_EQ("1 ", migrate()); /* nothing was chosen */
    g_iDoMigrate = 1;
    EXPECT_EQ(0U, migrate({"y"}).find("1 Preferences migrated successfully.\n|"));
    EXPECT_FALSE(exists("@/trap"));
    EXPECT_EQ(nullptr, g_pPrefPath);
    g_pPrefPath = strdup(full("@/none").c_str());
    EXPECT_EQ("0 Unable to migrate preferences.\n|(cd D/; Application/bin/kivo -migrate @/none)\n",
              migrate({"y"}));
    fs::remove_all(m_dest);
    EXPECT_EQ("0 Unable to migrate preferences.\n|", migrate({"y"})); /* nothing is run elsewhere */
}
