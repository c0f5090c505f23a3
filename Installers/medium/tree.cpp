#include "medium/tree.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>

#include "description/model.h"
#include "engine/history.h"
#include "engine/setupState.h"
#include "medium/model.h"
#include "medium/output.h"
#include "ut/OVinstFileUtils.h"
#include "ut/guard.h"
#include "ut/owned.h"
#include "ut/trust.h"

using OwnedDirectory = OwnedDirectory;

/* A product that was found: its directory, and the name of its history and run file. */
struct Product {
    std::string dest;
    std::string name;
};

static std::string slashed(const std::string &path)
{
    return path.empty() || path.back() != '/' ? path + "/" : path;
}

/* ---- what DEST may be ---- */

/* DEST without links on the way to it. A link in its own place stays: whose it is will be looked
 * at. Empty when there is nothing. */
static std::string absolutePlace(const std::string &tree)
{
    std::string path = tree;

    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    const size_t iSlash = path.rfind('/');
    const std::string last = iSlash == path.npos ? path : path.substr(iSlash + 1);
    if (last.empty() || last == "." || last == "..") {
        OwnedText whole(realpath(path.c_str(), nullptr));
        return whole ? whole.get() : "";
    }
    const std::string above = iSlash == path.npos ? "." : path.substr(0, iSlash + 1);
    OwnedText parent(realpath(above.c_str(), nullptr));
    return parent ? slashed(parent.get()) + last : "";
}

static std::vector<std::string> namesIn(const std::string &directory)
{
    std::vector<std::string> names;
    OwnedFd opened(OV_instGuardedOpen(directory.c_str(), O_RDONLY | O_DIRECTORY, 0));
    OwnedDirectory list(opened.iFd < 0 ? nullptr : fdopendir(opened.iFd));

    if (!list)
        return names;
    (void)opened.release(); /* the list closes it */
    while (const struct dirent *pEntry = readdir(list.get()))
        names.push_back(pEntry->d_name);
    std::sort(names.begin(), names.end());
    return names;
}

/* NAME of ".NAME.his" and ".NAME.run"; empty for any other. */
static std::string productOf(const std::string &file)
{
    const std::string end = file.size() > 5 ? file.substr(file.size() - 4) : "";

    return file[0] == '.' && (end == ".his" || end == ".run") ? file.substr(1, file.size() - 5)
                                                              : "";
}

static void addPlaces(const std::string &directory, std::vector<Product> *pPlaces)
{
    std::string last;

    for (const std::string &file : namesIn(slashed(directory) + OV_SETUP_FOLDER)) {
        const std::string name = productOf(file);
        if (!name.empty() && name != last)
            pPlaces->push_back({slashed(directory), name});
        last = name.empty() ? last : name;
    }
}

/* Products in the directories below, else one level further. */
static std::vector<Product> findBelow(const std::string &tree)
{
    enum { LEVELS = 2 };
    std::vector<Product> places;
    std::vector<std::string> level = {tree};

    for (int i = 0; i < LEVELS && places.empty(); i++) {
        std::vector<std::string> below;
        for (const std::string &directory : level)
            for (const std::string &name : namesIn(directory))
                if (name[0] != '.')
                    below.push_back(slashed(directory) + name);
        for (const std::string &directory : below)
            addPlaces(directory, &places);
        level = below;
    }
    return places;
}

/* Products in DEST itself, else below it. A link in the place of a product's directory is one of
 * its owner's; one in the place of the root destination was chosen by who names it. */
static std::vector<Product> findPlaces(const std::string &tree)
{
    std::vector<Product> places;
    OwnedText real(realpath(tree.c_str(), nullptr));

    OV_instSetGuardedRoot(tree.substr(0, tree.rfind('/') + 1).c_str());
    addPlaces(tree, &places);
    if (!places.empty() || !real)
        return places;
    OV_instSetGuardedRoot(real.get());
    return findBelow(real.get());
}

/* ---- the state in use ---- */

/* Makes the destination that of the model in use. The directory's own name counts, should the tree
 * have been moved; a product directory of several parts stays one. */
static bool useDestination(const std::string &dest)
{
    const std::string wanted = slashed(CDInstPtr->pProductDirectory);
    size_t iRoot = dest.rfind('/', dest.size() - 2) + 1;

    if (dest.size() > wanted.size() &&
        dest.compare(dest.size() - wanted.size() - 1, wanted.npos, "/" + wanted) == 0) {
        iRoot = dest.size() - wanted.size();
    } else {
        const std::string own = dest.substr(iRoot, dest.size() - iRoot - 1);
        free(CDInstPtr->pProductDirectory);
        CDInstPtr->pProductDirectory = strdup(own.c_str());
    }
    return CDInstPtr->pProductDirectory &&
           OV_instSetRootDestination(dest.substr(0, iRoot).c_str()) == 0;
}

static void useModel(_OV_instCDinst *pModel)
{
    OV_instFreeCDinst(CDInstPtr);
    CDInstPtr = pModel;
}

void OV_mediumCloseTree()
{
    useModel(nullptr);
}

/* A model that knows nothing but where the product lies. */
static bool useBareModel(const Product *pPlace)
{
    _OV_instCDinst *pBare = newCDinst();

    if (!pBare)
        return false;
    useModel(pBare);
    pBare->pHistoryFile = strdup(pPlace->name.c_str());
    pBare->pProductDirectory = strdup("");
    return pBare->pHistoryFile && pBare->pProductDirectory && useDestination(pPlace->dest);
}

