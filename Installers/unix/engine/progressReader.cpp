#include "engine/progressReader.h"

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
#include "dialogs/sequence.h"
#include "engine/history.h"
#include "engine/records.h"
#include "engine/setupState.h"
#include "ut/OVinstLogfile.h"
#include "ut/debugLevel.h"
#include "ut/owned.h"
#include "ut/strprint.h"
#include "ut/uiut.h"

enum { CARRY_SIZE = 5000 };

static struct {
    int iFd;
    pid_t iChild;
    int iRemoveAll;
    XtInputId input; /* 0 while the pipe is not read */
    Widget progress; /* the message box; null when there is none */
    OV_RecordSplitter splitter;
    uint64_t ulSum;
    int installError;
    int iPercent; /* what is still to be shown: -1 for nothing */
    char caShown[CARRY_SIZE];
} s_reader;

static Widget mainShell()
{
    return OV_instGetMainTopLevelShell();
}

static void listen(bool bOn)
{
    if (bOn == (s_reader.input != 0))
        return;
    if (bOn) {
        s_reader.input =
            XtAppAddInput(XtWidgetToApplicationContext(mainShell()), s_reader.iFd,
                          reinterpret_cast<XtPointer>(XtInputReadMask), UpdateProgressBar, nullptr);
    } else {
        XtRemoveInput(s_reader.input);
        s_reader.input = 0;
    }
}

static void destroyProgress(Widget, XtPointer, XtPointer)
{
    s_reader.progress = nullptr;
}

/* ---- progress ---- */

/* Shows what the last progress record said. Only the last of those that came together is drawn:
 * nobody could see the others, and drawing each would make the child wait. */
static void showProgress()
{
    if (s_reader.iPercent < 0)
        return;
    OV_instProgressUpdate(s_reader.iPercent, s_reader.caShown[0] ? s_reader.caShown : nullptr);
    s_reader.iPercent = -1;
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
    listen(false);
    (void)signal(SIGCHLD, SIG_IGN);
    (void)kill(-s_reader.iChild, SIGKILL); /* the child leads a group of its own */
    (void)kill(s_reader.iChild, SIGKILL);
    (void)waitpid(s_reader.iChild, nullptr, WNOHANG);
    if (!OV_instMaintenanceExists() && !s_reader.iRemoveAll)
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
    listen(false);
    OV_instPopupAfterMoveDataDialogs(mainShell());
    tellResult(!s_reader.installError);
    exit(0);
}

static void takeDownProgress()
{
    if (s_reader.progress)
        XtDestroyWidget(OV_instGetShell(s_reader.progress));
    s_reader.progress = nullptr;
}

/* The pipe ended without the completion marker. */
static void childDied()
{
    listen(false);
    OV_instRemoveMessageBox();
    takeDownProgress();
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

    listen(false);
    (void)kill(s_reader.iChild, SIGSTOP);
    s_reader.installError = 1;
    debugBox("Error 2");
    if (strcmp(pText, "abort") == 0)
        abortRun();
    OwnedText question(OV_instStrPrint("%s\n%s", pText, "Do you wish to continue?"));
    if (OV_instOkCancelMessageBox(mainShell(), question.get(), "Yes", "No", nullptr) != 0)
        abortRun();
    (void)OV_instUpdateLogfile("%s\n", pText); /* the log is optional */
    (void)kill(s_reader.iChild, SIGCONT);
    listen(true);
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
    ssize_t iRead = read(*piFd, caBytes, sizeof(caBytes) - 1 - s_reader.splitter.iUsed);

    if (iRead < 0 && (errno == EINTR || errno == EAGAIN))
        return;
    if (iRead < 0) {
        (void)OV_instOkCancelMessageBox(mainShell(), "Internal error: UpdateProgressBar", "OK",
                                        nullptr, nullptr);
        exit(1);
    }
    if (iRead == 0)
        childDied();
    OV_instSplitRecords(&s_reader.splitter, caBytes, static_cast<size_t>(iRead), onRecord, nullptr);
    showProgress();
}

void OV_instCreateProgressBar(Widget parent, int iFd, pid_t iChild, int iRemoveAll)
{
    s_reader.iFd = iFd;
    s_reader.iChild = iChild;
    s_reader.iRemoveAll = iRemoveAll;
    s_reader.installError = 0;
    s_reader.iPercent = -1;
    s_reader.splitter = OV_instNewSplitter(CARRY_SIZE - 1);
    s_reader.progress = CreatembProgress(parent);
    XtVaSetValues(s_reader.progress, XmNuserData,
                  reinterpret_cast<XtPointer>(static_cast<intptr_t>(iChild)), nullptr);
    XtAddCallback(s_reader.progress, XmNdestroyCallback, destroyProgress, nullptr);
    listen(true);
}
