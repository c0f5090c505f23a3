#include "engine/runFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <iterator>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

#include "description/configParts.h"
#include "engine/configWalk.h"
#include "engine/driver.h"
#include "engine/fileOps.h"
#include "engine/runReport.h"
#include "engine/setupState.h"
#include "ut/guard.h"
#include "ut/guardedFile.h"
#include "ut/owned.h"
#include "ut/replaceFile.h"
#include "ut/strprint.h"

static const char s_caVersionWord[] = "RunFileVersion";

enum { RUN_FILE_VERSION = 1, RUN_FILE_MODE = 0644 };

/* In the order of OV_RunState. */
static const char *const s_apStates[] = {"Installed", "Installing", "Removing", nullptr};

/* A package of the run that is under way. */
struct Entry {
    const _OV_InstPackage *pPackage;
    OV_RunState state;
    bool bKept; /* a step of it failed */
};

static struct {
    bool bWritten; /* the file is there */
    std::string dest;
    OV_RunFile header; /* its packages stay here */
    std::vector<Entry> packages;
} s_run;

static std::string fileName(const char *pEnding)
{
    std::string name = OV_instGetHistoryFile();

    return name.substr(0, name.rfind('.')) + pEnding;
}

char *OV_instRunFilePath(const char *pDest)
{
    return OV_instStrPrint("%s/%s/%s", pDest, OV_SETUP_FOLDER, fileName(".run").c_str());
}

/* ---- writing ---- */

static std::string linesOf(const OV_RunFile *pRun)
{
    std::string text = std::string(s_caVersionWord) + " " + std::to_string(RUN_FILE_VERSION) +
                       "\n" + pRun->product + "\n" + pRun->version + "\n" + pRun->source + "\n";

    for (const OV_RunPackage &package : pRun->packages)
        text += "Package \"" + package.name + "\" " + s_apStates[package.state] + "\n";
    return text;
}

/* A rename is on the disk when its directory is. */
static void synchroniseFolder(const char *pFolder)
{
    OwnedFd folder(OV_instGuardedOpen(pFolder, O_RDONLY | O_DIRECTORY, 0));

    if (folder.iFd >= 0)
        (void)fsync(folder.iFd); /* the file itself is on the disk already */
}

/* Only root can give files away; anybody else keeps what he makes. */
static void giveToOwnerOf(int iFolder, int iFile)
{
    struct stat folder;

    if (geteuid() == 0 && fstat(iFolder, &folder) == 0)
        (void)!fchown(iFile, folder.st_uid, folder.st_gid); /* it stays ours */
}

int OV_instWriteSetupFile(const char *pDest, const std::string &name, const std::string &text,
                          bool bKeepOwner)
{
    const std::string temporary = name + ".new";
    OwnedText folder(OV_instStrPrint("%s/%s", pDest, OV_SETUP_FOLDER));
    OV_Replacement replacement;

    if (!folder || OV_instMkdir(folder.get(), OV_DIRECTORY_MODE, nullptr) < 0)
        return -1;
    if (OV_instBeginNewFile(&replacement, OV_instGuardedOpenDir(folder.get()), temporary.c_str(),
                            name.c_str(), RUN_FILE_MODE) < 0)
        return -1;
    if (bKeepOwner)
        giveToOwnerOf(replacement.iDirectory, fileno(replacement.pStream));
    (void)fwrite(text.data(), 1, text.size(), replacement.pStream); /* the end tells */
    if (OV_instEndReplacement(&replacement, true) < 0)
        return -1;
    synchroniseFolder(folder.get());
    return 0;
}

static int writeRunFile(const char *pDest, const OV_RunFile *pRun, bool bKeepOwner)
{
    return OV_instWriteSetupFile(pDest, fileName(".run"), linesOf(pRun), bKeepOwner);
}

/* What the run is about to do with a package that it meets in this suite. */
static OV_RunState stateIn(const _OV_InstConfigList *pConfig, const _OV_InstSuiteList *pSuite,
                           const _OV_InstPackage *pPackage)
{
    if (OV_instIsHandedOver(pConfig, pSuite, OV_INST_INSTALL_MODE) &&
        !OV_instIsLeftAlone(pPackage, OV_INST_INSTALL_MODE))
        return OV_RUN_INSTALLING;
    if (OV_instIsHandedOver(pConfig, pSuite, OV_INST_DELETE_MODE) &&
        !OV_instIsLeftAlone(pPackage, OV_INST_DELETE_MODE))
        return OV_RUN_REMOVING;
    return OV_RUN_INSTALLED;
}

/* Lists the packages that are or are going to be there, in the description's order. */
static void plan(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig)
{
    std::set<const _OV_InstPackage *> aChanged[OV_RUN_REMOVING + 1];
    std::set<std::string> known;
    OwnedWalk walk(OV_instStartWalk(pRoot, pConfig));

    while (OV_ConfigVisit *pVisit = OV_instNextEntry(walk.get())) {
        const _OV_InstSuiteList *pSuite = OV_instGetConfigSuite(pVisit->pConfig);
        for (auto *pNode = pSuite ? pSuite->pPackHead : nullptr; pNode; pNode = pNode->pNext)
            aChanged[stateIn(pVisit->pConfig, pSuite, pNode->pPackage)].insert(pNode->pPackage);
    }
    s_run.packages.clear();
    for (auto *pNode = pRoot->pPackageHead; pNode; pNode = pNode->pNext) {
        const _OV_InstPackage *pPackage = pNode->pPackage;
        OV_RunState state = aChanged[OV_RUN_INSTALLING].count(pPackage) ? OV_RUN_INSTALLING
                            : aChanged[OV_RUN_REMOVING].count(pPackage) ? OV_RUN_REMOVING
                                                                        : OV_RUN_INSTALLED;
        if ((state != OV_RUN_INSTALLED || pPackage->iInstalled) &&
            known.insert(pPackage->pName).second)
            s_run.packages.push_back({pPackage, state, false});
    }
}

