/* What the tests of dialogs share: an application on the display that DISPLAY names (the tests are
 * skipped without one), a description, and dialogs looked at and used as a user does, by name. */
#ifndef OVINST_TESTS_DIALOGS_DIALOGTEST_H
#define OVINST_TESTS_DIALOGS_DIALOGTEST_H

#include <Xm/MessageB.h>
#include <Xm/ToggleB.h>

#include "dialogs/sequence.h"
#include "engine/engineTest.h"
#include "engine/selection.h"
#include "engine/sizes.h"
#include "ut/display.h"
#include "ut/frameClose.h"

struct DialogTest : EngineTest {
    static inline Widget s_application;
    const std::string m_display =
        getenv("DISPLAY") ? getenv("DISPLAY") : ""; /* the engine's tests take it away */

    void SetUp() override
    {
        EngineTest::SetUp();
        if (m_display.empty())
            GTEST_SKIP() << "no display";
        setenv("DISPLAY", m_display.c_str(), 1);
        s_application = testApplication();
        ASSERT_NE(nullptr, s_application);
        OV_instInstallationMode = 0;
    }
    void TearDown() override
    {
        if (Widget shell = OV_instGetMainTopLevelShell()) {
            XtDestroyWidget(shell);
            settle();
        }
        OV_instSetLastDlg(nullptr);
        EngineTest::TearDown();
        setenv("DISPLAY", m_display.c_str(), 1);
    }

    /* Makes packages p to s of 1 to 4 MB, suites of the names P to S, and these configurations the
     * description; what is said to be about configuration 1 or 2 is then shown. */
    void describe(const std::string &configurations)
    {
        load("Package 'p' ''\nCopy 'a' '' 644 1048576\nPackage 'q' ''\nCopy 'b' '' 644 2097152\n"
             "Package 'r' ''\nCopy 'c' '' 644 3145728\nSuite 'P' p\nSuite 'Q' q\n"
             "Suite 'R' Vital r\nSuite 'H' Hidden p\nConfigBegin\n" +
             configurations + "ConfigEnd\n");
        for (auto *pNode = CDInstPtr->pPackageHead; pNode; pNode = pNode->pNext)
            pNode->pPackage->lSize2 = 1048576UL * (unsigned)(pNode->pPackage->pName[0] - 'p' + 1);
    }

    /* Lets everything happen that is under way. */
    static void settle()
    {
        for (int i = 0; i < 3; i++) {
            XSync(XtDisplay(s_application), False);
            while (XtAppPending(XtWidgetToApplicationContext(s_application)) & XtIMXEvent)
                XtAppProcessEvent(XtWidgetToApplicationContext(s_application), XtIMXEvent);
        }
    }
    /* The dialog of that name on the screen; null when there is none, or more than one. */
    static Widget shown(const char *pName)
    {
        const std::vector<Widget> all = dialogsShown(pName);
        return all.size() == 1 ? all[0] : nullptr;
    }
    /* What is read, without notation. */
    static std::string labelOf(Widget widget)
    {
        XmString label = resourceOf<XmString>(widget, XmNlabelString);
        std::string text;
        eachComponent(label, [&](XmStringComponentType type, const std::string &part) {
            if (type == XmSTRING_COMPONENT_TEXT || type == XmSTRING_COMPONENT_LOCALE_TEXT)
                text += part;
            text += type == XmSTRING_COMPONENT_SEPARATOR ? "\n" : "";
        });
        XmStringFree(label);
        return text;
    }
    /* What a message box says. */
    static std::string message(Widget box)
    {
        return box ? labelOf(XmMessageBoxGetChild(box, XmDIALOG_MESSAGE_LABEL)) : "no box";
    }
    static std::string title(Widget dialog)
    {
        return resourceOf<String>(XtParent(dialog), XmNtitle);
    }
    static std::string label(Widget dialog, const std::string &name)
    {
        Widget widget = OV_instFindWidget(dialog, name.c_str());
        return widget ? labelOf(widget) : "no " + name;
    }
    static bool isManaged(Widget dialog, const std::string &name)
    {
        return XtIsManaged(OV_instFindWidget(dialog, name.c_str()));
    }
    static bool press(Widget dialog, const std::string &name)
    {
        const bool bPressed = OV_instActivateButton(OV_instFindWidget(dialog, name.c_str()));
        settle();
        return bPressed;
    }
};

#endif
