#include "engine/archive.h"

#include <cerrno>
#include <cinttypes>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>

#include "engine/confined.h"
#include "engine/fileOps.h"
#include "engine/memberPlaces.h"
#include "engine/records.h"
#include "engine/uncompress.h"
#include "ut/OVinstFileUtils.h"
#include "ut/debugLevel.h"
#include "ut/guard.h"
#include "ut/owned.h"
#include "ut/strprint.h"
#include "ut/text.h"

static const char s_caTar[] = "tar --no-same-owner -xBof - 2> /dev/null";

enum {
    PIPE_SIZE = 1024 * 1024, /* lets tar and us work side by side */
    TAKEN_POLL_MSEC = 2,
    ROOM_FIRST_USEC = 400, /* long enough for tar to take a good part of the pipe */
    ROOM_MOST_USEC = 6400
};

/* What one unpacking works with. */
struct Feed {
    const _OV_InstTar *pTar;
    const char *pPath;    /* of the archive */
    const char *pDest;    /* as it stands in the records */
    const char *pCommand; /* likewise */
    FILE *pStream;
    int iArchive;
    int iPipe; /* to the command */
    pid_t iCommand;
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

    for (; pFeed->iReported <= iLast; pFeed->iReported++)
        OV_instSendUpdate(pFeed->pStream, "+%" PRId64 " %s %s%s\n",
                          pFeed->pTar->aUnits[pFeed->iReported], pFeed->pPath, pFeed->pDest,
                          pFeed->pTar->apMembers[pFeed->iReported]);
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

/* One block within the kernel where the file systems can do that. Results as above. */
static ssize_t feedBlock(Feed *pFeed)
{
    unsigned iPause = ROOM_FIRST_USEC;
    size_t iDone = 0;

    while (iDone < OV_COPY_BLOCK) {
        ssize_t iSent = sendfile(pFeed->iPipe, pFeed->iArchive, nullptr, OV_COPY_BLOCK - iDone);

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

/* Starts the command with pDest as its working directory, and able to write only there. 0 or 1. */
static int startCommand(Feed *pFeed, const char *pDest, OV_Confinement *pConfinement)
{
    char caSaved[OV_INST_PATH_SIZE + 1];

    if (!getcwd(caSaved, sizeof(caSaved))) {
        OV_instSendUpdate(pFeed->pStream, "-1 Can't get current working\n");
        return 1;
    }
    int iDirectory = OV_instGuardedOpenDir(pDest);
    if (iDirectory < 0) {
        OV_instSendUpdate(pFeed->pStream, "-1 Can't change directory to: %s\n", pDest);
        return 1;
    }
    (void)OV_instAllowBelow(pConfinement, iDirectory); /* the first one fits */
    if (OV_instAllowMembers(pFeed->pTar, pDest, pConfinement))
        pFeed->iPipe =
            OV_instStartConfined(pFeed->pCommand, iDirectory, pConfinement, &pFeed->iCommand);
    if (pFeed->iPipe < 0) {
        OV_instSendUpdate(pFeed->pStream, "-1 Untar can't run '%s' on file: %s\n", pFeed->pCommand,
                          pFeed->pPath);
        return 1;
    }
    (void)fcntl(pFeed->iPipe, F_SETPIPE_SZ, PIPE_SIZE); /* the default will do */
    (void)fcntl(pFeed->iPipe, F_SETFL, O_NONBLOCK);     /* likewise */
    return 0;
}

static int addOwnerWrite(const char *pMember, mode_t iMode)
{
    OwnedText here(pMember[0] == '/' ? strdup("") : getcwd(nullptr, 0));
    OwnedText path(here ? OV_instBuildPath(here.get(), pMember, nullptr) : nullptr);

    return path ? OV_instGuardedChmod(path.get(), (iMode & 07777) | S_IWUSR) : -1;
}

/* Gives the entry's existing files owner write permission. The names are examined as they stand in
 * the entry, from wherever the run was started: files below the destination are replaced by tar. */
static void makeWritable(const Feed *pFeed)
{
    for (int32_t i = 0; i < pFeed->pTar->iCount; i++) {
        const char *pMember = pFeed->pTar->apMembers[i];
        struct stat info;

        if (stat(pMember, &info) < 0 || (info.st_mode & S_IWUSR))
            continue;
        if (addOwnerWrite(pMember, info.st_mode) < 0)
            OV_instSendUpdate(pFeed->pStream,
                              "-1 Untar could not make \"%s\" writable before\n"
                              "extracting it from \"%s\"\n",
                              pMember, pFeed->pPath);
    }
}

static int closeFeed(Feed *pFeed)
{
    int iResult = 0;
    int iCommandStatus = 0;

    if (close(pFeed->iArchive) < 0) {
        OV_instSendUpdate(pFeed->pStream, "-1 Untar couldn't close tarfile %s\n", pFeed->pPath);
        iResult = 1;
    }
    int iStatus = close(pFeed->iPipe);
    if (OV_instWaitConfined(pFeed->iCommand, &iCommandStatus) < 0 || iStatus < 0) {
        OV_instSendUpdate(pFeed->pStream, "-1 Untar couldn't close pipe for file '%s'\n",
                          pFeed->pPath);
        iResult = 1;
    } else if (iCommandStatus != 0 && pFeed->bLeftEarly) {
        /* Otherwise tar's own status is not examined: media rely on archives that it complains of
         * and unpacks. */
        (void)pipeFailure(pFeed); /* writes the record */
        iResult = 1;
    } else if (pFeed->bLeftEarly) {
        pFeed->ulFed = pFeed->ulSize; /* all there was */
        reportFed(pFeed);
    }
    return iResult;
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
    OV_Confinement confinement = {};
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
    int iResult = startCommand(&feed, pDest, &confinement);
    OV_instReleaseConfinement(&confinement);
    if (iResult != 0)
        return 1;
    makeWritable(&feed);
    iResult = feedArchive(&feed);
    (void)archive.release();
    return closeFeed(&feed) | iResult;
}

int DeleteUntar(const _OV_InstTar *pTar, const char *pDirectory, FILE *pStream)
{
    for (int32_t i = pTar ? pTar->iCount - 1 : -1; i >= 0; i--) {
        OwnedText path(OV_instBuildPath(pDirectory, pTar->apMembers[i], nullptr));

        if (!path)
            continue;
        (void)OV_instGuardedRemove(path.get()); /* a directory may still hold other files */
        OV_instSendUpdate(pStream, "+%" PRId64 " %s\n", pTar->aUnits[i], path.get());
        if (OV_instGetDebugLevel() > 0)
            fprintf(stderr, "%lld\n", static_cast<long long>(pTar->aUnits[i]));
    }
    return 0;
}
