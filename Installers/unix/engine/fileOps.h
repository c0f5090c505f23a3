/* The operations that touch the disk for one entry of the description. Each reports into the pipe
 * (null: nothing is written): progress as "+COUNT ...", an error as "-1 ...". None stops the run;
 * the result says whether it failed. With a non-zero iDelete an operation removes its target
 * instead. Paths below the root destination are opened as ut/guard.h says. */
#ifndef OVINST_ENGINE_FILEOPS_H
#define OVINST_ENGINE_FILEOPS_H

#include <cstdint>
#include <cstdio>
#include <sys/types.h>

enum { OV_COPY_BLOCK = 10240, OV_DIRECTORY_MODE = 0755 };

/* Copies a file of the medium (pSource is relative to the source directory) and gives it iMode;
 * the target's directory is created silently. 0 or 1. */
int OV_instCopyFile(const char *pSource, const char *pTarget, int iMode, int64_t lSize,
                    FILE *pStream, int iDelete);

/* Creates the directory and those above it, each with iMode. 0 or -1. */
int OV_instMkdir(const char *pPath, int iMode, FILE *pStream);

/* OV_instMkdir for the directory part of a path, mode 0755 and without records. 0 or -1. */
int OV_instMakeParent(const char *pPath);

/* Removes a file or an empty directory. What is not there is as good as removed, and a directory
 * that holds other files stays; any other failure is a warning and a failed step. 0 or -1. */
int OV_instRemoveInstalled(const char *pPath);

/* The same for the file of an operation, told by its record, unless it is a loaded module or the
 * installed setup program itself: those are skipped silently with result 1. */
int OVinstDeleteFile(const char *pPath, FILE *pStream, int64_t lSize);

/* Whether pPath is the destination's "setup", as of the first call. */
bool IsSetupExe(const char *pPath);

/* The size of the file itself, not of what a link names; 0 when it cannot be examined. Nothing
 * calls it today. */
int32_t OVinstGetFileSize(const char *pPath);

/* Opens a file of the medium for reading, asking for other media while it cannot be opened (the
 * prompt is pLabel and the name). *ppPath becomes the path tried last, for the caller to free. -1
 * when the user gives up on it. */
int OV_instOpenSource(const char *pSource, const char *pLabel, FILE *pStream, char **ppPath);

/* Writes all of it, or fails: 0 or -1. */
int OV_instWriteAll(int iFd, const char *pBytes, size_t iCount);

#endif
