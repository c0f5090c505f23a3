#include <gtest/gtest.h>

#include "dialogs/Maintenance.h"

#include "dialogTest.h"

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
            asked = message(box);
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
    EXPECT_EQ("A%sB setup", title(dialog));
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
