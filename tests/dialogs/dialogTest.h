/* What the tests of dialogs share: an application on the display that DISPLAY names (the tests are
 * skipped without one), a description, and dialogs looked at and used as a user does, by name. */
#ifndef OVINST_TESTS_DIALOGS_DIALOGTEST_H
#define OVINST_TESTS_DIALOGS_DIALOGTEST_H

#include <deque>

#include <Xm/FileSB.h>
#include <Xm/MessageB.h>
#include <Xm/TextF.h>
#include <Xm/ToggleB.h>

#include "dialogs/dialogFrontEnd.h"
#include "dialogs/sequence.h"
#include "engine/userHome.h"
#include "engine/engineTest.h"
#include "engine/selection.h"
#include "engine/sizes.h"
#include "toolkit/display.h"
#include "ut/toolkit/HtmlHelp.h"
#include "ut/toolkit/pressButton.h"
#include "ut/frontEnd.h"
#include "ut/privateFile.h"

/* What is read, without notation. */
inline std::string labelOf(Widget widget)
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
inline std::string message(Widget box)
{
    return box ? labelOf(XmMessageBoxGetChild(box, XmDIALOG_MESSAGE_LABEL)) : "no box";
}

/* One thing that a user does, or looks at before doing it. */
struct Step {
    std::string what;
    std::function<void(Widget)> look;

    Step(const char *pWhat, std::function<void(Widget)> given = nullptr)
        : what(pWhat), look(std::move(given))
    {
    }
    Step(std::string given) : what(std::move(given)) {}
};
using Steps = std::vector<Step>;

/* Uses boxes as a user does, step by step, while the program waits in a loop of its own.
 * "y" and "n" press the first and second button of a message box. "name:OK" presses
 * that button of another dialog, "name:x" closes its frame, "name:Escape" is the key, and "name:"
 * only looks. In a directory browser ">text" selects the text and presses OK, "#2" selects an entry
 * of the list, "?" looks and "c" is Cancel.
 * What was seen is written down, the texts of boxes and looks each followed by "|"; a box that is
 * open at the end is left, and "stuck" or, for a browser, "open" is written down. */
struct UserScript {
    std::deque<Step> steps;
    const std::string browser;
    std::string seen;
    bool bLooking = false;
    int iPatience = 400; /* so many looks for what does not come */
    XtIntervalId timer = 0;

    UserScript(const char *pBrowser, const Steps &given)
        : steps(given.begin(), given.end()), browser(pBrowser)
    {
        wait();
    }
    UserScript(const UserScript &) = delete;
    UserScript &operator=(const UserScript &) = delete;
    ~UserScript() { XtRemoveTimeOut(timer); }

