/* Owners for what local code holds for a while: memory, streams, pipes, descriptors.
 * They exist so that an early return leaks nothing; ownership passes on by release(). */
#ifndef OVINST_UT_OWNED_H
#define OVINST_UT_OWNED_H

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <memory>
#include <unistd.h>

struct Freed {
    void operator()(void *pMemory) const { free(pMemory); }
};
struct FileClosed {
    void operator()(FILE *pFile) const { (void)fclose(pFile); }
};
struct PipeClosed {
    void operator()(FILE *pPipe) const { (void)pclose(pPipe); }
};

/* For what was written: 0 when nothing went wrong, else -1. A descriptor whose closing was
 * interrupted is closed all the same. */
inline int OV_instCloseFd(int iFd)
{
    return close(iFd) == 0 || errno == EINTR ? 0 : -1;
}
inline int OV_instCloseFile(FILE *pFile)
{
    const bool bWritten = fflush(pFile) == 0 && !ferror(pFile);

    return (fclose(pFile) == 0 || errno == EINTR) && bWritten ? 0 : -1;
}
struct DirectoryClosed {
    void operator()(DIR *pDirectory) const { (void)closedir(pDirectory); }
};

using OwnedText = std::unique_ptr<char, Freed>;
using OwnedFile = std::unique_ptr<FILE, FileClosed>;
using OwnedPipe = std::unique_ptr<FILE, PipeClosed>;
using OwnedDirectory = std::unique_ptr<DIR, DirectoryClosed>;

/* A descriptor that is closed with its owner; -1 stands for none. */
struct OwnedFd {
    int iFd;

    explicit OwnedFd(int iOpened = -1) : iFd(iOpened) {}
    OwnedFd(const OwnedFd &) = delete;
    OwnedFd &operator=(const OwnedFd &) = delete;
    OwnedFd(OwnedFd &&other) noexcept : iFd(other.release()) {}
    OwnedFd &operator=(OwnedFd &&other) noexcept
    {
        reset(other.release());
        return *this;
    }
    ~OwnedFd() { reset(-1); }

    void reset(int iOpened)
    {
        if (iFd >= 0)
            (void)close(iFd); /* only read or path descriptors are left to the owner */
        iFd = iOpened;
    }
    int release()
    {
        int iKept = iFd;
        iFd = -1;
        return iKept;
    }
};

#endif
