#include "engine/fileOps.h"

#include <cerrno>
#include <cinttypes>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>

#include "engine/customFunc.h"
#include "engine/mediaPrompt.h"
#include "engine/records.h"
#include "engine/runReport.h"
#include "engine/setupState.h"
#include "ut/OVinstFileUtils.h"
#include "ut/guard.h"
#include "ut/guardedFile.h"
#include "ut/owned.h"
#include "ut/text.h"

static const int MODE_BITS = 07777;

/* Few calls for a file, and yet no waiting for a record. */
enum { BLOCKS_SIZE = 6 * OV_COPY_BLOCK };

/* ---- removing ---- */

bool IsSetupExe(const char *pPath)
{
    static char *s_pSetup = nullptr; /* kept for the run */
    const char *pDest = s_pSetup ? nullptr : OV_instGetDestinationDirectory();

    if (pDest && asprintf(&s_pSetup, "%ssetup", pDest) < 0)
        s_pSetup = nullptr;
    return pPath && s_pSetup && strcmp(pPath, s_pSetup) == 0;
}

/* Whether nothing is there, as far as that can be seen: on a file system that cannot be
 * written to, removing what is not there fails for that reason. */
static bool isGone(const char *pPath)
{
    OwnedFd left(OV_instGuardedOpen(pPath, O_PATH | O_NOFOLLOW, 0));

    return left.iFd < 0 && (errno == ENOENT || errno == ENOTDIR);
}

/* A directory that holds other files; "." is one as well, as archives list it. */
static bool isToStay(int iError)
{
    return iError == ENOTEMPTY || iError == EEXIST || iError == EINVAL;
}

int OV_instRemoveInstalled(const char *pPath)
{
    if (OV_instGuardedRemove(pPath) == 0)
        return 0;
    const int iError = errno;
    if (!isToStay(iError) && !isGone(pPath)) {
        OV_instWarn("%s could not be removed: %s", pPath, strerror(iError));
        OV_instNoteFailedStep();
    }
    errno = iError;
    return -1;
}

int OVinstDeleteFile(const char *pPath, FILE *pStream, int64_t lSize)
{
    if (InModuleList(pPath) || IsSetupExe(pPath))
        return 1;
    OV_instSendUpdate(pStream, "+%" PRId64 " %s\n", lSize, pPath);
    return OV_instRemoveInstalled(pPath);
}

int32_t OVinstGetFileSize(const char *pPath)
{
    struct stat info;

    return pPath && lstat(pPath, &info) == 0 ? static_cast<int32_t>(info.st_size) : 0;
}

/* ---- directories ---- */

static int mkdirFailure(FILE *pStream, const char *pWhat, const char *pPrefix)
{
    OV_instSendUpdate(pStream, "-1 Mkdir %s %s\n", pWhat, pPrefix);
    return -1;
}

/* 0 when pPath is a directory (a link to one counts), else -1 with errno set. */
static int examineDirectory(const char *pPath)
{
    OwnedFd directory(OV_instGuardedOpenDir(pPath));

    return directory.iFd < 0 ? -1 : 0;
}

static int createDirectory(const char *pPrefix, int iMode, FILE *pStream)
{
    int iResult = OV_instGuardedMkdir(pPrefix, static_cast<mode_t>(iMode & MODE_BITS));

    if (iResult < 0 && errno == EEXIST && examineDirectory(pPrefix) == 0)
        return 0; /* another process was quicker */
    if (iResult != 0)
        return mkdirFailure(pStream, iResult < 0 ? "could not create" : "stating", pPrefix);
    OV_instSendUpdate(pStream, "+1 mkdir %s\n", pPrefix);
    return 0;
}

static int makePrefix(const char *pPrefix, int iMode, FILE *pStream)
{
    if (examineDirectory(pPrefix) == 0)
        return 0;
    if (errno == ENOTDIR || errno == ELOOP) /* a file, or a link that is not ours to follow */
        return mkdirFailure(pStream, "file already exists", pPrefix);
    return createDirectory(pPrefix, iMode, pStream);
}

/* Where the first prefix to be looked at may end: those that lead to the opened root, and the root
 * itself, are there. */
