#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

#include "engine/fileOps.h"
#include "engine/history.h"
#include "engine/runLock.h"
#include "engine/setupState.h"
#include "medium/commands.h"
#include "medium/comparison.h"
#include "medium/examine.h"
#include "medium/lastRun.h"
#include "medium/output.h"
#include "medium/restore.h"
#include "ut/OVinstFileUtils.h"
#include "ut/guard.h"

/* What is done with an object, and how that is said before and after. */
enum Action { CREATE, REPLACE, CORRECT, KEEP };

struct ActionRow {
    const char *pBefore;
    const char *pAfter;
};

static const ActionRow s_aActions[] = {
    {"create",  "created"  },
    {"replace", "replaced" },
    {"correct", "corrected"},
    {"keep",    "kept"     },
};

struct RepairWork {
    const OV_MediumTree *pTree;
    OV_Expectation *pObjects;
    std::set<std::string> chosen;                       /* what differs and was asked for */
    std::set<std::string> restored;                     /* other names of these have to follow */
    std::vector<std::pair<std::string, mode_t>> narrow; /* directories that get their modes last */
    bool bDry;
};

/* ---- what to do ---- */

/* Why an object has to stay as it is; null when it can be brought back. */
static const char *reasonToKeep(const std::string &path, const OV_Expected *pObject)
{
    OV_TreeObject found;

    if (pObject->iDifferences == OV_DIFF_MODE)
        return nullptr;
    (void)OV_mediumLook(path, &found); /* what cannot be looked at fails when it is restored */
    if (found.iError == ENOTDIR)
        return "a file is in the place of its directory";
    if (found.iError == ELOOP)
        return "its directory is a link that is not followed";
    if (S_ISDIR(pObject->iType))
        return pObject->iDifferences & OV_DIFF_TYPE ? "something else is in its place" : nullptr;
    if (found.object.iFd >= 0 && S_ISDIR(found.info.st_mode))
        return "a directory is in its place";
    return S_ISREG(pObject->iType) || S_ISLNK(pObject->iType)
               ? nullptr
               : "only unpacking its archive makes it";
}

static Action actionFor(const OV_Expected *pObject)
{
    if (pObject->iDifferences & OV_DIFF_MISSING)
        return CREATE;
    return pObject->iDifferences == OV_DIFF_MODE ? CORRECT : REPLACE;
}

static void tellAction(const RepairWork *pRepair, Action action, const std::string &path,
                       const char *pReason)
{
    const ActionRow *pRow = &s_aActions[action];

    OV_mediumPrint("%s %s%s%s", pRepair->bDry ? pRow->pBefore : pRow->pAfter,
                   OV_mediumShownPath(pRepair->pTree, path).c_str(), pReason ? ": " : "",
                   pReason ? pReason : "");
}

static void tellResult(RepairWork *pRepair, const std::string &path, int iResult)
{
    const OV_Expected *pObject = &pRepair->pObjects->at(path);

    if (iResult < 0)
        return tellAction(pRepair, KEEP, path, strerror(errno));
    tellAction(pRepair, actionFor(pObject), path, nullptr);
    pRepair->restored.insert(path);
}

/* ---- what was asked for ---- */

/* What is missing above a chosen object is brought back with it. */
static void chooseAbove(RepairWork *pRepair, const std::string &path)
{
    for (size_t i = path.rfind('/'); i != path.npos && i > 0; i = path.rfind('/', i - 1)) {
        const auto above = pRepair->pObjects->find(path.substr(0, i));
        if (above != pRepair->pObjects->end() && above->second.iDifferences)
            pRepair->chosen.insert(above->first);
    }
}

static void choose(RepairWork *pRepair, const std::string &path)
{
    if (!pRepair->pObjects->at(path).iDifferences)
        return;
    pRepair->chosen.insert(path);
    chooseAbove(pRepair, path);
}

