/* Every dialog of the program as a user meets it, one after another, on a display and with
 * resources of the test's choice. */
#ifndef OVINST_TESTS_DIALOGS_GALLERY_H
#define OVINST_TESTS_DIALOGS_GALLERY_H

#include "Dialogs/ExitConfirmation.h"
#include "dialogTest.h"
#include "server.h"
#include "dialogs/Agreement.h"
#include "dialogs/ChangeDestination.h"
#include "dialogs/Custom.h"
#include "dialogs/Exit.h"
#include "dialogs/MainDlg.h"
#include "dialogs/Maintenance.h"
#include "dialogs/NameOrg.h"
#include "dialogs/Progress.h"
#include "dialogs/Reseller.h"
#include "dialogs/SourcePrompt.h"
#include "dialogs/Viewlog.h"
#include "dialogs/Welcome.h"
#include "ut/toolkit/HtmlHelp.h"
#include "ut/toolkit/logViewer.h"
#include "ut/toolkit/messageBox.h"

struct Gallery : DialogTest {
    using Look = std::function<void(const std::string &name, Widget dialog)>;
    std::string m_product = "Orvane Studio", m_place; /* what is shown of any length */

    static std::string newScreen(const char *pSize, const char *pDpi)
    {
        std::string name;
        (void)startServer(pSize, pDpi, &name);
        return name;
    }
    /* Opens the application anew with these words behind its name; the rest of the test has it. */
    static void reopen(std::vector<std::string> words)
    {
        std::vector<char *> apWords;
        words.insert(words.begin(), "setup");
        for (std::string &word : words)
            apWords.push_back(&word[0]);
        apWords.push_back(nullptr);
        int iWords = (int)words.size();
        if (Widget shell = main())
            XtDestroyWidget(shell);
        settle();
        s_application = OV_instOpenApplication(&iWords, apWords.data());
        ASSERT_NE(nullptr, s_application);
        (void)OV_instCreateMainTopLevelShell(s_application);
    }

    void fillModel()
    {
        const std::string about =
            "'All that is needed for modeling, animation and rendering, with the examples of the "
            "manual and the materials.' 'kivoicons.so,kivo_";
        describe("1 MainDlg 'T' 'D' '' 10 20 30\n10 Suite 'P' " + about + "typical' 1\n" +
                 "20 CusDlg 'Custom installation' " + about + "custom' 1 21 22 24\n" +
                 "21 Suite 'Q' " + about + "' 1\n22 CusDlg 'Examples and tutorials' " + about +
                 "' 1 23\n23 Suite 'Q' '' '' 1\n24 Suite 'R' '' '' 1\n" +
                 "30 MainDlg 'Network installation' " + about + "other' 31\n" +
                 "31 Suite 'P' '' '' 1\n2 CusDlg 'Maintenance' '' '' 1 21 24\n");
        for (char **ppText : {&CDInstPtr->pProductName, &suite("P")->pName, &suite("R")->pName}) {
            free(*ppText);
            *ppText = strdup(m_product.c_str());
        }
        ASSERT_EQ(0, OV_instSetRootDestination((m_root + m_place).c_str()));
        (void)OV_instSetCdinstDirectory(SETUP_BUILD_DIR "/medium");
        snprintf(g_caLogName, sizeof g_caLogName, "%s%ssetup.log", m_root.c_str(), m_place.c_str());
        put(g_caLogName, "Running in Maintenance mode\nInstalling package \"base\"\n");
    }

    /* The dialogs that come back before they are answered. */
    static Widget mainPage()
    {
        Widget dialog = CreatembMainDlg(main());
        OV_instUISetMainDlg(dialog, config(1));
        return dialog;
    }
    static Widget customPage(int iMode)
    {
        OV_instInstallationMode = iMode;
        OV_instConfigureCustomDlgCB(nullptr, config(iMode ? 2 : 20), nullptr);
        return shown("mbCustom");
    }
    Widget confirmed(Widget dialog, const std::string &name)
    {
        Widget field = OV_instFindWidget(managed(dialog), ("tx" + name + "Name").c_str());
        XmTextFieldSetString(field, m_product.data());
        press(dialog, "OK");
        return XtNameToWidget(XtParent(dialog), ("*mb" + name + "Confirm").c_str());
    }
    Widget progress()
    {
        Widget dialog = managed(CreatembProgress(main()));
        OV_instProgressUpdate(46, (m_root + m_place + "Application/bin/kivo").c_str());
        return dialog;
    }
    /* Looks at the dialogs that wait in loops of their own, and takes them down. */
    void visitBoxes(const Look &look)
    {
        const std::string path = m_root + m_place;
        char *pFound = nullptr;
        const struct {
            const char *pName, *pBox;
            std::function<void()> open;
        } aBoxes[] = {
            {"question", "mbOkCancel",
             [&] {
                 (void)OV_instDisplayMessage(main(), "Continue", "Browse...", "Abort", "%s: %s",
                                             m_product.c_str(), path.c_str());
             }},
            {"log", "mbLogViewer", [] { ViewLogfile(main()); }},
            {"destination browser", "fsbChangeDestinationSelection",
             [] { OV_instChangeDestination(main()); }},
            {"source browser", "Browser Install Directory",
             [&] { OV_instBrowseForSource("base.tar", &pFound, path.c_str()); }},
            {"exit question", "mbExitSetup",
             [] { OV_exitSetupConfirmation(main(), "Setup has not yet modified any files.", ""); }},
        };
        for (const auto &row : aBoxes) {
            const Step seen((row.pBox + std::string(":")).c_str(), [&](Widget box) {
                settle();
                look(row.pName, box);
                XtUnmanageChild(box);
                XtDestroyWidget(XtParent(box));
            });
            (void)whileUsed({seen}, row.open);
        }
    }
    void visitAll(const Look &look)
    {
        const std::pair<const char *, std::function<Widget()>> aDialogs[] = {
            {"welcome", [] { return CreatembWelcome(main()); }},
            {"agreement", [] { return CreatembEULA(main()); }},
            {"user", [] { return CreatembNameOrg(main()); }},
            {"user confirmed", [&] { return confirmed(CreatembNameOrg(main()), "NameOrg"); }},
            {"reseller", [] { return CreatembReseller(main()); }},
            {"reseller confirmed", [&] { return confirmed(CreatembReseller(main()), "Reseller"); }},
            {"destination", [] { return CreatembChangeDestination(main()); }},
            {"main page", [] { return mainPage(); }},
            {"custom page", [] { return customPage(0); }},
            {"components", [] { return customPage(1); }},
            {"maintenance", [] { return CreatembMaintenance(main()); }},
            {"progress", [&] { return progress(); }},
            {"log dialog", [] { return CreatembViewlog(main()); }},
            {"exit notice",
             [] {
                 Widget box = CreatembExitSetupFinish(main());
                 for (unsigned char child : {XmDIALOG_CANCEL_BUTTON, XmDIALOG_HELP_BUTTON})
                     XtUnmanageChild(XmMessageBoxGetChild(box, child));
                 return box;
             }},
        };
        fillModel();
        for (const auto &[pName, open] : aDialogs) {
            Widget dialog = open();
            ASSERT_NE(nullptr, dialog) << pName;
            look(pName, managed(dialog));
            Widget shell = XtParent(dialog);
            while (XtParent(shell) != main())
                shell = XtParent(shell);
            XtDestroyWidget(shell);
            settle();
        }
        visitBoxes(look);
    }
};

#endif
