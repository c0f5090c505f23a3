#include "ut/replaceFile.h"

#include <cerrno>
#include <fcntl.h>

#include "ut/owned.h"

/* Only root can give files away; anybody else keeps what he makes. A new content never runs with
 * somebody's rights, so those bits are not taken over. */
static void takeOver(int iFd, const struct stat *pFrom)
{
    if (fchown(iFd, pFrom->st_uid, pFrom->st_gid) < 0)
        errno = 0;                            /* it stays ours */
    (void)fchmod(iFd, pFrom->st_mode & 0777); /* it is our own file */
}

/* The new file, which no link that is planted meanwhile can lead elsewhere. */
static FILE *createIn(int iDirectory, const char *pTemporary, const struct stat *pFrom)
{
    if (unlinkat(iDirectory, pTemporary, 0) < 0 && errno != ENOENT)
        return nullptr;
    OwnedFd file(openat(iDirectory, pTemporary,
                        O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (file.iFd < 0)
        return nullptr;
    takeOver(file.iFd, pFrom);
    FILE *pStream = fdopen(file.iFd, "w");
    if (pStream)
        (void)file.release(); /* the stream closes it */
    return pStream;
}

static int begin(OV_Replacement *pReplacement, OwnedFd *pDirectory, const char *pTemporary,
                 const char *pName, const struct stat *pFrom)
{
    FILE *pStream = createIn(pDirectory->iFd, pTemporary, pFrom);

    if (!pStream)
        return -1;
    *pReplacement = {pStream, pDirectory->release(), pTemporary, pName};
    return 0;
}

int OV_instBeginReplacement(OV_Replacement *pReplacement, const char *pDirectory,
                            const char *pTemporary, const char *pName, const struct stat *pNew)
{
    struct stat old;
    OwnedFd directory(open(pDirectory, O_PATH | O_DIRECTORY | O_CLOEXEC));

    if (directory.iFd < 0)
        return -1;
    bool bReplaces =
        fstatat(directory.iFd, pName, &old, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(old.st_mode);
    return begin(pReplacement, &directory, pTemporary, pName, bReplaces ? &old : pNew);
}

int OV_instBeginNewFile(OV_Replacement *pReplacement, int iDirectory, const char *pTemporary,
                        const char *pName, mode_t iMode)
{
    struct stat ours = {};
    OwnedFd directory(iDirectory);

    if (directory.iFd < 0)
        return -1;
    ours.st_uid = static_cast<uid_t>(-1); /* as it comes */
    ours.st_gid = static_cast<gid_t>(-1);
    ours.st_mode = iMode;
    return begin(pReplacement, &directory, pTemporary, pName, &ours);
}

int OV_instEndReplacement(OV_Replacement *pReplacement, bool bKeep)
{
    OwnedFd directory(pReplacement->iDirectory);
    FILE *pStream = pReplacement->pStream;
    /* On the disk before it takes the old file's place, or a power failure could leave neither. */
    bool bWritten = !ferror(pStream) && fflush(pStream) == 0 && fsync(fileno(pStream)) == 0;

    bWritten = OV_instCloseFile(pStream) == 0 && bWritten;
    pReplacement->pStream = nullptr;
    if (bKeep && bWritten &&
        renameat(directory.iFd, pReplacement->pTemporary, directory.iFd, pReplacement->pName) == 0)
        return 0;
    (void)unlinkat(directory.iFd, pReplacement->pTemporary, 0); /* the failure is told already */
    return -1;
}
