#include "engine/uncompress.h"

#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "engine/command.h"
#include "engine/fileOps.h"
#include "engine/mediaPrompt.h"
#include "engine/records.h"
#include "engine/setupState.h"
#include "ut/OVinstFileUtils.h"
#include "ut/guardedFile.h"
#include "ut/owned.h"
#include "ut/shellWord.h"
#include "ut/strprint.h"
#include "ut/text.h"

static const char s_caPlain[] = "bunzip2";
static const char s_caParallel[] = "lbunzip2"; /* the same on all processors */

static bool isOnSearchPath(const char *pProgram)
{
    const char *pPath = getenv("PATH");
    char **apFolders = OV_instSplitStringOn(pPath ? pPath : "", ':', nullptr);
    bool bFound = false;

    for (char **ppFolder = apFolders; ppFolder && *ppFolder && !bFound; ppFolder++) {
        OwnedText path(OV_instBuildPath(*ppFolder, pProgram, nullptr));
        bFound = path && access(path.get(), X_OK) == 0;
    }
    OV_instFreeStringArray(apFolders);
    return bFound;
}

const char *OV_instDecompressor()
{
    static OwnedText s_word;
    const char *pNamed = getenv("OVINST_BUNZIP2");

    if (s_word)
        return s_word.get();
    if (OV_instIsText(pNamed))
        s_word.reset(OV_instShellWord(pNamed));
    else if (isOnSearchPath(s_caParallel))
        s_word.reset(strdup(s_caParallel));
    return s_word ? s_word.get() : s_caPlain;
}

static int uncompressBlocks(FILE *pFrom, FILE *pTo, const char *pSource, const char *pTarget,
                            FILE *pStream)
{
    char caBlock[OV_COPY_BLOCK];
    size_t iRead;

    while ((iRead = fread(caBlock, 1, sizeof(caBlock), pFrom)) > 0) {
        if (fwrite(caBlock, 1, iRead, pTo) != iRead) {
            OV_instSendUpdate(pStream, "-1 Uncompress couldn't write to %s\n", pTarget);
            return 1;
        }
        OV_instSendUpdate(pStream, "+%zu %s %s\n", iRead, pSource, pTarget);
    }
    if (!ferror(pFrom))
        return 0;
    OV_instSendUpdate(pStream, "-1 Uncompress couldn't read file %s\n", pSource);
    return 1;
}

/* The decompressor at work. */
struct Decompressing {
    pid_t iCommand;
    OwnedFile output;
};

/* 0 or -1. */
static int startDecompressor(const char *pText, Decompressing *pStarted)
{
    int aEnds[2];

    if (pipe2(aEnds, O_CLOEXEC) < 0)
        return -1;
    OwnedFd input(aEnds[1]);
    pStarted->output.reset(fdopen(aEnds[0], "r"));
    if (!pStarted->output) {
        (void)close(aEnds[0]); /* nothing was read */
        return -1;
    }
    const OV_Command command = {pText, -1, input.iFd, nullptr};
    pStarted->iCommand = OV_instStartCommand(&command);
    return pStarted->iCommand < 0 ? -1 : 0;
}

/* Closes what it writes to, so that one that is still writing ends. Whether it succeeded. */
static bool endDecompressor(Decompressing *pStarted)
{
    const bool bClosed = OV_instCloseFile(pStarted->output.release()) == 0;

    return OV_instEndOfCommand(pStarted->iCommand) == 0 && bClosed;
}

/* The decompressor reading pPath's file of the medium; asks for other media while it cannot be
 * started. *ppPath is the path tried last, for the caller to free. False when it is given up. */
static bool openCompressed(const char *pSource, FILE *pStream, char **ppPath,
                           Decompressing *pStarted)
{
    for (;;) {
        *ppPath = OV_instBuildPath(OV_instGetSourceDirectory(), pSource, nullptr);
        OwnedText word(OV_instShellWord(*ppPath));
        OwnedText command(word ? OV_instStrPrint("%s -c %s", OV_instDecompressor(), word.get())
                               : nullptr);

        if (!command) {
            OV_instSendUpdate(pStream, "-1 memory error\n");
            return false;
        }
        if (startDecompressor(command.get(), pStarted) == 0)
            return true;
        free(*ppPath);
        *ppPath = nullptr;
        if (!OV_instQueryForSource(pStream, "Can't open compressed file", pSource))
            return false;
    }
}

static FILE *openUncompressed(const char *pTarget, FILE *pStream)
{
    if (OV_instMakeParent(pTarget) < 0) {
        OV_instSendUpdate(pStream, "-1 Uncompress can't create destination directory for:\n%s\n",
                          pTarget);
        return nullptr;
    }
    FILE *pTo = OV_instGuardedFopenTarget(pTarget);
    if (!pTo) /* begins with 0: the parent's reader takes -1 for an error to be asked about */
        OV_instSendUpdate(pStream, "0 Can't create file %s\n", pTarget);
    return pTo;
}

int OV_instUncompress(const char *pSource, const char *pTarget, int iMode, int64_t lSize,
                      FILE *pStream, int iDelete)
{
    char *pPath = nullptr;

    if (!OV_instIsText(pSource) || !OV_instIsText(pTarget)) {
        OV_instSendUpdate(pStream, "-1 Uncompress invalid parameters\n");
        return 1;
    }
    if (iDelete) {
        (void)OVinstDeleteFile(pTarget, pStream, lSize); /* it tells, and does not count */
        return 0;
    }
    Decompressing from = {};
    const bool bStarted = openCompressed(pSource, pStream, &pPath, &from);
    OwnedText path(pPath);
    if (!bStarted)
        return 1;
    OwnedFile to(openUncompressed(pTarget, pStream));
    if (!to) {
        (void)endDecompressor(&from); /* it was for nothing */
        return 1;
    }
    int iResult = uncompressBlocks(from.output.get(), to.get(), pPath, pTarget, pStream);
    if (!endDecompressor(&from)) {
        OV_instSendUpdate(pStream, "-1 Uncompress couldn't close input file %s\n", pPath);
        iResult = 1;
    }
    bool bModeFailed = fchmod(fileno(to.get()), static_cast<mode_t>(iMode & 07777)) < 0;
    if (OV_instCloseFile(to.release()) < 0) {
        OV_instSendUpdate(pStream, "-1 Uncompress couldn't close destination file %s\n", pTarget);
        iResult = 1;
    }
    if (bModeFailed) {
        OV_instSendUpdate(pStream, "-1 Couldn't change mode of %s\n", pTarget);
        iResult = 1;
    }
    return iResult;
}
