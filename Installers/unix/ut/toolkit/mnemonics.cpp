#include "ut/toolkit/mnemonics.h"

#include <X11/keysym.h>
#include <Xm/Xm.h>
#include <Xm/PushB.h>
#include <Xm/PushBG.h>
#include <Xm/ToggleB.h>
#include <cctype>
#include <cstring>
#include <string>
#include <vector>

#include "ut/toolkit/pressButton.h"
#include "ut/toolkit/widgetTree.h"

static bool isButton(Widget widget)
{
    return XmIsPushButton(widget) || XmIsPushButtonGadget(widget) || XmIsToggleButton(widget);
}

/* Every button of the dialog, a box's own buttons behind those of its page. Dialogs opened from it
 * are no children of it. */
static void addButtons(Widget widget, std::vector<Widget> *pButtons)
{
    WidgetList aChildren = nullptr;
    Cardinal iChildren = 0;

    if (!XtIsComposite(widget))
        return;
    XtVaGetValues(widget, XmNchildren, &aChildren, XmNnumChildren, &iChildren, nullptr);
    for (Cardinal i = 0; i < iChildren; i++)
        addButtons(aChildren[i], pButtons);
    for (Cardinal i = 0; i < iChildren; i++)
        if (isButton(aChildren[i]))
            pButtons->push_back(aChildren[i]);
}

static char lowered(char cLetter)
{
    return static_cast<char>(tolower(static_cast<unsigned char>(cLetter)));
}

/* The buttons that are to be seen. */
static std::vector<Widget> buttonsOf(Widget dialog)
{
    std::vector<Widget> all;
    std::vector<Widget> seen;

    addButtons(dialog, &all);
    for (Widget button : all)
        if (XtIsManaged(button) && !OV_instIsDying(button))
            seen.push_back(button);
    return seen;
}

/* The letter that presses the button, in lower case; 0 for none. */
static char letterOf(Widget button)
{
    KeySym mnemonic = XK_VoidSymbol;

    XtVaGetValues(button, XmNmnemonic, &mnemonic, nullptr);
    return mnemonic < 0x80 ? lowered(static_cast<char>(mnemonic)) : '\0';
}

/* What stands on the button; nothing on one with a picture. */
static std::string labelOf(Widget button)
{
    unsigned char type = XmSTRING;
    XmString label = nullptr;
    std::string text;

    XtVaGetValues(button, XmNlabelType, &type, nullptr);
    if (type != XmSTRING)
        return text;
    XtVaGetValues(button, XmNlabelString, &label, nullptr);
    XtPointer pText =
        XmStringUnparse(label, nullptr, XmCHARSET_TEXT, XmCHARSET_TEXT, nullptr, 0, XmOUTPUT_ALL);
    if (pText)
        text = static_cast<char *>(pText);
    XtFree(static_cast<char *>(pText));
    XmStringFree(label);
    return text;
}

/* A letter of the label that is not taken: a word's first, but not that of "I ACCEPT", else any. */
static char freeLetter(const std::string &label, const std::string &taken)
{
    const auto isFree = [&](size_t i) {
        return isalpha(static_cast<unsigned char>(label[i])) &&
               taken.find(lowered(label[i])) == std::string::npos;
    };
    for (size_t i = 0; i + 1 < label.size(); i++)
        if (isFree(i) && (i == 0 || label[i - 1] == ' ') && label[i + 1] != ' ')
            return label[i];
    for (size_t i = 0; i < label.size(); i++)
        if (isFree(i))
            return label[i];
    return 0;
}

/* With the locks that a user may have on, which mean nothing here. */
static void grabKey(Widget shell, char cLetter)
{
    const KeySym key = static_cast<unsigned char>(lowered(cLetter));
    const KeyCode code = XKeysymToKeycode(XtDisplay(shell), key);

    for (const int iLocks : {0, LockMask, Mod2Mask, LockMask | Mod2Mask})
        if (code)
            XtGrabKey(shell, code, static_cast<Modifiers>(Mod1Mask | iLocks), False, GrabModeAsync,
                      GrabModeAsync);
}

/* Chooses what has no letter yet, and has the keys come to the shell wherever the focus is. */
static void assign(Widget dialog)
{
    const std::vector<Widget> buttons = buttonsOf(dialog);
    std::string taken;

    for (Widget button : buttons)
        if (const char cLetter = letterOf(button))
            taken += cLetter;
    for (Widget button : buttons) {
        const char cLetter = letterOf(button) ? '\0' : freeLetter(labelOf(button), taken);
        if (!cLetter)
            continue;
        XtVaSetValues(button, XmNmnemonic, static_cast<KeySym>(cLetter), nullptr);
        taken += lowered(cLetter);
    }
    for (char cLetter : taken)
        grabKey(XtParent(dialog), cLetter);
}

static void mapped(Widget dialog, XtPointer, XtPointer)
{
    assign(dialog);
}

static void keyPressed(Widget, XtPointer client, XEvent *pEvent, Boolean *pContinue)
{
    Widget dialog = static_cast<Widget>(client);
    const KeySym key = XLookupKeysym(&pEvent->xkey, 0);

    if (!(pEvent->xkey.state & Mod1Mask) || key >= 0x80 || !isalpha(static_cast<int>(key)))
        return;
    for (Widget button : buttonsOf(dialog)) {
        if (letterOf(button) != lowered(static_cast<char>(key)))
            continue;
        (void)OV_instActivateButton(button);
        *pContinue = False;
        return;
    }
}

void OV_instUseMnemonics(Widget dialog)
{
    Widget shell = dialog ? XtParent(dialog) : nullptr;

    if (!shell || !XtIsShell(shell) || XtHasCallbacks(dialog, XmNmapCallback) == XtCallbackNoList)
        return;
    XtAddCallback(dialog, XmNmapCallback, mapped, nullptr);
    XtAddEventHandler(shell, KeyPressMask, False, keyPressed, dialog);
}

void OV_instRenewMnemonic(Widget button)
{
    if (!button || !isButton(button))
        return;
    const char cLetter = letterOf(button);
    const std::string label = labelOf(button);
    if (!cLetter || label.find(cLetter) != std::string::npos ||
        label.find(static_cast<char>(toupper(cLetter))) != std::string::npos)
        return;
    XtVaSetValues(button, XmNmnemonic, KeySym{XK_VoidSymbol}, nullptr);
    assign(OV_instGetTopManager(button));
}
