#include <gtest/gtest.h>

#include <algorithm>

#include "gallery.h"

/* The widgets that each dialog has to have, one a line: its name, kind, parent ("*" where it may be
 * any) and label, or the shell's title, with "|" for line ends. Resources and lookups name them. */
struct Trees : Gallery {
    static std::string kindOf(Widget widget)
    {
        static const std::pair<const char *, const char *> s_aKinds[] = {
            {"XmDialogShell", "shell"},   {"XmMessageBox", "box"},
            {"XmForm", "form"},           {"XmFrame", "frame"},
            {"XmRowColumn", "rows"},      {"XmLabel", "label"},
            {"XmPushButton", "button"},   {"XmPushButtonGadget", "button"},
            {"XmToggleButton", "toggle"}, {"XmText", "text"},
            {"XmTextField", "field"},     {"XmScrolledWindow", "window"},
            {"XmDrawingArea", "area"},
        };
        for (const auto &[pClass, pKind] : s_aKinds)
            if (!strcmp(pClass, XtClass(widget)->core_class.class_name))
                return pKind;
        return XtClass(widget)->core_class.class_name;
    }
    static std::string textOf(Widget widget)
    {
        if (XtIsShell(widget))
            return resourceOf<String>(widget, XmNtitle);
        const std::string kind = kindOf(widget);
        return (kind == "label" || kind == "button" || kind == "toggle") &&
                       resourceOf<unsigned char>(widget, XmNlabelType) == XmSTRING
                   ? replaced(labelOf(widget), "\n", "|")
                   : "";
    }
    /* Every line that could be said of the widgets from here on. */
    static void list(Widget widget, std::vector<std::string> *pLines)
    {
        for (const char *pParent : {XtName(XtParent(widget)), (char *)"*"})
            pLines->push_back(trimmed(std::string(XtName(widget)) + " " + kindOf(widget) + " " +
                                      pParent + " " + textOf(widget)));
        if (!XtIsComposite(widget))
            return;
        const WidgetList aChildren = resourceOf<WidgetList>(widget, XmNchildren);
        for (Cardinal i = 0; i < resourceOf<Cardinal>(widget, XmNnumChildren); i++)
            list(aChildren[i], pLines);
    }
    static void expectTree(Widget dialog, const std::string &table)
    {
        ASSERT_NE(nullptr, dialog) << table;
        std::vector<std::string> lines;
        list(XtIsShell(XtParent(dialog)) && table.find(" shell ") != table.npos ? XtParent(dialog)
                                                                                : dialog,
             &lines);
        std::istringstream in(table);
        for (std::string line; std::getline(in, line);)
            EXPECT_TRUE(trimmed(line).empty() ||
                        std::count(lines.begin(), lines.end(), trimmed(line)) == 1)
                << XtName(dialog) << ": " << trimmed(line);
    }
    /* What is shown goes with the main shell. */
    void SetUp() override
    {
        Gallery::SetUp();
        if (!IsSkipped()) {
            m_product = "Product";
            fillModel();
        }
    }
};

