/* The custom functions of the sample product.
 *
 *   reserveCache  data "BYTES PATH": makes the renderer's cache file, at its full size, below the
 *                 destination, so that a full disk shows at installation and not in mid-work.
 *                 Removing the package removes it
 *   checkFiles    data "DIRECTORY": after the installation, looks whether the package's files
 *                 have really arrived below that directory
 *
 * They double as the example of how a module is written. Three habits are worth copying:
 * - A module is loaded into setup itself, so it never prints, exits or keeps what it was given.
 * - It runs as root in places where others may write. So it opens the root destination and goes
 *   on from there, following no link (O_NOFOLLOW) that somebody may have put in its way.
 * - It removes only what it has made, which it knows by more than the name.
 */
#include "OVinstModule.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

extern "C" {
extern double ModuleVersion;
int32_t initModule(struct _OV_instCDinst *pRoot, struct _OV_CustomData *pData);
int32_t reserveCache(struct _OV_instCDinst *pRoot, struct _OV_CustomData *pData);
int32_t checkFiles(struct _OV_instCDinst *pRoot, struct _OV_CustomData *pData);

double ModuleVersion = OV_MODULE_VERSION;
}

enum { FILL_SIZE = 10240 }; /* a record for every so many bytes keeps the progress moving */

/* The cache's first line. The renderer keeps it, so it tells our file from others of that name. */
static const char s_caSign[] = "KIVO cache\n";

/* A file descriptor that is closed at the end of its block. */
struct Opened {
    int iFd;

    explicit Opened(int iOpened) : iFd(iOpened) {}
    Opened(const Opened &) = delete;
    Opened &operator=(const Opened &) = delete;
    ~Opened()
    {
        if (iFd >= 0)
            (void)close(iFd); /* what was written was closed before, and tested */
    }
};

static const char *orEmpty(const char *pText)
{
    return pText ? pText : "";
}

/* A line at once into a stream of setup's, if it is there. The format ends it; a line end within,
 * from the name of a directory, would make what follows it a line, and a record, of its own. */
static void say(FILE *pStream, const char *pFormat, ...) __attribute__((format(printf, 2, 3)));

static void say(FILE *pStream, const char *pFormat, ...)
{
    char *pLine = nullptr;
    va_list args;

    va_start(args, pFormat);
    const int iLength = pStream ? vasprintf(&pLine, pFormat, args) : 0;
    va_end(args);
    if (iLength <= 0)
        return;
    std::replace(pLine, pLine + iLength - 1, '\n', '?');
    (void)fputs(pLine, pStream); /* a broken pipe and a full log are setup's affair */
    (void)fflush(pStream);
    free(pLine);
}

static int32_t fail(const _OV_CustomData *pData, const char *pWhat, const std::string &path)
{
    say(pData->fpUpdate, "-1 KIVO: %s %s\n", pWhat, path.c_str());
    return OV_INST_ERROR;
}

/* "BYTES PATH" of the description. 0, or -1 when it is neither. */
static int parseReserve(const char *pText, int32_t *piBytes, std::string *pPath)
{
    char *pEnd = nullptr;

    errno = 0;
    long lBytes = pText ? strtol(pText, &pEnd, 10) : 0;
    if (errno || lBytes < 1 || lBytes > INT_MAX || *pEnd != ' ' || !pEnd[1])
        return -1;
    *piBytes = static_cast<int32_t>(lBytes);
    *pPath = pEnd + 1;
    return 0;
}

/* The size pass: iSize holds the block size and is to hold what the file will occupy. */
static int32_t answerSize(_OV_CustomData *pData, int32_t iBytes)
{
    int64_t lBlock = std::max(pData->iSize, 1);
    int64_t lRounded = (iBytes + lBlock - 1) / lBlock * lBlock;

    if (lRounded > INT_MAX)
        return OV_INST_ERROR;
    pData->iSize = static_cast<int32_t>(lRounded);
    return OV_INST_NO_ERROR;
}