/* False for a path that no package has (told). */
static bool chooseAll(const OV_MediumOptions *pOptions, RepairWork *pRepair)
{
    bool bKnown = true;

    for (const std::string &name : pOptions->paths) {
        const std::string path =
            OV_mediumCleanPath(name[0] == '/' ? name : pRepair->pTree->dest + name);
        if (pRepair->pObjects->count(path)) {
            choose(pRepair, path);
            continue;
        }
        OV_mediumTell("%s is of no package", name.c_str());
        bKnown = false;
    }
    if (pOptions->paths.empty())
        for (const auto &[path, object] : *pRepair->pObjects)
            choose(pRepair, path);
    return bKnown;
}

/* Leaves only what can be brought back, and tells of the rest. */
static void keepWhatStays(RepairWork *pRepair)
{
    for (auto at = pRepair->chosen.begin(); at != pRepair->chosen.end();) {
        const char *pReason = reasonToKeep(*at, &pRepair->pObjects->at(*at));
        if (pReason)
            tellAction(pRepair, KEEP, *at, pReason);
        at = pReason ? pRepair->chosen.erase(at) : std::next(at);
    }
}

/* ---- doing it ---- */

static void sweep(const RepairWork *pRepair)
{
    std::set<std::string> directories;

    for (const auto &[path, object] : *pRepair->pObjects)
        directories.insert(path.substr(0, std::max<size_t>(path.rfind('/'), 1)));
    for (const std::string &directory : directories)
        OV_mediumSweep(directory);
}

/* The owner can write into it until everything is there. */
static int makeDirectory(RepairWork *pRepair, const std::string &path, const OV_Expected *pObject)
{
    if (OV_instMkdir(path.c_str(), static_cast<int>(pObject->iMode | S_IRWXU), nullptr) < 0)
        return -1;
    if ((pObject->iMode & S_IRWXU) != S_IRWXU)
        pRepair->narrow.push_back({path, pObject->iMode});
    return 0;
}

/* Whether the object waits for its archive to be read. */
static bool isInArchive(const OV_Expected *pObject)
{
    return pObject->kind == OV_EXPECT_MEMBER && !S_ISDIR(pObject->iType) &&
           pObject->iDifferences != OV_DIFF_MODE;
}

static void restoreDirectories(RepairWork *pRepair)
{
    for (const std::string &path : pRepair->chosen) {
        const OV_Expected *pObject = &pRepair->pObjects->at(path);
        if (S_ISDIR(pObject->iType))
            tellResult(pRepair, path, makeDirectory(pRepair, path, pObject));
    }
}

static void restorePlain(RepairWork *pRepair)
{
    for (const std::string &path : pRepair->chosen) {
        const OV_Expected *pObject = &pRepair->pObjects->at(path);
        if (S_ISDIR(pObject->iType) || isInArchive(pObject) || pObject->kind == OV_EXPECT_HARDLINK)
            continue;
        if (pObject->iDifferences == OV_DIFF_MODE)
            tellResult(pRepair, path, OV_mediumRestoreMode(path, pObject));
        else if (pObject->kind == OV_EXPECT_SOFTLINK)
            tellResult(pRepair, path, OV_mediumRestoreSoftLink(path, pObject->source));
        else
            tellResult(pRepair, path, OV_mediumRestoreFile(path, pObject));
    }
}

static void restoreFrom(RepairWork *pRepair, const _OV_InstOper *pOper)
{
    (void)OV_mediumVisitMembers(/* the comparison that follows tells what is not there */
                                pRepair->pTree, pOper,
                                [&](OV_MemberWalk *pWalk, const OV_Member &member,
                                    const std::string &base, size_t i) {
                                    const std::string path =
                                        OV_mediumCleanPath(base + "/" + member.name);
                                    const auto found = pRepair->pObjects->find(path);
                                    if (found == pRepair->pObjects->end() ||
                                        !pRepair->chosen.count(path))
                                        return true;
                                    const OV_Expected *pObject = &found->second;
                                    if (!isInArchive(pObject) || pObject->pOper != pOper ||
                                        pObject->iMember != i)
                                        return true;
                                    tellResult(pRepair, path,
                                               S_ISLNK(pObject->iType)
                                                   ? OV_mediumRestoreSoftLink(path, pObject->source)
                                                   : OV_mediumRestoreMember(path, pObject, pWalk));
                                    return true;
                                });
}

