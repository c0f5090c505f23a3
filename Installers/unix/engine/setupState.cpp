#include "engine/setupState.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "ut/OVinstFileUtils.h"
#include "ut/guard.h"
#include "ut/owned.h"

_OV_instCDinst *CDInstPtr = nullptr;
int OV_instInstallationMode = 0;

static struct {
    char runningDirectory[OV_INST_PATH_SIZE];
    char cdinstDirectory[OV_INST_PATH_SIZE];
    const char *pRedirect;
    uint64_t s_ulTotalSize;
    _OV_InstConfigList *pConfigToInstall;
    bool bMaintenanceExists;
    bool sRemoveAll;
    bool bDestinationGiven;
} s_state = {"", ".", "> /dev/null", 0, nullptr, false, false, false};

/* The source directory as it was last resolved. */
static struct {
    std::string text;   /* what was resolved, as it stands in the description */
    const char *pKnown; /* the buffer, or the running directory; null before the first time */
    char caResolved[PATH_MAX];
} s_source;

static const char s_caCommon[] = "Orvane"; /* the directory that products share */

static const char *textOrEmpty(const char *pText)
{
    return pText ? pText : "";
}

const char *GetProductName(const _OV_instCDinst *pRoot)
{
    return textOrEmpty(pRoot ? pRoot->pProductName : nullptr);
}

const char *GetProductVersion(const _OV_instCDinst *pRoot)
{
    return textOrEmpty(pRoot ? pRoot->pProductVersion : nullptr);
}

const char *OV_instGetProductName()
{
    return GetProductName(CDInstPtr);
}

const char *OV_instGetProductVersion()
{
    return GetProductVersion(CDInstPtr);
}

char *OV_instGetRunningDirectory()
{
    return s_state.runningDirectory;
}

const char *OV_instGetCdinstDirectory()
{
    return s_state.cdinstDirectory;
}

static int keepDirectory(char *pBuffer, const char *pDirectory)
{
    if (!pDirectory || strlen(pDirectory) >= OV_INST_PATH_SIZE)
        return -1;
    strcpy(pBuffer, pDirectory);
    return 0;
}

int OV_instSetRunningDirectory(const char *pDirectory)
{
    return keepDirectory(s_state.runningDirectory, pDirectory);
}

int OV_instSetCdinstDirectory(const char *pDirectory)
{
    return keepDirectory(s_state.cdinstDirectory, pDirectory);
}

/* "ROOT/" or "ROOT/SUB/" without doubled slashes; null when there is no root or no room. */
static const char *destination(const _OV_instCDinst *pRoot, const char *pSub, char *pBuffer)
{
    if (!pRoot || !pRoot->pInstallDir || !pRoot->pInstallDir[0])
        return nullptr;
    int iLength = snprintf(pBuffer, OV_INST_PATH_SIZE, pSub ? "%s/%s/" : "%s/", pRoot->pInstallDir,
                           textOrEmpty(pSub));
    if (iLength < 0 || iLength >= OV_INST_PATH_SIZE)
        return nullptr;
    (void)OV_instRemoveExtraSlash(pBuffer); /* fails for null only */
    return pBuffer;
}

const char *GetRootDestinationDirectory(const _OV_instCDinst *pRoot)
{
    static char s_caBuffer[OV_INST_PATH_SIZE];

    return destination(pRoot, nullptr, s_caBuffer);
}

const char *GetDestinationDirectory(const _OV_instCDinst *pRoot)
{
    static char s_caBuffer[OV_INST_PATH_SIZE];

    if (!pRoot || !pRoot->pProductDirectory)
        return nullptr;
    return destination(pRoot, pRoot->pProductDirectory, s_caBuffer);
}

const char *OV_instGetRootDestinationDirectory()
{
    return GetRootDestinationDirectory(CDInstPtr);
}

const char *OV_instGetDestinationDirectory()
{
    return GetDestinationDirectory(CDInstPtr);
}

