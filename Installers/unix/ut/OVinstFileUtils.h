/* Path and text-file helpers. Results are new strings that the caller frees; null arguments are
 * accepted and failure is a null result (or 1), without a message unless one is named. */
#ifndef OVINST_UT_OVINSTFILEUTILS_H
#define OVINST_UT_OVINSTFILEUTILS_H

#include <cstdio>
#include <vector>

enum { OV_INST_PATH_SIZE = 4096 };

/* Whether something is at pPath, links followed; null is nowhere. */
bool OV_instIsThere(const char *pPath);

/* Joins its arguments, ended by a null, with single slashes. An empty first argument gives an
 * absolute path. */
char *OV_instBuildPath(const char *pFirst, ...);

/* Turns every run of slashes into one, in place. Returns 0, or 1 for null. */
int OV_instRemoveExtraSlash(char *pPath);

/* The directory part with its trailing slash; "./" when there is none (and for "/").
 * Null for a path longer than 4096 characters. */
char *OV_instDirname(const char *pPath);

/* The text behind the last slash, empty for a path that ends in one. Null for a path longer than
 * 4096 characters. */
char *OV_instBasename(const char *pPath);

/* The resolved directory of pPath, with a trailing slash. A directory that cannot be resolved is
 * told on standard error and gives null. */
char *OV_instGetRealPath(const char *pPath);

/* The nearest existing directory at or above pPath (the working directory for a null or empty
 * path; "./" for a relative one of which nothing exists): where a destination that does not exist
 * yet will live. Null when pPath itself is there but is no directory; "file/" and "file/x" count as
 * not existing, and give the directory that file is in. */
char *OV_instGetPartitionDirectory(const char *pPath);

/* The whole file with a terminating zero, or null when it cannot be read to its end. */
char *OV_instReadFileContent(const char *pPath);

/* The next logical line without its newline, or null at the end of the file. A line that ends in
 * a backslash is joined to the next one, the backslash becoming a blank. Every read of a physical
 * line (or 102399-byte piece of one) adds 1 to *piLine, and so does the read that finds the end of
 * the file. A line that the end cuts short behind its backslash is dropped, and so is an unfinished
 * one of exactly n pieces. A zero byte hides the rest of its line. Not reentrant. */
char *OV_instGetline(FILE *pFile, int *piLine);

/* A part of a logical line, from an offset in it on: the physical line that it stands in and the
 * byte there, both from 1. */
struct OV_LinePart {
    size_t iOffset;
    int iLine;
    int iColumn;
};

/* The parts of the line that was read last, and where the next one begins. */
struct OV_LineParts {
    std::vector<OV_LinePart> parts;
    int iNextLine = 1;
    int iNextColumn = 1;
};

/* OV_instGetline that tells where the line stands; null parts are not filled in. */
char *OV_instGetlineParts(FILE *pFile, int *piLine, OV_LineParts *pParts);

/* 1 when the file is empty or its last byte is no newline, else 0. The position is kept. Nothing
 * calls it today. */
int OV_instNeedNewline(FILE *pFile);

/* Cuts pText at every cSeparator into a null-terminated array of new strings, empty pieces
 * included; *piCount is their number. Free it with OV_instFreeStringArray. */
char **OV_instSplitStringOn(const char *pText, char cSeparator, int *piCount);
void OV_instFreeStringArray(char **apStrings);

#endif
