#include "ut/trust.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <grp.h>
#include <map>
#include <pwd.h>
#include <set>
#include <sys/xattr.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "ut/owned.h"

static const char s_caAccessList[] = "system.posix_acl_access";

static struct {
    std::map<std::pair<gid_t, uid_t>, bool> harmless; /* groups that were looked up */
    std::set<std::pair<dev_t, uid_t>> aliases;        /* us, as a file system has it */
    std::set<std::string> told;
    void (*fpTell)(const char *pText);
} s_trust;

/* ---- users ---- */

bool OV_instIsOwn(uid_t user)
{
    return user == 0 || user == geteuid();
}

bool OV_instIsOwnObject(const struct stat *pStatus)
{
    return OV_instIsOwn(pStatus->st_uid) ||
           s_trust.aliases.count({pStatus->st_dev, pStatus->st_uid}) != 0;
}

bool OV_instIsTrustedOwner(const struct stat *pStatus, uid_t destinationOwner)
{
    return OV_instIsOwnObject(pStatus) || pStatus->st_uid == destinationOwner;
}

void OV_instNoteCreated(const struct stat *pStatus)
{
    if (!OV_instIsOwn(pStatus->st_uid))
        s_trust.aliases.insert({pStatus->st_dev, pStatus->st_uid});
}

std::string OV_instUserName(uid_t user)
{
    const struct passwd *pEntry = getpwuid(user);

    return pEntry ? pEntry->pw_name : "user " + std::to_string(user);
}

/* ---- groups ---- */

static bool areMembersTrusted(const std::vector<std::string> &members, uid_t destinationOwner)
{
    return std::all_of(members.begin(), members.end(), [&](const std::string &name) {
        const struct passwd *pEntry = getpwnam(name.c_str());
        return pEntry && (OV_instIsOwn(pEntry->pw_uid) || pEntry->pw_uid == destinationOwner);
    });
}

/* Whether only trusted users have the group from their password entries. */
static bool arePrimaryTrusted(gid_t group, uid_t destinationOwner)
{
    bool bTrusted = true;

    setpwent();
    while (const struct passwd *pEntry = getpwent())
        if (pEntry->pw_gid == group && !OV_instIsOwn(pEntry->pw_uid) &&
            pEntry->pw_uid != destinationOwner)
            bTrusted = false;
    endpwent();
    return bTrusted;
}

static bool isHarmless(gid_t group, uid_t destinationOwner)
{
    if (group == 0)
        return true;
    auto [known, bNew] = s_trust.harmless.emplace(std::pair(group, destinationOwner), false);
    const struct group *pEntry = bNew ? getgrgid(group) : nullptr;
    if (!pEntry)
        return known->second;

    std::vector<std::string> members; /* the entry is gone with the next lookup */
    for (char **ppName = pEntry->gr_mem; *ppName; ppName++)
        members.emplace_back(*ppName);
    known->second =
        areMembersTrusted(members, destinationOwner) && arePrimaryTrusted(group, destinationOwner);
    return known->second;
}

/* With an access list the group's bits are the most that anybody in it may do. A path descriptor
 * cannot be asked, so a directory is opened anew through itself, and a file by way of /proc. */
static bool hasAccessList(int iFd)
{
    const std::string way = "/proc/self/fd/" + std::to_string(iFd);

    if (getxattr(way.c_str(), s_caAccessList, nullptr, 0) > 0)
        return true;
    OwnedFd directory(openat(iFd, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return directory.iFd >= 0 && fgetxattr(directory.iFd, s_caAccessList, nullptr, 0) > 0;
}

bool OV_instMayStrangersWrite(const struct stat *pStatus, uid_t destinationOwner, int iFd)
{
    if (pStatus->st_mode & S_IWOTH)
        return true;
    return (pStatus->st_mode & S_IWGRP) &&
           (!isHarmless(pStatus->st_gid, destinationOwner) || hasAccessList(iFd));
}

/* ---- telling ---- */

void OV_instSetRefusalHandler(void (*fpTell)(const char *pText))
{
    s_trust.fpTell = fpTell;
}

void OV_instTellRefusal(const std::string &text)
{
    int iError = errno;

    if (s_trust.fpTell && s_trust.told.insert(text).second)
        s_trust.fpTell(text.c_str());
    errno = iError;
}

void OV_instForgetRefusals()
{
    s_trust.told.clear();
}