const char *OV_instGetCommonDestinationDirectory()
{
    static char s_caBuffer[OV_INST_PATH_SIZE];

    /* Without a product directory there is none either: modules are given both or neither. */
    if (!CDInstPtr || !CDInstPtr->pProductDirectory)
        return nullptr;
    return destination(CDInstPtr, s_caCommon, s_caBuffer);
}

int OV_instSetRootDestination(const char *pPath)
{
    char *pCopy = pPath ? strdup(pPath) : nullptr;

    if (!CDInstPtr || !pCopy) {
        free(pCopy);
        return -1;
    }
    free(CDInstPtr->pInstallDir);
    CDInstPtr->pInstallDir = pCopy;
    OV_instSetGuardedRoot(GetRootDestinationDirectory(CDInstPtr));
    return 0;
}

const char *GetSourceDirectory(const _OV_instCDinst *pRoot)
{
    if (!pRoot)
        return nullptr;
    s_source.text = textOrEmpty(pRoot->pSourceDir);
    s_source.pKnown = s_state.runningDirectory;
    if (pRoot->pSourceDir && realpath(pRoot->pSourceDir, s_source.caResolved)) {
        (void)OV_instRemoveExtraSlash(s_source.caResolved); /* fails for null only */
        s_source.pKnown = s_source.caResolved;
    }
    return s_source.pKnown;
}

const char *OV_instGetSourceDirectory()
{
    return GetSourceDirectory(CDInstPtr);
}

const char *OV_instGetKnownSourceDirectory()
{
    if (CDInstPtr && s_source.pKnown && s_source.text == textOrEmpty(CDInstPtr->pSourceDir))
        return s_source.pKnown;
    return OV_instGetSourceDirectory();
}

[[noreturn]] static void sourceFailure(const char *pMessage)
{
    fputs(pMessage, stderr);
    exit(1);
}

const char *OV_instSetSourceDirectory(const char *pPath)
{
    char caReal[PATH_MAX];

    if (!CDInstPtr || !pPath || !pPath[0])
        sourceFailure("Internal error (input) while setting source directory\n");
    if (pPath[0] != '/') {
        if (!realpath(pPath, caReal))
            sourceFailure("Internal error (realpath) while setting source directory\n");
        pPath = caReal;
    }
    char *pCopy = strdup(pPath);
    if (!pCopy)
        sourceFailure("Internal error (memory allocation) while setting source directory\n");
    free(CDInstPtr->pSourceDir);
    CDInstPtr->pSourceDir = pCopy;
    return pCopy;
}

const char *OV_instGetHistoryFile()
{
    static char s_caBuffer[OV_INST_PATH_SIZE];
    const char *pName = CDInstPtr ? CDInstPtr->pHistoryFile : nullptr;

    if (!pName)
        pName = OV_instGetProductName();
    (void)snprintf(s_caBuffer, sizeof(s_caBuffer), ".%s.his", pName); /* header values are short */
    return s_caBuffer;
}

const char *OV_instGetRedirect()
{
    return s_state.pRedirect;
}

void OV_instSetRedirect(const char *pSuffix)
{
    s_state.pRedirect = pSuffix;
}

uint64_t GetProgressBarTotalSize()
{
    return s_state.s_ulTotalSize;
}

void SetProgressBarTotalSize(uint64_t ulTotal)
{
    s_state.s_ulTotalSize = ulTotal;
}

_OV_InstConfigList *GetConfigToInstall()
{
    return s_state.pConfigToInstall;
}

void SetConfigToInstall(_OV_InstConfigList *pConfig)
{
    s_state.pConfigToInstall = pConfig;
}

bool OV_instMaintenanceExists()
{
    return s_state.bMaintenanceExists;
}

void OV_instSetMaintenanceExists()
{
    s_state.bMaintenanceExists = true;
}

bool OV_instRemovesAll()
{
    return s_state.sRemoveAll;
}

void OV_instSetRemovesAll(bool bRemovesAll)
{
    s_state.sRemoveAll = bRemovesAll;
}

bool OV_instIsDestinationGiven()
{
    return s_state.bDestinationGiven;
}

void OV_instSetDestinationGiven(bool bGiven)
{
    s_state.bDestinationGiven = bGiven;
}