static void restoreArchives(RepairWork *pRepair)
{
    std::vector<const _OV_InstOper *> archives;

    for (const std::string &path : pRepair->chosen) {
        const OV_Expected *pObject = &pRepair->pObjects->at(path);
        if (isInArchive(pObject) &&
            std::find(archives.begin(), archives.end(), pObject->pOper) == archives.end())
            archives.push_back(pObject->pOper);
    }
    for (const _OV_InstOper *pOper : archives)
        restoreFrom(pRepair, pOper);
}

/* A file that was replaced has lost the other names that it had, so these are looked at again. */
static void restoreHardLinks(RepairWork *pRepair)
{
    for (auto &[path, object] : *pRepair->pObjects) {
        if (object.kind != OV_EXPECT_HARDLINK ||
            (!pRepair->chosen.count(path) &&
             (object.iDifferences || !pRepair->restored.count(object.source))))
            continue;
        if (OV_mediumCompareOne(path, &object) && object.iDifferences &&
            !reasonToKeep(path, &object))
            tellResult(pRepair, path, OV_mediumRestoreHardLink(path, object.source));
    }
}

static void narrowDirectories(RepairWork *pRepair)
{
    for (auto at = pRepair->narrow.rbegin(); at != pRepair->narrow.rend(); ++at)
        (void)OV_instGuardedChmod(at->first.c_str(), at->second); /* modes of them are not judged */
}

/* Everything is on the disk before anything ceases to be pending. */
static void synchronise(const OV_MediumTree *pTree)
{
    OwnedFd directory(OV_instGuardedOpen(pTree->dest.c_str(), O_RDONLY | O_DIRECTORY, 0));

    if (directory.iFd >= 0)
        (void)syncfs(directory.iFd); /* each file was synchronised by itself */
}

/* ---- what is pending ---- */

/* No module is called here and no registry written, so a package that needs them is left to
 * setup. */
static bool needsSetup(const _OV_InstPackage *pPackage)
{
    for (const _OV_InstOper *pOper = pPackage->pOperHead; pOper; pOper = pOper->pNext)
        if (pOper->iType == OV_OPER_FUNCTION || pOper->iType == OV_OPER_REGDATA ||
            pOper->iType == OV_OPER_SELFREG)
            return true;
    return false;
}

static bool isWhole(const OV_Comparison *pComparison, const std::string &name)
{
    const _OV_InstPackage *pPackage = OV_instGetPackageFromName(CDInstPtr, name.c_str());

    if (!pPackage || !pComparison->bAll)
        return false;
    if (needsSetup(pPackage)) {
        OV_mediumTell("'%s' calls modules or the registry: let setup complete it",
                      OV_mediumShown(name).c_str());
        return false;
    }
    for (const auto &[path, object] : pComparison->objects)
        if (object.pPackage == pPackage && object.iDifferences)
            return false;
    return true;
}

/* The run that ended early may have lost the tree's copy of the description as well, which belongs
 * to no package. */
static bool restoreDescription(const OV_MediumTree *pTree)
{
    OwnedText name(CDInstPtr->pCdinstPath ? OV_instBasename(CDInstPtr->pCdinstPath) : nullptr);
    struct stat info = {};

    if (!name)
        return false;
    const std::string source = pTree->medium + name.get();
    const std::string path = OV_mediumCleanPath(pTree->dest + name.get());
    if (stat(source.c_str(), &info) < 0)
        return false;
    OV_Expected copy = {OV_EXPECT_FILE, nullptr, nullptr, S_IFREG, info.st_mode & 07777,
                        07777,          false,   0,       source,  0};
    return OV_mediumCompareOne(path, &copy) &&
           (!copy.iDifferences || OV_mediumRestoreFile(path, &copy) == 0);
}

