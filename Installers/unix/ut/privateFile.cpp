#include "ut/privateFile.h"

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "ut/OVinstFileUtils.h"
#include "ut/owned.h"

static const char s_caDefault[] = "/usr/tmp";

static std::string s_directory = s_caDefault;

/* A second name could belong to a file that has nothing to do with us. */
static bool isOurs(const struct stat *pStatus)
{
    return S_ISREG(pStatus->st_mode) && pStatus->st_uid == geteuid() && pStatus->st_nlink == 1 &&
           !(pStatus->st_mode & (S_IWGRP | S_IWOTH));
}

/* What comes in between this look and the renaming is replaced, not followed. */
static bool mayReplace(const char *pPath)
{
    struct stat status;

    return lstat(pPath, &status) == 0 ? isOurs(&status) : errno == ENOENT;
}

/* A new file beside the path; its name goes into *pTemporary. */
static FILE *createBeside(const char *pPath, std::string *pTemporary)
{
    *pTemporary = std::string(pPath) + ".XXXXXX";
    OwnedFd fd(mkostemp(&(*pTemporary)[0], O_CLOEXEC)); /* exclusively, with mode 600 */
    if (fd.iFd < 0)
        return nullptr;
    FILE *pFile = fdopen(fd.iFd, "w+");
    if (pFile)
        (void)fd.release();
    else
        (void)unlink(pTemporary->c_str()); /* an empty file, nothing to be done about it */
    return pFile;
}

void OV_instSetPrivateDirectory(const char *pDirectory)
{
    s_directory = pDirectory ? pDirectory : s_caDefault;
}

char *OV_instPrivatePath(const char *pName)
{
    return OV_instBuildPath(s_directory.c_str(), pName, nullptr);
}

FILE *OV_instOpenPrivate(const char *pPath)
{
    struct stat status;

    if (!pPath)
        return nullptr;
    /* Without waiting for the other end of a planted fifo. */
    OwnedFd fd(open(pPath, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (fd.iFd < 0 || fstat(fd.iFd, &status) < 0 || !isOurs(&status))
        return nullptr;
    FILE *pFile = fdopen(fd.iFd, "r");
    if (pFile)
        (void)fd.release();
    return pFile;
}

FILE *OV_instCreatePrivate(const char *pPath)
{
    std::string temporary;

    if (!pPath || !mayReplace(pPath))
        return nullptr;
    OwnedFile file(createBeside(pPath, &temporary));
    if (!file)
        return nullptr;
    if (rename(temporary.c_str(), pPath) < 0) {
        (void)unlink(temporary.c_str()); /* the failure is told by the result */
        return nullptr;
    }
    return file.release();
}

int OV_instWritePrivate(const char *pPath, const char *pText)
{
    std::string temporary;

    if (!pPath || !pText || !mayReplace(pPath))
        return -1;
    OwnedFile file(createBeside(pPath, &temporary));
    if (!file)
        return -1;
    bool bWritten = fputs(pText, file.get()) >= 0;
    bWritten = OV_instCloseFile(file.release()) == 0 && bWritten;
    if (bWritten && rename(temporary.c_str(), pPath) == 0)
        return 0;
    (void)unlink(temporary.c_str()); /* the failure is told by the result */
    return -1;
}