static size_t startOf(const char *pPath)
{
    const char *pBelow = OV_instBelowGuardedRoot(pPath);

    return pBelow && pBelow > pPath ? static_cast<size_t>(pBelow - pPath) : 1;
}

int OV_instMkdir(const char *pPath, int iMode, FILE *pStream)
{
    size_t iLength = pPath ? strlen(pPath) : 0;

    if (!iLength || iLength > OV_INST_PATH_SIZE) {
        OV_instSendUpdate(pStream, "-1 Mkdir invalid parameter\n");
        return -1;
    }
    if (examineDirectory(pPath) == 0)
        return 0;
    std::string prefix(pPath);
    for (size_t i = startOf(pPath); i < iLength; i++) {
        if (prefix[i] != '/')
            continue;
        prefix[i] = '\0';
        if (makePrefix(prefix.c_str(), iMode, pStream) < 0)
            return -1;
        prefix[i] = '/';
    }
    return makePrefix(pPath, iMode, pStream);
}

int OV_instMakeParent(const char *pPath)
{
    OwnedText directory(OV_instDirname(pPath));

    return directory ? OV_instMkdir(directory.get(), OV_DIRECTORY_MODE, nullptr) : -1;
}

/* ---- copying ---- */

/* The source directory is looked up again only where a file is not found in the known one. */
static int openInSource(const char *pSource, bool bAfresh, char **ppPath)
{
    const char *pDirectory =
        bAfresh ? OV_instGetSourceDirectory() : OV_instGetKnownSourceDirectory();

    *ppPath = OV_instBuildPath(pDirectory, pSource, nullptr);
    return *ppPath ? open(*ppPath, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY) : -1;
}

int OV_instOpenSource(const char *pSource, const char *pLabel, FILE *pStream, char **ppPath)
{
    int iFd = openInSource(pSource, false, ppPath);

    while (iFd < 0) {
        free(*ppPath);
        iFd = openInSource(pSource, true, ppPath);
        if (iFd >= 0)
            break;
        free(*ppPath);
        *ppPath = nullptr;
        if (!OV_instQueryForSource(pStream, pLabel, pSource))
            return -1;
        iFd = openInSource(pSource, false, ppPath);
    }
    return iFd;
}

/* Writes until all is written or fails; gives what was written. */
static size_t writeMost(int iFd, const char *pBytes, size_t iCount)
{
    size_t iDone = 0;

    while (iDone < iCount) {
        ssize_t iWritten = write(iFd, pBytes + iDone, iCount - iDone);

        if (iWritten < 0 && errno == EINTR)
            continue;
        if (iWritten <= 0)
            break;
        iDone += static_cast<size_t>(iWritten);
    }
    return iDone;
}

int OV_instWriteAll(int iFd, const char *pBytes, size_t iCount)
{
    return writeMost(iFd, pBytes, iCount) == iCount ? 0 : -1;
}

static ssize_t readBlocks(int iFd, char *pBlocks)
{
    ssize_t iRead;

    do {
        iRead = read(iFd, pBlocks, BLOCKS_SIZE);
    } while (iRead < 0 && errno == EINTR);
    return iRead;
}

/* Opens the target, emptied, its directory being made only where that turns out to be needed. -1
 * when it is told that it cannot be had, or with EALREADY. */
static int openTarget(const char *pTarget, const struct stat *pSource, FILE *pStream)
{
    int iFd = OV_instGuardedOpenTarget(pTarget, pSource);

    if (iFd >= 0 || errno == EALREADY)
        return iFd;
    if (OV_instMakeParent(pTarget) < 0) {
        OV_instSendUpdate(pStream, "-1 Copyfile can't create destination directory for:\n%s\n",
                          pTarget);
        errno = 0;
        return -1;
    }
    iFd = OV_instGuardedOpenTarget(pTarget, pSource);
    if (iFd < 0 && errno != EALREADY)
        OV_instSendUpdate(pStream, "-1 Copyfile can't create file %s\n", pTarget);
    return iFd;
}

/* Whether what was read is known to be the last: less than was asked for, and all that the file is
 * said to hold. Most files are that small, and need no second read to find their end. */
