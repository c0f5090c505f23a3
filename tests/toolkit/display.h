/* What tests on a display need: an application, something for events to happen in, and looks at
 * what is shown. Include <gtest/gtest.h> before this. */
#ifndef OVINST_TESTS_DISPLAY_H
#define OVINST_TESTS_DISPLAY_H

#include <X11/IntrinsicP.h>
#include <X11/CoreP.h>
#include <Xm/XmAll.h>
#include <cctype>
#include <functional>
#include <string>
#include <vector>

#include "ut/toolkit/appResources.h"
#include "ut/toolkit/compound.h"
#include "ut/toolkit/uiut.h"
#include "ut/toolkit/widgetTree.h"

/* The test program's application, with a main shell; null without a display. */
inline Widget testApplication()
{
    static char s_caName[] = "setup";
    static char *s_apArgs[] = {s_caName, nullptr};
    static int s_iArgs = 1;
    static Widget s_shell = OV_instOpenApplication(&s_iArgs, s_apArgs);

    if (s_shell && !OV_instGetMainTopLevelShell())
        (void)OV_instCreateMainTopLevelShell(s_shell);
    return s_shell;
}

/* Skips the tests of a suite where there is no display. */
struct OnDisplay : testing::Test {
    Widget application = testApplication();
    Widget parent = OV_instGetMainTopLevelShell();

    void SetUp() override
    {
        if (!application)
            GTEST_SKIP() << "no display: DISPLAY cannot be opened";
    }
    XtAppContext context() const { return XtWidgetToApplicationContext(application); }
};

/* Handles whatever happens within that many milliseconds. */
inline void runFor(Widget widget, unsigned long lMilliseconds)
{
    int bDone = 0;
    auto end = [](XtPointer done, XtIntervalId *) { *(int *)done = 1; };

    XtAppAddTimeOut(XtWidgetToApplicationContext(widget), lMilliseconds, end, &bDone);
    while (!bDone)
        XtAppProcessEvent(XtWidgetToApplicationContext(widget), XtIMAll);
}

/* Runs a step from a timer: what happens while somebody waits in a loop of his own. */
struct Later {
    std::function<void()> step;
    XtIntervalId timer;

    Later(Widget widget, unsigned long lMilliseconds, std::function<void()> given)
        : step(std::move(given))
    {
        timer = XtAppAddTimeOut(XtWidgetToApplicationContext(widget), lMilliseconds, run, this);
    }
    Later(const Later &) = delete;
    Later &operator=(const Later &) = delete;
    ~Later()
    {
        if (timer)
            XtRemoveTimeOut(timer);
    }
    static void run(XtPointer later, XtIntervalId *)
    {
        ((Later *)later)->timer = 0;
        ((Later *)later)->step();
    }
};

/* What a window manager sends when a frame is closed. */
inline void closeFrame(Widget shell)
{
    XEvent event = {};

    event.xclient.type = ClientMessage;
    event.xclient.window = XtWindow(shell);
    event.xclient.message_type = XInternAtom(XtDisplay(shell), "WM_PROTOCOLS", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = (long)XInternAtom(XtDisplay(shell), "WM_DELETE_WINDOW", False);
    XSendEvent(XtDisplay(shell), XtWindow(shell), False, NoEventMask, &event);
}

/* A key pressed while the shell has the keyboard. */
inline void pressKey(Widget shell, KeySym key)
{
    XEvent event = {};

    event.xkey.type = KeyPress;
    event.xkey.display = XtDisplay(shell);
    event.xkey.window = XtWindow(shell);
    event.xkey.root = RootWindowOfScreen(XtScreen(shell));
    event.xkey.keycode = XKeysymToKeycode(XtDisplay(shell), key);
    event.xkey.same_screen = True;
    event.xkey.time = XtLastTimestampProcessed(XtDisplay(shell));
    XSetInputFocus(XtDisplay(shell), XtWindow(shell), RevertToParent, CurrentTime);
    XSendEvent(XtDisplay(shell), XtWindow(shell), True, KeyPressMask, &event);
}

/* Calls see with the type and the text of every component. */
template <class See> void eachComponent(XmString string, See see)
{
    XmStringContext walk;
    unsigned int iLength;
    XtPointer value;
    XmStringComponentType type;

    if (!string || !XmStringInitContext(&walk, string))
        return;
    while ((type = XmStringGetNextTriple(walk, &iLength, &value)) != XmSTRING_COMPONENT_END) {
        see(type, std::string(value ? (char *)value : "", value ? iLength : 0));
        XtFree((char *)value);
    }
    XmStringFreeContext(walk);
}

/* A compound string component by component: L and R for directions, / for a separator, texts in
 * single quotes, and from the first other tag on #tag, #- being the locale's own. */
inline std::string components(XmString string)
{
    std::string shown = string ? "" : " none";
    int bMarked = 0; /* the locale's tag is in capitals, those of the looks are not */

    eachComponent(string, [&](XmStringComponentType type, const std::string &text) {
        if (type == XmSTRING_COMPONENT_DIRECTION)
            shown += text[0] == XmSTRING_DIRECTION_R_TO_L ? " R" : " L";
        else if (type == XmSTRING_COMPONENT_SEPARATOR)
            shown += " /";
        else if (type == XmSTRING_COMPONENT_TEXT || type == XmSTRING_COMPONENT_LOCALE_TEXT)
            shown += " '" + text + "'";
        else if (type != XmSTRING_COMPONENT_TAG)
            shown += " ?" + std::to_string(type);
        else if (bMarked || (bMarked = islower((unsigned char)text[0])))
            shown += std::string(" #") + (islower((unsigned char)text[0]) ? text.c_str() : "-");
    });
    return shown.empty() ? shown : shown.substr(1);
}

/* The same of what a widget shows in a resource of this type. */
inline std::string shownBy(Widget widget, const char *pResource = XmNlabelString)
{
    XmString string = nullptr;

    XtVaGetValues(widget, pResource, &string, nullptr);
    const std::string shown = components(string);
    XmStringFree(string);
    return shown;
}

template <class Type> Type resourceOf(Widget widget, const char *pResource)
{
    Type value = {};

    XtVaGetValues(widget, pResource, &value, nullptr);
    return value;
}

/* What a text or a field holds, as the user's characters. */
inline std::string textIn(Widget widget)
{
    char *pText = XmTextGetString(widget);
    const std::string text(pText);

    XtFree(pText);
    return text;
}

/* The dialogs of that name on the screen, the last one made at the end. */
inline std::vector<Widget> dialogsShown(const char *pName)
{
    std::vector<Widget> found, shells = {OV_instGetMainTopLevelShell()};

    while (!shells.empty()) {
        Widget shell = shells.back();
        shells.pop_back();
        for (Cardinal i = 0; i < shell->core.num_popups; i++)
            shells.insert(shells.begin(), shell->core.popup_list[i]);
        Widget box = XtNameToWidget(shell, pName);
        if (box && XtIsManaged(box) && !OV_instIsDying(box))
            found.push_back(box);
    }
    return found;
}

/* The box that came up last, or null. */
inline Widget openBox(const char *pName = "mbOkCancel")
{
    const std::vector<Widget> all = dialogsShown(pName);

    return all.empty() ? nullptr : all.back();
}

#endif
