#include "dialogs/progressReader.h"

#include <cerrno>
#include <cinttypes>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/wait.h>
#include <unistd.h>

#include <Xm/Xm.h>

#include "dialogs/Progress.h"
#include "dialogs/runWatch.h"
#include "dialogs/sequence.h"
#include "engine/history.h"
#include "engine/records.h"
#include "engine/runLock.h"
#include "engine/setupState.h"
#include "ut/OVinstLogfile.h"
#include "ut/toolkit/compound.h"
#include "ut/toolkit/modal.h"
#include "ut/debugLevel.h"
#include "ut/owned.h"
#include "ut/strprint.h"
#include "ut/toolkit/messageBox.h"
#include "ut/toolkit/uiut.h"

enum {
    CARRY_SIZE = 5000,
    SHOW_MSEC = 20 /* as often as anybody can see; drawing more would slow the child down */
};

static struct {
    pid_t iChild;
    Widget progress; /* the message box; null when there is none */
    OV_RecordSplitter splitter;
    uint64_t ulSum;
    int installError;   /* something was told as an error */
    bool bFailed;       /* the run's passes, by their marker */
    int iPercent;       /* what is still to be shown: -1 for nothing */
    XtIntervalId shown; /* runs while what was shown last is new */
    char caShown[CARRY_SIZE];
} s_reader;

static Widget mainShell()
{
    return OV_instGetMainTopLevelShell();
}

static void destroyProgress(Widget, XtPointer, XtPointer)
{
    s_reader.progress = nullptr;
}

/* ---- progress ---- */

/* Shows what the last progress record said. */
static void showProgress()
{
    if (s_reader.iPercent < 0)
        return;
    OV_instProgressUpdate(s_reader.iPercent, s_reader.caShown[0] ? s_reader.caShown : nullptr);
    s_reader.iPercent = -1;
}

static void showInTime(XtPointer, XtIntervalId *)
{
    s_reader.shown = 0;
    if (s_reader.iPercent < 0)
        return;
    showProgress();
    s_reader.shown =
        XtAppAddTimeOut(XtWidgetToApplicationContext(mainShell()), SHOW_MSEC, showInTime, nullptr);
}

static int percentDone()
{
    uint64_t ulTotal = GetProgressBarTotalSize();

    if (!ulTotal)
        return 100;
    uint64_t ulPercent = s_reader.ulSum * 100 / ulTotal;
    return ulPercent < 100 ? static_cast<int>(ulPercent) : 100;
}

static void onCount(const char *pLine)
{
    char caFirst[CARRY_SIZE];
    char caSecond[CARRY_SIZE];
    char cSign;
    unsigned long ulCount = 0;
    int iFields = sscanf(pLine, "%c%lu %4999s %4999s", &cSign, &ulCount, caFirst, caSecond);

    if (iFields < 3)
        return;
    s_reader.ulSum += ulCount;
    s_reader.iPercent = percentDone();
    strcpy(s_reader.caShown, iFields > 3 ? caSecond : caFirst);
    if (OV_instGetDebugLevel() > 1)
        printf("s_ulTotalSize=%lu s_ulSize=%lu ulSize=%lu -> caSource=%s -> %d\n",
               GetProgressBarTotalSize(), s_reader.ulSum, ulCount, caFirst, s_reader.iPercent);
}

/* ---- the end of a run ---- */

static void abortRun()
{
    OV_instUnwatchRun();
    (void)signal(SIGCHLD, SIG_IGN);
    OV_instKillRun(s_reader.iChild);
    (void)waitpid(s_reader.iChild, nullptr, WNOHANG);
    if (!OV_instMaintenanceExists() && !OV_instRemovesAll())
        OV_RemoveHistoryFile(OV_instGetDestinationDirectory());
    exit(1);
}

static void tellResult(bool bSuccess)
{
    (void)OV_instOkCancelMessageBox(mainShell(),
                                    bSuccess ? "Setup completed successfully\n"
                                             : "Setup did not complete successfully\n",
                                    "OK", nullptr, nullptr);
}

static void finishRun()
{
    OV_instUnwatchRun();
    OV_instLogEnd(s_reader.bFailed);
    OV_instPopupAfterMoveDataDialogs(mainShell());
    tellResult(!s_reader.installError);
    /* The child would die with us before its last steps, which follow the marker. */
    while (waitpid(s_reader.iChild, nullptr, 0) < 0 && errno == EINTR)
        ;
    OV_instUnlockRun(); /* what a module has left running would go on holding it */
    exit(0);
}

static void takeDownProgress()
{
    OV_instTakeDown(s_reader.progress);
    s_reader.progress = nullptr;
}

/* The pipe ended without the completion marker. */
static void childDied()
{
    OV_instUnwatchRun();
    OV_instRemoveMessageBox();
    takeDownProgress();
    OV_instUnlockRun(); /* likewise */
    tellResult(false);
    exit(1);
}