/* What is whole by now is installed. The history names it before the run file ceases to. */
static bool settlePending(OV_MediumTree *pTree, OV_Comparison *pComparison)
{
    bool bChanged = false;

    for (OV_RunPackage &package : pTree->state.packages) {
        if (package.state == OV_RUN_INSTALLED || !isWhole(pComparison, package.name))
            continue;
        package.state = OV_RUN_INSTALLED;
        bChanged = true;
    }
    pComparison->pending = OV_mediumPending(pTree);
    if (!bChanged)
        return true;
    if (restoreDescription(pTree) && OV_instWriteHistory(pTree->dest.c_str(), &pTree->state) == 0 &&
        OV_instSettleRunFile(pTree->dest.c_str(), &pTree->state) == 0)
        return true;
    OV_mediumTell("what is pending could not be written: %s", strerror(errno));
    return false;
}

/* ---- the command ---- */

static bool takeTree(const OV_MediumOptions *pOptions, OV_MediumTree *pTree)
{
    if (!OV_mediumOpenTree(pOptions, pTree))
        return false;
    if (pOptions->bDryRun ? OV_instIsRunLocked(pTree->dest.c_str())
                          : !OV_instLockRun(pTree->dest.c_str(), false)) {
        OV_mediumTell("a run of setup is working in %s", pTree->dest.c_str());
        return false;
    }
    return OV_mediumReadTree(pTree); /* as it is under the lock */
}

static int tryRepair(RepairWork *pRepair, const OV_Comparison *pComparison)
{
    const bool bFound = !pRepair->chosen.empty();

    keepWhatStays(pRepair);
    for (const std::string &path : pRepair->chosen)
        tellAction(pRepair, actionFor(&pRepair->pObjects->at(path)), path, nullptr);
    for (const std::string &name : pComparison->pending)
        OV_mediumPrint("pending %s", name.c_str());
    if (!pComparison->bAll)
        return OV_MEDIUM_FAILED;
    return bFound || !pComparison->pending.empty() ? OV_MEDIUM_FINDINGS : OV_MEDIUM_CLEAN;
}

static void carryOut(RepairWork *pRepair)
{
    sweep(pRepair);
    keepWhatStays(pRepair);
    restoreDirectories(pRepair);
    restorePlain(pRepair);
    restoreArchives(pRepair);
    restoreHardLinks(pRepair);
    narrowDirectories(pRepair);
    synchronise(pRepair->pTree);
}

static int verifyAgain(OV_MediumTree *pTree)
{
    OV_Comparison after;
    const bool bWasUnfinished = pTree->bUnfinished;

    OV_mediumCompare(pTree, &after);
    const bool bSettled = settlePending(pTree, &after);
    OV_mediumPrintComparison(pTree, &after);
    const int iStatus = bSettled ? OV_mediumComparisonStatus(&after) : OV_MEDIUM_FAILED;
    if (iStatus == OV_MEDIUM_CLEAN && bWasUnfinished && OV_mediumReadTree(pTree) &&
        !pTree->bUnfinished)
        OV_mediumLogRepair(pTree);
    return iStatus;
}

static int repair(const OV_MediumOptions *pOptions, OV_MediumTree *pTree)
{
    OV_Comparison before;

    OV_mediumCompare(pTree, &before);
    RepairWork work = {pTree, &before.objects, {}, {}, {}, pOptions->bDryRun};
    if (!chooseAll(pOptions, &work))
        return OV_MEDIUM_FAILED;
    if (pOptions->bDryRun)
        return tryRepair(&work, &before);
    carryOut(&work);
    return verifyAgain(pTree);
}

int OV_mediumRepair(const OV_MediumOptions *pOptions)
{
    OV_MediumTree tree;

    if (!takeTree(pOptions, &tree))
        return OV_MEDIUM_FAILED;
    const int iStatus = repair(pOptions, &tree);
    OV_instUnlockRun();
    OV_mediumCloseTree();
    return iStatus;
}
