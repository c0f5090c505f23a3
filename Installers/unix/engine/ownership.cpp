#include "engine/ownership.h"

#include <cerrno>
#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include "ut/guard.h"
#include "ut/owned.h"

bool OV_instIsOurs(uid_t owner)
{
    return owner == 0 || owner == geteuid();
}

bool OV_instIsOursAlone(const struct stat *pInfo)
{
    return OV_instIsOurs(pInfo->st_uid) && !(pInfo->st_mode & (S_IWGRP | S_IWOTH));
}

static std::string nameOf(uid_t user)
{
    const struct passwd *pEntry = getpwuid(user);

    return pEntry && pEntry->pw_name ? pEntry->pw_name : "user " + std::to_string(user);
}

/* With its owner, unless that is one of us: then it is others' writing that matters. */
static std::string described(const std::string &path)
{
    OwnedFd found(OV_instGuardedOpen(path.c_str(), O_PATH | O_NOFOLLOW, 0));
    struct stat info;

    if (found.iFd < 0 || fstat(found.iFd, &info) < 0)
        return path;
    if (S_ISDIR(info.st_mode) && OV_instIsOurs(info.st_uid))
        return path + ", which others can write to";
    return path + (S_ISLNK(info.st_mode) ? ", a link of " : ", which belongs to ") +
           nameOf(info.st_uid);
}

/* Until the guard tells it. */
static bool OV_instIsTrusted(const char *pPath)
{
    OwnedFd itself(OV_instGuardedOpen(pPath, O_PATH | O_NOFOLLOW, 0));
    struct stat info;

    if (itself.iFd < 0 || fstat(itself.iFd, &info) < 0 || !OV_instIsOurs(info.st_uid))
        return false;
    return !S_ISDIR(info.st_mode) || !(info.st_mode & (S_IWGRP | S_IWOTH)) ||
           (info.st_mode & S_ISVTX);
}

/* The shortest beginning of a path, component by component, that is bad; empty when none is. */
static std::string firstBad(const std::string &path, bool (*fpIsBad)(const char *))
{
    for (size_t iEnd = path.find('/', 1);; iEnd = path.find('/', iEnd + 1)) {
        const std::string part = path.substr(0, iEnd);

        if (!part.empty() && fpIsBad(part.c_str()))
            return part;
        if (iEnd == std::string::npos)
            return "";
    }
}

static bool isRefused(const char *pPart)
{
    OwnedFd opened(OV_instGuardedOpen(pPart, O_PATH, 0));

    return opened.iFd < 0 && errno == ELOOP;
}

std::string OV_instRefusedLink(const char *pPath)
{
    const std::string part = firstBad(pPath, isRefused);

    return part.empty() ? pPath : described(part);
}

static bool isForeign(const char *pPart)
{
    OwnedFd itself(OV_instGuardedOpen(pPart, O_PATH | O_NOFOLLOW, 0));

    return itself.iFd >= 0 ? !OV_instIsTrusted(pPart) : errno == ELOOP;
}

std::string OV_instForeignPart(const char *pPath)
{
    const std::string part = firstBad(pPath, isForeign);

    return part.empty() ? "" : described(part);
}
