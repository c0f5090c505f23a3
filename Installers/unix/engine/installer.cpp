#include "engine/installer.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "engine/driver.h"
#include "engine/fileOps.h"
#include "engine/history.h"
#include "engine/pending.h"
#include "engine/records.h"
#include "engine/registry.h"
#include "engine/runFile.h"
#include "engine/runLock.h"
#include "engine/runReport.h"
#include "engine/selection.h"
#include "engine/setupState.h"
#include "engine/sizes.h"
#include "engine/statusReader.h"
#include "engine/toolChest.h"
#include "ut/OVinstFileUtils.h"
#include "ut/OVinstLogfile.h"
#include "ut/brokenPipes.h"
#include "ut/debugLevel.h"
#include "ut/frontEnd.h"
#include "ut/guard.h"
#include "ut/owned.h"
#include "ut/strprint.h"

enum { PIPE_SIZE = 1024 * 1024 }; /* so that the child seldom waits for the reader */

/* The pipe of a run: its two ends, the latter as the stream that records go to. */
struct RunPipe {
    OwnedFd fromChild;
    OwnedFile toParent;
};

/* What a bare fork has left in this process. */
static OV_InterfaceRun s_interface;

/* ---- the child ---- */

struct ChildRun {
    _OV_instCDinst *pRoot;
    _OV_InstConfigList *pConfig;
    const char *pDest;
    FILE *pStream;
};

/* The passes of a run's phases, in their order. */
enum Phase { REMOVING, INSTALLING, REGISTERING, FINISHING, PHASES };

struct PhaseRow {
    OV_CustomPass aPasses[3];
    int iCount;
    OV_InstMode iMode;
};

static const PhaseRow s_aPhases[PHASES] = {
    {{OV_CUSTOM_PRE, OV_CUSTOM_INIT, OV_CUSTOM_POST}, 3, OV_INST_DELETE_MODE },
    {{OV_CUSTOM_PRE, OV_CUSTOM_INIT},                 2, OV_INST_INSTALL_MODE},
    {{OV_CUSTOM_REGISTRY},                            1, OV_INST_INSTALL_MODE},
    {{OV_CUSTOM_POST},                                1, OV_INST_INSTALL_MODE},
};

static int runPhase(const ChildRun *pRun, Phase phase)
{
    const PhaseRow *pRow = &s_aPhases[phase];
    int iMask = 0;

    for (int i = 0; i < pRow->iCount; i++)
        iMask |= OV_instInstallConfig(pRun->pRoot, pRun->pConfig, pRun->pDest, pRun->pStream,
                                      pRow->aPasses[i], pRow->iMode);
    return iMask;
}

static int copyDescription(const ChildRun *pRun, int iRemoveAll)
{
    OwnedText name(OV_instBasename(pRun->pRoot->pCdinstPath));
    OwnedText target(name ? OV_instBuildPath(pRun->pDest, name.get(), nullptr) : nullptr);
    struct stat info = {};

    if (stat(pRun->pRoot->pCdinstPath, &info) < 0)
        info.st_mode = 0644; /* the copy will tell that it is not there */
    int iResult = OV_instCopyFile(name.get(), target.get(), static_cast<int>(info.st_mode & 07777),
                                  info.st_size, pRun->pStream, iRemoveAll);
    if (iResult)
        OV_instNoteFailedStep();
    return iResult;
}

/* What was reported must survive a power cut. */
static void synchronise(const char *pDest)
{
    OwnedFd directory(open(pDest, O_RDONLY | O_DIRECTORY | O_CLOEXEC));

    if (directory.iFd >= 0)
        (void)syncfs(directory.iFd); /* the medium's errors were told where they happened */
}

static int runRegistryAndPost(const ChildRun *pRun)
{
    int iMask;

    synchronise(pRun->pDest); /* as long as there is a dialog to look at */
    OV_instSendUpdate(pRun->pStream, "%s\n", OV_RECORD_PASS_COMPLETED);
    OV_instSendUpdate(pRun->pStream, "%s\n", OV_RECORD_REGISTRY);
    iMask = runPhase(pRun, REGISTERING);
    OV_instSendUpdate(pRun->pStream, "%s\n", OV_RECORD_REGISTRY_DONE);
    return iMask | runPhase(pRun, FINISHING);
}

