/* Owners for what local code holds for a while: memory, streams, pipes, descriptors.
 * They exist so that an early return leaks nothing; ownership passes on by release(). */
#ifndef OVINST_UT_OWNED_H
#define OVINST_UT_OWNED_H

#include <cstdio>
#include <cstdlib>
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

using OwnedText = std::unique_ptr<char, Freed>;
using OwnedFile = std::unique_ptr<FILE, FileClosed>;
using OwnedPipe = std::unique_ptr<FILE, PipeClosed>;

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
