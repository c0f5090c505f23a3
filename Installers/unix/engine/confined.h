/* Running a shell command that may write below given directories only. tar follows symbolic links
 * that it finds in its way, and those may have been planted a moment ago; so where the kernel can
 * (Landlock), the command is kept to the directories that were opened for it. */
#ifndef OVINST_ENGINE_CONFINED_H
#define OVINST_ENGINE_CONFINED_H

#include <sys/types.h>

enum { OV_CONFINED_MOST = 64 };

/* Directories a command may write below. */
struct OV_Confinement {
    int aDirs[OV_CONFINED_MOST]; /* opened; closed by OV_instReleaseConfinement */
    int iDirs;
    bool bOff; /* the command may write wherever it can */
};

/* Adds an opened directory, which is taken over. 0, or -1 when there are too many: it is closed,
 * and the command had better not be started. */
int OV_instAllowBelow(OV_Confinement *pConfinement, int iDirectory);
void OV_instReleaseConfinement(OV_Confinement *pConfinement);

/* Starts "sh -c COMMAND" in the directory iWorking, its input coming from a pipe whose other end is
 * the result (close-on-exec). The shell ends with its starter, and what it started when it has read
 * what the pipe still holds. -1 with errno set. */
int OV_instStartConfined(const char *pCommand, int iWorking, const OV_Confinement *pConfinement,
                         pid_t *piCommand);

/* Waits for the command; its status is as waitpid gives it. 0 or -1. */
int OV_instWaitConfined(pid_t iCommand, int *piStatus);

#endif
