#include <gtest/gtest.h>

#include "dialogs/Maintenance.h"

#include "dialogTest.h"

static const char s_caTwo[] = "1 MainDlg 'T' 'D' '' 2\n2 CusDlg 'All' '' '' 0 3 4\n"
                              "3 Suite 'P' '' '' 1\n4 CusDlg 'Group' '' '' 1 5\n"
                              "5 Suite 'Q' '' '' 0\n";

struct Maintenance : DialogTest {
    Widget show()
    {
        Widget dialog = CreatembMaintenance(main());
        OV_DisableAddButtonIfNecessary();
        return managed(dialog);
    }
};

TEST_F(Maintenance, OneSuiteCannotBeAddedOrRemoved)
{
    static const std::pair<const char *, bool> s_aRows[] = {
        {"2 CusDlg '' '' '' 0 3\n3 Suite 'P' '' '' 1\n", false},
        {"2 CusDlg '' '' '' 0 3 4\n3 Suite 'P' '' '' 1\n4 Suite 'Q' '' '' 1\n", true},
        {"2 CusDlg '' '' '' 0 3\n3 CusDlg '' '' '' 1 4\n4 Suite 'Q' '' '' 1\n", true},
        {"2 CusDlg '' '' '' 0\n3 Suite 'P' '' '' 1\n", true},
        {"2 Suite 'P' '' '' 1\n", true},
    };

    for (const auto &[pConfigs, bSensitive] : s_aRows) {
        describe(pConfigs);
        Widget dialog = show();
        Widget change = OV_instFindWidget(dialog, "pbMaintenanceAddRemove");
        Widget remove = OV_instFindWidget(dialog, "pbMaintenanceRemoveall");
        EXPECT_EQ(bSensitive, XtIsSensitive(change)) << pConfigs;
        EXPECT_TRUE(XtIsSensitive(remove));
        EXPECT_EQ(change->core.width, remove->core.width);
        XtDestroyWidget(XtParent(dialog));
        settle();
    }
    OV_DisableAddButtonIfNecessary(); /* without a dialog */
}

TEST_F(Maintenance, ARemovalThatCannotStartLeavesThePage)
{
    describe(s_caTwo);
    setStates("2:11 3:11 4:00 5:01");
    Widget dialog = show();
    free(CDInstPtr->pInstallDir); /* so that no run can start */
    CDInstPtr->pInstallDir = nullptr;
    EXPECT_EQ("Invalid arguments to CommandLineInstall\n", told([&] {
                  EXPECT_EQ("Remove all files - are you sure ?|",
                            whileUsed({"y"}, [&] { press(dialog, "pbMaintenanceRemoveall"); }));
              }));
    EXPECT_EQ("2:11 3:11 5:01 +", states()) << "marks that are left come into the next run";
    EXPECT_NE(nullptr, shown("mbMaintenance")) << "no window is left";
}