    void wait()
    {
        Widget shell = OV_instGetMainTopLevelShell();
        timer = XtAppAddTimeOut(XtWidgetToApplicationContext(shell), 10, run, this);
    }
    static void run(XtPointer script, XtIntervalId *)
    {
        auto *pScript = static_cast<UserScript *>(script);
        pScript->wait(); /* first: a step may come back when all others are done */
        pScript->steps.empty() ? pScript->leave() : pScript->step();
    }
    void leave()
    {
        Widget question = openBox(), left = question ? question : openBox(browser.c_str());
        if (!left || bLooking || --iPatience > 380) /* it may be about to go */
            return;
        seen += question ? "stuck" : "open";
        press(left, question ? "OK" : "Cancel");
    }
    void step()
    {
        const Step now = steps.front();
        const size_t colon = isalpha(now.what[0]) ? now.what.find(':') : std::string::npos;
        const bool bAnswer = now.what == "y" || now.what == "n";
        Widget question = openBox();
        Widget used = colon != std::string::npos ? openBox(now.what.substr(0, colon).c_str())
                      : bAnswer || question      ? (bAnswer ? question : nullptr)
                                                 : openBox(browser.c_str());
        if (!used || !XtIsRealized(used)) {
            if (--iPatience > 0)
                return;
            fprintf(stderr, "never came to %s, seen: %s\n", now.what.c_str(), seen.c_str());
            exit(99); /* whoever waits would wait for ever */
        }
        steps.pop_front();
        iPatience = 400;
        bLooking = true; /* others may be opened and used there */
        if (now.look)
            now.look(used);
        bLooking = false;
        if (colon != std::string::npos)
            answer(used, now.what.substr(colon + 1));
        else if (bAnswer)
            answer(used, now.what == "y" ? "OK" : "Cancel");
        else
            browse(used, now.what);
    }
    void answer(Widget box, const std::string &what)
    {
        if (what.empty())
            return;
        if (XmIsMessageBox(box))
            seen += message(box) + "|";
        if (what == "x")
            closeFrame(XtParent(box));
        else if (what == "Escape")
            pressKey(XtParent(box), XK_Escape);
        else
            press(box, what.c_str());
    }
    void browse(Widget box, const std::string &what)
    {
        Widget text = XmFileSelectionBoxGetChild(box, XmDIALOG_TEXT);
        Widget list = XmFileSelectionBoxGetChild(box, XmDIALOG_LIST);
        if (what[0] == '>') {
            XmTextFieldSetString(text, const_cast<char *>(what.c_str() + 1));
            press(box, "OK");
        } else if (what[0] == '#') {
            XmListSelectPos(list, std::stoi(what.substr(1)), True);
        } else if (what == "?") {
            look(box, list, text);
        } else {
            press(box, "Cancel");
        }
    }
    void look(Widget box, Widget list, Widget text)
    {
        seen += resourceOf<String>(XtParent(box), XmNtitle) + std::string(": ") +
                plain(shownBy(box, XmNdirectory)) + plain(shownBy(box, XmNfileListLabelString));
        for (int i = 0; i < resourceOf<int>(list, XmNitemCount); i++)
            seen += plain(components(resourceOf<XmStringTable>(list, XmNitems)[i]));
        seen += "-> " + textIn(text) + "|";
    }
    static std::string plain(const std::string &shown)
    {
        return replaced(replaced(shown, "L ", ""), "'", "") + " ";
    }
    static void press(Widget box, const char *pButton)
    {
        EXPECT_TRUE(OV_instActivateButton(XtNameToWidget(box, pButton))) << pButton;
    }
};

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
        OV_instUseDialogs();
        OV_instInstallationMode = 0;
        SetDefaultUserHome(nullptr);
        describe("1 MainDlg 'T' 'D' '' 10\n10 Suite 'P' '' '' 1\n");
        prepare();
    }
    virtual void prepare() {} /* what else a suite needs */
    void TearDown() override
    {
        if (Widget shell = main()) {
            XtDestroyWidget(shell);
            settle();
        }
        OV_instUseFrontEnd(nullptr);
        OV_instSetLastDlg(nullptr);
        OV_instSetPrivateDirectory(nullptr);
        OV_instSetHelpDirectory(nullptr);
        SetDefaultUserHome(nullptr);
        (void)OV_instSetCdinstDirectory("");
        EngineTest::TearDown();
        setenv("DISPLAY", m_display.c_str(), 1);
    }

    static Widget main() { return OV_instGetMainTopLevelShell(); }
    static Widget managed(Widget dialog)
    {
        XtManageChild(dialog);
        settle();
        return dialog;
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
    /* As window managers read it, in either way. */
    static std::string title(Widget dialog)
    {
        const Atom name = XInternAtom(XtDisplay(dialog), "_NET_WM_NAME", False);
        std::string texts[2];
        for (std::string &text : texts) {
            XTextProperty title = {};
            char **apTexts = nullptr;
            int iTexts = 0;
            (void)XGetTextProperty(XtDisplay(dialog), XtWindow(XtParent(dialog)), &title,
                                   &text == texts ? name : XA_WM_NAME);
            if (XmbTextPropertyToTextList(XtDisplay(dialog), &title, &apTexts, &iTexts) ==
                    Success &&
                iTexts > 0)
                text = apTexts[0];
            XFreeStringList(apTexts);
            XFree(title.value);
        }
        EXPECT_EQ(texts[0], texts[1]);
        return texts[0];
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
    /* Waits for what the server makes of real keys. */
    static void key(const std::string &name)
    {
        EXPECT_EQ(0, system(("xdotool key " + name).c_str())) << name;
        settle();
        runFor(s_application, 60);
    }
    /* The keyboard follows the pointer where there is no window manager. */
    static void pointAt(Widget dialog)
    {
        XWarpPointer(XtDisplay(dialog), None, XtWindow(dialog), 0, 0, 0, 0, 3, 3);
        XSetInputFocus(XtDisplay(dialog), XtWindow(XtParent(dialog)), RevertToParent, CurrentTime);
        settle();
    }
    /* What a user sees who does this meanwhile, in texts with "@" for the scratch directory. */
    std::string whileUsed(const Steps &given, const std::function<void()> &work,
                          const char *pBrowser = "fsbChangeDestinationSelection")
    {
        Steps steps = given;
        for (Step &step : steps)
            step.what = full(step.what);
        UserScript script(pBrowser, steps);
        work();
        settle();
        EXPECT_TRUE(script.steps.empty()) << script.steps.front().what << ", seen: " << script.seen;
        EXPECT_EQ(nullptr, openBox(pBrowser));
        return shortened(script.seen);
    }
};

#endif