/* Says what the run is going to do before it does anything. False where the disk has no room even
 * for that, or fails: without it a run that comes to grief would be taken for a complete one. Where
 * the place is not to be had at all, an installation goes on without. */
static bool announce(const ChildRun *pRun)
{
    if (OV_instBeginRunFile(pRun->pRoot, pRun->pConfig, pRun->pDest) == 0)
        return true;
    const int iError = errno;
    OwnedText path(OV_instRunFilePath(pRun->pDest));
    OV_instWarn("%s could not be written: %s", path ? path.get() : "", strerror(iError));
    if (iError != ENOSPC && iError != EDQUOT && iError != EFBIG && iError != EIO)
        return true;
    OV_instNoteFailedStep();
    OV_instSendUpdate(pRun->pStream, "-1 Can't write %s\n", path ? path.get() : "");
    return false;
}

/* The passes, and what else changes the tree. */
static int carryOut(const ChildRun *pRun, int iRemoveAll)
{
    int iMask;

    if (!iRemoveAll)
        OV_InitHistoryFile(pRun->pDest, OV_instGetProductName(), OV_instGetProductVersion());
    OV_instSendUpdate(pRun->pStream, "%s\n", OV_RECORD_START);
    OV_instSendUpdate(pRun->pStream, "%s\n", OV_RECORD_REMOVING);
    iMask = runPhase(pRun, REMOVING);
    OV_instSendUpdate(pRun->pStream, "%s\n", OV_RECORD_INSTALLING);
    iMask |= runPhase(pRun, INSTALLING);
    iMask |= copyDescription(pRun, iRemoveAll);
    return iMask | runRegistryAndPost(pRun);
}

/* What the run has done is on the disk when it ceases to be pending. */
static void settle(const ChildRun *pRun, int iRemoveAll)
{
    synchronise(pRun->pDest);
    if (!iRemoveAll && OV_instEndRunFile() < 0)
        OV_instWarn("what is pending could not be written"); /* more is pending than need be */
}

int OV_instRunInstallation(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig, int iRemoveAll,
                           FILE *pStream)
{
    OwnedText dest(strdup(GetDestinationDirectory(pRoot)));
    ChildRun run = {pRoot, pConfig, dest.get(), pStream};
    int iMask = 1;

    if (!iRemoveAll) {
        OV_instUpdateNumInUseFlag(pRoot, pConfig, 1);
        OV_instUpdateNumInUseFlag(pRoot, pConfig, 0);
    }
    const bool bBegun = announce(&run);
    if (bBegun) {
        iMask = carryOut(&run, iRemoveAll);
        settle(&run, iRemoveAll);
    }
    if (iMask)
        OV_instSendUpdate(pStream, "%s\n", OV_RECORD_ERROR);
    OV_instSendUpdate(pStream, "%s\n", OV_RECORD_COMPLETED);
    (void)fclose(pStream); /* everything was flushed */
    OV_instChangeResgitryPermission(run.pDest);
    if (iRemoveAll && bBegun)
        OV_RemoveHistoryFile(run.pDest);
    return iMask;
}

void OV_instRehearseInstallation(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig,
                                 const OV_Rehearsal *pRehearsal)
{
    OwnedText dest(strdup(GetDestinationDirectory(pRoot)));
    const ChildRun run = {pRoot, pConfig, dest.get(), nullptr};

    OV_instSettlePending(pRoot, pConfig);
    OV_instUpdateNumInUseFlag(pRoot, pConfig, 1);
    OV_instUpdateNumInUseFlag(pRoot, pConfig, 0);
    OV_instRehearse(pRehearsal);
    for (int i = 0; i < PHASES; i++)
        (void)runPhase(&run, static_cast<Phase>(i)); /* nothing is done that could fail */
    OV_instRehearse(nullptr);
    for (auto *pNode = pRoot->pPackageHead; pNode; pNode = pNode->pNext)
        pNode->pPackage->iPassDone = OV_CUSTOM_RESET; /* as before, for a run that may follow */
}