static bool isLast(ssize_t iRead, int64_t lDone, const struct stat *pSource)
{
    return iRead < BLOCKS_SIZE && S_ISREG(pSource->st_mode) && pSource->st_size > 0 &&
           lDone >= pSource->st_size;
}

/* Copies to the end of the source, several blocks at a time, each with its record. 0 or 1. */
static int copyBlocks(int iFrom, int iTo, const struct stat *pSource, const char *pFrom,
                      const char *pTo, FILE *pStream)
{
    static char s_caBlocks[BLOCKS_SIZE]; /* not on the stack, which may be small */
    int64_t lDone = 0;
    ssize_t iRead;

    do {
        iRead = readBlocks(iFrom, s_caBlocks);
        if (iRead == 0)
            break;
        if (iRead < 0) {
            OV_instSendUpdate(pStream, "-1 Copyfile failed reading file %s\n", pFrom);
            return 1;
        }
        size_t iWritten = writeMost(iTo, s_caBlocks, static_cast<size_t>(iRead));
        const bool bFailed = iWritten < static_cast<size_t>(iRead);
        if (bFailed) /* a block that is not there whole is none */
            iWritten -= iWritten % OV_COPY_BLOCK;
        OV_instSendBlocks(pStream, iWritten, OV_COPY_BLOCK, pFrom, pTo);
        if (bFailed) {
            OV_instSendUpdate(pStream, "-1 Copyfile writing file %s\n", pTo);
            return 1;
        }
        lDone += iRead;
    } while (!isLast(iRead, lDone, pSource));
    return 0;
}

/* Copies between opened files, closes them and sets the mode. 0 or 1. */
static int copyOpened(OwnedFd *pFrom, OwnedFd *pTo, const struct stat *pSource, const char *pPath,
                      const char *pTarget, int iMode, FILE *pStream)
{
    int iResult = copyBlocks(pFrom->iFd, pTo->iFd, pSource, pPath, pTarget, pStream);
    /* Half a program must not be run, least of all by the rest of this run. */
    const int iGiven = iResult ? iMode & ~(S_IXUSR | S_IXGRP | S_IXOTH) : iMode;
    /* Set through the descriptor: the name could by now be somebody else's file. */
    bool bModeFailed = fchmod(pTo->iFd, static_cast<mode_t>(iGiven & MODE_BITS)) < 0;

    if (OV_instCloseFd(pFrom->release()) < 0) {
        OV_instSendUpdate(pStream, "-1 Copyfile closing src file %s\n", pPath);
        iResult = 1;
    }
    if (OV_instCloseFd(pTo->release()) < 0) {
        OV_instSendUpdate(pStream, "-1 Copyfile closing dst file %s\n", pTarget);
        iResult = 1;
    }
    if (bModeFailed) {
        OV_instSendUpdate(pStream, "-1 Changing mode of %s\n", pTarget);
        iResult = 1;
    }
    return iResult;
}

int OV_instCopyFile(const char *pSource, const char *pTarget, int iMode, int64_t lSize,
                    FILE *pStream, int iDelete)
{
    char *pPath = nullptr;
    struct stat source = {};

    if (!OV_instIsText(pSource) || !OV_instIsText(pTarget)) {
        OV_instSendUpdate(pStream, "-1 Copyfile invalid parameters\n");
        return 1;
    }
    if (iDelete) {
        (void)OVinstDeleteFile(pTarget, pStream, lSize); /* it tells, and does not count */
        return 0;
    }
    OwnedFd from(OV_instOpenSource(pSource, "Copyfile can't open file", pStream, &pPath));
    OwnedText path(pPath);
    if (from.iFd < 0)
        return 1;
    (void)fstat(from.iFd, &source); /* else it is read to its end */
    OwnedFd to(openTarget(pTarget, &source, pStream));
    if (to.iFd >= 0)
        return copyOpened(&from, &to, &source, pPath, pTarget, iMode, pStream);
    if (errno != EALREADY)
        return 1;
    /* A product that is maintained from its own tree has files that are their own source. They are
     * left alone, and the whole of each counts as done. */
    OV_instSendUpdate(pStream, "+%" PRId64 " %s %s\n", static_cast<int64_t>(source.st_size), pPath,
                      pTarget);
    return 0;
}
