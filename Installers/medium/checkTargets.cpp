/* The paths of the installed tree: what leads out of it, what two packages share, what a removal
 * leaves, and what links lead to. */
#include <algorithm>
#include <climits>
#include <cstring>
#include <unordered_map>

#include "engine/driver.h"
#include "engine/setupState.h"
#include "medium/checkParts.h"
#include "ut/OVinstFileUtils.h"
#include "ut/owned.h"
#include "ut/text.h"

/* No author writes this. */
static const char s_caRoot[] = "/<destination>";

enum { MOST_LEVELS = 64 };

/* A path that an operation installs. */
struct Target {
    const _OV_InstOper *pOper;
    const _OV_InstPackage *pPackage;
    const void *pWord; /* of the description */
    const char *pShown;
};

/* Where an operation's targets go. */
struct TargetPlace {
    std::string base;     /* the directory that they begin in; empty where it is not ours at all */
    std::string boundary; /* the one that they have to stay in */
};

/* A directory that is made on the way to something. */
struct OnTheWay {
    OV_Spot spot;
    std::string shown;
};

struct Tree {
    std::string root;
    std::string product;
    std::unordered_map<std::string, Target> files; /* by the first that installs them */
    std::vector<std::pair<std::string, Target>> again;
    std::unordered_set<std::string> named; /* directories */
    std::unordered_map<std::string, OnTheWay> onTheWay;
    std::vector<const _OV_InstOper *> links;
};

std::string OV_checkPlainPath(const std::string &path)
{
    std::vector<std::string> parts;
    std::string plain;

    for (size_t iStart = 0; iStart < path.size();) {
        const size_t iEnd = std::min(path.find('/', iStart), path.size());
        const std::string part = path.substr(iStart, iEnd - iStart);
        iStart = iEnd + 1;
        if (part == ".." && !parts.empty())
            parts.pop_back();
        else if (!part.empty() && part != "." && part != "..")
            parts.push_back(part);
    }
    for (const std::string &part : parts)
        plain += "/" + part;
    return plain.empty() ? "/" : plain;
}

void OV_checkImagineTree(OV_Check *pCheck)
{
    _OV_instCDinst *pRoot = pCheck->reading.model.get();

    free(pRoot->pInstallDir);
    pRoot->pInstallDir = strdup(s_caRoot);
    CDInstPtr = pRoot;
}

std::string OV_checkBase(const _OV_InstOper *pOper)
{
    const char *pProduct = OV_instGetDestinationDirectory();
    OwnedText place(pProduct ? OV_instPlaceOf(pOper, pProduct) : nullptr);

    return place ? place.get() : "";
}

static bool isBelow(const std::string &path, const std::string &directory)
{
    return path == directory ||
           (path.compare(0, directory.size(), directory) == 0 && path[directory.size()] == '/');
}

static TargetPlace productPlace(const Tree *pTree)
{
    return {pTree->product, pTree->product};
}

static TargetPlace archivePlace(const Tree *pTree, const _OV_InstOper *pOper)
{
    const std::string base = OV_checkBase(pOper);
    const std::string plain = OV_checkPlainPath(base);

    if (pOper->iType != OV_OPER_UNTAR2 && pOper->iType != OV_OPER_UNTARZ2)
        return productPlace(pTree);
    if (base.empty() || base[0] != '/' || !isBelow(plain, pTree->root))
        return {};
    return {plain, pTree->root};
}

/* ---- gathering ---- */

static bool isSetupsOwn(const Tree *pTree, const std::string &directory)
{
    return directory == pTree->product || directory == pTree->product + "/Setup" ||
           directory == pTree->product + "/" + OV_SETUP_FOLDER;
}

/* Notes the directories between a path and the place that its operation starts from. Trees are not
 * as deep as a line can be that means harm. */
static void passDirectories(OV_Check *pCheck, Tree *pTree, const std::string &path,
                            const std::string &base, const Target &target)
{
    if (path.size() > OV_INST_PATH_SIZE || std::count(path.begin(), path.end(), '/') > MOST_LEVELS)
        return;
    for (size_t iSlash = path.rfind('/'); iSlash > base.size() && iSlash != std::string::npos;
         iSlash = path.rfind('/', iSlash - 1)) {
        const std::string directory = path.substr(0, iSlash);
        if (isSetupsOwn(pTree, directory))
            break;
        auto [known, bNew] = pTree->onTheWay.emplace(directory, OnTheWay());
        if (!bNew)
            break;
        known->second = {OV_checkSpot(pCheck, target.pWord, target.pOper),
                         directory.substr(base.size() + 1)};
    }
}

