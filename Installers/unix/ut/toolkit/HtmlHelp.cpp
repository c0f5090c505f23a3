#include "ut/toolkit/HtmlHelp.h"

#include <Xm/DialogS.h>
#include <Xm/FileSB.h>
#include <Xm/TextF.h>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "ut/OVinstFileUtils.h"
#include "ut/toolkit/bxutils.h"
#include "ut/toolkit/dialogShell.h"
#include "ut/toolkit/modal.h"
#include "ut/toolkit/looks.h"
#include "ut/owned.h"
#include "ut/strprint.h"
#include "ut/toolkit/uibuild.h"
#include "ut/toolkit/messageBox.h"
#include "ut/toolkit/widgetTree.h"

static const char s_caFirstBrowser[] = "/usr/bin/firefox";
static const char s_caMakersSite[] = "https://www.orvane.example/";
static const char s_caLooks[] = UI_SET("width", "400") UI_SET("height", "500");

static OwnedText helpDirectory;  /* null for none */
static OwnedText htmlBrowser;    /* null until it is needed, and after a search was given up */
static int browserSelectionDone; /* ends the search */
static Widget fsHtmlBrowser;     /* the search's box; null when there is none */

void OV_instSetHelpDirectory(const char *pPath)
{
    helpDirectory.reset(pPath ? strdup(pPath) : nullptr);
}

bool OV_instHasHelp()
{
    return helpDirectory != nullptr;
}

/* ---- choosing a browser ---- */

static void htmlHelpOKCB(Widget box, XtPointer, XtPointer)
{
    char *pChosen = XmTextFieldGetString(XmFileSelectionBoxGetChild(box, XmDIALOG_TEXT));

    if (OV_instIsThere(pChosen)) {
        htmlBrowser.reset(strdup(pChosen));
        browserSelectionDone = 1;
    } else {
        OV_instTellOver(box, "The file '%s' does not exist", pChosen);
    }
    XtFree(pChosen);
}

static void htmlHelpCancelCB(Widget, XtPointer, XtPointer)
{
    htmlBrowser.reset();
    browserSelectionDone = 1;
}

static Widget createBrowserSelection(Widget parent)
{
    static char s_caFilter[] = "/usr/bin/*";
    XmString filter = XmStringCreateLocalized(s_caFilter);
    Widget shell =
        XtVaCreatePopupShell("Find HTML Browser", xmDialogShellWidgetClass, parent, nullptr);

    /* Addressed by its parent, since no resource line can name a shell with blanks in its name. */
    (void)OV_instAddWidgetLooks(parent, "fsbHtmlBrowser", xmFileSelectionBoxWidgetClass, s_caLooks);
    Widget box = XtVaCreateWidget("fsbHtmlBrowser", xmFileSelectionBoxWidgetClass, shell,
                                  XmNautoUnmanage, False, XmNdialogStyle,
                                  XmDIALOG_FULL_APPLICATION_MODAL, XmNdirMask, filter, nullptr);
    XmStringFree(filter);
    XtUnmanageChild(XmFileSelectionBoxGetChild(box, XmDIALOG_HELP_BUTTON));
    XtAddCallback(box, XmNokCallback, htmlHelpOKCB, nullptr);
    XtAddCallback(box, XmNcancelCallback, htmlHelpCancelCB, nullptr);
    OV_instCompleteDialog(box);
    return box;
}

static void createAndPopupBrowserSelection(Widget parent)
{
    fsHtmlBrowser = createBrowserSelection(parent);
    OV_instRunDialog(fsHtmlBrowser, &browserSelectionDone);
    fsHtmlBrowser = nullptr;
}