TEST_F(Trees, PagesOfChoices)
{
    std::string slots;
    for (const char *pSlot : {"1 2", "2 4", "3 6", "4 8"}) {
        const std::string slot(1, pSlot[0]), column = std::string("rowColumn") + pSlot[2];
        slots += "rcMainDlg" + slot + " rows rowColumn\n" + column + " rows rcMainDlg" + slot +
                 "\nlaMainDlg" + slot + "Product label " + column + "\nlaMainDlg" + slot +
                 "Description label " + column + "\n";
        EXPECT_NE(nullptr, XtNameToWidget(CreatembMainDlg(main()),
                                          ("*rcMainDlg" + slot + ".pbMainDlg" + slot).c_str()));
    }
    expectTree(CreatembMainDlg(main()), slots + R"(
        dsMainDlg shell * ORVANE|Setup
        mbMainDlg box dsMainDlg
        rowColumn rows mbMainDlg
        laMainDlg label rowColumn To choose the installation you want, click on the following buttons
        frame1 frame rowColumn
        form form frame1
        laMainDlgAvailableSpace label form
        label label form Available space:
        rowColumn9 rows form
        txMainDlgFolder field rowColumn9
        pbMainDlgFolder button rowColumn9 Change Destination
    )");
    expectTree(CreatembMaintenance(main()), R"(
        dsMaintenance shell * ORVANE|Setup
        mbMaintenance box dsMaintenance
        Cancel button mbMaintenance Exit Setup
        rowColumn rows mbMaintenance
        frame frame rowColumn
        form form frame
        label1 label form This program lets you make changes to the current installation. Click one|of the following options:
        laMaintenanceWelcome label form Welcome to the Product installation maintenance program.
        rcMaintenanceAddRemove rows rowColumn
        pbMaintenanceAddRemove button rcMaintenanceAddRemove Add/Remove...
        rowColumn4 rows rcMaintenanceAddRemove
        label label rowColumn4 Add new components or remove installed |components from the current installation.
        rowColumn3 rows rowColumn
        pbMaintenanceRemoveall button rowColumn3 Remove all
        rowColumn6 rows rowColumn3
        label3 label rowColumn6 Remove all previous installed components|
    )");
}

TEST_F(Trees, CustomPage)
{
    expectTree(CreatembCustom(main()), R"(
        dsCustomDlg shell * ORVANE|Setup
        mbCustom box dsCustomDlg
        OK button mbCustom Continue
        foCustom form mbCustom
        foCustomComponentCount form *
        laCustomRequired1 label foCustomComponentCount Components to Add:
        laCustomRequiredValue1 label foCustomComponentCount
        laCustomAvailable1 label foCustomComponentCount Components to Remove:
        laCustomAvailableValue1 label foCustomComponentCount
        foCustomButtons form foCustom
        foCustomSelected form foCustom
        foCustomSpace form *
        laCustomRequired label foCustomSpace Space required:
        laCustomRequiredValue label foCustomSpace
        laCustomAvailable label foCustomSpace Space available:
        laCustomAvailableValue label foCustomSpace
        laCustomFolder label * Folder for Currently Selected Options:
        frCustomFolder frame *
        foCustomFolder form frCustomFolder
        laCustomFolderPath label foCustomFolder Destination path
        foCustomDescription form foCustom
        frCustomDescription frame foCustomDescription
        foCustomDescriptionItem form frCustomDescription
        pbCustomChangeOption button foCustomDescriptionItem Change Option
        pbCustomDescriptionItem button foCustomDescriptionItem Select All
        laCustomDescriptionItem label foCustomDescriptionItem
        laCustomDescription label foCustomDescription Description:
        foCustomOptions form foCustom
        swCustomOptions window foCustomOptions
        rcCustomOptions rows *
        laCustomOptions label foCustomOptions Options:
    )");
    Widget custom = customPage(0);
    Widget row = XtNameToWidget(custom, "*foCustomOptionsItem");
    expectTree(row, R"(
        foCustomOptionsItem form rcCustomOptions
        tbCustomItem toggle foCustomOptionsItem
        laCustomItemName label foCustomOptionsItem Q
        laCustomItemSize label foCustomOptionsItem  2.00 MB
    )");
    const std::string begin = "In the Options list, select the items you want installed; clear the "
                              "items you do not want installed.";
    EXPECT_EQ(0u, replaced(label(custom, "laCustom"), "\n", " ").find(begin));
}

