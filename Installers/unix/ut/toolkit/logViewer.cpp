#include "ut/toolkit/logViewer.h"

#include <Xm/CascadeB.h>
#include <Xm/DialogS.h>
#include <Xm/Form.h>
#include <Xm/MessageB.h>
#include <Xm/PushB.h>
#include <Xm/RowColumn.h>
#include <Xm/ScrolledW.h>
#include <Xm/Text.h>
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/stat.h>

#include "ut/toolkit/HtmlHelp.h"
#include "ut/OVinstLogfile.h"
#include "ut/toolkit/bxutils.h"
#include "ut/toolkit/foldText.h"
#include "ut/guardedFile.h"
#include "ut/toolkit/looks.h"
#include "ut/owned.h"
#include "ut/wholeFile.h"
#include "ut/text.h"
#include "ut/toolkit/dialogShell.h"
#include "ut/toolkit/modal.h"
#include "ut/toolkit/uibuild.h"
#include "ut/toolkit/uiut.h"
#include "ut/toolkit/widgetTree.h"

enum { CHECK_DELAY = 1500, QUIT_ENTRY = 3 };
enum { TEXT_SIZE = 600, AROUND_WIDTH = 60, AROUND_HEIGHT = 220, MOST_CHARACTER = 40 };

static const char s_caSetupHelp[] = "https://www.orvane.example/help/setup.html";

#define LOG_WINDOW                                                                                 \
    UI_SET("scrollingPolicy", "APPLICATION_DEFINED")                                               \
    UI_SET("visualPolicy", "VARIABLE")
#define LOG_TEXT                                                                                   \
    UI_SET("editMode", "MULTI_LINE_EDIT")                                                          \
    UI_SET("editable", "False") UI_SET("cursorPositionVisible", "False")

XtIntervalId g_xTimer;

/* The stand-alone viewer. */
static struct {
    Widget text;        /* null when there is none */
    std::string path;   /* of its file */
    time_t lTime;       /* the file's when it was shown last */
    off_t lSize;        /* likewise */
    XmTextPosition lAt; /* where to insert */
    bool bArmed;        /* the timer has yet to run out */
} s_viewer;

// clang-format off
static const OV_WidgetRow s_aFileRows[] = {
    {"form", nullptr, &xmFormWidgetClass, UI_SET("verticalSpacing", "0")},
    {"menu_bar", "form", &xmRowColumnWidgetClass,
     UI_SET("rowColumnType", "MENU_BAR") UI_TOP UI_LEFT UI_RIGHT},
    {"textSW", "form", &xmScrolledWindowWidgetClass,
     LOG_WINDOW UI_BELOW("menu_bar") UI_LEFT UI_RIGHT UI_BOTTOM},
    {"text", "textSW", &xmTextWidgetClass,
     LOG_TEXT UI_SET("width", "600") UI_SET("height", "600")},
    {nullptr, nullptr, nullptr, nullptr},
};
// clang-format on

/* ---- reading ---- */

/* Inserts all of the file in one piece, since each insertion lays the text out, and returns the
 * position behind it. */
static XmTextPosition insertFile(Widget text, XmTextPosition lAt, FILE *pFile)
{
    std::string content;

    (void)OV_instReadWhole(pFile, &content); /* what could be read is shown */
    std::string shown = OV_instDisplayable(content);
    XmTextPosition lBefore = XmTextGetLastPosition(text);

    XmTextInsert(text, lAt, &shown[0]);
    return lAt + XmTextGetLastPosition(text) - lBefore;
}

static FILE *openText(const char *pPath)
{
    FILE *pFile = OV_instGuardedFopen(pPath, "r");

    if (!pFile)
        printf("Unable to open %s\n", pPath);
    return pFile;
}

/* ---- the log's window ---- */

static void MessageBoxCB(Widget box, XtPointer done, XtPointer)
{
    int *piDone = nullptr;

    if (OV_instIsDying(box)) /* nobody waits for it any more */
        return;
    XtVaGetValues(box, XmNuserData, &piDone, nullptr);
    *piDone = static_cast<int>(reinterpret_cast<intptr_t>(done));
    OV_instTakeDown(box);
}

static void HelpCB(Widget widget, XtPointer, XtPointer)
{
    OV_instHtmlHelpCB(widget, nullptr, s_caSetupHelp);
}

