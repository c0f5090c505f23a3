/* The custom functions of the sample product.
 *
 *   reserveCache  data "BYTES PATH": makes the renderer's cache file, at its full size, below the
 *                 destination, so that a full disk shows at installation and not in mid-work
 *   checkFiles    data "DIRECTORY": after the installation, looks whether the package's files
 *                 have really arrived below that directory
 *
 * They double as the example of how a module is written: every field of the record has its use
 * here. A module is loaded into setup itself, so it never prints, exits or keeps what it was given.
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

static const char *orEmpty(const char *pText)
{
    return pText ? pText : "";
}

/* A line at once into a stream of setup's, if it is there. */
static void say(FILE *pStream, const char *pFormat, ...) __attribute__((format(printf, 2, 3)));

static void say(FILE *pStream, const char *pFormat, ...)
{
    if (!pStream)
        return;
    va_list args;
    va_start(args, pFormat);
    (void)vfprintf(pStream, pFormat, args); /* a broken pipe and a full log are setup's affair */
    va_end(args);
    (void)fflush(pStream);
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

/* Where the cache belongs to; its first lines, for whoever finds the file and wonders. */
static std::string cacheHead(const _OV_CustomData *pData)
{
    std::string head = "KIVO cache\n";
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

static int32_t createCache(const _OV_CustomData *pData, int32_t iBytes, const std::string &path)
{
    /* An older cache is replaced, never written through: it could be a link by now. */
    if (unlink(path.c_str()) < 0 && errno != ENOENT)
        return fail(pData, "can't replace", path);
    int iFd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (iFd < 0)
        return fail(pData, "can't create", path);
    int iBad = fillCache(pData, iFd, iBytes, path);
    iBad |= close(iFd);
    if (iBad) {
        (void)unlink(path.c_str()); /* half a cache is of no use; the error record says enough */
        return fail(pData, "can't write", path);
    }
    say(pData->fpUpdate, "#Log:KIVO: reserved %d bytes for %s\n", iBytes, path.c_str());
    return OV_INST_NO_ERROR;
}

static int32_t removeCache(const _OV_CustomData *pData, int32_t iBytes, const std::string &path)
{
    if (unlink(path.c_str()) < 0 && errno != ENOENT)
        return fail(pData, "can't remove", path);
    say(pData->fpUpdate, "+%d %s\n", iBytes, path.c_str());
    say(pData->fpUpdate, "#Log:KIVO: removed %s\n", path.c_str());
    return OV_INST_NO_ERROR;
}

/* Files below the directory, links not followed; -1 when it can't be read. */
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
    say(pData->fpLog, "reserveCache: package %s, pass %d, mode %d, %s run\n",
        orEmpty(pData->pPackageName), static_cast<int>(pData->ovPass), pData->iDelete,
        pData->pTls ? "graphical" : "unattended");
    if (pData->ovPass != OV_CUSTOM_INIT)
        return OV_INST_NO_ERROR;
    path.insert(0, orEmpty(pData->pDest)); /* ends in a slash */
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
    say(pData->fpLog, "checkFiles: %ld files in %s\n", lCount, directory.c_str());
    return OV_INST_NO_ERROR;
}
