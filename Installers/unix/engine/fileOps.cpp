#include "engine/fileOps.h"

#include <cerrno>
#include <cinttypes>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

#include "engine/customFunc.h"
#include "engine/mediaPrompt.h"
#include "engine/records.h"
#include "engine/setupState.h"
#include "ut/OVinstFileUtils.h"
#include "ut/guard.h"
#include "ut/owned.h"
#include "ut/text.h"

static const int MODE_BITS = 07777;

/* ---- removing ---- */

bool IsSetupExe(const char *pPath)
{
    static char *s_pSetup = nullptr; /* kept for the run */
    const char *pDest = s_pSetup ? nullptr : OV_instGetDestinationDirectory();

    if (pDest && asprintf(&s_pSetup, "%ssetup", pDest) < 0)
        s_pSetup = nullptr;
    return pPath && s_pSetup && strcmp(pPath, s_pSetup) == 0;
}

int OVinstDeleteFile(const char *pPath, FILE *pStream, int64_t lSize)
{
    if (InModuleList(pPath) || IsSetupExe(pPath))
        return 1;
    OV_instSendUpdate(pStream, "+%" PRId64 " %s\n", lSize, pPath);
    return OV_instGuardedRemove(pPath);
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
    const char *pName = nullptr;
    OwnedFd parent(OV_instGuardedOpenParent(pPrefix, &pName));

    if (parent.iFd < 0 || mkdirat(parent.iFd, pName, static_cast<mode_t>(iMode & MODE_BITS)) < 0) {
        if (parent.iFd >= 0 && errno == EEXIST && examineDirectory(pPrefix) == 0)
            return 0; /* another process was quicker */
        return mkdirFailure(pStream, "could not create", pPrefix);
    }
    /* The mode holds whatever the umask is. */
    if (examineDirectory(pPrefix) < 0 ||
        OV_instGuardedChmod(pPrefix, static_cast<mode_t>(iMode & MODE_BITS)) < 0)
        return mkdirFailure(pStream, "stating", pPrefix);
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

int OV_instMkdir(const char *pPath, int iMode, FILE *pStream)
{
    size_t iLength = pPath ? strlen(pPath) : 0;
    char caPrefix[OV_INST_PATH_SIZE + 1];

    if (!iLength || iLength > OV_INST_PATH_SIZE) {
        OV_instSendUpdate(pStream, "-1 Mkdir invalid parameter\n");
        return -1;
    }
    if (examineDirectory(pPath) == 0)
        return 0;
    memcpy(caPrefix, pPath, iLength + 1);
    for (size_t i = 1; i < iLength; i++) {
        if (caPrefix[i] != '/')
            continue;
        caPrefix[i] = '\0';
        if (makePrefix(caPrefix, iMode, pStream) < 0)
            return -1;
        caPrefix[i] = '/';
    }
    return makePrefix(caPrefix, iMode, pStream);
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

int OV_instWriteAll(int iFd, const char *pBytes, size_t iCount)
{
    while (iCount) {
        ssize_t iWritten = write(iFd, pBytes, iCount);

        if (iWritten < 0 && errno == EINTR)
            continue;
        if (iWritten <= 0)
            return -1;
        pBytes += iWritten;
        iCount -= static_cast<size_t>(iWritten);
    }
    return 0;
}

static ssize_t readBlock(int iFd, char *pBlock)
{
    ssize_t iRead;

    do {
        iRead = read(iFd, pBlock, OV_COPY_BLOCK);
    } while (iRead < 0 && errno == EINTR);
    return iRead;
}

/* Opens the target, its directory being made only where that turns out to be needed. What it holds
 * stays for now: it may be the source itself. */
static int openTarget(const char *pTarget, FILE *pStream)
{
    const int iFlags = O_WRONLY | O_CREAT;
    int iFd = OV_instGuardedOpen(pTarget, iFlags, 0600);

    if (iFd >= 0)
        return iFd;
    if (OV_instMakeParent(pTarget) < 0) {
        OV_instSendUpdate(pStream, "-1 Copyfile can't create destination directory for:\n%s\n",
                          pTarget);
        return -1;
    }
    iFd = OV_instGuardedOpen(pTarget, iFlags, 0600);
    if (iFd < 0)
        OV_instSendUpdate(pStream, "-1 Copyfile can't create file %s\n", pTarget);
    return iFd;
}

/* Whether writing into the open target would hand our bytes to somebody else: to a stranger who
 * owns the file, or to whoever knows it by another name. */
static bool isShared(const struct stat *pTarget)
{
    return pTarget->st_nlink > 1 || (pTarget->st_uid != 0 && pTarget->st_uid != geteuid());
}

/* A new file in the target's place. -1 when that cannot be had. */
static int replaceTarget(const char *pTarget)
{
    if (OV_instGuardedRemove(pTarget) < 0)
        return -1;
    return OV_instGuardedOpen(pTarget, O_WRONLY | O_CREAT | O_EXCL, 0600);
}

/* The whole of a file that is its own source counts as done. */
static void reportOwnSource(int iFrom, const char *pFrom, const char *pTarget, FILE *pStream)
{
    OV_instSendUpdate(pStream, "+%" PRId64 " %s %s\n",
                      static_cast<int64_t>(lseek(iFrom, 0, SEEK_END)), pFrom, pTarget);
}

/* Whether the target is the running program itself, and comes from where it lies: nobody can write
 * to it while it runs. */
static bool isRunningSource(int iFrom, const char *pTarget)
{
    struct stat from;
    struct stat to;

    if (!IsSetupExe(pTarget))
        return false;
    OwnedFd target(OV_instGuardedOpen(pTarget, O_PATH, 0));
    return target.iFd >= 0 && fstat(iFrom, &from) == 0 && fstat(target.iFd, &to) == 0 &&
           from.st_dev == to.st_dev && from.st_ino == to.st_ino;
}

enum TargetState { TARGET_READY, TARGET_IS_SOURCE, TARGET_FAILED };

/* Makes the opened target empty. A product that is maintained from its own tree has files that are
 * their own source: those are left alone. */
static TargetState prepareTarget(int iFrom, OwnedFd *pTo, const char *pTarget)
{
    struct stat from;
    struct stat to;

    if (fstat(pTo->iFd, &to) < 0)
        return TARGET_FAILED;
    if (!S_ISREG(to.st_mode) || (!to.st_size && !isShared(&to)))
        return TARGET_READY;
    if (fstat(iFrom, &from) == 0 && from.st_dev == to.st_dev && from.st_ino == to.st_ino)
        return TARGET_IS_SOURCE;
    if (!isShared(&to))
        return ftruncate(pTo->iFd, 0) == 0 ? TARGET_READY : TARGET_FAILED;
    pTo->reset(replaceTarget(pTarget));
    return pTo->iFd < 0 ? TARGET_FAILED : TARGET_READY;
}

/* Copies to the end of the source. 0 or 1. */
static int copyBlocks(int iFrom, int iTo, const char *pFrom, const char *pTo, FILE *pStream)
{
    char caBlock[OV_COPY_BLOCK];

    for (;;) {
        ssize_t iRead = readBlock(iFrom, caBlock);

        if (iRead == 0)
            return 0;
        if (iRead < 0) {
            OV_instSendUpdate(pStream, "-1 Copyfile failed reading file %s\n", pFrom);
            return 1;
        }
        if (OV_instWriteAll(iTo, caBlock, static_cast<size_t>(iRead)) < 0) {
            OV_instSendUpdate(pStream, "-1 Copyfile writing file %s\n", pTo);
            return 1;
        }
        OV_instSendUpdate(pStream, "+%zd %s %s\n", iRead, pFrom, pTo);
    }
}

/* Copies into the opened target, which is closed when it cannot be used. 0 or 1. */
static int fillTarget(int iFrom, OwnedFd *pTo, const char *pFrom, const char *pTarget,
                      FILE *pStream)
{
    switch (prepareTarget(iFrom, pTo, pTarget)) {
    case TARGET_READY:
        return copyBlocks(iFrom, pTo->iFd, pFrom, pTarget, pStream);
    case TARGET_IS_SOURCE:
        reportOwnSource(iFrom, pFrom, pTarget, pStream);
        return 0;
    case TARGET_FAILED:
        break;
    }
    OV_instSendUpdate(pStream, "-1 Copyfile can't create file %s\n", pTarget);
    pTo->reset(-1);
    return 1;
}

int OV_instCopyFile(const char *pSource, const char *pTarget, int iMode, int64_t lSize,
                    FILE *pStream, int iDelete)
{
    char *pPath = nullptr;

    if (!OV_instIsText(pSource) || !OV_instIsText(pTarget)) {
        OV_instSendUpdate(pStream, "-1 Copyfile invalid parameters\n");
        return 1;
    }
    if (iDelete) {
        (void)OVinstDeleteFile(pTarget, pStream, lSize); /* a file that stays is no failure */
        return 0;
    }
    OwnedFd from(OV_instOpenSource(pSource, "Copyfile can't open file", pStream, &pPath));
    OwnedText path(pPath);
    if (from.iFd < 0)
        return 1;
    if (isRunningSource(from.iFd, pTarget)) {
        reportOwnSource(from.iFd, pPath, pTarget, pStream);
        return 0;
    }
    OwnedFd to(openTarget(pTarget, pStream));
    if (to.iFd < 0)
        return 1;
    int iResult = fillTarget(from.iFd, &to, pPath, pTarget, pStream);
    if (to.iFd < 0)
        return 1;
    /* Set through the descriptor: the name could by now be somebody else's file. */
    bool bModeFailed = fchmod(to.iFd, static_cast<mode_t>(iMode & MODE_BITS)) < 0;
    if (close(from.release()) < 0) {
        OV_instSendUpdate(pStream, "-1 Copyfile closing src file %s\n", pPath);
        iResult = 1;
    }
    if (close(to.release()) < 0) {
        OV_instSendUpdate(pStream, "-1 Copyfile closing dst file %s\n", pTarget);
        iResult = 1;
    }
    if (bModeFailed) {
        OV_instSendUpdate(pStream, "-1 Changing mode of %s\n", pTarget);
        iResult = 1;
    }
    return iResult;
}
