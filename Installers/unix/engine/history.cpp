#include "engine/history.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "engine/fileOps.h"
#include "engine/pending.h"
#include "engine/runReport.h"
#include "engine/selection.h"
#include "engine/setupState.h"
#include "ut/OVinstFileUtils.h"
#include "ut/frontEnd.h"
#include "ut/guard.h"
#include "ut/guardedFile.h"
#include "ut/owned.h"
#include "ut/strprint.h"

#define HISTORY_PLACE "%s/%s/%s"

static const char s_caVersionWord[] = "HistoryFileVersion";
static const char s_caPackageWord[] = "Package";
static const char s_caPackageLine[] = "%s \"%s\" Installed\n";

enum { HISTORY_VERSION = 2 };

static char *historyPath(const char *pDest)
{
    return OV_instStrPrint(HISTORY_PLACE, pDest, OV_SETUP_FOLDER, OV_instGetHistoryFile());
}

/* ---- writing ---- */

/* Without a history the next run would know of nothing; the run's file tells it. */
static void tellUnwritten(const char *pPath)
{
    OV_instWarn("the history %s could not be written", pPath ? pPath : "");
    OV_instNoteFailedStep();
}

static FILE *openForWriting(const char *pDest, const char *pMode)
{
    OwnedText path(historyPath(pDest));
    FILE *pFile = path ? OV_instGuardedFopen(path.get(), pMode) : nullptr;

    if (!pFile) {
        printf("Unable to open %s\n", path ? path.get() : "");
        tellUnwritten(path.get());
    }
    return pFile;
}

/* Closes the file; what did not reach the disk is told. */
static void closeWritten(OwnedFile *pFile, const char *pDest)
{
    bool bFailed = ferror(pFile->get()) != 0;

    if (fclose(pFile->release()) == 0 && !bFailed)
        return;
    OwnedText path(historyPath(pDest));
    fprintf(stderr, "Error: writing %s\n", path ? path.get() : "");
    tellUnwritten(path.get());
}

void OV_InitHistoryFile(const char *pDest, const char *pProductName, const char *pProductVersion)
{
    OwnedText folder(OV_instStrPrint("%s/%s", pDest, OV_SETUP_FOLDER));

    if (folder)
        (void)OV_instMkdir(folder.get(), OV_DIRECTORY_MODE, nullptr); /* the opening tells */
    OwnedFile file(openForWriting(pDest, "w"));
    if (!file)
        return;
    fprintf(file.get(), "%s %d\n", s_caVersionWord, HISTORY_VERSION);
    fprintf(file.get(), "%s\n", pProductName);
    fprintf(file.get(), "%s\n", pProductVersion);
    fprintf(file.get(), "%s\n", OV_instGetSourceDirectory());
    closeWritten(&file, pDest);
}

size_t OV_instHistoryTextSize(const char *pText)
{
    return strlen(pText) + 1;
}

size_t OV_instHistoryPackageSize(const char *pName)
{
    const int iSize = snprintf(nullptr, 0, s_caPackageLine, s_caPackageWord, pName);

    return iSize < 0 ? 0 : static_cast<size_t>(iSize);
}

void OV_UpdateHistoryFile(const char *pDest, const _OV_InstSuiteList *pSuite)
{
    OwnedFile file(openForWriting(pDest, "a"));

    if (!file)
        return;
    for (_OV_InstPackageNode *pNode = pSuite ? pSuite->pPackHead : nullptr; pNode;
         pNode = pNode->pNext)
        fprintf(file.get(), s_caPackageLine, s_caPackageWord, pNode->pPackage->pName);
    closeWritten(&file, pDest);
}

int OV_instWriteHistory(const char *pDest, const OV_RunFile *pState)
{
    std::string text = std::string(s_caVersionWord) + " " + std::to_string(HISTORY_VERSION) + "\n" +
                       pState->product + "\n" + pState->version + "\n" + pState->source + "\n";

    for (const OV_RunPackage &package : pState->packages)
        if (package.state != OV_RUN_INSTALLING)
            text += std::string(s_caPackageWord) + " \"" + package.name + "\" Installed\n";
    return OV_instWriteSetupFile(pDest, OV_instGetHistoryFile(), text, true);
}

