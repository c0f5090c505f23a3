#include "engine/workingFiles.h"

#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "engine/records.h"
#include "ut/owned.h"
#include "ut/trust.h"

/* The real path of a member below the working directory's; empty when it is elsewhere. */
static std::string placeBelow(const char *pMember)
{
    OwnedText working(realpath(".", nullptr));
    OwnedText member(realpath(pMember, nullptr));
    const size_t iLength = working ? strlen(working.get()) : 0;

    if (!working || !member || strncmp(member.get(), working.get(), iLength) != 0)
        return "";
    const char *pRest = member.get() + iLength;
    if (iLength > 1 && *pRest != '/') /* "/" has its slash already */
        return "";
    return pRest + strspn(pRest, "/");
}

/* The directory of a place, reached through directories that are ours alone, which nobody else can
 * have exchanged since; *piName is where the place's name begins. -1 when one is not. */
static int openOurs(const std::string &place, size_t *piName)
{
    OwnedFd directory(open(".", O_PATH | O_DIRECTORY | O_CLOEXEC));
    struct stat info;

    for (*piName = 0;;) {
        if (directory.iFd < 0 || fstat(directory.iFd, &info) < 0 || !OV_instIsOwnObject(&info) ||
            OV_instMayStrangersWrite(&info, geteuid(), directory.iFd))
            return -1;
        const size_t iSlash = place.find('/', *piName);
        if (iSlash == std::string::npos)
            return directory.release();
        directory.reset(openat(directory.iFd, place.substr(*piName, iSlash - *piName).c_str(),
                               O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        *piName = iSlash + 1;
    }
}

static int addOwnerWrite(const char *pMember)
{
    const std::string place = placeBelow(pMember);
    size_t iName = 0;
    struct stat info;

    if (place.empty())
        return -1;
    OwnedFd directory(openOurs(place, &iName));
    const char *pName = place.c_str() + iName;
    if (directory.iFd < 0 || fstatat(directory.iFd, pName, &info, AT_SYMLINK_NOFOLLOW) < 0 ||
        S_ISLNK(info.st_mode) || !OV_instIsOwnObject(&info))
        return -1;
    return fchmodat(directory.iFd, pName, (info.st_mode & 07777) | S_IWUSR, 0);
}

/* The topmost directory on the way to a member that does not exist; empty when all do. An archive
 * has many files for each of its directories, and most of those exist in no working directory. */
static std::string missingDirectory(const std::string &member)
{
    struct stat info;

    for (size_t at = member.find('/', 1); at != std::string::npos; at = member.find('/', at + 1))
        if (stat(member.substr(0, at).c_str(), &info) < 0)
            return member.substr(0, at + 1);
    return "";
}

void OV_instMakeWritable(const _OV_InstTar *pTar, const char *pArchive, FILE *pStream)
{
    std::string missing;

    for (int32_t i = 0; i < pTar->iCount; i++) {
        const char *pMember = pTar->apMembers[i];
        struct stat info;

        if (!missing.empty() && strncmp(pMember, missing.c_str(), missing.size()) == 0)
            continue;
        if (stat(pMember, &info) < 0) {
            missing = missingDirectory(pMember);
            continue;
        }
        if (info.st_mode & S_IWUSR)
            continue;
        if (addOwnerWrite(pMember) < 0)
            OV_instSendUpdate(pStream,
                              "-1 Untar could not make \"%s\" writable before\n"
                              "extracting it from \"%s\"\n",
                              pMember, pArchive);
    }
}
