#include "ut/toolkit/uiut.h"

#include <X11/Shell.h>
#include <Xm/Xm.h>
#include <Xm/Text.h>
#include <cstdarg>
#include <cstdio>

#include "ut/toolkit/bxutils.h"
#include "ut/toolkit/dialogShell.h"
#include "ut/toolkit/mnemonics.h"
#include "ut/toolkit/widgetTree.h"
#include "ut/owned.h"

enum { OUTPUT_PIECE = 10240 };

/* A wait, which ends early when its widget goes. */
struct Wait {
    Widget widget; /* null once it is gone, and when there is nothing to watch */
    bool bGone;
};

static Widget MainTopLevelShell; /* the one that the process made last */

static void forgetMainShell(Widget shell, XtPointer, XtPointer)
{
    if (MainTopLevelShell == shell)
        MainTopLevelShell = nullptr;
}

static void noteGone(Widget, XtPointer wait, XtPointer)
{
    *static_cast<Wait *>(wait) = {nullptr, true};
}

static void centre(Widget shell, Dimension width, Dimension height)
{
    Screen *pScreen = XtScreen(shell);
    const int iX = WidthOfScreen(pScreen) / 2 - width / 2;
    const int iY = HeightOfScreen(pScreen) / 2 - height / 2;

    XtVaSetValues(shell, XmNx, static_cast<Position>(iX), XmNy, static_cast<Position>(iY), nullptr);
}

static void centreOn(Widget shell, Widget sized)
{
    Dimension width = 0;
    Dimension height = 0;

    XtVaGetValues(sized, XmNwidth, &width, XmNheight, &height, nullptr);
    centre(shell, width, height);
}

/* Handles one thing that is ready, or waits for one. Taking turns keeps a busy pipe from shutting
 * out the user, and the other way round. XtAppNextEvent would keep waiting for an X event after a
 * timer or an input source has set the flag that the caller watches. */
static void handleOne(XtAppContext app, bool *pbEventLast)
{
    XtInputMask ready = XtAppPending(app);
    XtInputMask others = ready & ~XtInputMask{XtIMXEvent};

    *pbEventLast = (ready & XtIMXEvent) && (!others || !*pbEventLast);
    if (*pbEventLast)
        XtAppProcessEvent(app, XtIMXEvent);
    else
        XtAppProcessEvent(app, others ? others : XtInputMask{XtIMAll});
}

/* Manages what a shell is to show that was realized without contents, and would force its size on
 * them. What the contents want is known once they are managed. */
static void manageInShell(Widget shell, Widget shown)
{
    Dimension width = 0;
    Dimension height = 0;
    XtWidgetGeometry wanted = {};

    XtVaGetValues(shown, XmNwidth, &width, XmNheight, &height,
                  nullptr); /* if they were given any */
    XtManageChild(shown);
    (void)XtQueryGeometry(shown, nullptr, &wanted);
    XtVaSetValues(shell, XmNwidth, width > 1 ? width : wanted.width, XmNheight,
                  height > 1 ? height : wanted.height, nullptr);
}

static void setLabel(Widget widget, XmString label)
{
    XtVaSetValues(widget, XmNlabelString, label, nullptr);
    OV_instRenewMnemonic(widget);
}

Widget OV_instGetMainTopLevelShell()
{
    return MainTopLevelShell;
}

Widget OV_instCreateMainTopLevelShell(Widget parent)
{
    MainTopLevelShell = nullptr;
    if (!parent)
        return nullptr;

    const Dimension one = 1; /* a shell cannot be realized without a size */
    Screen *pScreen = XtScreen(parent);
    Widget shell = XtVaCreatePopupShell(
        "TopLevelShell", topLevelShellWidgetClass, parent, XmNtitle, "", XmNiconName, "", XmNx,
        static_cast<Position>(WidthOfScreen(pScreen) / 2), XmNy,
        static_cast<Position>(HeightOfScreen(pScreen) / 2), XmNwidth, one, XmNheight, one,
        XmNallowShellResize, True, nullptr);

    XtAddCallback(shell, XmNdestroyCallback, forgetMainShell, nullptr);
    XtManageChild(shell);
    XtRealizeWidget(shell);
    centreOn(shell, shell);
    MainTopLevelShell = shell;
    return shell;
}

