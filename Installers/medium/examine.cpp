#include "medium/examine.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <vector>

#include "medium/output.h"
#include "ut/guard.h"

enum { BLOCK_SIZE = 128 * 1024 };

bool OV_mediumLook(const std::string &path, OV_TreeObject *pFound)
{
    pFound->object.reset(OV_instGuardedOpen(path.c_str(), O_PATH | O_NOFOLLOW, 0));
    pFound->iError = pFound->object.iFd < 0 ? errno : 0;
    if (pFound->object.iFd >= 0 && fstat(pFound->object.iFd, &pFound->info) == 0)
        return true;
    /* A link that is not followed on the way leads nowhere. */
    if (pFound->iError == ENOENT || pFound->iError == ENOTDIR || pFound->iError == ELOOP)
        return true;
    OV_mediumTell("%s: %s", path.c_str(), strerror(errno));
    return false;
}

/* Once more by its name, which is quicker than by way of /proc: it has to be the same one. */
static int openAgain(const OV_TreeObject *pFound, const std::string &path)
{
    OwnedFd file(OV_instGuardedOpen(path.c_str(), O_RDONLY | O_NOFOLLOW, 0));
    struct stat info;

    if (file.iFd < 0 || fstat(file.iFd, &info) < 0)
        return -1;
    if (info.st_dev == pFound->info.st_dev && info.st_ino == pFound->info.st_ino)
        return file.release();
    errno = ESTALE;
    return -1;
}

int OV_mediumOpenFound(const OV_TreeObject *pFound, const std::string &path)
{
    int iFd = openAgain(pFound, path);

    if (iFd < 0) { /* a link may lead to it */
        const std::string opened = "/proc/self/fd/" + std::to_string(pFound->object.iFd);
        iFd = open(opened.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    }
    if (iFd < 0)
        OV_mediumTell("%s: %s", path.c_str(), strerror(errno));
    return iFd;
}

int OV_mediumOpenSource(const std::string &path, struct stat *pInfo)
{
    OwnedFd file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));

    if (file.iFd < 0 || fstat(file.iFd, pInfo) < 0) {
        OV_mediumTell("%s: %s", path.c_str(), strerror(errno));
        return -1;
    }
    if (S_ISREG(pInfo->st_mode))
        return file.release();
    OV_mediumTell("%s: no file", path.c_str());
    return -1;
}

ssize_t OV_mediumReadFull(int iFd, char *pBytes, size_t iCount)
{
    size_t iDone = 0;

    while (iDone < iCount) {
        const ssize_t iRead = read(iFd, pBytes + iDone, iCount - iDone);
        if (iRead < 0 && errno == EINTR)
            continue;
        if (iRead < 0)
            return -1;
        if (iRead == 0)
            break;
        iDone += static_cast<size_t>(iRead);
    }
    return static_cast<ssize_t>(iDone);
}

int OV_mediumSameContent(int iFirst, int iSecond, int64_t lSize)
{
    static std::vector<char> s_first(BLOCK_SIZE), s_second(BLOCK_SIZE);

    if (lSize > BLOCK_SIZE) {
        (void)posix_fadvise(iFirst, 0, 0, POSIX_FADV_SEQUENTIAL);
        (void)posix_fadvise(iSecond, 0, 0, POSIX_FADV_SEQUENTIAL);
    }
    while (lSize > 0) {
        const size_t iWanted = static_cast<size_t>(std::min<int64_t>(lSize, BLOCK_SIZE));
        const ssize_t iRead = OV_mediumReadFull(iFirst, s_first.data(), iWanted);
        const ssize_t iOther = OV_mediumReadFull(iSecond, s_second.data(), iWanted);
        if (iRead < 0 || iOther < 0)
            return -1;
        if (iRead != iOther || static_cast<size_t>(iRead) < iWanted ||
            memcmp(s_first.data(), s_second.data(), iWanted) != 0)
            return 0; /* one that ends early has just been changed */
        lSize -= iRead;
    }
    return 1;
}

std::string OV_mediumLinkText(const OV_TreeObject *pFound)
{
    char caText[PATH_MAX];
    const ssize_t iLength = readlinkat(pFound->object.iFd, "", caText, sizeof(caText));

    return iLength > 0 ? std::string(caText, static_cast<size_t>(iLength)) : "";
}
