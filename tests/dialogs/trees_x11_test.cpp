#include <gtest/gtest.h>

#include <map>

#include "dialogs/gallery.h"

/* The widgets that a dialog has to have, by their parents ("*" where it may be any): "parent: kind
 * name label; kind name label", with "|" for line ends; a text of the moment is left out, and one
 * that is only begun, "...", may be broken anywhere. Resources and lookups name them. */
struct Tree {
    const char *pShell, *pTitle; /* null where it is the program's own */
    const char *pWidgets;
};

static const char s_caConfirm[] = "Confirm that the information you entered is correct. If it is,|"
                                  "click OK. To change any of the information, click Change.|";

// clang-format off
static const std::map<std::string, Tree> s_trees = {
    {"welcome", {"dsWelcome", nullptr, R"(dsWelcome: box mbWelcome
        mbWelcome: button OK Continue; button Cancel Exit Setup; form foWelcome
        foWelcome: frame frWelcomeTop
        frWelcomeTop: form form
        form: label laWelcomeTop Welcome to the "Product" setup program.; label laWelcomeMiddle)"}},
    {"agreement", {"dsEULA", "End User License Agreement", R"(dsEULA: box mbEULA
        mbEULA: button OK I ACCEPT; button Cancel I DECLINE; window scrolledWindow
        scrolledWindow: text txEULA)"}},
    {"user", {"dsNameOrg", nullptr, R"(dsNameOrg: box mbNameOrg
        mbNameOrg: button Cancel Exit Setup; frame frame
        *: label laNameOrg Enter your full name in the box below. You may also enter|the name of your organization. Setup will use this information|for subsequent installations of the product.
        *: label laNameOrgName Name:; label laNameOrgOrg Organization:
        *: field txNameOrgName; field txNameOrgOrg)"}},
    {"user confirmed", {"dsNameOrgConfirm", nullptr, R"(dsNameOrgConfirm: box mbNameOrgConfirm
        mbNameOrgConfirm: button Cancel Change
        *: label laNameOrgConfirmName; label laNameOrgConfirmOrg; label laNameOrg1 CONFIRM)"}},
    {"reseller", {"dsReseller", nullptr, R"(dsReseller: box mbReseller
        mbReseller: button Cancel Exit Setup
        *: label laResellerName Name:; label laResellerPhone Phone:; label laResellerEmail Email:
        *: field txResellerName; field txResellerPhone; field txResellerEmail; label laReseller Information about your Reseller or Dealer:||...)"}},
    {"reseller confirmed", {"dsResellerConfirm", nullptr, R"(dsResellerConfirm: box mbResellerConfirm
        mbResellerConfirm: button Cancel Change
        *: label laResellerConfirmName; label laResellerConfirmPhone
        *: label laResellerConfirmEmail; label laReseller1 CONFIRM)"}},
    {"destination", {"dsChangeDestination", nullptr, R"(dsChangeDestination: box mbChangeDestination
        mbChangeDestination: button Cancel Exit Setup; rows rowColumn
        rowColumn: frame frame
        rowColumn: label label Setup will install the program in the following destination directory.||To install to this directory, click OK.||To install to a different directory, click Change Destination...
        frame: form form
        form: label label2 If this is a network installation,|please type the network path (/MountPoint/Orvane); form form1
        form1: button pushButton Change Destination; field tfChangeDestination
        form1: label laChangeDestinationAvailableSpace; label label1 Available space:)"}},
    {"main page", {"dsMainDlg", nullptr, R"(dsMainDlg: box mbMainDlg
        mbMainDlg: button Cancel Exit Setup; rows rowColumn
        rowColumn: label laMainDlg To choose the installation you want, click on the following buttons
        rowColumn: frame frame1; rows rcMainDlg1; rows rcMainDlg2; rows rcMainDlg3; rows rcMainDlg4
        frame1: form form
        form: label laMainDlgAvailableSpace; label label Available space:; rows rowColumn9
        rowColumn9: field txMainDlgFolder; button pbMainDlgFolder Change Destination
        rcMainDlg1: button pbMainDlg1; rows rowColumn2
        rcMainDlg2: button pbMainDlg2; rows rowColumn4
        rcMainDlg3: button pbMainDlg3; rows rowColumn6
        rcMainDlg4: button pbMainDlg4; rows rowColumn8
        rowColumn2: label laMainDlg1Product; label laMainDlg1Description
        rowColumn4: label laMainDlg2Product; label laMainDlg2Description
        rowColumn6: label laMainDlg3Product; label laMainDlg3Description
        rowColumn8: label laMainDlg4Product; label laMainDlg4Description)"}},
    {"components", {"dsCustomDlg", nullptr, R"(dsCustomDlg: box mbCustom
        mbCustom: button OK Continue; form foCustom
        *: label laCustom; form foCustomComponentCount; form foCustomSpace; frame frCustomFolder; rows rcCustomOptions
        foCustomComponentCount: label laCustomRequired1 Components to Add:; label laCustomRequiredValue1
        foCustomComponentCount: label laCustomAvailable1 Components to Remove:; label laCustomAvailableValue1
        foCustom: form foCustomButtons; form foCustomSelected; form foCustomDescription; form foCustomOptions
        foCustomSpace: label laCustomRequired Space required:; label laCustomRequiredValue
        foCustomSpace: label laCustomAvailable Space available:; label laCustomAvailableValue
        *: label laCustomFolder Folder for Currently Selected Options:
        frCustomFolder: form foCustomFolder
        foCustomFolder: label laCustomFolderPath
        foCustomDescription: frame frCustomDescription; label laCustomDescription Description:
        frCustomDescription: form foCustomDescriptionItem
        foCustomDescriptionItem: button pbCustomChangeOption Change Option; label laCustomDescriptionItem
        foCustomDescriptionItem: button pbCustomDescriptionItem Select All
        foCustomOptions: window swCustomOptions; label laCustomOptions Options:)"}},
    {"one option", {nullptr, nullptr, R"(rcCustomOptions: form foCustomOptionsItem
        foCustomOptionsItem: toggle tbCustomItem; label laCustomItemName Q
        foCustomOptionsItem: label laCustomItemSize  2.00 MB)"}},
    {"maintenance", {"dsMaintenance", nullptr, R"(dsMaintenance: box mbMaintenance
        mbMaintenance: button Cancel Exit Setup; rows rowColumn
        rowColumn: frame frame; rows rcMaintenanceAddRemove; rows rowColumn3
        frame: form form
        form: label label1 This program lets you make changes to the current installation. Click one|of the following options:
        form: label laMaintenanceWelcome Welcome to the Product installation maintenance program.
        rcMaintenanceAddRemove: button pbMaintenanceAddRemove Add/Remove...; rows rowColumn4
        rowColumn4: label label Add new components or remove installed |components from the current installation.
        rowColumn3: button pbMaintenanceRemoveall Remove all; rows rowColumn6
        rowColumn6: label label3 Remove all previous installed components|)"}},
    {"migration", {"migrationShell", nullptr, R"(migrationShell: form migrationDlg
        *: label labelTitle User's preferences :; XmSeparator separator; frame frame1; frame frame
        frame1: form form
        form: button pushButtonBrowse1 Browse...; field textFieldUserRoot
        form: label labelDescription1 Click 'Browse' to change the default location of your user's preferences.
        frame: form form1
        form1: label labelDescription2 Setup can automatically migrate any selected preferences from a previous version |of ORVANE|KIVO to the current installation.||Select a preferences path below, or click 'Browse' for another location.
        form1: toggle toggleButtonMigrate Migrate user's preferences; window scrolledWindow1
        scrolledWindow1: XmList migrationList
        form1: field textFieldPath; button pushButtonBrowse Browse...
        *: button pushButtonExitSetup Exit Setup; button pushButtonOk Continue)"}},
    {"account", {"dsUpdateUser", "Update User", R"(dsUpdateUser: box mbUpdateUser
        mbUpdateUser: button OK Update; button Cancel Continue; rows rowColumn1
        rowColumn1: frame frame2; frame frame3
        frame2: form form
        form: field txUpdateUserUsername; button pbUpdateUserSelectUser Select User
        frame3: rows rowColumn3
        rowColumn3: toggle toggleButton Copy .kivo_2.01 file in user account from $OV_HOME
        rowColumn3: toggle toggleButton1 Create new .kivo_2.01 file in user account)"}},
    {"users", {nullptr, nullptr, R"(list: window swUpdateUserUserList
        swUpdateUserUserList: XmList listUpdateUserUsernames)"}},
    {"progress", {"dsProgress", nullptr, R"(dsProgress: box mbProgress
        mbProgress: form form
        form: frame frame
        frame: form form1
        form1: frame frame1
        frame1: area daProgress
        *: label laProgressDestination; label laProgressAction Destination Files:)"}},
    {"log dialog", {"dsViewlog", "ORVANE|Setup", R"(dsViewlog: box mbViewlog
        mbViewlog: button OK Done; frame frame
        frame: form form
        form: form form1
        *: label label Installation Setup Log; button pushButton View Log
        *: label label1 View information about events that occur|during setup.)"}},
    {"exit question", {"dsExitSetup", nullptr, R"(dsExitSetup: box mbExitSetup
        mbExitSetup: button OK Resume Setup; button Cancel Exit Setup)"}},
    {"exit notice", {"dsExitSetupFinish", nullptr, "dsExitSetupFinish: box mbExitSetupFinish"}},
    {"completion", {"dsExitSetupComplete", nullptr, "dsExitSetupComplete: box mbExitSetupComplete"}},
    {"older exit page", {nullptr, nullptr, R"(foExit: form foExitButtons; form foExitLabels
        foExitButtons: button pbExitExit Exit Setup; button pbExitResume Resume Setup
        foExitLabels: label laExitStatus Setup status; label laExitMessage Are you sure you want to Exit?
        foExitLabels: label laExitPicture)"}},
    {"question", {"Orvane Message", "Orvane Message", ""}},
    {"destination browser", {"dsChangeDestinationSelection", nullptr, ""}},
    {"source browser", {"Locate base.tar", "Locate base.tar", ""}},
};
// clang-format on

struct Trees : Gallery {
    std::map<std::string, Tree> m_left = s_trees;

    static std::string kindOf(Widget widget)
    {
        static const std::map<std::string, const char *> s_kinds = {
            {"XmMessageBox", "box"},      {"XmForm", "form"},
            {"XmFrame", "frame"},         {"XmRowColumn", "rows"},
            {"XmLabel", "label"},         {"XmPushButton", "button"},
            {"XmToggleButton", "toggle"}, {"XmPushButtonGadget", "button"},
            {"XmText", "text"},           {"XmScrolledWindow", "window"},
            {"XmTextField", "field"},     {"XmDrawingArea", "area"},
        };
        const char *pClass = XtClass(widget)->core_class.class_name;
        const auto kind = s_kinds.find(pClass);
        return kind == s_kinds.end() ? pClass : kind->second;
    }
    /* Every line that could be said of the widgets from here on. */
    static void list(Widget widget, std::vector<std::string> *pLines)
    {
        const std::string said = kindOf(widget) + " " + XtName(widget);
        for (const std::string parent : {XtName(XtParent(widget)), (char *)"*"}) {
            pLines->push_back(parent + ": " + said);
            if (XmIsLabel(widget) || XmIsLabelGadget(widget))
                pLines->push_back(parent + ": " + said + " " +
                                  replaced(labelOf(widget), "\n", "|"));
        }
        if (!XtIsComposite(widget))
            return;
        const WidgetList aChildren = resourceOf<WidgetList>(widget, XmNchildren);
        for (Cardinal i = 0; i < resourceOf<Cardinal>(widget, XmNnumChildren); i++)
            list(aChildren[i], pLines);
    }
    static bool isSaid(const std::string &said, const std::string &given)
    {
        const size_t end = said.rfind("...");
        return end == said.npos || given.find("...") != given.npos
                   ? said == given
                   : replaced(given, "|", " ").find(replaced(said.substr(0, end), "|", " ")) == 0;
    }
    void expectTree(const std::string &name, Widget dialog)
    {
        const auto tree = s_trees.find(name);
        if (tree == s_trees.end())
            return;
        const auto &[pShell, pTitle, pWidgets] = tree->second;
        ASSERT_NE(nullptr, dialog) << name;
        m_left.erase(name);
        if (pShell) {
            EXPECT_STREQ(pShell, XtName(XtParent(dialog)));
            EXPECT_EQ(pTitle ? pTitle : "Product setup", title(dialog)) << name;
        }
        std::vector<std::string> lines;
        list(dialog, &lines);
        std::istringstream in(replaced(pWidgets, "CONFIRM", s_caConfirm));
        for (std::string line; std::getline(in, line);) {
            const size_t colon = line.find(": ");
            std::istringstream widgets(line.substr(colon + 2));
            for (std::string one; std::getline(widgets, one, ';');)
                EXPECT_EQ(1, std::count_if(lines.begin(), lines.end(),
                                           [said = trimmed(line.substr(0, colon)) + ": " +
                                                   one.substr(one[0] == ' ')](const auto &given) {
                                               return isSaid(said, given);
                                           }))
                    << name << ": " << line << " " << one;
        }
    }
};

TEST_F(Trees, EveryDialogHasItsWidgets)
{
    m_product = "Product";
    visitAll([this](const std::string &name, Widget dialog) {
        expectTree(name, dialog);
        const CorePart &shell = XtParent(dialog)->core;
        if (name == "components") {
            expectTree("one option", XtNameToWidget(dialog, "*foCustomOptionsItem"));
            EXPECT_EQ(0u, replaced(label(dialog, "laCustom"), "\n", " ")
                              .find("In the Options list, select the items you want installed; "
                                    "clear the items you do not want installed."));
        } else if (name == "log dialog") {
            EXPECT_EQ((std::vector<int>{7, 31, 425, 248}),
                      (std::vector<int>{shell.x, shell.y, shell.width, shell.height}));
        } else if (name == "destination browser" || name == "source browser") {
            EXPECT_EQ(name[0] == 'd' ? "L 'Destination'" : "L 'Source'",
                      shownBy(dialog, XmNfileListLabelString));
            EXPECT_EQ(500, dialog->core.width);
            EXPECT_EQ(450, dialog->core.height);
        } else if (name == "question") {
            EXPECT_FALSE(XtIsManaged(XtNameToWidget(dialog, "Separator")));
        }
    });
    Widget shell = XtVaCreatePopupShell("list", topLevelShellWidgetClass, main(), nullptr);
    expectTree("users", CreateswUpdateUserUserList(shell));
    expectTree("older exit page", CreatefoExit(main()));
    EXPECT_TRUE(m_left.empty()) << m_left.begin()->first;
}
