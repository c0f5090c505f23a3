#include <gtest/gtest.h>

#include "dialogs/ChangeDestination.h"

#include "dialogTest.h"

static const char s_caConfigs[] =
    "1 MainDlg 'T' 'D' '' 2\n2 CusDlg 'All' '' '' 0 3 4\n3 Suite 'P' '' '' 1\n"
    "4 Suite 'Q' '' '' 0\n";

struct ChangeDestination : DialogTest {
    /* Opens the browser and does what the steps say. */
    std::string browse(const Steps &steps)
    {
        return whileUsed(steps, [] { OV_instChangeDestination(main()); });
    }
    std::string root() const { return shortened(OV_instGetRootDestinationDirectory()); }
    /* An installation of the package p from another medium is in "old". */
    void prepare() override
    {
        describe(s_caConfigs);
        put("@/old/the.product/SetupFiles/.Product.his",
            full("HistoryFileVersion 2\nProduct\n3.5\n@/elsewhere/\nPackage \"p\" Installed\n"));
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
    ASSERT_EQ(0, OV_instSetRootDestination(full("@/none/yet").c_str()));
    fs::current_path(m_scratch / "other");
    EXPECT_EQ("Product setup: @/other/ Destination sub -> @/none/yet/|", browse({"?", "c"}));
    EXPECT_EQ("@/none/yet/", root());
}

TEST_F(ChangeDestination, TakesWhatTheUserChooses)
{
    static const auto creates = [](const std::string &path) {
        return "The destination folder:\n'" + path +
               "'\ndoes not exist. Do you want to create it?|";
    };
    static const struct {
        Steps steps;
        std::string seen;
        const char *pRoot;
    } s_aRows[] = {
        {{">@/other"}, "", "@/other/"},
        {{">other/sub"}, "", "@/other/sub/"},
        {{">", "y"}, "No directory is selected.|open", "@/root/"},
        {{">@/n%s w", "n", ">@/other"}, creates("@/n%s w"), "@/other/"},
        {{">n w/x", "y"}, creates("@/n w/x"), "@/n w/x/"},
        {{">@/file/x", "y", "y"},
         creates("@/file/x") + "Unable to create install directory:\n@/file/x|open",
         "@/root/"},
    };

    put("@/file", "");
    for (const auto &row : s_aRows) {
        ASSERT_EQ(0, OV_instSetRootDestination(m_root.c_str()));
        EXPECT_EQ(row.seen, browse(row.steps)) << row.steps[0].what;
        EXPECT_EQ(row.pRoot, root()) << row.steps[0].what;
        EXPECT_EQ(0, OV_instInstallationMode);
    }
    EXPECT_FALSE(exists("@/n%s w"));
    EXPECT_EQ(0755u, modeOf("@/n w/x"));
    fs::current_path(m_scratch / "other/sub"); /* only full paths without a working directory */
    fs::remove(m_scratch / "other/sub");
    EXPECT_EQ("Internal error:\n(OV_instChangeDestinationBrowseOkCB) can't get current working "
              "directory|",
              browse({">other", "y", ">@/other"}));
}

TEST_F(ChangeDestination, AnInstallationThatIsDeclinedLeavesNoMarks)
{
    const std::string question =
        "Previous installation found.\nDo you want to run setup in maintenance mode ?|";
    const std::string before = states();
    const std::string source = CDInstPtr->pSourceDir;

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

/* On the page itself. What its field cannot show of the destination is not typed away. */
TEST_F(ChangeDestination, ThePageTakesWhatWasTyped)
{
    static const std::string s_creates = "The destination folder:\n'@/n w'\n"
                                         "does not exist. Do you want to create it?|";
    static const std::string s_found =
        "Previous installation found.\nDo you want to run setup in maintenance mode ?|";
    static const struct {
        const char *pTyped; /* null for nothing */
        Steps steps;
        std::string seen;
        const char *pRoot, *pThen, *pHolds;
    } s_aRows[] = {
        {nullptr, {}, "", "@/d\xc3\xb6/", "mbMainDlg", ""},
        {"@/other", {}, "", "@/other/", "mbMainDlg", ""},
        {"", {"y"}, "No directory is selected.|", "@/d\xc3\xb6/", "mbChangeDestination", ""},
        {"@/n w", {"n"}, s_creates, "@/d\xc3\xb6/", "mbChangeDestination", "@/n w"},
        {"@/n w", {"y"}, s_creates, "@/n w/", "mbMainDlg", ""},
        {"@/old", {"n"}, s_found, "@/old/", "mbChangeDestination", "@/old/"},
        {"@/old", {"y"}, s_found, "@/old/", "mbMaintenance", ""},
    };

    (void)setlocale(LC_CTYPE, "C");
    for (const auto &row : s_aRows) {
        SCOPED_TRACE(row.pThen + row.seen);
        ASSERT_EQ(0, OV_instSetRootDestination(full("@/d\xc3\xb6").c_str()));
        Widget dialog = managed(CreatembChangeDestination(main()));
        Widget field = OV_instFindWidget(dialog, "tfChangeDestination");
        EXPECT_EQ("@/d?/", shortened(textIn(field)));
        if (row.pTyped)
            XmTextFieldSetString(field, full(row.pTyped).data());
        EXPECT_EQ(row.seen, whileUsed(row.steps, [&] { press(dialog, "OK"); }));
        EXPECT_EQ(row.pRoot, root());
        ASSERT_NE(nullptr, shown(row.pThen));
        if (*row.pHolds) {
            EXPECT_EQ(row.pHolds, shortened(textIn(field)));
        }
        XtDestroyWidget(XtParent(shown(row.pThen)));
        settle();
    }
}

/* From the main dialog as from the one before it. */
TEST_F(ChangeDestination, TheMainDialogLeadsToMaintenanceForGood)
{
    OV_instShowFirstMainDlg();
    settle();
    (void)whileUsed({">@/other"}, [] { press(shown("mbMainDlg"), "pbMainDlgFolder"); });
    EXPECT_EQ("@/other/",
              shortened(textIn(OV_instFindWidget(shown("mbMainDlg"), "txMainDlgFolder"))));
    (void)whileUsed({">@/old", "y"}, [] { press(shown("mbMainDlg"), "pbMainDlgFolder"); });
    EXPECT_EQ(nullptr, shown("mbMainDlg"));
    /* The page that was left does not come back. */
    ASSERT_TRUE(press(shown("mbMaintenance"), "pbMaintenanceAddRemove"));
    setStates("3:10 4:01"); /* choices */
    ASSERT_TRUE(press(shown("mbCustom"), "Cancel"));
    EXPECT_EQ(nullptr, shown("mbMainDlg"));
    ASSERT_NE(nullptr, shown("mbMaintenance"));
    EXPECT_EQ("2:11 3:11 +p", states());
}