/* A child never outlives its parent, not even while it is stopped. */
static void dieWithParent(pid_t iParent)
{
    (void)prctl(PR_SET_PDEATHSIG, SIGKILL); /* fails for a bad signal only */
    if (getppid() != iParent)
        _exit(1);
}

/* A group of its own, so that stopping or ending the child reaches the commands that it runs. Both
 * sides call it: whoever comes first. An unattended run stays in the terminal's group, whose
 * interrupt key is the way to end it. */
static void leadGroup(pid_t iChild)
{
    if (OV_instHasDialogs())
        (void)setpgid(iChild, iChild); /* fails when the child is gone, and then nobody minds */
}

[[noreturn]] static void childMain(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig,
                                   pid_t iParent, RunPipe *pPipe)
{
    dieWithParent(iParent);
    leadGroup(0);
    pPipe->fromChild.reset(-1);
    (void)signal(SIGCHLD, SIG_DFL);
    OV_instFrontEnd()->fpEnterChild();
    int iMask =
        OV_instRunInstallation(pRoot, pConfig, OV_instRemovesAll(), pPipe->toParent.release());
    (void)fflush(nullptr); /* _exit leaves the parent's exit handlers alone, and buffers too */
    _exit(iMask ? (iMask & 0xff ? iMask & 0xff : 1) : 0);
}

/* ---- preparing a run ---- */

static void setTotal(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig)
{
    uint64_t ulTotal = static_cast<uint64_t>(OV_instGetTrueSize(pRoot, pConfig, 1, 1));
    struct stat info;

    if (OV_instGetDebugLevel() > 0)
        fprintf(stderr, "Total size=%d\n", static_cast<int>(ulTotal));
    if (stat(pRoot->pCdinstPath, &info) == 0) {
        ulTotal += static_cast<uint64_t>(info.st_size);
        if (OV_instGetDebugLevel() > 0)
            fprintf(stderr, "Total size +  cdinst=%d\n", static_cast<int>(ulTotal));
    }
    SetProgressBarTotalSize(ulTotal);
}

/* Opens the pipe, its ends closed in whatever commands the child starts. Null, or what failed, out
 * of the two texts given. */
static const char *openPipe(RunPipe *pPipe, const char *pNoPipe, const char *pNoStream)
{
    int aEnds[2];

    if (pipe2(aEnds, O_CLOEXEC) < 0)
        return pNoPipe;
    (void)fcntl(aEnds[1], F_SETPIPE_SZ, PIPE_SIZE); /* the default will do */
    pPipe->fromChild.reset(aEnds[0]);
    pPipe->toParent.reset(fdopen(aEnds[1], "w"));
    if (pPipe->toParent)
        return nullptr;
    (void)close(aEnds[1]); /* nothing was written */
    return pNoStream;
}

/* The process twice, the pipe's ends in both. What pends in streams would be printed by both. */
static pid_t forkFlushed()
{
    (void)fflush(nullptr);
    return fork();
}

/* Opens the log of a description that names one. 0, or 1 when its place cannot be made. */
static int startLog(const _OV_instCDinst *pRoot, const char *pDest, FILE *pStream)
{
    if (!pRoot->pLogFile || !pRoot->pLogFile[0])
        return 0;
    OwnedText path(OV_instBuildPath(pDest, pRoot->pLogFile, nullptr));
    OwnedText directory(path ? OV_instDirname(path.get()) : nullptr);
    if (!directory || OV_instMkdir(directory.get(), OV_DIRECTORY_MODE, pStream) < 0) {
        (void)OV_instAsk("Error while setting up logfile", "OK");
        return 1;
    }
    (void)OV_instInitLogfileAndTimeStamp(
        path.get()); /* a log that cannot be opened stops nothing */
    return 0;
}

static void logMode(const _OV_instCDinst *pRoot)
{
    if (OV_instMaintenanceExists())
        (void)OV_instUpdateLogfile("Running in Maintenance mode\n"); /* the log is optional */
    if (OV_instRemovesAll())
        (void)OV_instUpdateLogfile("Removing All Files\n");
    else if (pRoot->bChestRC)
        (void)OV_instAddSinclude(nullptr, OV_instGetRootDestinationDirectory()); /* it tells */
}

/* ---- following an unattended run ---- */

void OV_instChildHandler(int iSignal)
{
    (void)signal(iSignal, OV_instChildHandler);
}

