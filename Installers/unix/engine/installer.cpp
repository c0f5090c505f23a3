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
#include "dialogs/progressReader.h"
#include "engine/records.h"
#include "engine/registry.h"
#include "engine/selection.h"
#include "engine/setupState.h"
#include "engine/sizes.h"
#include "engine/statusReader.h"
#include "engine/toolChest.h"
#include "ut/OVinstFileUtils.h"
#include "ut/OVinstLogfile.h"
#include "ut/brokenPipes.h"
#include "ut/toolkit/appResources.h"
#include "ut/debugLevel.h"
#include "ut/guard.h"
#include "ut/owned.h"
#include "ut/strprint.h"
#include "ut/toolkit/uiut.h"

enum { PIPE_SIZE = 1024 * 1024 }; /* so that the child seldom waits for the reader */

static struct {
    int sRemoveAll; /* of the current run */
} s_run;

static Widget mainShell()
{
    return OV_instGetMainTopLevelShell();
}

static void tellUser(const char *pText)
{
    (void)OV_instOkCancelMessageBox(mainShell(), pText, "OK", nullptr, nullptr);
}

/* ---- the child ---- */

struct ChildRun {
    _OV_instCDinst *pRoot;
    _OV_InstConfigList *pConfig;
    const char *pDest;
    FILE *pStream;
};

static int runPasses(const ChildRun *pRun, const OV_CustomPass *aPasses, int iCount,
                     OV_InstMode iMode)
{
    int iMask = 0;

    for (int i = 0; i < iCount; i++)
        iMask |= OV_instInstallConfig(pRun->pRoot, pRun->pConfig, pRun->pDest, pRun->pStream,
                                      aPasses[i], iMode);
    return iMask;
}

static int copyDescription(const ChildRun *pRun, int iRemoveAll)
{
    OwnedText name(OV_instBasename(pRun->pRoot->pCdinstPath));
    OwnedText target(name ? OV_instBuildPath(pRun->pDest, name.get(), nullptr) : nullptr);
    struct stat info = {};

    if (stat(pRun->pRoot->pCdinstPath, &info) < 0)
        info.st_mode = 0644; /* the copy will tell that it is not there */
    return OV_instCopyFile(name.get(), target.get(), static_cast<int>(info.st_mode & 07777),
                           info.st_size, pRun->pStream, iRemoveAll);
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
    static const OV_CustomPass s_registry[] = {OV_CUSTOM_REGISTRY};
    static const OV_CustomPass s_post[] = {OV_CUSTOM_POST};
    int iMask;

    synchronise(pRun->pDest); /* as long as there is a dialog to look at */
    OV_instSendUpdate(pRun->pStream, "%s\n", OV_RECORD_PASS_COMPLETED);
    OV_instSendUpdate(pRun->pStream, "%s\n", OV_RECORD_REGISTRY);
    iMask = runPasses(pRun, s_registry, 1, OV_INST_INSTALL_MODE);
    OV_instSendUpdate(pRun->pStream, "%s\n", OV_RECORD_REGISTRY_DONE);
    return iMask | runPasses(pRun, s_post, 1, OV_INST_INSTALL_MODE);
}