void OV_instPopup(Widget widget, const char *pTitle, const char *pIconName)
{
    Widget shell = OV_instGetShell(widget);

    if (!shell)
        return;
    OV_instSetTitle(shell, pTitle ? pTitle : "");
    XtVaSetValues(shell, XmNiconName, pIconName ? pIconName : "", XmNiconNameEncoding, Atom{None},
                  nullptr);
    if (XtParent(widget) == shell && XtIsRealized(shell) && !XtIsManaged(widget))
        manageInShell(shell, widget);
    else if (widget != shell && !XtIsManaged(widget))
        XtManageChild(widget);
    if (!XtIsRealized(shell))
        XtRealizeWidget(shell);
    centreOn(shell, widget);
    XtPopup(shell, XtGrabNone);
}

Widget OV_instCreateAndPopup(Widget (*fpBuild)(Widget parent))
{
    Widget shell = OV_instGetMainTopLevelShell();
    Widget made = shell && fpBuild ? fpBuild(shell) : nullptr;

    if (!made)
        return nullptr;
    manageInShell(shell, made);
    XtRealizeWidget(shell);
    centreOn(shell, made);
    XtPopup(shell, XtGrabNone);
    return made;
}

void OV_instPopdown(Widget widget)
{
    Widget shell = OV_instGetShell(widget);

    if (shell)
        XtPopdown(shell);
}

void OV_instMainLoop(Widget widget, const int *piDone)
{
    if (!widget || !piDone)
        return;

    XtAppContext app = XtWidgetToApplicationContext(widget);
    Wait wait = {OV_instIsDying(widget) ? nullptr : widget, false};
    bool bEventLast = false;

    if (wait.widget)
        XtAddCallback(widget, XmNdestroyCallback, noteGone, &wait);
    /* Within nested loops a widget may be dying for long before its callback is called. */
    while (!*piDone && !wait.bGone && !(wait.widget && OV_instIsDying(wait.widget)))
        handleOne(app, &bEventLast);
    if (wait.widget)
        XtRemoveCallback(widget, XmNdestroyCallback, noteGone, &wait);
}

void OV_instDispatchPending()
{
    if (!MainTopLevelShell)
        return;

    XtAppContext app = XtWidgetToApplicationContext(MainTopLevelShell);
    while (XtAppPending(app) & XtIMXEvent)
        XtAppProcessEvent(app, XtIMXEvent);
}

void OV_instUpdateLabelString(Widget widget, const char *pText)
{
    Boolean ok = False;

    if (!widget || !pText)
        return;
    XtArgVal label = CONVERT(widget, pText, XmRXmString, sizeof(XmString), &ok);
    if (ok)
        setLabel(widget, reinterpret_cast<XmString>(label));
}

void OV_instSetLiteralLabel(Widget widget, const char *pText)
{
    if (!widget || !pText)
        return;
    XmString label = OV_instLiteralXmString(pText);
    setLabel(widget, label);
    XmStringFree(label);
}

int OV_instOutputCmdInTextWidget(Widget text, const char *pCommand)
{
    if (!text || !pCommand)
        return -1;

    char caPiece[OUTPUT_PIECE + 1];
    OwnedPipe output(popen(pCommand, "r"));
    if (!output)
        return -1;
    while (fgets(caPiece, sizeof caPiece, output.get()))
        XmTextInsert(text, XmTextGetLastPosition(text), caPiece);
    return pclose(output.release());
}

void OV_makeAllWidgetSameMaxWidth(Widget first, ...)
{
    Dimension widest = 0;
    va_list widgets;

    va_start(widgets, first);
    for (Widget widget = first; widget; widget = va_arg(widgets, Widget)) {
        Dimension width = 0;
        XtVaGetValues(widget, XmNwidth, &width, nullptr);
        widest = width > widest ? width : widest;
    }
    va_end(widgets);
    va_start(widgets, first);
    for (Widget widget = first; widget; widget = va_arg(widgets, Widget))
        XtVaSetValues(widget, XmNwidth, widest, nullptr);
    va_end(widgets);
}
