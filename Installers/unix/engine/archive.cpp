#include "engine/archive.h"

#include <cerrno>
#include <cinttypes>
#include <csignal>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>

#include "engine/command.h"
#include "engine/fileOps.h"
#include "engine/memberPlaces.h"
#include "engine/records.h"
#include "engine/runReport.h"
#include "engine/uncompress.h"
#include "engine/unpacked.h"
#include "engine/workingFiles.h"
#include "ut/OVinstFileUtils.h"
#include "ut/debugLevel.h"
#include "ut/guard.h"
#include "ut/owned.h"
#include "ut/strprint.h"
#include "ut/text.h"

static const char s_caTar[] = "tar --no-same-owner -xBof - 2> /dev/null";

enum {
    PIPE_SIZE = 1024 * 1024,           /* lets tar and us work side by side */
    SENT_AT_ONCE = 24 * OV_COPY_BLOCK, /* a quarter of the pipe; the calls would take longer */
    TAKEN_POLL_MSEC = 2,
    ROOM_FIRST_USEC = 150, /* long enough for tar to take a good part of the pipe */
    ROOM_MOST_USEC = 600
};

/* What one unpacking works with. */
struct Feed {
    const _OV_InstTar *pTar;
    const char *pPath;    /* of the archive */
    const char *pDest;    /* as it stands in the records */
    const char *pCommand; /* likewise; what runs are its programs */
    FILE *pStream;
    int iArchive;
    int iPipe;           /* to the first program */
    pid_t iDecompressor; /* 0 for an archive that needs none */
    pid_t iTar;
    uint64_t ulSize;
    uint64_t ulFed;
    int32_t iReported; /* files reported so far */
    bool bLeftEarly;   /* the command ended before it had taken everything */
};

int32_t OV_instLastFedFile(int32_t iFiles, uint64_t ulFed, uint64_t ulSize)
{
    uint64_t ulFiles = static_cast<uint64_t>(iFiles < 0 ? 0 : iFiles);
    uint64_t ulIndex;

    if (!ulFiles || !ulSize)
        return -1;
    if (ulFed <= UINT64_MAX / ulFiles)
        ulIndex = ulFiles * ulFed / ulSize;
    else /* only for archives of many terabytes, where a rounded share will do */
        ulIndex = ulFed / (ulSize / ulFiles);
    return static_cast<int32_t>(ulIndex < ulFiles ? ulIndex : ulFiles - 1);
}

static void reportFed(Feed *pFeed)
{
    int32_t iLast = OV_instLastFedFile(pFeed->pTar->iCount, pFeed->ulFed, pFeed->ulSize);

    if (pFeed->iReported > iLast)
        return;
    for (; pFeed->iReported <= iLast; pFeed->iReported++)
        OV_instGatherUpdate(pFeed->pStream, "+%" PRId64 " %s %s%s\n",
                            pFeed->pTar->aUnits[pFeed->iReported], pFeed->pPath, pFeed->pDest,
                            pFeed->pTar->apMembers[pFeed->iReported]);
    if (pFeed->pStream)
        (void)fflush(pFeed->pStream);
}

static int pipeFailure(const Feed *pFeed)
{
    OV_instSendUpdate(pFeed->pStream, "-1 Untar couldn't write to pipe\n");
    return -1;
}

/* Whoever read the pipe has gone. That ends the feeding; whether it is a failure is known once the
 * command's status is, since one that has met the archive's end leaves the padding behind it. */
static int leftEarly(Feed *pFeed)
{
    pFeed->bLeftEarly = true;
    return 0;
}

static int readFailure(const Feed *pFeed)
{
    OV_instSendUpdate(pFeed->pStream, "-1 Untar couldn't read file %s\n", pFeed->pPath);
    return -1;
}

/* One block by way of our own memory, which tells a file that cannot be read from one that cannot
 * be sent within the kernel. The bytes fed, 0 at the end of the archive, or -1 with the record
 * written. */