static void tellOutside(OV_Check *pCheck, const Target &target)
{
    OV_checkTell(pCheck, "outside-destination", OV_checkSpot(pCheck, target.pWord, target.pOper),
                 std::string("'") + target.pShown + "' leads out of the product's directory",
                 target.pShown);
}

static bool hasLongPart(const std::string &path)
{
    size_t iFrom = 0;

    for (size_t iSlash; (iSlash = path.find('/', iFrom)) != path.npos; iFrom = iSlash + 1)
        if (iSlash - iFrom > NAME_MAX)
            return true;
    return path.size() - iFrom > NAME_MAX;
}

/* Takes in a path. */
static void addTarget(OV_Check *pCheck, Tree *pTree, const TargetPlace &place,
                      const std::string &raw, const Target &target, bool bDirectory)
{
    const std::string path = OV_checkPlainPath(raw);

    if (!place.base.empty() && !isBelow(path, place.boundary))
        tellOutside(pCheck, target);
    else if (!place.base.empty())
        passDirectories(pCheck, pTree, path, place.base, target);
    if (hasLongPart(path))
        OV_checkTell(pCheck, "name-long", OV_checkSpot(pCheck, target.pWord, target.pOper),
                     std::string("no file can have a name as long as '") + target.pShown + "'",
                     target.pShown);
    if (bDirectory)
        pTree->named.insert(path);
    else if (const auto [known, bNew] = pTree->files.emplace(path, target);
             !bNew && known->second.pPackage != target.pPackage)
        pTree->again.emplace_back(path, target);
}

static void addMembers(OV_Check *pCheck, Tree *pTree, const _OV_InstPackage *pPackage,
                       const _OV_InstOper *pOper)
{
    const _OV_InstTar *pTar = &pOper->body.tar;
    const std::string base = OV_checkBase(pOper) + "/";
    const TargetPlace place = archivePlace(pTree, pOper);

    if (OV_instIsText(pTar->pDestRoot) && place.base.empty())
        tellOutside(pCheck, {pOper, pPackage, pTar->pDestRoot, pTar->pDestRoot});
    for (int32_t i = 0; i < pTar->iCount; i++) {
        const std::string name = pTar->apMembers[i];
        const Target target = {pOper, pPackage, pTar->apMembers[i], pTar->apMembers[i]};
        if (!name.empty())
            addTarget(pCheck, pTree, place, base + name, target, name.back() == '/');
    }
}

static void addLink(OV_Check *pCheck, Tree *pTree, const _OV_InstPackage *pPackage,
                    const _OV_InstOper *pOper)
{
    const _OV_InstLink *pLink = &pOper->body.link;

    if (!OV_instIsText(pLink->pTarget) || !OV_instIsText(pLink->pThird))
        return; /* which was told */
    const std::string name = pLink->pThird;
    addTarget(pCheck, pTree, productPlace(pTree),
              name[0] == '/' ? name : OV_checkBase(pOper) + "/" + name,
              {pOper, pPackage, pLink->pThird, pLink->pThird}, false);
    pTree->links.push_back(pOper);
}

static void addOper(OV_Check *pCheck, Tree *pTree, const _OV_InstPackage *pPackage,
                    const _OV_InstOper *pOper)
{
    const bool bCopy = pOper->iType == OV_OPER_COPY || pOper->iType == OV_OPER_COPYZ;

    if (OV_checkIsTar(pOper)) {
        addMembers(pCheck, pTree, pPackage, pOper);
    } else if (pOper->iType == OV_OPER_HARDLINK || pOper->iType == OV_OPER_SOFTLINK) {
        addLink(pCheck, pTree, pPackage, pOper);
    } else if (bCopy) {
        const _OV_InstCopy *pCopy = &pOper->body.copy;
        const bool bOwnName = pOper->iType == OV_OPER_COPY && pCopy->pDest;
        const char *pWord = bOwnName ? pCopy->pDest : pCopy->pSource;
        if (OV_instIsText(pWord))
            addTarget(pCheck, pTree, productPlace(pTree), OV_checkBase(pOper),
                      {pOper, pPackage, pWord, pWord}, false);
    } else if (pOper->iType == OV_OPER_MKDIR && OV_instIsText(pOper->body.mkdir.pPath)) {
        const char *pPath = pOper->body.mkdir.pPath;
        addTarget(pCheck, pTree, productPlace(pTree), OV_checkBase(pOper),
                  {pOper, pPackage, pPath, pPath}, true);
    }
}

