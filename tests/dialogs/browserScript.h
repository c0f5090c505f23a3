/* Using a directory browser as a user does, step by step, while the program waits in a loop of its
 * own. Include dialogTest.h before this. */
#ifndef OVINST_TESTS_DIALOGS_BROWSERSCRIPT_H
#define OVINST_TESTS_DIALOGS_BROWSERSCRIPT_H

#include <deque>

#include <Xm/FileSB.h>
#include <Xm/TextF.h>

/* The steps: ">text" selects the text and presses OK, "y", "n" and "a" press the first, second and
 * third button of a box, "c" is the browser's Cancel, "#2" selects an entry of the list, "!2"
 * opens it by a double click, "?" looks.
 * What was seen is written down, the texts of boxes and looks each followed by "|"; a browser that
 * is open at the end is cancelled, and "open" is written down. */
struct BrowserScript {
    std::deque<std::string> steps;
    const char *pBox;
    std::string seen;
    int iPatience = 200; /* so many looks without anything to do */
    XtIntervalId timer = 0;

    BrowserScript(const char *pName, std::deque<std::string> given)
        : steps(std::move(given)), pBox(pName)
    {
        wait();
    }
    BrowserScript(const BrowserScript &) = delete;
    BrowserScript &operator=(const BrowserScript &) = delete;
    ~BrowserScript() { stop(); }

    void stop()
    {
        if (timer)
            XtRemoveTimeOut(timer);
        timer = 0;
        if (!steps.empty())
            ADD_FAILURE() << "never came to " << steps.front() << ", seen: " << seen;
        steps.clear();
    }
    void wait()
    {
        timer =
            XtAppAddTimeOut(XtWidgetToApplicationContext(DialogTest::s_application), 10, run, this);
    }
    static void run(XtPointer script, XtIntervalId *)
    {
        auto *pScript = static_cast<BrowserScript *>(script);
        pScript->wait(); /* first: a step may come back when all others are done */
        pScript->step();
    }
    void step()
    {
        Widget question = openBox(), browser = openBox(pBox);
        const bool bAnswer =
            !steps.empty() && (steps[0] == "y" || steps[0] == "n" || steps[0] == "a");
        Widget used = bAnswer ? question : question ? nullptr : browser;

        if (iPatience == 0 || (steps.empty() && used)) {
            seen += question ? "stuck" : "open";
            iPatience = 0;
            used = question ? question : browser;
            press(used, question ? XmDIALOG_OK_BUTTON : XmDIALOG_CANCEL_BUTTON);
        } else if (!used || !XtIsRealized(used)) {
            iPatience -= steps.empty() ? 0 : 1;
        } else {
            const std::string what = steps.front();
            steps.pop_front();
            bAnswer ? answer(used, what) : browse(used, what);
        }
    }
    void answer(Widget box, const std::string &what)
    {
        seen += DialogTest::message(box) + "|";
        press(box, what == "y"   ? XmDIALOG_OK_BUTTON
                   : what == "n" ? XmDIALOG_CANCEL_BUTTON
                                 : XmDIALOG_HELP_BUTTON);
    }
    void browse(Widget box, const std::string &what)
    {
        Widget text = XmFileSelectionBoxGetChild(box, XmDIALOG_TEXT);
        Widget list = XmFileSelectionBoxGetChild(box, XmDIALOG_LIST);
        if (what[0] == '>') {
            XmTextFieldSetString(text, const_cast<char *>(what.c_str() + 1));
            press(box, XmDIALOG_OK_BUTTON);
        } else if (what[0] == '#') {
            XmListSelectPos(list, std::stoi(what.substr(1)), True);
        } else if (what[0] == '!') {
            openEntry(list, std::stoi(what.substr(1)));
        } else if (what == "?") {
            look(box, list, text);
        } else {
            press(box, XmDIALOG_CANCEL_BUTTON);
        }
    }
    /* As two clicks do: the second one is no new selection. */
    static void openEntry(Widget list, int iEntry)
    {
        XmListSelectPos(list, iEntry, True);
        XEvent event = {};
        event.xbutton.type = ButtonRelease;
        event.xbutton.display = XtDisplay(list);
        XmListCallbackStruct call = {};
        call.reason = XmCR_DEFAULT_ACTION;
        call.event = &event;
        call.item = resourceOf<XmStringTable>(list, XmNitems)[iEntry - 1];
        call.item_length = XmStringLength(call.item);
        call.item_position = iEntry;
        XtCallCallbacks(list, XmNdefaultActionCallback, &call);
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
    static void press(Widget box, unsigned char button)
    {
        (void)OV_instActivateButton(XmIsFileSelectionBox(box)
                                        ? XmFileSelectionBoxGetChild(box, button)
                                        : XmMessageBoxGetChild(box, button));
    }
};

#endif