static ssize_t feedByCopy(Feed *pFeed)
{
    char caBlock[OV_COPY_BLOCK];
    ssize_t iRead;

    (void)fcntl(pFeed->iPipe, F_SETFL, 0); /* from now on writes wait for room */
    do {
        iRead = read(pFeed->iArchive, caBlock, sizeof(caBlock));
    } while (iRead < 0 && errno == EINTR);
    if (iRead < 0)
        return readFailure(pFeed);
    if (OV_instWriteAll(pFeed->iPipe, caBlock, static_cast<size_t>(iRead)) < 0)
        return errno == EPIPE ? leftEarly(pFeed) : pipeFailure(pFeed);
    return iRead;
}

/* Waits while the pipe is full. Sleeping a while instead of waiting for the pipe itself saves tar
 * from having to wake us at every single read. */
static void waitForRoom(unsigned *piMicroseconds)
{
    const struct timespec pause = {0, static_cast<long>(*piMicroseconds) * 1000};

    (void)nanosleep(&pause, nullptr); /* a signal only makes it shorter */
    if (*piMicroseconds < ROOM_MOST_USEC)
        *piMicroseconds *= 2;
}

/* Some file systems say "again" for themselves. */
static bool isFull(int iPipe)
{
    struct pollfd pipeEnd = {iPipe, POLLOUT, 0};

    return poll(&pipeEnd, 1, 0) == 0;
}

/* Several blocks within the kernel where the file systems can do that. Results as above. */
static ssize_t feedBlock(Feed *pFeed)
{
    unsigned iPause = ROOM_FIRST_USEC;
    size_t iDone = 0;

    while (iDone < SENT_AT_ONCE) {
        ssize_t iSent = sendfile(pFeed->iPipe, pFeed->iArchive, nullptr, SENT_AT_ONCE - iDone);

        if (iSent < 0 && errno == EAGAIN && isFull(pFeed->iPipe))
            waitForRoom(&iPause);
        else if (iSent < 0 && errno == EPIPE)
            return leftEarly(pFeed);
        else if (iSent < 0 && errno != EINTR)
            return iDone ? static_cast<ssize_t>(iDone) : feedByCopy(pFeed);
        if (iSent == 0)
            break;
        if (iSent > 0)
            iDone += static_cast<size_t>(iSent);
    }
    return static_cast<ssize_t>(iDone);
}

static int untakenBytes(int iPipe)
{
    int iCount = 0;

    return ioctl(iPipe, FIONREAD, &iCount) < 0 ? 0 : iCount;
}

/* Waits until the command has taken what the pipe still holds. One that leaves before that may have
 * failed although every write went well; it may also have met the archive's end. */
static void waitUntilTaken(Feed *pFeed)
{
    struct pollfd pipeEnd = {pFeed->iPipe, 0, 0};

    while (untakenBytes(pipeEnd.fd) > 0) {
        if (poll(&pipeEnd, 1, TAKEN_POLL_MSEC) <= 0 || !(pipeEnd.revents & POLLERR))
            continue;
        pFeed->bLeftEarly = pFeed->bLeftEarly || untakenBytes(pipeEnd.fd) > 0;
        return; /* nobody reads any more */
    }
}

static int feedArchive(Feed *pFeed)
{
    ssize_t iFed;

    while ((iFed = feedBlock(pFeed)) > 0) {
        pFeed->ulFed += static_cast<uint64_t>(iFed);
        reportFed(pFeed);
    }
    if (iFed < 0)
        return 1;
    waitUntilTaken(pFeed);
    return 0;
}

/* ---- the command ---- */

/* What the members need to be let in. Whether tar would be led astray is left to the kernel, which
 * sees it when it happens; only where that cannot be, or where nothing but the archive knows its
 * members while there are links that may be followed, the archive is read beforehand. */
static bool allowMembers(const Feed *pFeed, OV_MemberPlaces *pPlaces)
{
    OV_Confinement *pConfinement = pPlaces->pConfinement;
    bool bListed = false;

    for (int32_t i = 0; i < pFeed->pTar->iCount; i++) {
        if (!OV_instAllowMember(pPlaces, pFeed->pTar->apMembers[i]))
            return false;
        bListed = bListed || pFeed->pTar->apMembers[i][0]; /* a blank behind the line lists one */
    }
    pConfinement->bRequired = OV_instCanConfine(pConfinement);
    if (pConfinement->bRequired && (bListed || !OV_instHoldsLinks(pFeed->pDest)))
        return true;
    return OV_instAllowArchived(pPlaces, OV_instArchivedMembers(pFeed->iArchive));
}