/* ---- what follows ---- */

static std::string packageName(const _OV_InstPackage *pPackage)
{
    return pPackage->pName ? pPackage->pName : "";
}

/* Lists may write a directory without its slash: what something lies in is one. */
static void tellShared(OV_Check *pCheck, const Tree *pTree)
{
    for (const auto &[path, target] : pTree->again) {
        if (pTree->onTheWay.count(path) || pTree->named.count(path))
            continue;
        const Target &first = pTree->files.at(path);
        OV_checkTell(pCheck, "shared-target", OV_checkSpot(pCheck, target.pWord, target.pOper),
                     std::string("'") + target.pShown + "' is installed by the package '" +
                         packageName(first.pPackage) +
                         "', too: removing one of them takes it from the other",
                     target.pShown);
    }
}

static void tellStaying(OV_Check *pCheck, const Tree *pTree)
{
    for (const auto &[directory, here] : pTree->onTheWay)
        if (!pTree->named.count(directory) && !pTree->files.count(directory))
            OV_checkTell(pCheck, "directory-stays", here.spot,
                         "no Mkdir and no archive names the directory '" + here.shown +
                             "': it stays behind when the product is removed",
                         here.shown);
}

static bool isInstalled(const Tree *pTree, const std::string &path)
{
    return pTree->files.count(path) || pTree->named.count(path) || pTree->onTheWay.count(path) ||
           isSetupsOwn(pTree, path);
}

/* A symbolic link's target begins at the link, a hard one's at the directory. */
static std::string targetOf(const _OV_InstOper *pOper)
{
    const _OV_InstLink *pLink = &pOper->body.link;
    const std::string directory = OV_checkBase(pOper);
    const std::string name = pLink->pThird;

    if (pLink->pTarget[0] == '/')
        return OV_checkPlainPath(pLink->pTarget);
    if (pLink->iHard)
        return OV_checkPlainPath(directory + "/" + pLink->pTarget);
    const std::string link = name[0] == '/' ? name : directory + "/" + name;
    return OV_checkPlainPath(link.substr(0, link.rfind('/')) + "/" + pLink->pTarget);
}

/* Whether a line was refused that may install what seems to be missing. */
static bool areTargetsLost(const OV_Check *pCheck)
{
    const auto &faults = pCheck->reading.faults;

    return std::any_of(faults.begin(), faults.end(), [](const OV_ReadFault &fault) {
        if (fault.code == OV_FAULT_KEYWORD)
            return fault.meant.empty() && getOperType(fault.subject.c_str()) < 0;
        return fault.bRejects && (fault.code == OV_FAULT_TEXT || fault.code == OV_FAULT_NUMBER ||
                                  fault.code == OV_FAULT_NO_PACKAGE);
    });
}

void OV_checkTargets(OV_Check *pCheck)
{
    const char *pProduct = OV_instGetDestinationDirectory();
    Tree tree = {};

    if (!pProduct)
        return; /* too long a name, which is told as such */
    tree.root = s_caRoot;
    tree.product = OV_checkPlainPath(pProduct);
    for (auto *pNode = pCheck->reading.model->pPackageHead; pNode; pNode = pNode->pNext)
        for (auto *pOper = pNode->pPackage->pOperHead; pOper; pOper = pOper->pNext)
            addOper(pCheck, &tree, pNode->pPackage, pOper);
    tellShared(pCheck, &tree);
    if (areTargetsLost(pCheck))
        return;
    tellStaying(pCheck, &tree);
    for (const _OV_InstOper *pOper : tree.links) {
        const std::string target = targetOf(pOper);
        if (isInstalled(&tree, target))
            continue;
        pCheck->looseLinks.push_back({pOper, target});
        pCheck->looseTargets.insert(target);
    }
}

void OV_checkLooseLinks(OV_Check *pCheck)
{
    for (const OV_LooseLink &loose : pCheck->looseLinks) {
        const _OV_InstLink *pLink = &loose.pOper->body.link;
        if (!pCheck->looseTargets.count(loose.target))
            continue;
        OV_Finding *pFinding = OV_checkTell(
            pCheck, "link-target-missing", OV_checkSpot(pCheck, pLink->pTarget, loose.pOper),
            std::string("nothing installs '") + pLink->pTarget + "', which the link leads to",
            pLink->pTarget);
        if (pLink->iHard)
            pFinding->severity = OV_ERROR;
    }
}
