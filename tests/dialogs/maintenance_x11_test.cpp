#include <gtest/gtest.h>

#include "dialogs/Maintenance.h"

#include "dialogTest.h"

#include "engine/history.h"
#include "engine/installer.h"

static const char s_caTwo[] = "1 MainDlg 'T' 'D' '' 2\n2 CusDlg 'All' '' '' 0 3 4\n"
                              "3 Suite 'P' '' '' 1\n4 CusDlg 'Group' '' '' 1 5\n"
                              "5 Suite 'Q' '' '' 0\n";

struct Maintenance : DialogTest {
    Widget show()
    {
        Widget dialog = CreatembMaintenance(OV_instGetMainTopLevelShell());
        OV_DisableAddButtonIfNecessary();
        XtManageChild(dialog);
        settle();
        return shown("mbMaintenance");
    }
    /* Presses Remove all and answers its question; the question. */
    static std::string removeAll(Widget dialog, unsigned char answer)
    {
        std::string asked;
        Later later(dialog, 50, [&] {
            Widget box = openBox();
            asked = labelOf(XmMessageBoxGetChild(box, XmDIALOG_MESSAGE_LABEL));
            (void)OV_instActivateButton(XmMessageBoxGetChild(box, answer));
        });
        EXPECT_TRUE(press(dialog, "pbMaintenanceRemoveall"));
        return asked;
    }
};

TEST_F(Maintenance, ShowsWhatItOffers)
{
    describe(s_caTwo);
    free(CDInstPtr->pProductName);
    CDInstPtr->pProductName = strdup("A%sB");
    Widget dialog = show();

    EXPECT_EQ("Welcome to the A%sB installation maintenance program.",
              label(dialog, "laMaintenanceWelcome"));
    EXPECT_EQ("This program lets you make changes to the current installation. Click one\n"
              "of the following options:",
              label(dialog, "label1"));
    EXPECT_EQ("Add new components or remove installed \ncomponents from the current installation.",
              label(dialog, "label"));
    EXPECT_EQ("Remove all previous installed components\n", label(dialog, "label3"));
    EXPECT_EQ("Add/Remove...", label(dialog, "pbMaintenanceAddRemove"));
    EXPECT_EQ("Remove all", label(dialog, "pbMaintenanceRemoveall"));
    EXPECT_EQ("Exit Setup", label(dialog, "Cancel"));
    EXPECT_FALSE(isManaged(dialog, "OK"));
    EXPECT_FALSE(isManaged(dialog, "Help"));
    EXPECT_STREQ("A%sB setup", resourceOf<String>(XtParent(dialog), XmNtitle));
    EXPECT_EQ(resourceOf<Dimension>(OV_instFindWidget(dialog, "pbMaintenanceAddRemove"), XmNwidth),
              resourceOf<Dimension>(OV_instFindWidget(dialog, "pbMaintenanceRemoveall"), XmNwidth));
    EXPECT_TRUE(OV_instMaintenanceExists());
}

TEST_F(Maintenance, OneSuiteCannotBeAddedOrRemoved)
{
    static const struct {
        const char *pConfigs;
        bool bSensitive;
    } s_aRows[] = {
        {"2 CusDlg '' '' '' 0 3\n3 Suite 'P' '' '' 1\n", false},
        {"2 CusDlg '' '' '' 0 3 4\n3 Suite 'P' '' '' 1\n4 Suite 'Q' '' '' 1\n", true},
        {"2 CusDlg '' '' '' 0 3\n3 CusDlg '' '' '' 1 4\n4 Suite 'Q' '' '' 1\n", true},
        {"2 CusDlg '' '' '' 0\n3 Suite 'P' '' '' 1\n", true},
        {"2 Suite 'P' '' '' 1\n", true},
    };

    for (const auto &row : s_aRows) {
        describe(row.pConfigs);
        Widget dialog = show();
        Widget button = OV_instFindWidget(dialog, "pbMaintenanceAddRemove");
        EXPECT_EQ(row.bSensitive, XtIsSensitive(button)) << row.pConfigs;
        EXPECT_TRUE(XtIsSensitive(OV_instFindWidget(dialog, "pbMaintenanceRemoveall")));
        XtDestroyWidget(XtParent(dialog));
        settle();
    }
    OV_DisableAddButtonIfNecessary(); /* without a dialog */
}

