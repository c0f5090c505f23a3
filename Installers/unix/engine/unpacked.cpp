#include "engine/unpacked.h"

#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unordered_map>

#include "ut/OVinstFileUtils.h"
#include "ut/guard.h"
#include "ut/owned.h"

/* The name under which tar unpacks a member: below its working directory. */
static std::string placeOf(const std::string &member)
{
    std::string place;

    for (size_t iStart = 0; iStart < member.size();) {
        const size_t iEnd = std::min(member.find('/', iStart), member.size());
        const std::string part = member.substr(iStart, iEnd - iStart);
        if (!part.empty() && part != ".")
            place += (place.empty() ? "" : "/") + part;
        iStart = iEnd + 1;
    }
    return place;
}

/* tar passes over a member that leads upwards, so what lies there has not come from the archive. */
static bool leadsUpwards(const std::string &place)
{
    return ("/" + place + "/").find("/../") != std::string::npos;
}

static bool isThere(const char *pDest, const std::string &place, int64_t lUnits)
{
    OwnedText path(OV_instBuildPath(pDest, place.c_str(), nullptr));
    OwnedFd found(
        path && !leadsUpwards(place) ? OV_instGuardedOpen(path.get(), O_PATH | O_NOFOLLOW, 0) : -1);
    struct stat info;

    if (found.iFd < 0 || fstat(found.iFd, &info) < 0)
        return false;
    return lUnits <= 1 || (S_ISREG(info.st_mode) && info.st_size == lUnits);
}

const char *OV_instMissingMember(const _OV_InstTar *pTar, const char *pDest)
{
    std::unordered_map<std::string, int32_t> last; /* place by place, the member that counts */

    for (int32_t i = 0; i < pTar->iCount; i++)
        last[placeOf(pTar->apMembers[i])] = i;
    for (int32_t i = 0; i < pTar->iCount; i++) {
        const std::string place = placeOf(pTar->apMembers[i]);
        if (last[place] == i && !isThere(pDest, place, pTar->aUnits[i]))
            return pTar->apMembers[i];
    }
    return nullptr;
}
