#include "engine/toolChest.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "ut/OVinstFileUtils.h"
#include "ut/guard.h"
#include "ut/owned.h"
#include "ut/strprint.h"

enum { CHEST_LINE = 8192 };

static bool hasLine(FILE *pFile, const char *pWanted)
{
    OwnedText line(static_cast<char *>(malloc(CHEST_LINE)));

    while (line && fgets(line.get(), CHEST_LINE, pFile))
        if (strstr(line.get(), pWanted))
            return true;
    return false;
}

/* A file that root makes in a user's home belongs to the user. */
static void giveToOwner(int iFd, const struct stat *pStatus, const char *pHome)
{
    struct stat home;

    if (geteuid() == 0 && pStatus->st_size == 0 && stat(pHome, &home) == 0)
        (void)fchown(iFd, home.st_uid, home.st_gid); /* root's file will serve as well */
}

/* The user's file, for reading and appending. It lies in a home, where anything may be planted: a
 * stranger's link is not followed, and what is no file or has a second name elsewhere is left
 * alone. */
static FILE *openChest(const char *pHome, const char *pPath)
{
    int iFd = OV_instGuardedOpenIn(pHome, pPath, O_RDWR | O_APPEND | O_CREAT, 0666);
    struct stat status;
    bool bOrdinary =
        iFd >= 0 && fstat(iFd, &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink == 1;
    FILE *pFile = bOrdinary ? fdopen(iFd, "a+") : nullptr;

    if (pFile)
        giveToOwner(iFd, &status, pHome);

    if (!pFile && iFd >= 0)
        (void)close(iFd); /* nothing was written */
    return pFile;
}

int OV_instAddSinclude(const char *pHome, const char *pTitleDirectory)
{
    if (!pHome)
        pHome = getenv("HOME");
    if (!pHome || !pHome[0]) {
        fputs("Unable to get Home env var for sinclude\n", stderr);
        return 1;
    }
    if (!pTitleDirectory)
        pTitleDirectory = getenv("OV_LOCATION");
    if (!pTitleDirectory) {
        fprintf(stderr, "Unable to get %s env var for sinclude\n", "OV_LOCATION");
        return 1;
    }
    OwnedText path(OV_instBuildPath(pHome, ".auxchestrc", nullptr));
    OwnedText title(OV_instBuildPath(pTitleDirectory, ".title", nullptr));
    OwnedText line(title ? OV_instStrPrint("sinclude %s", title.get()) : nullptr);
    if (!path || !line) {
        fputs("Internal memory error in OV_instAddSinclude\n", stderr);
        return 1;
    }
    OwnedFile file(openChest(pHome, path.get()));
    if (!file) {
        fprintf(stderr, "Unable to open shortcut file: %s\n", path.get());
        return 1;
    }
    rewind(file.get());
    if (hasLine(file.get(), line.get()))
        return 0;
    bool bWritten = fprintf(file.get(), "\n%s\n", line.get()) > 0;
    if (OV_instCloseFile(file.release()) == 0 && bWritten)
        return 0;
    fprintf(stderr, "Unable to open shortcut file: %s\n", path.get());
    return 1;
}
