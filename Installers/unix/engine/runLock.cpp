#include "engine/runLock.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>

#include "engine/fileOps.h"
#include "engine/setupState.h"
#include "ut/frontEnd.h"
#include "ut/guard.h"
#include "ut/owned.h"
#include "ut/strprint.h"

/* Not closed before the process ends: whoever was forked shares the lock. */
static OwnedFd s_lock;

static int openFolder(const char *pDest, bool bMake)
{
    OwnedText folder(OV_instStrPrint("%s/%s", pDest, OV_SETUP_FOLDER));

    if (folder && bMake)
        (void)OV_instMkdir(folder.get(), OV_DIRECTORY_MODE, nullptr); /* the opening tells */
    return folder ? OV_instGuardedOpen(folder.get(), O_RDONLY | O_DIRECTORY, 0) : -1;
}

/* 0 with the lock, or without one where there are no locks; -1 when another run has it. */
static int lock(int iFolder)
{
    int iResult;

    do {
        iResult = flock(iFolder, LOCK_EX | LOCK_NB);
    } while (iResult < 0 && errno == EINTR);
    return iResult < 0 && errno == EWOULDBLOCK ? -1 : 0;
}

bool OV_instLockRun(const char *pDest, bool bMake)
{
    OwnedFd folder(openFolder(pDest, bMake));

    if (s_lock.iFd >= 0)
        return true;
    if (folder.iFd >= 0 && lock(folder.iFd) < 0)
        return false;
    s_lock.reset(folder.release());
    return true;
}

void OV_instUnlockRun()
{
    if (s_lock.iFd >= 0)
        (void)flock(s_lock.iFd, LOCK_UN); /* closing would leave it with others who have it open */
    s_lock.reset(-1);
}

bool OV_instIsRunLocked(const char *pDest)
{
    OwnedFd folder(s_lock.iFd < 0 ? openFolder(pDest, false) : -1);

    return folder.iFd >= 0 && lock(folder.iFd) < 0; /* closing gives it back */
}

void OV_instTellRunLocked(const char *pDest)
{
    OwnedText text(OV_instStrPrint("Another setup is working in:\n%s", pDest));

    (void)OV_instAsk(text ? text.get() : "Another setup is working", "OK");
}