/* Shows the status until the child is done, and waits for it. */
static void followOnStatusLine(OwnedFd *pFromChild, pid_t iChild)
{
    bool bGone = OV_instReadRecords(pFromChild->iFd, GetProgressBarTotalSize(), iChild);

    pFromChild->reset(-1); /* first: a child that is still writing must not wait for us */
    while (!bGone && waitpid(iChild, nullptr, 0) < 0 && errno == EINTR)
        ;
    printf("\n");
    (void)fflush(stdout);
}

/* ---- starting a run ---- */

static bool canStart(const _OV_instCDinst *pRoot, const _OV_InstConfigList *pConfig)
{
    return pRoot && pConfig && GetRootDestinationDirectory(pRoot) && GetDestinationDirectory(pRoot);
}

/* The run as somebody follows it: the front end, or the status line. */
static void follow(OwnedFd *pFromChild, pid_t iChild)
{
    leadGroup(iChild);
    if (OV_instFrontEnd()->fpFollowRun)
        return OV_instFrontEnd()->fpFollowRun(pFromChild->release(), iChild);
    followOnStatusLine(pFromChild, iChild);
    OV_instUnlockRun(); /* a front end does that itself */
}

/* Makes the directory and sees to it that this is the only run there: first by looking, since a
 * second run must not change anything. 0 or 1. */
static int takeDestination(const char *pDest)
{
    if (!OV_instLockRun(pDest, false)) {
        OV_instTellRunLocked(pDest);
        return 1;
    }
    if (OV_instIsHistoryUnreadable()) {
        (void)OV_instAsk("Unable to read what is installed", "OK");
        return 1;
    }
    if (OV_instMkdir(pDest, OV_DIRECTORY_MODE, nullptr) < 0) {
        (void)OV_instAsk("Unable to create install directory", "OK");
        return 1;
    }
    if (OV_instLockRun(pDest, true))
        return 0;
    OV_instTellRunLocked(pDest);
    return 1;
}

int OV_instCommandLineInstall(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig, int iRemoveAll)
{
    RunPipe ends;
    pid_t iParent = getpid();

    OV_instSetRemovesAll(iRemoveAll != 0);
    if (!canStart(pRoot, pConfig)) {
        fputs("Invalid arguments to CommandLineInstall\n", stderr);
        return 1;
    }
    OwnedText dest(strdup(GetDestinationDirectory(pRoot)));
    OV_instSettlePending(pRoot, pConfig);
    OV_instBeginReport();
    OV_instReopenGuardedRoot();
    setTotal(pRoot, pConfig);
    if (const char *pFailed =
            openPipe(&ends, "Error creating pipe\n", "Could not convert pipe to stream\n")) {
        fputs(pFailed, stderr);
        return 1;
    }
    (void)signal(SIGCHLD, OV_instChildHandler);
    OV_instCatchBrokenPipes();
    if (takeDestination(dest.get()) != 0 || startLog(pRoot, dest.get(), ends.toParent.get()) != 0) {
        OV_instUnlockRun();
        return 1;
    }
    logMode(pRoot);
    pid_t iChild = forkFlushed();
    if (iChild < 0) {
        OV_instUnlockRun();
        fputs("Can't fork\n", stderr);
        return 1;
    }
    if (iChild == 0)
        childMain(pRoot, pConfig, iParent, &ends);
    ends.toParent.reset(); /* or the pipe would never end */
    follow(&ends.fromChild, iChild);
    return 0;
}

int OV_instInterfaceInstall(_OV_instCDinst *, const char *)
{
    RunPipe ends;

    if (const char *pFailed =
            openPipe(&ends, "Could not create a pipe\n", "Could not convert pipe to stream\n")) {
        fputs(pFailed, stderr);
        exit(1);
    }
    (void)signal(SIGCHLD, OV_instChildHandler);
    s_interface = {nullptr, forkFlushed()};
    if (s_interface.iChild < 0)
        return -1;
    s_interface.pStream =
        s_interface.iChild ? fdopen(ends.fromChild.release(), "r") : ends.toParent.release();
    return 0;
}

const OV_InterfaceRun *OV_instInterfaceRun()
{
    return &s_interface;
}