void OV_RemoveHistoryFile(const char *pDest)
{
    OwnedText path(historyPath(pDest));

    if (path)
        (void)OV_instGuardedRemove(path.get()); /* there may be none */
    OV_instRemoveRunFile(pDest); /* last: as long as it is there, the removal is not complete */
}

/* ---- finding ---- */

/* What is known of an earlier installation. */
struct Found {
    OwnedFile history; /* null when there is none, or it was lost */
    bool bUnfinished;  /* the last run did not end well: its file counts and not the history's */
    OV_RunFile run;
};

static FILE *openForReading(const char *pRoot, const char *pPath)
{
    return pPath ? OV_instGuardedFopenBelieved(pRoot, pPath, "r+") : nullptr;
}

/* Looks into a product's directory; pRoot is its root destination, null for the one in use. */
static bool findIn(const char *pRoot, const char *pDest, const char *pProductName, Found *pFound)
{
    OwnedText path(historyPath(pDest));

    pFound->history.reset(openForReading(pRoot, path.get()));
    pFound->bUnfinished = OV_instReadRunFile(pDest, &pFound->run, pRoot) &&
                          pFound->run.product.find(pProductName) != std::string::npos;
    return pFound->history || pFound->bUnfinished;
}

/* Looks into a tree that pPath leads into, and cuts pPath just before the product directory. False
 * when pPath does not name that directory or nothing is found. */
static bool findInTree(char *pPath, const char *pProductDirectory, const char *pProductName,
                       Found *pFound)
{
    char *pCut =
        pProductDirectory && pProductDirectory[0] ? strstr(pPath, pProductDirectory) : nullptr;

    if (!pCut)
        return false;
    const std::string root(pPath, static_cast<size_t>(pCut - pPath));
    if (!findIn(root.c_str(), pPath, pProductName, pFound)) {
        OwnedText beside(OV_instStrPrint("%s/%s", pPath, OV_instGetHistoryFile()));
        pFound->history.reset(openForReading(root.c_str(), beside.get()));
    }
    if (!pFound->history && !pFound->bUnfinished)
        return false;
    *pCut = '\0';
    return true;
}

/* Looks around the medium for an installed tree to maintain. */
static bool findAroundMedium(_OV_instCDinst *pRoot, const char *pProductName, Found *pFound)
{
    OwnedText real(OV_instGetRealPath(pRoot->pSourceDir));
    const char *pDirectory = pRoot->pProductDirectory;
    bool bInSource = real && pDirectory && pDirectory[0] && strstr(real.get(), pDirectory);
    /* The running directory's buffer itself is cut: where the medium cannot be resolved, the tree
     * that was found stands in for it from now on. */
    char *pPath = bInSource ? real.get() : OV_instGetRunningDirectory();

    if (!findInTree(pPath, pDirectory, pProductName, pFound))
        return false;
    (void)OV_instSetRootDestination(pPath); /* without memory the old one stays */
    return true;
}

static bool find(_OV_instCDinst *pRoot, const char *pDest, const char *pProductName, Found *pFound)
{
    if (findIn(nullptr, pDest, pProductName, pFound))
        return true;
    return !OV_instIsDestinationGiven() && findAroundMedium(pRoot, pProductName, pFound);
}

/* ---- reading ---- */

static bool isVersionLine(const char *pLine)
{
    char caWord[OV_HISTORY_LINE];
    int iVersion = 0;

    return sscanf(pLine, "%255s %d", caWord, &iVersion) == 2 &&
           strcmp(caWord, s_caVersionWord) == 0 && iVersion == HISTORY_VERSION;
}

static void cutNewline(char *pLine)
{
    pLine[strcspn(pLine, "\n")] = '\0';
}