/* ---- the cache below the destination ---- */

/* The directory of a file, opened; *pName becomes the file's name. All that follows goes by this
 * descriptor, so nobody can exchange a directory for a link meanwhile. The root destination is what
 * the user chose, links and all; below it not even root's links are followed: that is the short
 * way. -1 for failure. */
static int openParent(const _OV_CustomData *pData, const std::string &file, std::string *pName)
{
    const int iFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;
    const std::string path = file.substr(strlen(orEmpty(pData->pRootDest)));
    int iDir = open(orEmpty(pData->pRootDest), iFlags);
    size_t iStart = 0;

    for (size_t iEnd; (iEnd = path.find('/', iStart)) != std::string::npos; iStart = iEnd + 1) {
        Opened upper(iDir);
        iDir = openat(upper.iFd, path.substr(iStart, iEnd - iStart).c_str(), iFlags | O_NOFOLLOW);
    }
    *pName = path.substr(iStart);
    return iDir;
}

/* Whether a file is there and is one that this module has made. */
static bool isOurs(int iDir, const std::string &name)
{
    char caBegin[sizeof s_caSign - 1];
    struct stat status;
    /* O_NONBLOCK: a planted fifo must not keep setup waiting. */
    Opened file(openat(iDir, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));

    return file.iFd >= 0 && fstat(file.iFd, &status) == 0 && S_ISREG(status.st_mode) &&
           read(file.iFd, caBegin, sizeof caBegin) == static_cast<ssize_t>(sizeof caBegin) &&
           memcmp(caBegin, s_caSign, sizeof caBegin) == 0;
}

/* Where the cache belongs to; its first lines, for whoever finds the file and wonders. */
static std::string cacheHead(const _OV_CustomData *pData)
{
    std::string head = s_caSign;
    const struct {
        const char *pLabel;
        const char *pValue;
    } aLines[] = {
        {"root",    pData->pRootDest   },
        {"common",  pData->pCommonDest },
        {"product", pData->pDest       },
        {"medium",  pData->pFrom       },
        {"package", pData->pPackageName},
        {"suite",   pData->pSuiteName  },
    };

    for (const auto &line : aLines)
        head.append(line.pLabel).append(" ").append(orEmpty(line.pValue)).append("\n");
    return head;
}

static int writeAll(int iFd, const char *pBytes, size_t uCount)
{
    while (uCount > 0) {
        ssize_t lDone = write(iFd, pBytes, uCount);
        if (lDone < 0 && errno == EINTR)
            continue;
        if (lDone <= 0)
            return -1;
        pBytes += lDone;
        uCount -= static_cast<size_t>(lDone);
    }
    return 0;
}

/* Writes the blocks for real: a file with holes would reserve nothing. */
static int fillCache(const _OV_CustomData *pData, int iFd, int32_t iBytes, const std::string &path)
{
    std::string block = cacheHead(pData);

    block.resize(FILL_SIZE);
    for (int32_t iLeft = iBytes; iLeft > 0; iLeft -= FILL_SIZE) {
        int32_t iNow = std::min<int32_t>(iLeft, FILL_SIZE);
        if (writeAll(iFd, block.data(), static_cast<size_t>(iNow)) < 0)
            return -1;
        say(pData->fpUpdate, "+%d %s\n", iNow, path.c_str());
        block.assign(FILL_SIZE, '\0');
    }
    return 0;
}