TEST_F(Maintenance, AddRemoveStartsFromWhatIsInstalledAndComesBack)
{
    describe(s_caTwo);
    setStates("2:11 3:10 4:01 5:00");
    OV_instSetLastDlg(config(1)); /* a page that was shown before */
    for (int i = 0; i < 2; i++) {
        Widget dialog = show();
        ASSERT_TRUE(press(dialog, "pbMaintenanceAddRemove"));
        EXPECT_EQ(nullptr, shown("mbMaintenance"));
        ASSERT_NE(nullptr, shown("mbCustom"));
        EXPECT_TRUE(isManaged(shown("mbCustom"), "foCustomComponentCount"));
        EXPECT_EQ("2:11 3:11 +", states());
        EXPECT_EQ(1, OV_instInstallationMode);
        setStates("3:10 5:01"); /* choices */
        ASSERT_TRUE(press(shown("mbCustom"), "Cancel"));
        EXPECT_EQ(nullptr, shown("mbCustom"));
        EXPECT_EQ(nullptr, shown("mbMainDlg"));
        ASSERT_NE(nullptr, shown("mbMaintenance"));
        EXPECT_EQ("2:11 3:11 +", states());
        XtDestroyWidget(XtParent(shown("mbMaintenance")));
        settle();
    }
}

TEST_F(Maintenance, RemoveAllAsksFirst)
{
    describe(s_caTwo);
    setStates("2:11 3:11 4:00 5:01");
    Widget dialog = show();

    EXPECT_EQ("Remove all files - are you sure ?", removeAll(dialog, XmDIALOG_CANCEL_BUTTON));
    EXPECT_EQ(dialog, shown("mbMaintenance"));
    EXPECT_EQ("2:11 3:11 5:01 +", states());

    free(CDInstPtr->pInstallDir); /* so that no run can start */
    CDInstPtr->pInstallDir = nullptr;
    EXPECT_EQ("Invalid arguments to CommandLineInstall\n",
              told([&] { (void)removeAll(dialog, XmDIALOG_OK_BUTTON); }));
    EXPECT_EQ("2:11 3:11 5:01 +", states()) << "marks that are left come into the next run";
    EXPECT_NE(nullptr, shown("mbMaintenance")) << "no window is left";
}

static void keepLooking(XtPointer look, XtIntervalId *)
{
    XtAppAddTimeOut(XtWidgetToApplicationContext(DialogTest::s_application), 20, keepLooking, look);
    (*static_cast<std::function<void()> *>(look))();
}

/* In a process of its own, since a run that is over ends the process once its message is read. */
TEST_F(Maintenance, RemoveAllTakesTheTreeAway)
{
    const char *pShared = getenv("REMOVED_TREE");
    const std::string root = pShared ? pShared : m_root;
    const std::string history = root + "the.product/SetupFiles/.Product.his";
    setenv("REMOVED_TREE", root.c_str(), 1);
    const auto gone = [&] { return access(history.c_str(), F_OK) != 0; };

    inChild(
        [&] {
            put("M/a", "12345");
            load("Package 'p' ''\nCopy 'a' 'sub/a' 644 5\nSuite 'P' p\nConfigBegin\n"
                 "2 CusDlg '' '' '' 0 3\n3 Suite 'P' '' '' 1\nConfigEnd\n");
            ASSERT_EQ(0, OV_instSetRootDestination(root.c_str()));
            config(2)->iSelected = 1;
            fs::create_directories(root + "the.product");
            ASSERT_EQ(0, OV_instRunInstallation(CDInstPtr, config(2), 0, fopen("/dev/null", "w")));
            ASSERT_EQ(1, OV_UpdateSuiteHistory(CDInstPtr, config(2), CDInstPtr->pSuiteHead,
                                               OV_instGetDestinationDirectory(), "Product", "3.5"));
            ASSERT_TRUE(fs::exists(root + "the.product/sub/a"));
            (void)removeAll(show(), XmDIALOG_OK_BUTTON);
            std::function<void()> look = [&] {
                if (gone())
                    endChild(true);
            };
            keepLooking(&look, nullptr);
            runFor(s_application, 10000);
            ADD_FAILURE() << "the tree is still there";
        },
        true);
    unsetenv("REMOVED_TREE");
    EXPECT_TRUE(gone());
    EXPECT_FALSE(fs::exists(root + "the.product/sub/a"));
}

TEST_F(Maintenance, FlagsReachDeepAndTellWhatIsMissing)
{
    describe(s_caTwo);
    static_cast<_OV_InstCusDlg *>(config(4)->pData)->aChildren[1] = 99;
    static_cast<_OV_InstCusDlg *>(config(4)->pData)->aChildren[2] = 2; /* round again */
    EXPECT_EQ("Error in SetSelectedFlafs\nError in SetSelectedFlafs\n", printed([] {
                  SetSelectedFlags(nullptr, 1);
                  SetSelectedFlags(config(2), 1);
              }));
    EXPECT_EQ("2:11 3:01 4:11 5:01 +", states());
    suite("P")->iState = suite("Q")->iState = suite("R")->iState = 1;
    EXPECT_EQ("Error in SetInstalledFlags\nError in SetInstalledFlags\n", printed([] {
                  SetInstalledFlags(nullptr, 0);
                  SetInstalledFlags(config(2), 0);
              }));
    EXPECT_EQ(0, suite("P")->iState + suite("Q")->iState);
    EXPECT_EQ(1, suite("R")->iState);
    EXPECT_EQ("2:11 3:01 4:11 5:01 +", states());
}
