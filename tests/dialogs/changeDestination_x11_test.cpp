#include <gtest/gtest.h>

#include "dialogs/ChangeDestination.h"

#include "dialogTest.h"

#include "browserScript.h"

static const char s_caConfigs[] =
    "1 MainDlg 'T' 'D' '' 2\n2 CusDlg 'All' '' '' 0 3 4\n3 Suite 'P' '' '' 1\n"
    "4 Suite 'Q' '' '' 0\n";

struct ChangeDestination : DialogTest {
    /* Opens the browser and does what the steps say; "@" is the scratch directory. */
    std::string browse(const std::vector<std::string> &steps)
    {
        std::deque<std::string> given;
        for (const std::string &step : steps)
            given.push_back(full(step));
        BrowserScript script("fsbChangeDestinationSelection", given);
        OV_instChangeDestination(OV_instGetMainTopLevelShell());
        settle();
        EXPECT_EQ(nullptr, openBox("fsbChangeDestinationSelection"));
        script.stop();
        return shortened(script.seen);
    }
    std::string root() const { return shortened(OV_instGetRootDestinationDirectory()); }
    /* An installation of the package p, from a medium of its own. */
    void installed(const std::string &where)
    {
        put(where + "/the.product/SetupFiles/.Product.his",
            full("HistoryFileVersion 2\nProduct\n3.5\n@/elsewhere/\nPackage \"p\" Installed\n"));
    }
    void SetUp() override
    {
        DialogTest::SetUp();
        if (IsSkipped())
            return;
        describe(s_caConfigs);
        fs::current_path(m_scratch.path);
        fs::create_directories(m_scratch / "other/sub");
    }
};

TEST_F(ChangeDestination, StartsAtTheDestinationOrTheWorkingDirectory)
{
    put("@/root/file", "");
    fs::create_directories(m_root + "b");
    fs::create_directories(m_root + "a");
    EXPECT_EQ("Product setup: @/root/ Destination a b -> @/root/|"
              "Product setup: @/root/ Destination a b -> @/root/b|",
              browse({"?", "#2", "?", "c"}));
    EXPECT_EQ("@/root/", root());
    EXPECT_EQ("", browse({"!1"}));
    EXPECT_EQ("@/root/a/", root());
    ASSERT_EQ(0, OV_instSetRootDestination(full("@/none/yet").c_str()));
    fs::current_path(m_scratch / "other");
    EXPECT_EQ("Product setup: @/other/ Destination sub -> @/none/yet/|", browse({"?", "c"}));
    EXPECT_EQ("@/none/yet/", root());
}

TEST_F(ChangeDestination, TakesWhatTheUserChooses)
{
    static const struct {
        std::vector<std::string> steps;
        const char *pSeen;
        const char *pRoot;
    } s_aRows[] = {
        {{">@/other"}, "", "@/other/"},
        {{">other/sub"}, "", "@/other/sub/"},
        {{">"}, "open", "@/root/"},
        {{">@/n%s w", "n", ">@/other"},
         "The destination folder:\n'@/n%s w'\ndoes not exist. Do you want to create it?|",
         "@/other/"},
        {{">@/n%s w", "n"},
         "The destination folder:\n'@/n%s w'\ndoes not exist. Do you want to create it?|open",
         "@/root/"},
        {{">n w/x", "y"},
         "The destination folder:\n'@/n w/x'\ndoes not exist. Do you want to create it?|",
         "@/n w/x/"},
        {{">@/file/x", "y", "y"},
         "The destination folder:\n'@/file/x'\ndoes not exist. Do you want to create it?|"
         "Unable to create install directory:\n@/file/x|open",
         "@/root/"},
    };

    put("@/file", "");
    for (const auto &row : s_aRows) {
        ASSERT_EQ(0, OV_instSetRootDestination(m_root.c_str()));
        EXPECT_EQ(row.pSeen, browse(row.steps)) << row.steps[0];
        EXPECT_EQ(row.pRoot, root()) << row.steps[0];
        EXPECT_EQ(0, OV_instInstallationMode);
    }
    EXPECT_FALSE(exists("@/n%s w"));
    EXPECT_EQ(0755u, modeOf("@/n w/x"));
}

