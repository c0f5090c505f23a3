#include "medium/plannedTree.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include "ut/guard.h"
#include "ut/owned.h"

static OV_PlannedObject refused(const std::string &reason)
{
    OV_PlannedObject object;

    object.kind = OV_PLANNED_OTHER;
    object.bOnDisk = true;
    object.refusal = reason;
    return object;
}

static OV_PlannedObject outOfReach(int iError)
{
    return refused(std::string("out of reach: ") + strerror(iError));
}

/* Where a directory above is not there yet, nothing else tells. */
static bool isTooLong(const std::string &path)
{
    return path.size() >= PATH_MAX || path.size() - path.rfind('/') - 1 > NAME_MAX;
}

static OV_PlannedObject onDisk(const std::string &path, int iFlags)
{
    if (isTooLong(path))
        return outOfReach(ENAMETOOLONG);
    OwnedFd found(OV_instGuardedOpen(path.c_str(), O_PATH | iFlags, 0));
    OV_PlannedObject object;
    struct stat info;

    if (found.iFd < 0 && (errno == ENOENT || errno == ENOTDIR))
        return object;
    if (found.iFd < 0 && errno == ELOOP)
        return refused("a link that is not followed");
    if (found.iFd < 0 || fstat(found.iFd, &info) < 0)
        return outOfReach(errno);
    object.kind = S_ISREG(info.st_mode)   ? OV_PLANNED_FILE
                  : S_ISDIR(info.st_mode) ? OV_PLANNED_DIRECTORY
                                          : OV_PLANNED_OTHER;
    object.lSize = S_ISREG(info.st_mode) ? info.st_size : 0;
    object.bOnDisk = true;
    return object;
}

static OV_PlannedObject planned(const OV_PlannedTree *pTree, const std::string &path, int iFlags)
{
    const auto changed = pTree->changed.find(path);

    return changed == pTree->changed.end() ? onDisk(path, iFlags) : changed->second;
}

OV_PlannedObject OV_mediumPlanned(const OV_PlannedTree *pTree, const std::string &path)
{
    return planned(pTree, path, 0);
}

OV_PlannedObject OV_mediumPlannedItself(const OV_PlannedTree *pTree, const std::string &path)
{
    return planned(pTree, path, O_NOFOLLOW);
}

/* Whether something would be made right below it. */
static bool isFilled(const OV_PlannedTree *pTree, const std::string &path)
{
    for (auto at = pTree->changed.lower_bound(path + "/");
         at != pTree->changed.end() && at->first.compare(0, path.size() + 1, path + "/") == 0; ++at)
        if (at->second.kind != OV_PLANNED_NOTHING)
            return true;
    return false;
}

bool OV_mediumPlannedEmpty(const OV_PlannedTree *pTree, const std::string &path)
{
    OwnedFd opened(OV_instGuardedOpen(path.c_str(), O_RDONLY | O_DIRECTORY, 0));

    if (isFilled(pTree, path))
        return false;
    if (opened.iFd < 0) /* it is not there yet */
        return true;
    OwnedDirectory entries(fdopendir(opened.iFd));
    if (!entries)
        return false;
    (void)opened.release(); /* the stream closes it */
    while (const struct dirent *pEntry = readdir(entries.get())) {
        if (strcmp(pEntry->d_name, ".") == 0 || strcmp(pEntry->d_name, "..") == 0)
            continue;
        const auto changed = pTree->changed.find(path + "/" + pEntry->d_name);
        if (changed == pTree->changed.end() || changed->second.kind != OV_PLANNED_NOTHING)
            return false;
    }
    return true;
}