/* An older cache is replaced, anything else of that name is somebody else's: O_EXCL fails then. */
static int32_t createCache(const _OV_CustomData *pData, int32_t iBytes, const std::string &path)
{
    const int iFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    std::string name;
    Opened parent(openParent(pData, path, &name));

    if (isOurs(parent.iFd, name) && unlinkat(parent.iFd, name.c_str(), 0) < 0)
        return fail(pData, "can't replace", path);
    int iFd = openat(parent.iFd, name.c_str(), iFlags, 0644);
    if (iFd < 0)
        return fail(pData, "can't create", path);
    int iBad = fillCache(pData, iFd, iBytes, path);
    iBad |= close(iFd);
    if (iBad) {
        /* Half a cache is of no use; the error record says enough. */
        (void)unlinkat(parent.iFd, name.c_str(), 0);
        return fail(pData, "can't write", path);
    }
    say(pData->fpUpdate, "#Log:KIVO: reserved %d bytes for %s\n", iBytes, path.c_str());
    return OV_INST_NO_ERROR;
}

/* What is not there any more, or not ours, is no failure. */
static int32_t removeCache(const _OV_CustomData *pData, int32_t iBytes, const std::string &path)
{
    std::string name;
    Opened parent(openParent(pData, path, &name));

    say(pData->fpUpdate, "+%d %s\n", iBytes, path.c_str()); /* the total counts on it */
    if (faccessat(parent.iFd, name.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) < 0)
        return OV_INST_NO_ERROR;
    bool bOurs = isOurs(parent.iFd, name);
    if (bOurs && unlinkat(parent.iFd, name.c_str(), 0) < 0)
        return fail(pData, "can't remove", path);
    say(pData->fpUpdate, "#Log:KIVO: %s %s\n", bOurs ? "removed" : "left what setup has not made,",
        path.c_str());
    return OV_INST_NO_ERROR;
}

/* ---- what has arrived ---- */

/* Files below the directory; -1 when it can't be read. Nothing is changed here, so the path will
 * do: a link in it would make the number wrong, and no more. */
static long countFiles(const std::string &directory)
{
    std::error_code bad;
    long lCount = 0;

    std::filesystem::recursive_directory_iterator entry(directory, bad);
    for (; !bad && entry != std::filesystem::end(entry); entry.increment(bad))
        lCount += entry->symlink_status(bad).type() == std::filesystem::file_type::regular;
    return bad ? -1 : lCount;
}

/* Called before every use, also before the size pass. There is no state to prepare here. */
int32_t initModule(struct _OV_instCDinst *pRoot, struct _OV_CustomData *pData)
{
    return pRoot && pData && pData->pData ? OV_INST_NO_ERROR : OV_INST_ERROR;
}

int32_t reserveCache(struct _OV_instCDinst *, struct _OV_CustomData *pData)
{
    int32_t iBytes = 0;
    std::string path;

    if (parseReserve(pData->pData, &iBytes, &path) < 0)
        return fail(pData, "bad data for reserveCache:", orEmpty(pData->pData));
    if (pData->ovPass == OV_CUSTOM_SIZE)
        return answerSize(pData, iBytes);
    if (pData->ovPass != OV_CUSTOM_INIT)
        return OV_INST_NO_ERROR;
    path.insert(0, orEmpty(pData->pDest)); /* begins with pRootDest, ends in a slash */
    return pData->iDelete == OV_INST_INSTALL_MODE ? createCache(pData, iBytes, path)
                                                  : removeCache(pData, iBytes, path);
}

int32_t checkFiles(struct _OV_instCDinst *, struct _OV_CustomData *pData)
{
    if (pData->ovPass == OV_CUSTOM_SIZE) {
        pData->iSize = 0;
        return OV_INST_NO_ERROR;
    }
    if (pData->ovPass != OV_CUSTOM_POST || pData->iDelete != OV_INST_INSTALL_MODE)
        return OV_INST_NO_ERROR;
    std::string directory = std::string(orEmpty(pData->pDest)) + orEmpty(pData->pData);
    long lCount = countFiles(directory);
    if (lCount < 1)
        return fail(pData, "no files of the package in", directory);
    say(pData->fpLog, "KIVO: found %ld files in %s\n", lCount, directory.c_str());
    return OV_INST_NO_ERROR;
}
