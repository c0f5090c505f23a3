/* Files of ours at fixed names in a directory that others can write to. What somebody else has put
 * there in their place is neither followed, read, written through nor removed. A file is ours when
 * it is a regular file of the running user, with one name, that nobody else may write to. */
#ifndef OVINST_UT_PRIVATEFILE_H
#define OVINST_UT_PRIVATEFILE_H

#include <cstdio>

/* The directory for such files, "/usr/tmp" until it is set, which only tests do; null sets that
 * again. The path is copied. OV_instPrivatePath gives the path of a file in it, for the caller to
 * free; null without memory. */
void OV_instSetPrivateDirectory(const char *pDirectory);
char *OV_instPrivatePath(const char *pName);

/* Opens a file of ours for reading. Null when there is none, or something else in its place. */
FILE *OV_instOpenPrivate(const char *pPath);

/* Puts an empty file of ours (mode 600) in the place of nothing or an earlier file of ours, and
 * opens it for writing and reading. In a directory with the sticky bit nobody else can replace it
 * from then on, so that a command may be given its name. Null when that cannot be done, or
 * something else is in its place, which then stays. */
FILE *OV_instCreatePrivate(const char *pPath);

/* The same with a text, which is there as a whole or not at all. Returns 0, or -1 with what was
 * there untouched. */
int OV_instWritePrivate(const char *pPath, const char *pText);

#endif
