#include "medium/planSteps.h"

#include <cerrno>
#include <cinttypes>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <sys/stat.h>

#include "engine/driver.h"
#include "engine/fileOps.h"
#include "engine/installer.h"
#include "engine/registry.h"
#include "engine/setupState.h"
#include "engine/sizes.h"
#include "medium/examine.h"
#include "medium/expectation.h"
#include "medium/members.h"
#include "medium/output.h"
#include "medium/plannedTree.h"
#include "ut/OVinstFileUtils.h"
#include "ut/guard.h"
#include "ut/owned.h"

/* What the steps are gathered with. */
struct Planning {
    OV_Plan *pPlan;
    OV_PlannedTree tree;
    std::map<dev_t, OV_PlanRoom> rooms;
    std::string lastDirectory; /* whose file system is known */
    dev_t lastDevice = 0;
    bool bRegistered = false; /* modules are registered all at once */
};

/* ---- notes ---- */

static void step(Planning *pPlanning, const char *pAction, int64_t lBytes, const std::string &path,
                 const std::string &detail = "")
{
    pPlanning->pPlan->steps.push_back({pAction, lBytes, path, detail});
}

static void block(Planning *pPlanning, const std::string &path, const std::string &reason)
{
    step(pPlanning, "blocked", 0, path, reason);
}

static void become(Planning *pPlanning, const std::string &path, OV_PlannedKind kind,
                   int64_t lSize = 0, const std::string &source = "")
{
    pPlanning->tree.changed[path] = {kind, lSize, false, source, ""};
}

/* The directory at the top of the file system that the path is on: where it is mounted. */
static std::string topOf(std::string path, dev_t device)
{
    struct stat info = {};

    for (;;) {
        path = OV_mediumCleanPath(path);
        const std::string above = path.substr(0, std::max<size_t>(path.rfind('/'), 1));
        if (path == "/" || stat(above.c_str(), &info) < 0 || info.st_dev != device)
            return path;
        path = above;
    }
}

/* Charges the file system that the path is or will be on. */
static void charge(Planning *pPlanning, const std::string &path, int64_t lBytes)
{
    const std::string directory = path.substr(0, path.rfind('/') + 1);

    if (directory != pPlanning->lastDirectory) {
        OwnedText there(OV_instGetPartitionDirectory(directory.c_str()));
        struct stat info = {};
        if (!there || stat(there.get(), &info) < 0)
            return;
        pPlanning->lastDirectory = directory;
        pPlanning->lastDevice = info.st_dev;
        if (!pPlanning->rooms.count(info.st_dev))
            pPlanning->rooms[info.st_dev] = {topOf(there.get(), info.st_dev), 0,
                                             OV_instGetAvailableSpace(there.get())};
    }
    pPlanning->rooms[pPlanning->lastDevice].lNeeded += lBytes;
}

/* ---- directories ---- */

/* What no directory can be made over, though nothing is found behind it: a link that leads nowhere,
 * or a file in the place of the root destination. Null when the path is free. What is above it is
 * known to be a directory. */
static const char *inTheWay(const Planning *pPlanning, const std::string &path)
{
    struct stat info;

    if (pPlanning->tree.changed.count(path) || lstat(path.c_str(), &info) < 0)
        return nullptr;
    return S_ISLNK(info.st_mode) ? "a link that leads to no directory" : "a file";
}

/* Plans the directory and those above it that are missing. False when one is in the way, which is
 * then blocked as the thing that needs it. */
static bool planDirectory(Planning *pPlanning, const std::string &path, const std::string &forWhat)
{
    for (size_t at = path.find('/', 1);; at = path.find('/', at + 1)) {
        const std::string prefix = path.substr(0, at);
        const OV_PlannedObject there = OV_mediumPlanned(&pPlanning->tree, prefix);

        if (there.kind == OV_PLANNED_NOTHING) {
            if (const char *pWhat = inTheWay(pPlanning, prefix)) {
                block(pPlanning, forWhat, prefix + " is " + pWhat);
                return false;
            }
            step(pPlanning, "mkdir", 0, prefix);
            become(pPlanning, prefix, OV_PLANNED_DIRECTORY);
        } else if (there.kind != OV_PLANNED_DIRECTORY) {
            block(pPlanning, forWhat,
                  prefix + " is " + (there.refusal.empty() ? "a file" : there.refusal));
            return false;
        }
        if (at == std::string::npos)
            return true;
    }
}

static bool planParent(Planning *pPlanning, const std::string &path)
{
    const size_t iSlash = path.rfind('/');

    return iSlash == 0 || planDirectory(pPlanning, path.substr(0, iSlash), path);
}

