/* Writing a file anew in a directory that somebody else may write to: as a whole or not at all, and
 * without following what may be planted there. */
#ifndef OVINST_UT_REPLACEFILE_H
#define OVINST_UT_REPLACEFILE_H

#include <cstdio>
#include <sys/stat.h>

/* A file being written. */
struct OV_Replacement {
    FILE *pStream;          /* to be written to; its failures show when it is finished */
    int iDirectory;         /* where both names are */
    const char *pTemporary; /* the caller's, like the next */
    const char *pName;
};

/* Begins a file that is to take the place of pName in pDirectory; until then it has the name
 * pTemporary, where an earlier file or link of that name is removed. It gets the owner and mode of
 * the regular file that is there, or else those of pNew. 0, or -1 with errno set. */
int OV_instBeginReplacement(OV_Replacement *pReplacement, const char *pDirectory,
                            const char *pTemporary, const char *pName, const struct stat *pNew);

/* The same in an opened directory, which is taken over, for a file that is nobody's but ours, with
 * iMode: what is in its place has no say. */
int OV_instBeginNewFile(OV_Replacement *pReplacement, int iDirectory, const char *pTemporary,
                        const char *pName, mode_t iMode);

/* Puts the file in its place when bKeep is set and everything was written, else removes it. The
 * replacement is used up. 0, or -1 when the file is not in its place; what was there is then as it
 * was. */
int OV_instEndReplacement(OV_Replacement *pReplacement, bool bKeep);

#endif
