#include "engine/memberPlaces.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "ut/OVinstFileUtils.h"
#include "ut/guard.h"
#include "ut/owned.h"

/* The path that an opened directory really has; empty when /proc does not tell. */
static std::string realPathOf(int iDirectory)
{
    std::error_code failed;

    return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(iDirectory), failed);
}

/* Where an archive's members go. */
struct Destinations {
    const char *pDest;
    OV_Confinement *pConfinement;
    std::vector<std::string> allowed;                  /* real paths, each with a slash behind it */
    std::unordered_map<std::string_view, bool> exists; /* directories below pDest that were tried */
};

static bool isAllowed(const Destinations *pWhere, const std::string &directory)
{
    for (const std::string &above : pWhere->allowed)
        if (directory.compare(0, above.size(), above) == 0)
            return true;
    return false;
}

/* Looks at one directory; what a trusted link leads out of the destination to is written to as
 * well. False when it cannot be: a stranger's link, which tar would follow, or too many places. */
static bool allowDirectory(Destinations *pWhere, std::string_view directory, bool *pbExists)
{
    OwnedText path(OV_instBuildPath(pWhere->pDest, std::string(directory).c_str(), nullptr));
    OwnedFd opened(path ? OV_instGuardedOpenDir(path.get()) : -1);

    *pbExists = opened.iFd >= 0;
    if (opened.iFd < 0)
        return errno != ELOOP;
    std::string real = realPathOf(opened.iFd) + "/";
    if (isAllowed(pWhere, real))
        return true;
    pWhere->allowed.push_back(real);
    return OV_instAllowBelow(pWhere->pConfinement, opened.release()) == 0;
}

/* All directories on the way to a member, from the top to the first that does not exist yet. */
static bool allowMember(Destinations *pWhere, const char *pMember)
{
    for (const char *pSlash = strchr(pMember, '/'); pSlash; pSlash = strchr(pSlash + 1, '/')) {
        std::string_view directory(pMember, static_cast<size_t>(pSlash - pMember));
        auto [known, bNew] = pWhere->exists.emplace(directory, true);

        if (bNew && !allowDirectory(pWhere, directory, &known->second))
            return false;
        if (!known->second)
            break;
    }
    return true;
}

bool OV_instAllowMembers(const _OV_InstTar *pTar, const char *pDest, OV_Confinement *pConfinement)
{
    Destinations where = {pDest, pConfinement, {realPathOf(pConfinement->aDirs[0]) + "/"}, {}};

    for (int32_t i = 0; i < pTar->iCount; i++)
        if (!allowMember(&where, pTar->apMembers[i]))
            return false;
    /* Without members nothing is known of trusted links in the way, which may be followed. */
    pConfinement->bOff = pTar->iCount == 0;
    return true;
}