/* Reads the four header lines, leaving the source directory in pSource (4096 bytes). */
static bool readHeader(FILE *pFile, const char *pProductName, const char *pProductVersion,
                       char *pSource)
{
    char caLine[OV_HISTORY_LINE];

    if (!fgets(caLine, sizeof(caLine), pFile) || !isVersionLine(caLine))
        return false;
    if (!fgets(caLine, sizeof(caLine), pFile) || !strstr(caLine, pProductName))
        return false;
    if (!fgets(caLine, sizeof(caLine), pFile) ||
        !CompareProductVersions(pProductName, pProductVersion, caLine))
        return false;
    if (!fgets(pSource, OV_INST_PATH_SIZE, pFile))
        return false;
    cutNewline(pSource);
    return pSource[0] != '\0';
}

/* The package a line names, cut out of the line in place; null for any other line. */
static char *packageOf(char *pLine)
{
    char caFirst[OV_HISTORY_LINE];
    char caSecond[OV_HISTORY_LINE];

    if (sscanf(pLine, "%255s %255s", caFirst, caSecond) != 2 ||
        strcmp(caFirst, s_caPackageWord) != 0)
        return nullptr;
    char *pOpening = strchr(pLine, '"');
    char *pClosing = pOpening ? strchr(pOpening + 1, '"') : nullptr;
    if (!pClosing)
        return nullptr;
    *pClosing = '\0';
    return pOpening + 1;
}

static void markFromHistory(FILE *pFile, _OV_instCDinst *pRoot)
{
    char caLine[OV_HISTORY_LINE];

    while (fgets(caLine, sizeof(caLine), pFile)) {
        const char *pName = packageOf(caLine);
        if (pName)
            OV_instMarkPackageInstalled(pRoot, pName);
    }
}

static void markFromRun(const OV_RunFile *pRun, _OV_instCDinst *pRoot)
{
    static const OV_Pending s_aPending[] = {OV_PENDING_NONE, OV_PENDING_INSTALL,
                                            OV_PENDING_REMOVAL}; /* by OV_RunState */

    for (const OV_RunPackage &package : pRun->packages) {
        if (package.state != OV_RUN_INSTALLING)
            OV_instMarkPackageInstalled(pRoot, package.name.c_str());
        OV_instMarkPackagePending(pRoot, package.name.c_str(), s_aPending[package.state]);
    }
}

static bool isInstalled(const _OV_InstSuiteList *pSuite)
{
    for (_OV_InstPackageNode *pNode = pSuite->pPackHead; pNode; pNode = pNode->pNext)
        if (!pNode->pPackage->iInstalled)
            return false;
    return true; /* also without packages */
}

static void markSuites(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig,
                       _OV_InstSuiteList *pSuites)
{
    for (; pSuites; pSuites = pSuites->pNext) {
        if (!isInstalled(pSuites))
            continue;
        pSuites->iState = 1;
        (void)OV_instFindAndMarkConfig(pRoot, pConfig, pSuites, 1); /* need not be offered */
    }
}

/* A line of a header, cut. False at the end of the file. */
static bool readText(FILE *pFile, int iLimit, std::string *pText)
{
    char caLine[OV_INST_PATH_SIZE];

    if (!fgets(caLine, iLimit, pFile))
        return false;
    cutNewline(caLine);
    *pText = caLine;
    return true;
}

bool OV_instReadHistory(const char *pDest, OV_RunFile *pHistory)
{
    OwnedText path(historyPath(pDest));
    OwnedFile file(path ? OV_instGuardedFopenBelieved(nullptr, path.get(), "r") : nullptr);
    char caLine[OV_HISTORY_LINE];
    std::set<std::string> known;

    *pHistory = OV_RunFile();
    if (!file || !fgets(caLine, sizeof(caLine), file.get()) || !isVersionLine(caLine))
        return false;
    if (!readText(file.get(), OV_HISTORY_LINE, &pHistory->product) ||
        !readText(file.get(), OV_HISTORY_LINE, &pHistory->version) ||
        !readText(file.get(), OV_INST_PATH_SIZE, &pHistory->source) || pHistory->source.empty())
        return false;
    while (fgets(caLine, sizeof(caLine), file.get())) {
        const char *pName = packageOf(caLine);
        if (pName && known.insert(pName).second)
            pHistory->packages.push_back({pName, OV_RUN_INSTALLED});
    }
    return true;
}