int OV_instBeginRunFile(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig, const char *pDest)
{
    s_run.dest = pDest;
    s_run.header = {OV_instGetProductName(),
                    OV_instGetProductVersion(),
                    OV_instGetSourceDirectory(),
                    {},
                    false};
    plan(pRoot, pConfig);
    OV_RunFile file = s_run.header;
    for (const Entry &entry : s_run.packages)
        file.packages.push_back({entry.pPackage->pName, entry.state});
    s_run.bWritten = writeRunFile(pDest, &file, false) == 0;
    return s_run.bWritten ? 0 : -1;
}

void OV_instKeepPending(const _OV_InstPackage *pPackage)
{
    for (Entry &entry : s_run.packages)
        if (strcmp(entry.pPackage->pName, pPackage->pName) == 0)
            entry.bKept = true;
}

static bool hasOperation(const _OV_InstPackage *pPackage, OV_InstOperType kind)
{
    for (const _OV_InstOper *pOper = pPackage->pOperHead; pOper; pOper = pOper->pNext)
        if (pOper->iType == kind)
            return true;
    return false;
}

void OV_instKeepPendingWith(OV_InstOperType kind)
{
    for (Entry &entry : s_run.packages)
        if (entry.state == OV_RUN_INSTALLING && hasOperation(entry.pPackage, kind))
            entry.bKept = true;
}

/* What is there after the run: a package that was removed without a failure is not. */
static OV_RunFile outcome()
{
    OV_RunFile file = s_run.header;

    for (const Entry &entry : s_run.packages)
        if (entry.bKept)
            file.packages.push_back({entry.pPackage->pName, entry.state});
        else if (entry.state != OV_RUN_REMOVING)
            file.packages.push_back({entry.pPackage->pName, OV_RUN_INSTALLED});
    return file;
}

int OV_instEndRunFile()
{
    if (OV_instFailedSteps()) {
        const OV_RunFile file = outcome();
        return writeRunFile(s_run.dest.c_str(), &file, false);
    }
    OV_instRemoveRunFile(s_run.dest.c_str());
    return 0;
}

int OV_instSettleRunFile(const char *pDest, const OV_RunFile *pRun)
{
    for (const OV_RunPackage &package : pRun->packages)
        if (package.state != OV_RUN_INSTALLED)
            return writeRunFile(pDest, pRun, true);
    OV_instRemoveRunFile(pDest);
    return 0;
}

void OV_instRemoveRunFile(const char *pDest)
{
    OwnedText path(OV_instRunFilePath(pDest));

    if (path)
        (void)OV_instGuardedRemove(path.get()); /* there may be none */
}

/* ---- reading ---- */

/* The next line, without its end. False behind the last. */
static bool readLine(FILE *pFile, std::string *pLine)
{
    char *pBuffer = nullptr;
    size_t iSize = 0;
    ssize_t iLength = getline(&pBuffer, &iSize, pFile);
    OwnedText buffer(pBuffer);

    if (iLength <= 0)
        return false;
    pLine->assign(pBuffer, static_cast<size_t>(iLength));
    if (pLine->back() == '\n')
        pLine->pop_back();
    return true;
}

/* A name may hold quotes, a state does not. */
static bool readPackage(const std::string &line, OV_RunPackage *pPackage)
{
    static const char s_caStart[] = "Package \"";
    const size_t iStart = strlen(s_caStart);
    const size_t iEnd = line.rfind("\" ");

    if (line.compare(0, iStart, s_caStart) != 0 || iEnd == line.npos || iEnd < iStart)
        return false;
    for (int i = 0; s_apStates[i]; i++)
        if (line.substr(iEnd + 2) == s_apStates[i]) {
            *pPackage = {line.substr(iStart, iEnd - iStart), static_cast<OV_RunState>(i)};
            return true;
        }
    return false;
}

static bool readLines(FILE *pFile, OV_RunFile *pRun)
{
    std::string line;
    OV_RunPackage package;

    if (!readLine(pFile, &line) ||
        line != std::string(s_caVersionWord) + " " + std::to_string(RUN_FILE_VERSION))
        return false;
    if (!readLine(pFile, &pRun->product) || !readLine(pFile, &pRun->version) ||
        !readLine(pFile, &pRun->source) || pRun->source.empty())
        return false;
    while (readLine(pFile, &line))
        if (readPackage(line, &package))
            pRun->packages.push_back(package);
    return true;
}

bool OV_instIsTrouble(int iError)
{
    static const int s_aTroubles[] = {EIO, EINTR, EAGAIN, ENOMEM, EMFILE, ENFILE, ENOSPC, ESTALE};

    return std::find(std::begin(s_aTroubles), std::end(s_aTroubles), iError) !=
           std::end(s_aTroubles);
}

bool OV_instReadRunFile(const char *pDest, OV_RunFile *pRun, const char *pRoot)
{
    OwnedText path(OV_instRunFilePath(pDest));
    OwnedFile file(path ? OV_instGuardedFopenBelieved(pRoot, path.get(), "r") : nullptr);

    *pRun = OV_RunFile();
    if (!file) {
        pRun->bUnreadable = OV_instIsTrouble(errno);
        return false;
    }
    const bool bSound = readLines(file.get(), pRun);
    pRun->bUnreadable = ferror(file.get()) && OV_instIsTrouble(errno);
    return bSound && !pRun->bUnreadable;
}