/* Starts the one program or the two, of which only tar writes files; 0 or -1. */
static int startPrograms(Feed *pFeed, bool bCompressed, const OV_Confinement *pConfinement)
{
    OV_Command tar = {s_caTar, -1, -1, pConfinement};
    OV_Command decompressor = {nullptr, -1, -1, nullptr};
    int aFed[2];
    int aPlain[2];

    if (pipe2(aFed, O_CLOEXEC) < 0)
        return -1;
    OwnedFd input(aFed[0]);
    OwnedFd output(aFed[1]);
    if (bCompressed) {
        if (pipe2(aPlain, O_CLOEXEC) < 0)
            return -1;
        OwnedFd plain(aPlain[0]);
        decompressor.pText = OV_instDecompressor();
        decompressor.iInput = input.iFd;
        decompressor.iOutput = aPlain[1];
        pFeed->iDecompressor = OV_instStartCommand(&decompressor);
        (void)close(aPlain[1]); /* nothing was written */
        input.reset(plain.release());
        if (pFeed->iDecompressor < 0)
            return -1;
    }
    tar.iInput = input.iFd;
    pFeed->iTar = OV_instStartCommand(&tar);
    if (pFeed->iTar < 0)
        return -1;
    pFeed->iPipe = output.release();
    return 0;
}

/* The status of the two programs: tar's counts first. A decompressor that found tar gone when that
 * had all that it wanted has done its part. -1 when they cannot be waited for. */
static int endPrograms(const Feed *pFeed)
{
    const int iTar = OV_instEndOfCommand(pFeed->iTar);
    const int iDecompressor =
        pFeed->iDecompressor > 0 ? OV_instEndOfCommand(pFeed->iDecompressor) : 0;

    if (iTar != 0 || iDecompressor == 128 + SIGPIPE)
        return iTar;
    return iDecompressor;
}

/* A decompressor without a tar has no reader, and ends. */
static void endStarted(const Feed *pFeed)
{
    if (pFeed->iDecompressor > 0)
        (void)OV_instEndOfCommand(pFeed->iDecompressor); /* it failed already */
}

static int cannotRun(const Feed *pFeed)
{
    OV_instSendUpdate(pFeed->pStream, "-1 Untar can't run '%s' on file: %s\n", pFeed->pCommand,
                      pFeed->pPath);
    return 1;
}

/* Starts the command with pDest as its working directory, and able to write only there. 0 or 1. */
static int startCommand(Feed *pFeed, bool bCompressed)
{
    OV_Confinement confinement;
    OV_MemberPlaces places = {pFeed->pDest, &confinement, {}, ""};
    char caSaved[OV_INST_PATH_SIZE + 1];

    if (!getcwd(caSaved, sizeof(caSaved))) {
        OV_instSendUpdate(pFeed->pStream, "-1 Can't get current working\n");
        return 1;
    }
    OwnedFd directory(OV_instGuardedOpenDir(pFeed->pDest));
    if (directory.iFd < 0) {
        OV_instSendUpdate(pFeed->pStream, "-1 Can't change directory to: %s\n", pFeed->pDest);
        return 1;
    }
    if (OV_instAllowBelow(&confinement, directory.iFd, pFeed->pDest) < 0)
        return cannotRun(pFeed);
    if (!allowMembers(pFeed, &places)) {
        OV_instWarn("%s is not unpacked: %s", pFeed->pTar->pArchive, places.refusal.c_str());
        return cannotRun(pFeed);
    }
    if (startPrograms(pFeed, bCompressed, &confinement) < 0)
        return cannotRun(pFeed);
    (void)fcntl(pFeed->iPipe, F_SETPIPE_SZ, PIPE_SIZE); /* the default will do */
    (void)fcntl(pFeed->iPipe, F_SETFL, O_NONBLOCK);     /* likewise */
    return 0;
}