TEST_F(Trees, FirstPages)
{
    const std::string confirm = "Confirm that the information you entered is correct. If it is,|"
                                "click OK. To change any of the information, click Change.|";

    expectTree(CreatembWelcome(main()), R"(
        dsWelcome shell * ORVANE|Setup
        mbWelcome box dsWelcome
        OK button mbWelcome Continue
        Cancel button mbWelcome Exit Setup
        foWelcome form mbWelcome
        frWelcomeTop frame foWelcome
        form form frWelcomeTop
        laWelcomeTop label form Welcome to the "Product" setup program.
        laWelcomeMiddle label form
    )");
    expectTree(CreatembEULA(main()), R"(
        dsEULA shell * End User License Agreement
        mbEULA box dsEULA
        OK button mbEULA I ACCEPT
        Cancel button mbEULA I DECLINE
        scrolledWindow window mbEULA
        txEULA text scrolledWindow
    )");
    expectTree(CreatembNameOrg(main()), R"(
        dsNameOrg shell * ORVANE|Setup
        mbNameOrg box dsNameOrg
        Cancel button mbNameOrg Exit Setup
        frame frame mbNameOrg
        laNameOrg label * Enter your full name in the box below. You may also enter|the name of your organization. Setup will use this information|for subsequent installations of the product.
        laNameOrgName label * Name:
        laNameOrgOrg label * Organization:
        txNameOrgName field *
        txNameOrgOrg field *
    )");
    expectTree(CreatembNameOrgConfirm(main()), R"(
        dsNameOrgConfirm shell * ORVANE|Setup
        mbNameOrgConfirm box dsNameOrgConfirm
        Cancel button mbNameOrgConfirm Change
        laNameOrgConfirmName label *
        laNameOrgConfirmOrg label *
        laNameOrg1 label * )" + confirm);
    expectTree(CreatembReseller(main()), R"(
        dsReseller shell * ORVANE|Setup
        mbReseller box dsReseller
        Cancel button mbReseller Exit Setup
        laResellerName label * Name:
        laResellerPhone label * Phone:
        laResellerEmail label * Email:
        txResellerName field *
        txResellerPhone field *
        txResellerEmail field *
    )");
    EXPECT_EQ(0u, label(XtNameToWidget(main(), "*mbReseller"), "laReseller")
                      .find("Information about your Reseller or Dealer:\n\n"));
    expectTree(CreatembResellerConfirm(main()), R"(
        dsResellerConfirm shell * ORVANE|Setup
        mbResellerConfirm box dsResellerConfirm
        Cancel button mbResellerConfirm Change
        laResellerConfirmName label *
        laResellerConfirmPhone label *
        laResellerConfirmEmail label *
        laReseller1 label * )" + confirm);
}

TEST_F(Trees, DestinationAndProgress)
{
    Widget destination = CreatembChangeDestination(main());
    expectTree(destination, R"(
        dsChangeDestination shell * ORVANE|Setup
        mbChangeDestination box dsChangeDestination
        Cancel button mbChangeDestination Exit Setup
        rowColumn rows mbChangeDestination
        frame frame rowColumn
        form form frame
        label2 label form If this is a network installation,|please type the network path (/MountPoint/Orvane)
        form1 form form
        pushButton button form1 Change Destination
        tfChangeDestination field form1
        laChangeDestinationAvailableSpace label form1
        label1 label form1 Available space:
    )");
    EXPECT_EQ(0u, labelOf(XtNameToWidget(destination, "rowColumn.label"))
                      .find("Setup will install the program in the following destination "
                            "directory.\n\nTo install to this directory, click OK.\n\n"
                            "To install to a different directory, cli"));
    expectTree(CreatembProgress(main()), R"(
        dsProgress shell * ORVANE|Setup
        mbProgress box dsProgress
        form form mbProgress
        frame frame form
        form1 form frame
        frame1 frame form1
        daProgress area frame1
        laProgressDestination label * RRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRR
        laProgressAction label * Destination Files:
    )");
}