/* Leaves in htmlBrowser what to start; null when the user gave up searching. */
static void chooseBrowser(Widget widget)
{
    Widget top = OV_instGetTLShell(widget);

    if (!htmlBrowser)
        htmlBrowser.reset(strdup(s_caFirstBrowser));
    if (!htmlBrowser || OV_instIsThere(htmlBrowser.get()))
        return;
    int iAnswer =
        OV_instDisplayMessage(OV_instGetShell(widget), "Find...", "Cancel", nullptr,
                              "The HTML Browser (%s) was not found.\nA browser is required to open "
                              "help files.\nSelect Find to locate the browser yourself.",
                              htmlBrowser.get());
    if (iAnswer == 0 && top)
        createAndPopupBrowserSelection(top);
}

/* ---- starting it ---- */

static void closeInherited()
{
    int iNull = open("/dev/null", O_RDWR);

    /* Whoever reads setup's output must not wait for the browser to end. */
    for (int iFd = STDIN_FILENO; iNull >= 0 && iFd <= STDERR_FILENO; iFd++)
        (void)dup2(iNull, iFd); /* where it fails the browser inherits one more: no harm */
    if (syscall(SYS_close_range, STDERR_FILENO + 1U, ~0U, 0) == 0)
        return;
    for (int iFd = static_cast<int>(sysconf(_SC_OPEN_MAX)); iFd > STDERR_FILENO; iFd--)
        (void)close(iFd); /* most of them are not open */
}

static void resetSignals()
{
    sigset_t none;

    for (int iSignal = 1; iSignal < NSIG; iSignal++)
        (void)signal(iSignal, SIG_DFL); /* refused for those that nobody can change */
    (void)sigemptyset(&none);
    (void)sigprocmask(SIG_SETMASK, &none, nullptr);
}

/* In the first child: the browser becomes a process of nobody's, so that setup need not wait for it
 * and it neither stays behind as a zombie nor gets the signals of setup's terminal. */
[[noreturn]] static void leaveBrowser(const char *pTarget)
{
    (void)setsid(); /* a child is no group leader, so it cannot fail */
    pid_t iBrowser = fork();
    if (iBrowser != 0)
        _exit(iBrowser < 0 ? 1 : 0);
    resetSignals();
    closeInherited();
    if (htmlBrowser.get()[0] == '/')
        (void)chdir("/"); /* or the medium could not be taken out before the browser ends */
    (void)execl(htmlBrowser.get(), htmlBrowser.get(), pTarget, static_cast<char *>(nullptr));
    _exit(1);
}

/* Returns 0, or -1 when there is no process for the browser. */
static int startBrowser(const char *pTarget)
{
    int iStatus = 0;

    (void)fflush(nullptr);
    pid_t iChild = fork();
    if (iChild < 0)
        return -1;
    if (iChild == 0)
        leaveBrowser(pTarget);
    while (waitpid(iChild, &iStatus, 0) < 0)
        if (errno != EINTR)
            return 0; /* somebody else has waited for it */
    return WIFEXITED(iStatus) && WEXITSTATUS(iStatus) == 0 ? 0 : -1;
}

/* What to open, for the caller to free. */
static char *buildTarget(const char *pFile, const char *pAddress)
{
    if (!pFile)
        return strdup(pAddress ? pAddress : s_caMakersSite);

    char *pTarget = OV_instStrPrint("%s/%s", helpDirectory ? helpDirectory.get() : "", pFile);
    (void)OV_instRemoveExtraSlash(pTarget); /* fails for null only */
    return pTarget;
}

void OV_instHtmlHelpCB(Widget widget, const char *pFile, const char *pAddress)
{
    if (fsHtmlBrowser) /* one search at a time */
        return;
    Widget top = OV_instGetTLShell(widget); /* the widget may be gone after the search */
    chooseBrowser(widget);
    if (!htmlBrowser)
        return;
    OwnedText target(buildTarget(pFile, pAddress));
    if (target && startBrowser(target.get()) < 0)
        (void)OV_instDisplayMessage(top, "OK", nullptr, nullptr, "Error launching: %s %s",
                                    htmlBrowser.get(), target.get());
}