/* ---- markers ---- */

static void onStart()
{
    if (s_reader.progress)
        XtManageChild(s_reader.progress);
}

static void onRemoving()
{
    if (s_reader.progress)
        OV_instProgressUpdateLabel("Removing files:");
}

static void onInstalling()
{
    if (s_reader.progress)
        OV_instProgressUpdateLabel("Destination files:");
}

static void onRegistry()
{
    OV_instDisplayMessageBox(mainShell(), "Updating the system registry");
}

static void debugBox(const char *pText)
{
    if (OV_instGetDebugLevel() > 1)
        (void)OV_instOkCancelMessageBox(mainShell(), pText, "OK", nullptr, nullptr);
}

static void onFailure()
{
    s_reader.installError = 1;
    s_reader.bFailed = true;
    debugBox("Error 1");
}

struct MarkerRow {
    const char *pLine;
    void (*act)();
};

static const MarkerRow s_aMarkers[] = {
    {OV_RECORD_START,          onStart                },
    {OV_RECORD_REMOVING,       onRemoving             },
    {OV_RECORD_INSTALLING,     onInstalling           },
    {OV_RECORD_PASS_COMPLETED, takeDownProgress       },
    {OV_RECORD_REGISTRY,       onRegistry             },
    {OV_RECORD_REGISTRY_DONE,  OV_instRemoveMessageBox},
    {OV_RECORD_ERROR,          onFailure              },
    {OV_RECORD_COMPLETED,      finishRun              },
    {nullptr,                  nullptr                },
};

static void onMarker(const char *pLine)
{
    size_t iLog = strlen(OV_RECORD_LOG);

    for (const MarkerRow *pRow = s_aMarkers; pRow->pLine; pRow++)
        if (strcmp(pRow->pLine, pLine) == 0)
            return pRow->act();
    if (strncmp(pLine, OV_RECORD_LOG, iLog) == 0)
        (void)OV_instUpdateLogfile("%s\n", pLine + iLog); /* the log is optional */
}

/* ---- errors ---- */

static void onError(const char *pLine)
{
    const char *pText = strlen(pLine) < 4 ? pLine : pLine + 3;

    OV_instPauseRun(s_reader.iChild);
    s_reader.installError = 1;
    debugBox("Error 2");
    if (strcmp(pText, "abort") == 0)
        abortRun();
    /* A blank in front keeps a message that begins like a compound text from being read as one. */
    OwnedText question(OV_instStrPrint("%s%s\n%s", OV_instIsCompoundText(pText) ? " " : "", pText,
                                       "Do you wish to continue?"));
    if (OV_instOkCancelMessageBox(mainShell(), question.get(), "Yes", "No", nullptr) != 0)
        abortRun();
    (void)OV_instUpdateLogfile("%s\n", pText); /* the log is optional */
    OV_instResumeRun(s_reader.iChild);
}

static void onRecord(const char *pLine, void *)
{
    if (pLine[0] == '+')
        return onCount(pLine);
    showProgress();
    if (pLine[0] == '#')
        onMarker(pLine);
    else if (pLine[0] == '-')
        onError(pLine);
}

void UpdateProgressBar(XtPointer, int *piFd, XtInputId *)
{
    char caBytes[CARRY_SIZE];
    ssize_t iRead = read(*piFd, caBytes, sizeof(caBytes) - 1);

    if (iRead < 0 && (errno == EINTR || errno == EAGAIN))
        return;
    if (iRead < 0) {
        OV_instUnwatchRun();
        (void)OV_instOkCancelMessageBox(mainShell(), "Internal error: UpdateProgressBar", "OK",
                                        nullptr, nullptr);
        exit(1);
    }
    if (iRead == 0)
        childDied();
    OV_instSplitRecords(&s_reader.splitter, caBytes, static_cast<size_t>(iRead), onRecord, nullptr);
    if (!s_reader.shown)
        showInTime(nullptr, nullptr);
}

void OV_instCreateProgressBar(Widget parent, int iFd, pid_t iChild)
{
    s_reader.iChild = iChild;
    s_reader.installError = 0;
    s_reader.bFailed = false;
    s_reader.iPercent = -1;
    s_reader.splitter = OV_instNewSplitter(CARRY_SIZE - 1);
    s_reader.progress = CreatembProgress(parent);
    XtVaSetValues(s_reader.progress, XmNuserData,
                  reinterpret_cast<XtPointer>(static_cast<intptr_t>(iChild)), nullptr);
    XtAddCallback(s_reader.progress, XmNdestroyCallback, destroyProgress, nullptr);
    OV_instWatchRun(parent, iFd, iChild, UpdateProgressBar, childDied);
}