/* The path as the box's message, no wider than the text below it. */
static void showPath(Widget box, Widget text)
{
    Widget label = XmMessageBoxGetChild(box, XmDIALOG_MESSAGE_LABEL);
    const std::string path = OV_instDisplayable(g_caLogName);
    Dimension width = 0;

    XtVaGetValues(text, XmNwidth, &width, nullptr);
    OV_instSetLiteralLabel(label, OV_instFoldText(label, path.c_str(), width, "/").c_str());
    XtManageChild(label);
}

/* The text's size in a direction, in pixels of 96 to the inch: the buttons must be on the screen.
 */
static int textSize(Widget parent, int iScreen, int iAround)
{
    const int iUnit = OV_instScaleLength(XtDisplay(parent), 100);

    return std::min<int>(TEXT_SIZE, iScreen * 100 / iUnit - iAround);
}

static int textWidth(Widget parent)
{
    return textSize(parent, WidthOfScreen(XtScreen(parent)), AROUND_WIDTH);
}

static int textHeight(Widget parent)
{
    return textSize(parent, HeightOfScreen(XtScreen(parent)), AROUND_HEIGHT);
}

/* Gives what the text lacks to the window around it: a text asks for whole characters only, but
 * takes what it gets. Where more is missing the user wants it so. */
static void giveRest(Widget text, const char *pResource, int iWanted)
{
    Dimension size = 0;
    Dimension around = 0;

    XtVaGetValues(text, pResource, &size, nullptr);
    XtVaGetValues(XtParent(text), pResource, &around, nullptr);
    const int iRest = OV_instScaleLength(XtDisplay(text), iWanted) - size;
    if (iRest > 0 && iRest < OV_instScaleLength(XtDisplay(text), MOST_CHARACTER))
        XtVaSetValues(XtParent(text), pResource, static_cast<Dimension>(around + iRest), nullptr);
}

/* Before the box is seen, with all of it laid out. */
static void giveAll(Widget box, XtPointer, XtPointer)
{
    Widget text = OV_instFindWidget(box, "txLogViewer");

    giveRest(text, XmNwidth, textWidth(text));
    giveRest(text, XmNheight, textHeight(text));
}

/* The keys that press "Done" although the keyboard is in the text. */
static const char s_caKeys[] =
    "<Key>osfActivate: activate()\n<Key>Return: activate()\n<Key>osfCancel: activate()";

static Widget createLogWindow(Widget parent, int *piDone)
{
    Screen *pScreen = XtScreen(parent);
    const int iWidth = textSize(parent, WidthOfScreen(pScreen), AROUND_WIDTH);
    const int iHeight = textSize(parent, HeightOfScreen(pScreen), AROUND_HEIGHT);
    const std::string looks =
        LOG_TEXT "width: " + std::to_string(iWidth) + "\nheight: " + std::to_string(iHeight) + "\n";
    // clang-format off
    const OV_WidgetRow aRows[] = {
        {"dsLogViewer", nullptr, &xmDialogShellWidgetClass, ""},
        {"mbLogViewer", "dsLogViewer", &xmMessageBoxWidgetClass,
         UI_SET("okLabelString", "Done") UI_SET("helpLabelString", "Help")
         UI_SET("dialogStyle", "DIALOG_FULL_APPLICATION_MODAL")
         UI_SET("defaultButtonType", "DIALOG_OK_BUTTON") UI_ESCAPE_IS_OK},
        {"swLogViewer", "mbLogViewer", &xmScrolledWindowWidgetClass, LOG_WINDOW},
        {"txLogViewer", "swLogViewer", &xmTextWidgetClass, looks.c_str()},
        {nullptr, nullptr, nullptr, nullptr},
    };
    // clang-format on
    Widget box = OV_instBuildDialog(parent, aRows, nullptr);
    Widget help = XmMessageBoxGetChild(box, XmDIALOG_HELP_BUTTON);
    Widget text = OV_instFindWidget(box, "txLogViewer");

    XtVaSetValues(box, XmNuserData, piDone, nullptr);
    XtAddCallback(box, XmNokCallback, MessageBoxCB, reinterpret_cast<XtPointer>(intptr_t{1}));
    for (unsigned char child : {XmDIALOG_SEPARATOR, XmDIALOG_CANCEL_BUTTON, XmDIALOG_SYMBOL_LABEL})
        XtUnmanageChild(XmMessageBoxGetChild(box, child));
    /* On the button itself: the box's own help callback would answer the F1 key as well. */
    XtAddCallback(help, XmNactivateCallback, HelpCB, nullptr);
    if (!OV_instHasHelp())
        XtUnmanageChild(help);
    XtOverrideTranslations(text, XtParseTranslationTable(s_caKeys));
    XtAddCallback(box, XmNmapCallback, giveAll, nullptr);
    showPath(box, text);
    OV_instSetTitle(box, g_caLogName);
    return box;
}