/* What an earlier look at another destination found. */
static void clearPending(_OV_instCDinst *pRoot)
{
    for (auto *pNode = pRoot->pPackageHead; pNode; pNode = pNode->pNext)
        pNode->pPackage->iPending = OV_PENDING_NONE;
    for (auto *pConfig = pRoot->pConfigHead; pConfig; pConfig = pConfig->pNext)
        pConfig->iPending = OV_PENDING_NONE;
}

static void clearConfig(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig)
{
    if (!pConfig)
        return;
    if (pConfig->iType == OV_CONFIG_CUSDLG)
        OV_instResetAllConfig(pRoot, pConfig, 0);
    pConfig->iSelected = 0;
    pConfig->iInstalled = 0;
}

int OV_UpdateSuiteHistory(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig,
                          _OV_InstSuiteList *pSuites, const char *pDest, const char *pProductName,
                          const char *pProductVersion)
{
    char caSource[OV_INST_PATH_SIZE];
    Found found = {};

    if (!pSuites || !pDest || !pDest[0])
        return 0;
    if (!find(pRoot, pDest, pProductName, &found))
        return 0;
    if (found.bUnfinished) {
        (void)CompareProductVersions(pProductName, pProductVersion, found.run.version.c_str());
        (void)OV_instSetSourceDirectory(
            found.run.source.c_str()); /* ends the process if it fails */
    } else if (!readHeader(found.history.get(), pProductName, pProductVersion, caSource)) {
        puts("History file empty, corrupt, or out-of-date");
        return 0;
    } else {
        (void)OV_instSetSourceDirectory(caSource); /* likewise */
    }
    clearConfig(pRoot, pConfig);
    clearPending(pRoot);
    if (found.bUnfinished)
        markFromRun(&found.run, pRoot);
    else
        markFromHistory(found.history.get(), pRoot);
    markSuites(pRoot, pConfig, pSuites);
    OV_instMarkPending(pRoot, pConfig);
    return 1;
}

bool OV_instFindInstallation(int iConfig)
{
    const char *pDest = OV_instGetDestinationDirectory();
    OwnedText dest(pDest ? strdup(pDest) : nullptr); /* the check may move the destination */

    return OV_UpdateSuiteHistory(CDInstPtr, OV_instGetConfigFromId(CDInstPtr, iConfig),
                                 CDInstPtr->pSuiteHead, dest.get(), OV_instGetProductName(),
                                 OV_instGetProductVersion()) != 0;
}

static void showVersions(const char *pFormat, const char *pProductName, const char *pRecorded)
{
    OwnedText recorded(strdup(pRecorded));

    if (recorded && strlen(pRecorded) > 1)
        cutNewline(recorded.get());
    OwnedText message(OV_instStrPrint(pFormat, pProductName, recorded ? recorded.get() : ""));
    (void)OV_instAsk(message.get(), "OK");
}

int CompareProductVersions(const char *pProductName, const char *pProductVersion,
                           const char *pRecorded)
{
    long lProduct = strtol(pProductVersion, nullptr, 10);
    long lRecorded = strtol(pRecorded, nullptr, 10);

    if (lProduct > lRecorded)
        showVersions("Setup has detected an older version of %s (%s)\n"
                     "Before installing, you should select Remove All.",
                     pProductName, pRecorded);
    else if (lProduct < lRecorded)
        showVersions("Setup has detected a newer version of %s (%s)\n"
                     "It is highly recommended that you not continue.",
                     pProductName, pRecorded);
    return 1;
}
