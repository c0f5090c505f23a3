#include "engine/memberPlaces.h"

#include <cerrno>
#include <cstring>
#include <deque>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

#include "ut/OVinstFileUtils.h"
#include "ut/guard.h"
#include "ut/owned.h"
#include "ut/trust.h"

enum { LINKS_MOST = 40 }; /* on one way: the kernel's own limit */

/* Looks at one directory; what a trusted link leads out of the destination to is written to as
 * well. */
static bool allowDirectory(OV_MemberPlaces *pPlaces, const std::string &directory, bool *pbExists)
{
    OwnedText path(OV_instBuildPath(pPlaces->pDest, directory.c_str(), nullptr));
    OwnedFd opened(path ? OV_instGuardedOpenDir(path.get()) : -1);
    struct stat info;

    *pbExists = opened.iFd >= 0;
    if (opened.iFd < 0 && errno == ELOOP) {
        pPlaces->refusal = std::string(path.get()) + " leads through a link that is not followed";
        return false;
    }
    if (opened.iFd < 0)
        return true;
    if (fstat(opened.iFd, &info) < 0 || !OV_instIsOwnObject(&info) ||
        OV_instMayStrangersWrite(&info, geteuid(), opened.iFd))
        pPlaces->pConfinement->bOpenToStrangers = true;
    if (OV_instAllowBelow(pPlaces->pConfinement, opened.iFd, path.get()) == 0)
        return true;
    pPlaces->refusal = std::string(path.get()) + " cannot be let in";
    return false;
}

/* All directories on the way to a member, from the top to the first that does not exist yet. */
bool OV_instAllowMember(OV_MemberPlaces *pPlaces, const char *pMember)
{
    for (const char *pSlash = strchr(pMember, '/'); pSlash; pSlash = strchr(pSlash + 1, '/')) {
        auto [known, bNew] = pPlaces->exists.emplace(
            std::string(pMember, static_cast<size_t>(pSlash - pMember)), true);

        if (bNew && !allowDirectory(pPlaces, known->first, &known->second))
            return false;
        if (!known->second)
            break;
    }
    return true;
}

/* ---- members as they stand in the archive ---- */

using Links = std::unordered_map<std::string, std::string>; /* the archive's own, by their places */

/* The components of a path, in front of those that are still to be walked. */
static void walkFirst(std::deque<std::string> *pWay, const std::string &path)
{
    std::deque<std::string> parts;

    for (size_t iStart = 0; iStart < path.size();) {
        const size_t iEnd = std::min(path.find('/', iStart), path.size());
        if (iEnd > iStart && path.compare(iStart, iEnd - iStart, ".") != 0)
            parts.push_back(path.substr(iStart, iEnd - iStart));
        iStart = iEnd + 1;
    }
    pWay->insert(pWay->begin(), parts.begin(), parts.end());
}

static std::string above(const std::string &place)
{
    const size_t iSlash = place.rfind('/');

    return iSlash == std::string::npos ? "" : place.substr(0, iSlash);
}

/* Where the member goes once the links before it are there; tar takes a name's leading slashes
 * away, but not those of a link's target. False when that is not below the destination. */
static bool placeOf(const Links &links, const std::string &name, std::string *pPlace)
{
    std::deque<std::string> way;
    int iLinks = 0;

    walkFirst(&way, name);
    for (const std::string &part : way)
        if (part == "..")
            return false;
    for (pPlace->clear(); !way.empty();) {
        const std::string part = way.front();
        way.pop_front();
        if (part == "..") {
            if (pPlace->empty())
                return false;
            *pPlace = above(*pPlace);
            continue;
        }
        *pPlace += (pPlace->empty() ? "" : "/") + part;
        const auto link = way.empty() ? links.end() : links.find(*pPlace);
        if (link == links.end())
            continue;
        if (link->second[0] == '/' || ++iLinks > LINKS_MOST)
            return false;
        *pPlace = above(*pPlace);
        walkFirst(&way, link->second);
    }
    return true;
}

static bool allowArchivedName(OV_MemberPlaces *pPlaces, const Links &links, const std::string &name,
                              std::string *pPlace)
{
    if (!placeOf(links, name, pPlace)) {
        if (pPlaces->pConfinement->bRequired) {
            pPlace->clear();
            return true; /* tar passes over it, and the kernel does not let it out */
        }
        pPlaces->refusal = name + " would leave " + pPlaces->pDest;
        return false;
    }
    return OV_instAllowMember(pPlaces, pPlace->c_str());
}

bool OV_instAllowArchived(OV_MemberPlaces *pPlaces, const std::vector<OV_ArchivedMember> &members)
{
    Links links;
    std::string place;

    for (const OV_ArchivedMember &member : members) {
        if (!member.hardLink.empty() && !allowArchivedName(pPlaces, links, member.hardLink, &place))
            return false;
        if (!allowArchivedName(pPlaces, links, member.name, &place))
            return false;
        if (place.empty())
            continue;
        /* The slash: a directory through a link would get the member's mode. */
        if (member.bDirectory && !OV_instAllowMember(pPlaces, (place + "/").c_str()))
            return false;
        (void)links.erase(place); /* whatever was there before is replaced */
        if (!member.symbolicLink.empty())
            links[place] = member.symbolicLink;
    }
    return true;
}

bool OV_instHoldsLinks(const char *pDest)
{
    namespace fs = std::filesystem;
    std::error_code failed;
    fs::recursive_directory_iterator entry(pDest, fs::directory_options::skip_permission_denied,
                                           failed);

    for (; !failed && entry != fs::recursive_directory_iterator(); entry.increment(failed))
        if (entry->is_symlink(failed))
            return true;
    return static_cast<bool>(failed); /* what was not seen may hold some */
}