void ViewLogfile(Widget parent)
{
    int iDone = 0;

    if (!parent)
        return;
    Widget box = createLogWindow(parent, &iDone);
    OwnedFile log(openText(g_caLogName));
    if (log) {
        Widget text = OV_instFindWidget(box, "txLogViewer");
        XmTextSetHighlight(text, 0, insertFile(text, 0, log.get()), XmHIGHLIGHT_NORMAL);
        log.reset();
    }
    OV_instRunDialog(box, &iDone);
}

/* ---- the stand-alone viewer ---- */

/* The number of a timer that has run out may be another's by now. */
static void disarm()
{
    if (s_viewer.bArmed)
        XtRemoveTimeOut(g_xTimer);
    s_viewer.bArmed = false;
}

void KillViewer(Widget widget)
{
    disarm();
    if (Widget shell = OV_instGetTLShell(widget))
        XtPopdown(shell);
    exit(0);
}

void menuCB(Widget widget, XtPointer number, XtPointer)
{
    if (reinterpret_cast<intptr_t>(number) == QUIT_ENTRY)
        KillViewer(widget);
}

static void forgetViewer(Widget, XtPointer, XtPointer)
{
    disarm();
    g_xTimer = 0;
    s_viewer = {};
}

void OV_instCheckLogfile(XtPointer path, XtIntervalId *pTimer)
{
    static char s_caNothing[] = "";
    const char *pPath = static_cast<const char *>(path);
    struct stat status;

    if (!s_viewer.text || !pPath || !pTimer || *pTimer != g_xTimer)
        return;
    s_viewer.bArmed = false;
    if (stat(pPath, &status) < 0) {
        printf("Can't stat %s\n", pPath);
        return;
    }
    if (status.st_mtime == s_viewer.lTime || status.st_size == s_viewer.lSize)
        return; /* who watches need not see a log again that was only touched */
    OwnedFile file(openText(pPath));
    if (!file)
        return;
    if (status.st_size < s_viewer.lSize) {
        XmTextReplace(s_viewer.text, 0, s_viewer.lAt, s_caNothing);
        s_viewer.lAt = 0;
    }
    /* From the file's beginning: who watches finds each state of the log as a whole, the newest
     * last. */
    s_viewer.lAt = insertFile(s_viewer.text, s_viewer.lAt, file.get());
    s_viewer.lTime = status.st_mtime;
    s_viewer.lSize = status.st_size;
}

static void addFileMenu(Widget bar)
{
    static char s_caMenu[] = "fileMenu";
    Widget menu = XmCreatePulldownMenu(bar, s_caMenu, nullptr, 0);
    XmString file = OV_instLiteralXmString("File");
    XmString quit = OV_instLiteralXmString("Quit");
    Widget entry = XtVaCreateManagedWidget("quit", xmPushButtonWidgetClass, menu, XmNlabelString,
                                           quit, XmNmnemonic, 'Q', nullptr);

    XtAddCallback(entry, XmNactivateCallback, menuCB,
                  reinterpret_cast<XtPointer>(intptr_t{QUIT_ENTRY}));
    (void)XtVaCreateManagedWidget("file", xmCascadeButtonWidgetClass, bar, XmNlabelString, file,
                                  XmNmnemonic, 'F', XmNsubMenuId, menu, nullptr);
    XmStringFree(file);
    XmStringFree(quit);
}

void ViewFile(Widget parent, const char *pPath)
{
    if (!parent || !pPath || s_viewer.text)
        return;
    Widget form = OV_instBuildDialog(parent, s_aFileRows, nullptr);

    addFileMenu(XtNameToWidget(form, "menu_bar"));
    s_viewer = {XtNameToWidget(form, "*text"), pPath, 0, 0, 0, true};
    XtAddCallback(s_viewer.text, XmNdestroyCallback, forgetViewer, nullptr);
    OV_instPopup(form, pPath, pPath);
    g_xTimer = XtAppAddTimeOut(XtWidgetToApplicationContext(form), CHECK_DELAY, OV_instCheckLogfile,
                               &s_viewer.path[0]);
}