bool OV_mediumReadTree(OV_MediumTree *pTree)
{
    pTree->bHistory = OV_instReadHistory(pTree->dest.c_str(), &pTree->history);
    pTree->bUnfinished = OV_instReadRunFile(pTree->dest.c_str(), &pTree->state);
    if (!pTree->bUnfinished)
        pTree->state = pTree->history;
    return pTree->bHistory || pTree->bUnfinished;
}

static bool noInstallation(const std::string &tree)
{
    OV_mediumTell("no installation in %s", tree.c_str());
    return false;
}

static bool tellSeveral(const std::vector<Product> &places)
{
    OV_mediumTell("several products, name one of their directories:");
    for (const Product &place : places)
        OV_mediumTell("    %s (%s)", place.dest.c_str(), place.name.c_str());
    return false;
}

static void tellRefusal(const char *pText)
{
    OV_mediumTell("%s", pText);
}

bool OV_mediumFindTree(const OV_MediumOptions *pOptions, OV_MediumTree *pTree)
{
    const std::string tree = absolutePlace(pOptions->tree);

    *pTree = OV_MediumTree();
    OV_instSetRefusalHandler(tellRefusal);
    if (tree.empty())
        return noInstallation(pOptions->tree);
    const std::vector<Product> places = findPlaces(tree);
    if (places.empty())
        return noInstallation(pOptions->tree);
    if (places.size() > 1)
        return tellSeveral(places);
    pTree->dest = places[0].dest;
    return (useBareModel(&places[0]) && OV_mediumReadTree(pTree)) || noInstallation(pOptions->tree);
}

/* ---- its medium ---- */

/* The product of the medium in use, where DEST says it may be. */
static bool findProduct(const OV_MediumOptions *pOptions, OV_MediumTree *pTree)
{
    const std::string tree = absolutePlace(pOptions->tree);
    const std::string below = slashed(tree) + CDInstPtr->pProductDirectory;
    std::string places[] = {slashed(below), slashed(tree)};
    const std::string end = std::string("/") + CDInstPtr->pProductDirectory;

    if (tree.empty())
        return noInstallation(pOptions->tree);
    if (tree.size() > end.size() && tree.compare(tree.size() - end.size(), tree.npos, end) == 0)
        std::swap(places[0], places[1]);
    for (const std::string &dest : places) {
        OwnedText product(strdup(CDInstPtr->pProductDirectory));
        pTree->dest = dest;
        if (product && useDestination(dest) && OV_mediumReadTree(pTree))
            return true;
        free(CDInstPtr->pProductDirectory);
        CDInstPtr->pProductDirectory = product.release();
    }
    return noInstallation(pOptions->tree);
}

static bool useMedium(const std::string &place, OV_MediumTree *pTree)
{
    const std::string path = OV_mediumDescription(place);
    std::string reason;
    OV_Reading reading = {};

    OV_mediumRead(path.c_str(), &reading);
    if (!reading.model || reading.bRejected) {
        OV_instFreeCDinst(OV_mediumReadModel(path.c_str(), &reason)); /* for the reason */
        OV_mediumTell("%s", reason.c_str());
        return false;
    }
    useModel(reading.model.release()); /* whether its modules can be loaded plays no part */
    pTree->medium = OV_instGetSourceDirectory();
    pTree->medium = slashed(pTree->medium);
    return true;
}

/* As setup looks at it: the recorded name holds the product's. */
static bool isItsMedium(const OV_MediumTree *pTree)
{
    if (pTree->state.product.find(OV_instGetProductName()) == std::string::npos) {
        OV_mediumTell("%s is the medium of %s, and %s is installed", pTree->medium.c_str(),
                      OV_instGetProductName(), pTree->state.product.c_str());
        return false;
    }
    if (pTree->state.version != OV_instGetProductVersion())
        OV_mediumTell("version %s is installed, the medium is one of %s",
                      pTree->state.version.c_str(), OV_instGetProductVersion());
    return true;
}

/* The medium that the installation was made from, as it has noted. */
static bool openNotedMedium(const OV_MediumOptions *pOptions, OV_MediumTree *pTree)
{
    if (!OV_mediumFindTree(pOptions, pTree))
        return false;
    OwnedText name(strdup(CDInstPtr->pHistoryFile)); /* whatever the medium calls it by now */
    if (!name || !useMedium(pTree->state.source, pTree))
        return false;
    free(CDInstPtr->pHistoryFile);
    CDInstPtr->pHistoryFile = name.release();
    return useDestination(pTree->dest);
}

bool OV_mediumOpenTree(const OV_MediumOptions *pOptions, OV_MediumTree *pTree)
{
    *pTree = OV_MediumTree();
    OV_instSetRefusalHandler(tellRefusal);
    if (pOptions->medium.empty()
            ? !openNotedMedium(pOptions, pTree)
            : !useMedium(pOptions->medium, pTree) || !findProduct(pOptions, pTree))
        return false;
    return isItsMedium(pTree);
}

std::vector<std::string> OV_mediumPending(const OV_MediumTree *pTree)
{
    std::vector<std::string> names;

    for (const OV_RunPackage &package : pTree->state.packages)
        if (package.state != OV_RUN_INSTALLED)
            names.push_back(package.name);
    return names;
}
