#include "medium/expectation.h"

#include <filesystem>
#include <set>
#include <sys/stat.h>

#include "engine/driver.h"
#include "engine/setupState.h"
#include "medium/output.h"
#include "ut/OVinstFileUtils.h"
#include "ut/owned.h"

namespace fs = std::filesystem;

enum : mode_t { MODE_BITS = 07777, REGISTRY_MODE = 0644 };

/* What the registry's tools write to; every run sets its mode. */
static const char s_caRegistry[] = "Application/registry";

std::string OV_mediumCleanPath(const std::string &path)
{
    std::string clean = fs::path(path).lexically_normal().string();

    while (clean.size() > 1 && clean.back() == '/')
        clean.pop_back();
    return clean;
}

std::string OV_mediumShownPath(const OV_MediumTree *pTree, const std::string &path)
{
    const char *pRoot = OV_instGetRootDestinationDirectory();
    const std::string root = pRoot ? pRoot : "/";

    if (path.compare(0, root.size(), root) != 0)
        return path;
    return fs::path(path).lexically_relative(pTree->dest).string();
}

bool OV_mediumIsArchive(const _OV_InstOper *pOper)
{
    return pOper->iType >= OV_OPER_UNTAR && pOper->iType <= OV_OPER_UNTARZ2;
}

/* ---- the operations ---- */

/* Suites are installed in the order of the last run, which is the history's; the run file names
 * packages as the description does. */
static std::vector<std::string> packageNames(const OV_MediumTree *pTree)
{
    std::set<std::string> counted, known;
    std::vector<std::string> names;

    for (const OV_RunPackage &package : pTree->state.packages)
        counted.insert(package.name);
    for (const auto *pPackages : {&pTree->history.packages, &pTree->state.packages})
        for (const OV_RunPackage &package : *pPackages)
            if (counted.count(package.name) && known.insert(package.name).second)
                names.push_back(package.name);
    return names;
}

static bool leavesSomething(const _OV_InstOper *pOper)
{
    return pOper->iType >= OV_OPER_COPY && pOper->iType <= OV_OPER_SOFTLINK;
}

std::vector<OV_InstalledOper> OV_mediumInstalledOpers(const OV_MediumTree *pTree, bool *pbAll)
{
    std::vector<OV_InstalledOper> opers;

    for (const std::string &name : packageNames(pTree)) {
        const _OV_InstPackage *pPackage = OV_instGetPackageFromName(CDInstPtr, name.c_str());
        if (!pPackage) {
            OV_mediumTell("the medium has no package '%s'", OV_mediumShown(name).c_str());
            *pbAll = false;
            continue;
        }
        for (const _OV_InstOper *pOper = pPackage->pOperHead; pOper; pOper = pOper->pNext)
            if (leavesSomething(pOper))
                opers.push_back({pPackage, pOper});
    }
    return opers;
}

/* ---- what they leave ---- */

static OV_Expected expected(const OV_InstalledOper *pOper, OV_ExpectedKind kind, mode_t iType)
{
    return {kind, pOper->pPackage, pOper->pOper, iType, 0, 0, false, 0, "", 0};
}

static bool usesRegistry()
{
    for (auto *pNode = CDInstPtr->pPackageHead; pNode; pNode = pNode->pNext)
        for (auto *pOper = pNode->pPackage->pOperHead; pOper; pOper = pOper->pNext)
            if (pOper->iType == OV_OPER_REGDATA || pOper->iType == OV_OPER_SELFREG)
                return true;
    return false;
}

static void expectFile(const OV_MediumTree *pTree, const OV_InstalledOper *pOper,
                       const std::string &path, OV_Expectation *pExpectation)
{
    OV_Expected file = expected(pOper, OV_EXPECT_FILE, S_IFREG);

    file.source = pTree->medium + pOper->pOper->body.copy.pSource;
    file.iMode = static_cast<mode_t>(pOper->pOper->body.copy.iMode) & MODE_BITS;
    file.iJudged = MODE_BITS;
    if (path == OV_mediumCleanPath(pTree->dest + s_caRegistry)) {
        file.iMode = REGISTRY_MODE;
        file.bAnyContent = usesRegistry();
    }
    (*pExpectation)[path] = file;
}

/* The directory and those above it that setup makes, down from the product's or the root's. */
static void expectDirectories(const OV_MediumTree *pTree, const OV_InstalledOper *pOper,
                              const std::string &path, OV_Expectation *pExpectation)
{
    const std::string dest = OV_mediumCleanPath(pTree->dest);
    OV_Expected directory = expected(pOper, OV_EXPECT_DIRECTORY, S_IFDIR);

    directory.iMode = static_cast<mode_t>(pOper->pOper->body.mkdir.iMode) & MODE_BITS;
    for (std::string at = path; at.size() > 1; at = fs::path(at).parent_path().string()) {
        if (dest.compare(0, at.size(), at) == 0 &&
            (dest.size() == at.size() || dest[at.size()] == '/'))
            return; /* what the product lies in is no part of it */
        pExpectation->insert({at, directory});
    }
}

/* Where a link's name or target leads from its directory. */
static std::string from(const std::string &directory, const char *pName)
{
    return OV_mediumCleanPath(pName[0] == '/' ? pName : directory + "/" + pName);
}

static void expectLink(const OV_InstalledOper *pOper, const std::string &directory,
                       OV_Expectation *pExpectation)
{
    const _OV_InstLink *pLink = &pOper->pOper->body.link;
    OV_Expected link = pLink->iHard ? expected(pOper, OV_EXPECT_HARDLINK, S_IFREG)
                                    : expected(pOper, OV_EXPECT_SOFTLINK, S_IFLNK);

    if (!pLink->pTarget[0] || !pLink->pThird[0]) /* setup makes none */
        return;
    link.source = pLink->iHard ? from(directory, pLink->pTarget) : pLink->pTarget;
    (*pExpectation)[from(directory, pLink->pThird)] = link;
}

void OV_mediumExpect(const OV_MediumTree *pTree, const OV_InstalledOper *pOper,
                     OV_Expectation *pExpectation)
{
    OwnedText place(OV_instPlaceOf(pOper->pOper, pTree->dest.c_str()));

    if (!place)
        return;
    const std::string path = OV_mediumCleanPath(place.get());
    switch (pOper->pOper->iType) {
    case OV_OPER_COPY:
    case OV_OPER_COPYZ:
        return expectFile(pTree, pOper, path, pExpectation);
    case OV_OPER_MKDIR:
        return expectDirectories(pTree, pOper, path, pExpectation);
    case OV_OPER_HARDLINK:
    case OV_OPER_SOFTLINK:
        return expectLink(pOper, path, pExpectation);
    default:
        return;
    }
}