/* ---- files ---- */

/* Whether a file of the medium holds what is planned to be at the path. */
static bool isSame(const OV_PlannedObject &there, const std::string &path, int iSource,
                   int64_t lSize)
{
    if (there.kind != OV_PLANNED_FILE || there.lSize != lSize ||
        (!there.bOnDisk && there.source.empty()))
        return false;
    OwnedFd file(there.bOnDisk ? OV_instGuardedOpen(path.c_str(), O_RDONLY, 0)
                               : open(there.source.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    return file.iFd >= 0 && OV_mediumSameContent(file.iFd, iSource, lSize) == 1;
}

static void planFile(Planning *pPlanning, const std::string &path, const OV_PlannedObject &there,
                     bool bSame, int64_t lSize, const std::string &source)
{
    const bool bNew = there.kind == OV_PLANNED_NOTHING;

    step(pPlanning, bSame ? "same" : bNew ? "create" : "replace", lSize, path);
    charge(pPlanning, path, lSize - there.lSize);
    if (!bSame)
        become(pPlanning, path, OV_PLANNED_FILE, lSize, source);
}

static void planCopy(Planning *pPlanning, const std::string &path, const char *pSource)
{
    OwnedText source(OV_instBuildPath(OV_instGetKnownSourceDirectory(), pSource, nullptr));
    OwnedFd from(source ? open(source.get(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY) : -1);
    struct stat info = {};

    if (from.iFd < 0 || fstat(from.iFd, &info) < 0)
        return block(pPlanning, path, std::string(pSource) + ": " + strerror(errno));
    if (S_ISDIR(info.st_mode))
        return block(pPlanning, path, std::string(pSource) + " is a directory");
    if (!planParent(pPlanning, path))
        return;
    const OV_PlannedObject there = OV_mediumPlanned(&pPlanning->tree, path);
    if (there.kind == OV_PLANNED_DIRECTORY)
        return block(pPlanning, path, "a directory is there");
    if (!there.refusal.empty())
        return block(pPlanning, path, "it is " + there.refusal);
    planFile(pPlanning, path, there, isSame(there, path, from.iFd, info.st_size), info.st_size,
             source.get());
}

/* ---- archives ---- */

/* Whether the file on the disk holds what the archive does; the member is read to its end. */
static bool isSameMember(OV_MemberWalk *pWalk, const std::string &path, int64_t lSize)
{
    OwnedFd file(OV_instGuardedOpen(path.c_str(), O_RDONLY | O_NOFOLLOW, 0));
    OV_MemberPiece piece = {};
    int64_t lAt = 0;
    std::string there;

    const auto holds = [&](const void *pBytes, size_t iCount, int64_t lOffset) {
        there.resize(iCount);
        return pread(file.iFd, there.data(), iCount, lOffset) == static_cast<ssize_t>(iCount) &&
               memcmp(there.data(), pBytes, iCount) == 0;
    };
    static const char s_caZeros[65536] = {};
    const auto holdsZeros =
        [&](int64_t lEnd) { /* a hole of the archive */
                            for (; lAt < lEnd; lAt += static_cast<int64_t>(sizeof(s_caZeros)))
                                if (!holds(s_caZeros,
                                           static_cast<size_t>(
                                               std::min<int64_t>(sizeof(s_caZeros), lEnd - lAt)),
                                           lAt))
                                    return false;
                            lAt = lEnd;
                            return true;
        };
    while (file.iFd >= 0 && OV_mediumNextPiece(pWalk, &piece) > 0) {
        if (!holdsZeros(piece.lOffset) || !holds(piece.pBytes, piece.iCount, piece.lOffset))
            return false;
        lAt = piece.lOffset + static_cast<int64_t>(piece.iCount);
    }
    return file.iFd >= 0 && holdsZeros(lSize);
}

static void planMember(Planning *pPlanning, OV_MemberWalk *pWalk, const OV_Member &member,
                       const std::string &base)
{
    const std::string path = OV_mediumCleanPath(base + "/" + member.name);
    const OV_PlannedObject there = OV_mediumPlannedItself(&pPlanning->tree, path);

    if (S_ISDIR(member.iType)) {
        (void)planDirectory(pPlanning, path, path);
        return;
    }
    if (!planParent(pPlanning, path))
        return;
    if (member.bHard || S_ISLNK(member.iType)) {
        step(pPlanning, "link", 0, path);
        become(pPlanning, path, member.bHard ? OV_PLANNED_FILE : OV_PLANNED_OTHER);
        return;
    }
    const bool bSame = S_ISREG(member.iType) && there.bOnDisk && there.kind == OV_PLANNED_FILE &&
                       there.lSize == member.lSize && isSameMember(pWalk, path, member.lSize);
    planFile(pPlanning, path, there, bSame, member.lSize, "");
}

static void planArchive(Planning *pPlanning, const _OV_InstOper *pOper, const std::string &base)
{
    const bool bCompressed = pOper->iType == OV_OPER_UNTARZ || pOper->iType == OV_OPER_UNTARZ2;
    const char *pArchive = pOper->body.tar.pArchive;
    OwnedText source(OV_instBuildPath(OV_instGetKnownSourceDirectory(), pArchive, nullptr));
    struct stat info = {};
    OV_Member member;
    int iNext;

    if (!source || stat(source.get(), &info) < 0)
        return block(pPlanning, base, std::string(pArchive) + ": " + strerror(errno));
    const OV_PlannedObject there = OV_mediumPlanned(&pPlanning->tree, base);
    if (there.kind != OV_PLANNED_DIRECTORY)
        return block(pPlanning, base,
                     "it is no directory that " + std::string(pArchive) + " could be unpacked in");
    OwnedMemberWalk walk = OV_mediumOpenArchive(source.get(), bCompressed);
    if (!walk)
        return block(pPlanning, base, std::string(pArchive) + " is no archive");
    while ((iNext = OV_mediumNextMember(walk.get(), &member)) > 0)
        planMember(pPlanning, walk.get(), member, base);
    if (iNext < 0)
        block(pPlanning, base, std::string(pArchive) + " cannot be read to its end");
}

/* ---- links ---- */

static void planLink(Planning *pPlanning, const _OV_InstLink *pLink, const std::string &directory)
{
    const auto below = [&](const char *pName) {
        return OV_mediumCleanPath(pName[0] == '/' ? pName : directory + "/" + pName);
    };
    const std::string path = below(pLink->pThird);
    const OV_PlannedObject there = OV_mediumPlanned(&pPlanning->tree, directory);

    if (there.kind != OV_PLANNED_DIRECTORY)
        return block(pPlanning, path,
                     directory + " is " + (there.refusal.empty() ? "no directory" : there.refusal));
    if (!planParent(pPlanning, path))
        return;
    if (OV_mediumPlannedItself(&pPlanning->tree, path).kind == OV_PLANNED_DIRECTORY)
        return block(pPlanning, path, "a directory is there");
    const OV_PlannedObject target = OV_mediumPlannedItself(&pPlanning->tree, below(pLink->pTarget));
    if (pLink->iHard && (target.kind == OV_PLANNED_NOTHING || target.kind == OV_PLANNED_DIRECTORY ||
                         !target.refusal.empty()))
        return block(pPlanning, path, std::string(pLink->pTarget) + " is not there");
    step(pPlanning, "link", 0, path);
    become(pPlanning, path, pLink->iHard ? target.kind : OV_PLANNED_OTHER, target.lSize);
}

/* ---- removing ---- */

static void planRemoval(Planning *pPlanning, const std::string &path)
{
    const OV_PlannedObject there = OV_mediumPlannedItself(&pPlanning->tree, path);

    if (there.kind == OV_PLANNED_NOTHING || IsSetupExe(path.c_str()) ||
        (there.kind == OV_PLANNED_DIRECTORY && !OV_mediumPlannedEmpty(&pPlanning->tree, path)))
        return;
    step(pPlanning, "remove", there.lSize, path);
    charge(pPlanning, path, -there.lSize);
    become(pPlanning, path, OV_PLANNED_NOTHING);
}

static void planOperRemoval(Planning *pPlanning, const _OV_InstOper *pOper,
                            const std::string &place)
{
    if (OV_mediumIsArchive(pOper)) {
        for (int32_t i = pOper->body.tar.iCount - 1; i >= 0; i--)
            planRemoval(pPlanning, OV_mediumCleanPath(place + "/" + pOper->body.tar.apMembers[i]));
    } else if (pOper->iType == OV_OPER_HARDLINK || pOper->iType == OV_OPER_SOFTLINK) {
        planRemoval(pPlanning, OV_mediumCleanPath(place + "/" + pOper->body.link.pThird));
    } else if (pOper->iType != OV_OPER_MKDIR) { /* directories are told of at the end */
        planRemoval(pPlanning, place);
    }
}

/* ---- the rehearsal ---- */

static void planRegistration(Planning *pPlanning, const OV_RunStep *pStep)
{
    const _OV_InstOper *pOper = pStep->pOper;

    if (pStep->ovPass != OV_CUSTOM_REGISTRY || !OV_instHasRegistryDisplay())
        return;
    if (pOper->iType == OV_OPER_REGDATA)
        step(pPlanning, "registry", 0, pOper->body.regData.pKeyName);
    else if (!pPlanning->bRegistered)
        step(pPlanning, "registry", 0, pOper->body.selfReg.pModule);
    pPlanning->bRegistered = pPlanning->bRegistered || pOper->iType == OV_OPER_SELFREG;
}

static void onStep(void *pContext, const OV_RunStep *pStep)
{
    auto *pPlanning = static_cast<Planning *>(pContext);
    _OV_InstOper *pOper = pStep->pOper;
    OwnedText named(OV_instPlaceOf(pOper, pStep->pDest));
    const std::string place = named ? OV_mediumCleanPath(named.get()) : "";

    if (pOper->iType == OV_OPER_FUNCTION)
        step(pPlanning, "call", 0, pOper->body.function.pFunction, pOper->body.function.pModule);
    else if (pOper->iType == OV_OPER_REGDATA || pOper->iType == OV_OPER_SELFREG)
        planRegistration(pPlanning, pStep);
    else if (!named)
        block(pPlanning, pStep->pDest, "an archive has no place to be unpacked in");
    else if (pStep->iMode != OV_INST_INSTALL_MODE)
        planOperRemoval(pPlanning, pOper, place);
    else if (OV_mediumIsArchive(pOper))
        planArchive(pPlanning, pOper, place);
    else if (pOper->iType == OV_OPER_MKDIR)
        (void)planDirectory(pPlanning, place, place);
    else if (pOper->iType == OV_OPER_COPY || pOper->iType == OV_OPER_COPYZ)
        planCopy(pPlanning, place, pOper->body.copy.pSource);
    else
        planLink(pPlanning, &pOper->body.link, place);
}

static void onRemoveDirectory(void *pContext, const char *pPath)
{
    auto *pPlanning = static_cast<Planning *>(pContext);
    const std::string path = OV_mediumCleanPath(pPath);

    if (OV_mediumPlannedItself(&pPlanning->tree, path).kind == OV_PLANNED_DIRECTORY)
        planRemoval(pPlanning, path);
}

void OV_mediumPlanRun(const OV_RunChoice *pChoice, OV_Plan *pPlan)
{
    Planning planning;
    const OV_Rehearsal rehearsal = {&planning, onStep, onRemoveDirectory};
    const std::string dest = OV_mediumCleanPath(OV_instGetDestinationDirectory());

    planning.pPlan = pPlan;
    if (!pChoice->bRemoveAll && !pChoice->bInstalled)
        (void)planDirectory(&planning, dest, dest); /* made before anything else */
    OV_instRehearseInstallation(CDInstPtr, pChoice->pConfig, &rehearsal);
    for (const auto &[device, room] : planning.rooms)
        pPlan->rooms.push_back({room.directory, std::max<int64_t>(room.lNeeded, 0), room.lFree});
}

bool OV_mediumIsBlocked(const OV_Plan *pPlan)
{
    for (const OV_PlanStep &each : pPlan->steps)
        if (strcmp(each.pAction, "blocked") == 0)
            return true;
    for (const OV_PlanRoom &room : pPlan->rooms)
        if (room.lFree >= 0 && room.lNeeded > room.lFree)
            return true;
    return false;
}

static void printStep(const OV_PlanStep *pStep)
{
    const std::string action = pStep->pAction;

    if (action == "blocked")
        OV_mediumPrint("blocked %s: %s", pStep->path.c_str(), pStep->detail.c_str());
    else if (action == "call")
        OV_mediumPrint("call %s %s", pStep->path.c_str(), pStep->detail.c_str());
    else if (action == "registry")
        OV_mediumPrint("registry %s", pStep->path.c_str());
    else
        OV_mediumPrint("%s %" PRId64 " %s", pStep->pAction, pStep->lBytes, pStep->path.c_str());
}

void OV_mediumPrintPlan(const OV_Plan *pPlan, bool bBlockedOnly)
{
    for (const OV_PlanStep &each : pPlan->steps)
        if (!bBlockedOnly || strcmp(each.pAction, "blocked") == 0)
            printStep(&each);
    for (const OV_PlanRoom &room : pPlan->rooms)
        if (!bBlockedOnly || room.lNeeded > room.lFree)
            OV_mediumPrint("%s: %" PRId64 " bytes needed, %" PRId64 " free", room.directory.c_str(),
                           room.lNeeded, room.lFree);
}