int OV_instRunInstallation(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig, int iRemoveAll,
                           FILE *pStream)
{
    static const OV_CustomPass s_removal[] = {OV_CUSTOM_PRE, OV_CUSTOM_INIT, OV_CUSTOM_POST};
    static const OV_CustomPass s_install[] = {OV_CUSTOM_PRE, OV_CUSTOM_INIT};
    OwnedText dest(strdup(GetDestinationDirectory(pRoot)));
    ChildRun run = {pRoot, pConfig, dest.get(), pStream};
    int iMask;

    if (!iRemoveAll) {
        OV_InitHistoryFile(run.pDest, OV_instGetProductName(), OV_instGetProductVersion());
        OV_instUpdateNumInUseFlag(pRoot, pConfig, 1);
        OV_instUpdateNumInUseFlag(pRoot, pConfig, 0);
    }
    OV_instSendUpdate(pStream, "%s\n", OV_RECORD_START);
    OV_instSendUpdate(pStream, "%s\n", OV_RECORD_REMOVING);
    iMask = runPasses(&run, s_removal, 3, OV_INST_DELETE_MODE);
    OV_instSendUpdate(pStream, "%s\n", OV_RECORD_INSTALLING);
    iMask |= runPasses(&run, s_install, 2, OV_INST_INSTALL_MODE);
    iMask |= copyDescription(&run, iRemoveAll);
    iMask |= runRegistryAndPost(&run);
    if (iMask) {
        (void)OV_instUpdateLogfile("Error during the installation\n"); /* the log is optional */
        OV_instSendUpdate(pStream, "%s\n", OV_RECORD_ERROR);
    } else {
        (void)OV_instUpdateLogfile("Installation Completed\n");
    }
    synchronise(run.pDest);
    OV_instSendUpdate(pStream, "%s\n", OV_RECORD_COMPLETED);
    (void)fclose(pStream); /* everything was flushed */
    OV_instChangeResgitryPermission(run.pDest);
    if (iRemoveAll)
        OV_RemoveHistoryFile(run.pDest);
    return iMask;
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
    if (mainShell())
        (void)setpgid(iChild, iChild); /* fails when the child is gone, and then nobody minds */
}

static void openOwnDisplay()
{
    static char s_caName[] = "ovint Installer thread";
    char *apNames[] = {s_caName, nullptr};

    (void)OV_instCreateMainTopLevelShell(OV_instOpenApplicationAs(1, apNames));
}

/* The parent's connection is left alone, and not even closed by the protocol: the server would
 * think that the parent has gone. The child gets one of its own, for the media prompt and modules,
 * but few runs need it, and opening it takes longer than many files. Where there cannot be one, the
 * child asks nobody. */
static void leaveParentsDisplay()
{
    /* The toolkit's font cache still speaks to the parent's connection now and then. */
    OwnedFd nowhere(open("/dev/null", O_RDWR | O_CLOEXEC));

    (void)dup3(nowhere.iFd, ConnectionNumber(XtDisplay(mainShell())), O_CLOEXEC);
    OV_instMakeMainTopLevelShellLater(openOwnDisplay);
}