TEST_F(ChangeDestination, WithoutAWorkingDirectoryOnlyFullPathsAreTaken)
{
    fs::create_directories(m_scratch / "gone");
    fs::current_path(m_scratch / "gone");
    fs::remove(m_scratch / "gone");
    EXPECT_EQ("Internal error:\n(OV_instChangeDestinationBrowseOkCB) can't get current working "
              "directory|",
              browse({">other", "y", ">@/other"}));
    EXPECT_EQ("@/other/", root());
}

TEST_F(ChangeDestination, AnInstallationThatIsDeclinedLeavesNoMarks)
{
    const std::string question =
        "Previous installation found.\nDo you want to run setup in maintenance mode ?|";
    const std::string before = states();
    const std::string source = CDInstPtr->pSourceDir;
    installed("@/old");

    EXPECT_EQ(question + "open", browse({">@/old", "n"}));
    EXPECT_EQ("@/old/", root());
    EXPECT_EQ(question, browse({">@/old", "n", ">@/other"}));
    EXPECT_EQ("@/other/", root());
    EXPECT_EQ(before, states()) << "what is to be installed counts as installed";
    EXPECT_EQ(source, CDInstPtr->pSourceDir);
    EXPECT_EQ(0, OV_instInstallationMode);
    EXPECT_EQ(question, browse({">@/old", "y"}));
    EXPECT_EQ("@/old/", root());
    EXPECT_EQ("2:11 3:11 +p", states());
    EXPECT_EQ(full("@/elsewhere/"), CDInstPtr->pSourceDir);
    EXPECT_EQ(1, OV_instInstallationMode);
}

TEST_F(ChangeDestination, ShowsTheDestinationAndLeadsOn)
{
    Widget dialog = CreatembChangeDestination(OV_instGetMainTopLevelShell());
    XtManageChild(dialog);
    settle();
    const auto folder = [&] {
        return shortened(textIn(OV_instFindWidget(dialog, "tfChangeDestination")));
    };

    EXPECT_EQ("@/root/", folder());
    EXPECT_EQ('B', label(dialog, "laChangeDestinationAvailableSpace").back());
    EXPECT_EQ('.', label(dialog, "label").back()) << "an empty line below the text";

    BrowserScript script("fsbChangeDestinationSelection", {full(">@/other")});
    ASSERT_TRUE(press(dialog, "pushButton"));
    EXPECT_EQ(dialog, shown("mbChangeDestination"));
    EXPECT_EQ("@/other/", folder());
    ASSERT_TRUE(press(dialog, "OK"));
    EXPECT_EQ(nullptr, shown("mbChangeDestination"));
    EXPECT_NE(nullptr, shown("mbMainDlg"));
}

TEST_F(ChangeDestination, LeadsToMaintenanceFromBothDialogs)
{
    installed("@/old");
    for (const bool bMain : {false, true}) {
        OV_instInstallationMode = 0;
        if (bMain)
            OV_instShowFirstMainDlg();
        else
            XtManageChild(CreatembChangeDestination(OV_instGetMainTopLevelShell()));
        settle();
        Widget dialog = shown(bMain ? "mbMainDlg" : "mbChangeDestination");
        BrowserScript script("fsbChangeDestinationSelection", {full(">@/old"), "y"});
        ASSERT_TRUE(press(dialog, bMain ? "pbMainDlgFolder" : "pushButton"));
        EXPECT_EQ(nullptr, shown(bMain ? "mbMainDlg" : "mbChangeDestination"));
        ASSERT_NE(nullptr, shown("mbMaintenance"));
        /* The page that was left does not come back. */
        ASSERT_TRUE(press(shown("mbMaintenance"), "pbMaintenanceAddRemove"));
        setStates("3:10 4:01"); /* choices */
        ASSERT_TRUE(press(shown("mbCustom"), "Cancel"));
        EXPECT_EQ(nullptr, shown("mbMainDlg"));
        ASSERT_NE(nullptr, shown("mbMaintenance"));
        EXPECT_EQ("2:11 3:11 +p", states());
        XtDestroyWidget(XtParent(shown("mbMaintenance")));
        settle();
    }
}