/* The command's status by itself decides nothing, because media rely on archives that tar complains
 * of and unpacks. What is there does. */
static int judge(Feed *pFeed, int iStatus)
{
    if (iStatus == 0) {
        if (pFeed->bLeftEarly) {
            pFeed->ulFed = pFeed->ulSize; /* all there was */
            reportFed(pFeed);
        }
        return 0;
    }
    OV_instWarn("unpacking %s ended with status %d", pFeed->pTar->pArchive, iStatus);
    if (pFeed->bLeftEarly) {
        (void)pipeFailure(pFeed); /* writes the record */
        return 1;
    }
    const char *pMissing = OV_instMissingMember(pFeed->pTar, pFeed->pDest);
    if (!pMissing)
        return 0;
    OV_instSendUpdate(pFeed->pStream, "-1 Untar couldn't extract %s from %s\n", pMissing,
                      pFeed->pTar->pArchive);
    return 1;
}

static int closeFeed(Feed *pFeed)
{
    int iResult = 0;

    if (OV_instCloseFd(pFeed->iArchive) < 0) {
        OV_instSendUpdate(pFeed->pStream, "-1 Untar couldn't close tarfile %s\n", pFeed->pPath);
        iResult = 1;
    }
    const int iClosed = OV_instCloseFd(pFeed->iPipe);
    const int iStatus = endPrograms(pFeed);
    if (iStatus < 0 || iClosed < 0) {
        OV_instSendUpdate(pFeed->pStream, "-1 Untar couldn't close pipe for file '%s'\n",
                          pFeed->pPath);
        return 1;
    }
    return iResult | judge(pFeed, iStatus);
}

static char *untarCommand(int iCompressed)
{
    return iCompressed ? OV_instStrPrint("%s | %s", OV_instDecompressor(), s_caTar)
                       : strdup(s_caTar);
}

int OV_instUntar(const _OV_InstTar *pTar, const char *, const char *pDest, int64_t, int iCompressed,
                 FILE *pStream, int)
{
    Feed feed = {};
    char *pPath = nullptr;
    struct stat info;

    if (!pTar || !OV_instIsText(pTar->pArchive)) {
        OV_instSendUpdate(pStream, "-1 Untar invalid parameters\n");
        return 1;
    }
    OwnedText command(untarCommand(iCompressed));
    OwnedFd archive(OV_instOpenSource(pTar->pArchive, "Can't open tarfile", pStream, &pPath));
    OwnedText path(pPath);
    if (!command || archive.iFd < 0)
        return 1;
    if (fstat(archive.iFd, &info) < 0) {
        OV_instSendUpdate(pStream, "-1 Could not get the size of %s\n", pTar->pArchive);
        return 1;
    }
    feed.pTar = pTar;
    feed.pPath = pPath;
    feed.pDest = pDest;
    feed.pCommand = command.get();
    feed.pStream = pStream;
    feed.ulSize = static_cast<uint64_t>(info.st_size);
    feed.iArchive = archive.iFd;
    feed.iPipe = -1;
    if (startCommand(&feed, iCompressed != 0) != 0) {
        endStarted(&feed);
        return 1;
    }
    OV_instMakeWritable(pTar, pPath, pStream);
    const int iResult = feedArchive(&feed);
    (void)archive.release();
    return closeFeed(&feed) | iResult;
}

int DeleteUntar(const _OV_InstTar *pTar, const char *pDirectory, FILE *pStream)
{
    for (int32_t i = pTar ? pTar->iCount - 1 : -1; i >= 0; i--) {
        OwnedText path(OV_instBuildPath(pDirectory, pTar->apMembers[i], nullptr));

        if (!path)
            continue;
        (void)OV_instRemoveInstalled(path.get()); /* it tells, and does not count */
        OV_instSendUpdate(pStream, "+%" PRId64 " %s\n", pTar->aUnits[i], path.get());
        if (OV_instGetDebugLevel() > 0)
            fprintf(stderr, "%lld\n", static_cast<long long>(pTar->aUnits[i]));
    }
    return 0;
}