TEST_F(Trees, LogAndExit)
{
    Widget log = CreatembViewlog(main());
    expectTree(log, R"(
        dsViewlog shell * ORVANE|Setup
        mbViewlog box dsViewlog
        OK button mbViewlog Done
        frame frame mbViewlog
        form form frame
        form1 form form
        label label * Installation Setup Log
        pushButton button * View Log
        label1 label * View information about events that occur|during setup.
    )");
    managed(log);
    const CorePart &core = XtParent(log)->core;
    EXPECT_EQ("7 31 425 248", std::to_string(core.x) + " " + std::to_string(core.y) + " " +
                                  std::to_string(core.width) + " " + std::to_string(core.height));
    expectTree(CreatembExitSetup(main()), R"(
        dsExitSetup shell * Product setup
        mbExitSetup box dsExitSetup
        OK button mbExitSetup Resume Setup
        Cancel button mbExitSetup Exit Setup
    )");
    expectTree(CreatembExitSetupFinish(main()), R"(
        dsExitSetupFinish shell * Product setup
        mbExitSetupFinish box dsExitSetupFinish
    )");
    expectTree(CreatembExitSetupComplete(main()), R"(
        dsExitSetupComplete shell * Product setup
        mbExitSetupComplete box dsExitSetupComplete
    )");
    expectTree(CreatefoExit(main()), R"(
        foExit form *
        foExitButtons form foExit
        pbExitExit button foExitButtons Exit Setup
        pbExitResume button foExitButtons Resume Setup
        foExitLabels form foExit
        laExitStatus label foExitLabels Setup status
        laExitMessage label foExitLabels Are you sure you want to Exit?
        laExitPicture label foExitLabels
    )");
}

TEST_F(Trees, PreferencesAndAccounts)
{
    Widget migration = CreatemigrationDlg(main());
    expectTree(migration, R"(
        migrationShell shell * migrationShell
        migrationDlg form migrationShell
        labelTitle label * User's preferences :
        separator XmSeparator *
        frame1 frame *
        form form frame1
        pushButtonBrowse1 button form Browse...
        textFieldUserRoot field form
        labelDescription1 label form Click 'Browse' to change the default location of your user's preferences.
        frame frame *
        form1 form frame
        labelDescription2 label form1 Setup can automatically migrate any selected preferences from a previous version |of ORVANE|KIVO to the current installation.||Select a preferences path below, or click 'Browse' for another location.
        toggleButtonMigrate toggle form1 Migrate user's preferences
        scrolledWindow1 window form1
        migrationList XmList scrolledWindow1
        textFieldPath field form1
        pushButtonBrowse button form1 Browse...
        pushButtonExitSetup button * Exit Setup
        pushButtonOk button * Continue
    )");
    expectTree(CreatembUpdateUser(main()), R"(
        dsUpdateUser shell * Update User
        mbUpdateUser box dsUpdateUser
        OK button mbUpdateUser Update
        Cancel button mbUpdateUser Continue
        rowColumn1 rows mbUpdateUser
        frame2 frame rowColumn1
        form form frame2
        txUpdateUserUsername field form
        pbUpdateUserSelectUser button form Select User
        frame3 frame rowColumn1
        rowColumn3 rows frame3
        toggleButton toggle rowColumn3 Copy .kivo_2.01 file in user account from $OV_HOME
        toggleButton1 toggle rowColumn3 Create new .kivo_2.01 file in user account
    )");
    Widget shell = XtVaCreatePopupShell("list", topLevelShellWidgetClass, main(), nullptr);
    expectTree(CreateswUpdateUserUserList(shell), R"(
        swUpdateUserUserList window list
        listUpdateUserUsernames XmList swUpdateUserUserList
    )");
}

TEST_F(Trees, BrowsersAndBoxes)
{
    const auto list = [](Widget box) {
        XmString label = resourceOf<XmString>(box, XmNfileListLabelString);
        const std::string text = components(label);
        XmStringFree(label);
        return text;
    };
    visitBoxes([&](const std::string &name, Widget box) {
        const std::string title = resourceOf<String>(XtParent(box), XmNtitle);
        const std::string shell = XtName(XtParent(box));
        if (name == "destination browser") {
            EXPECT_EQ("dsChangeDestinationSelection/Product setup", shell + "/" + title);
            EXPECT_EQ("L 'Destination'", list(box));
            EXPECT_EQ(500, box->core.width);
            EXPECT_EQ(450, box->core.height);
        } else if (name == "source browser") {
            EXPECT_EQ("Locate base.tar", shell);
            EXPECT_EQ("L 'Source'", list(box));
        } else if (name == "question" || name == "prompt" || name == "notice") {
            EXPECT_EQ("Orvane Message", shell);
            EXPECT_FALSE(XtIsManaged(XtNameToWidget(box, "Separator")));
        }
    });
}