[[noreturn]] static void childMain(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig,
                                   pid_t iParent, FILE *pRead, FILE *pWrite)
{
    int iMask;

    dieWithParent(iParent);
    leadGroup(0);
    (void)fclose(pRead);
    (void)signal(SIGCHLD, SIG_DFL);
    if (mainShell())
        leaveParentsDisplay();
    iMask = OV_instRunInstallation(pRoot, pConfig, s_run.sRemoveAll, pWrite);
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

/* The pipe as two streams, its ends closed in whatever commands the child starts. 0 or 1. */
static int openPipe(OwnedFile *pRead, OwnedFile *pWrite)
{
    int aEnds[2];

    if (pipe2(aEnds, O_CLOEXEC) < 0) {
        fputs("Error creating pipe\n", stderr);
        return 1;
    }
    (void)fcntl(aEnds[1], F_SETPIPE_SZ, PIPE_SIZE); /* the default will do */
    pRead->reset(fdopen(aEnds[0], "r"));
    pWrite->reset(fdopen(aEnds[1], "w"));
    if (*pRead && *pWrite)
        return 0;
    fputs("Could not convert pipe to stream\n", stderr);
    for (int i = 0; i < 2; i++)
        if (!(i ? *pWrite : *pRead))
            (void)close(aEnds[i]);
    return 1;
}

/* Opens the log of a description that names one. 0, or 1 when its place cannot be made. */
static int startLog(const _OV_instCDinst *pRoot, const char *pDest, FILE *pStream)
{
    if (!pRoot->pLogFile || !pRoot->pLogFile[0])
        return 0;
    OwnedText path(OV_instBuildPath(pDest, pRoot->pLogFile, nullptr));
    OwnedText directory(path ? OV_instDirname(path.get()) : nullptr);
    if (!directory || OV_instMkdir(directory.get(), OV_DIRECTORY_MODE, pStream) < 0) {
        tellUser("Error while setting up logfile");
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
    if (s_run.sRemoveAll)
        (void)OV_instUpdateLogfile("Removing All Files\n");
    else if (pRoot->bChestRC)
        (void)OV_instAddSinclude(nullptr, OV_instGetRootDestinationDirectory()); /* it tells */
}

/* ---- following an unattended run ---- */

void OV_instChildHandler(int iSignal)
{
    (void)signal(iSignal, OV_instChildHandler);
}

static int followRun(pid_t iChild, OwnedFile *pRead, OwnedFile *pWrite)
{
    int bGone;

    pWrite->reset();
    bGone = OV_instReadRecords(fileno(pRead->get()), GetProgressBarTotalSize(), iChild);
    pRead->reset(); /* first: a child that is still writing must not wait for us */
    while (!bGone && waitpid(iChild, nullptr, 0) < 0 && errno == EINTR)
        ;
    printf("\n");
    (void)fflush(stdout);
    return 0;
}

/* ---- starting a run ---- */

static bool canStart(const _OV_instCDinst *pRoot, const _OV_InstConfigList *pConfig)
{
    return pRoot && pConfig && GetRootDestinationDirectory(pRoot) && GetDestinationDirectory(pRoot);
}

int OV_instCommandLineInstall(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig, int iRemoveAll)
{
    OwnedFile fromChild;
    OwnedFile toParent;
    pid_t iParent = getpid();
    pid_t iChild;

    s_run.sRemoveAll = iRemoveAll;
    if (!canStart(pRoot, pConfig)) {
        fputs("Invalid arguments to CommandLineInstall\n", stderr);
        return 1;
    }
    OV_instSetGuardedRoot(GetRootDestinationDirectory(pRoot)); /* the header may have named it */
    OwnedText dest(strdup(GetDestinationDirectory(pRoot)));
    setTotal(pRoot, pConfig);
    if (openPipe(&fromChild, &toParent) != 0)
        return 1;
    (void)signal(SIGCHLD, OV_instChildHandler);
    OV_instCatchBrokenPipes();
    if (OV_instMkdir(dest.get(), OV_DIRECTORY_MODE, nullptr) < 0) {
        tellUser("Unable to create install directory");
        return 1;
    }
    if (startLog(pRoot, dest.get(), toParent.get()) != 0)
        return 1;
    logMode(pRoot);
    (void)fflush(nullptr); /* or the child would print what is pending once more */
    iChild = fork();
    if (iChild < 0) {
        fputs("Can't fork\n", stderr);
        return 1;
    }
    if (iChild == 0)
        childMain(pRoot, pConfig, iParent, fromChild.release(), toParent.release());
    if (!mainShell())
        return followRun(iChild, &fromChild, &toParent);
    leadGroup(iChild);
    OV_instCreateProgressBar(mainShell(), fileno(fromChild.release()), iChild, iRemoveAll);
    return 0;
}

int OV_instInterfaceInstall(_OV_instCDinst *, const char *, FILE **ppStream, pid_t *piChild)
{
    int aEnds[2];
    FILE *pRead;
    FILE *pWrite;

    if (pipe2(aEnds, O_CLOEXEC) < 0) {
        fputs("Could not create a pipe\n", stderr);
        exit(1);
    }
    pRead = fdopen(aEnds[0], "r");
    pWrite = fdopen(aEnds[1], "w");
    if (!pRead || !pWrite) {
        fputs("Could not convert pipe to stream\n", stderr);
        exit(1);
    }
    (void)signal(SIGCHLD, OV_instChildHandler);
    (void)fflush(nullptr); /* or the child would print what is pending once more */
    *piChild = fork();
    if (*piChild < 0) {
        (void)fclose(pRead);
        (void)fclose(pWrite);
        return -1;
    }
    (void)fclose(*piChild ? pWrite : pRead);
    *ppStream = *piChild ? pRead : pWrite;
    return 0;
}
