#include "medium/sourceFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>

#include "ut/OVinstFileUtils.h"
#include "ut/owned.h"

static std::string smallLetters(std::string text)
{
    for (char &c : text)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return text;
}

static const OV_NamesByLetters &namesIn(OV_SourceFinder *pFinder, const std::string &directory)
{
    auto [known, bNew] = pFinder->listings.emplace(directory, OV_NamesByLetters());
    OwnedDirectory listing(bNew ? opendir(directory.c_str()) : nullptr);

    while (const struct dirent *pEntry = listing ? readdir(listing.get()) : nullptr)
        known->second.emplace(smallLetters(pEntry->d_name), pEntry->d_name);
    return known->second;
}

/* The name with the letter case that the medium has it in; empty where there is none. */
static std::string findNear(OV_SourceFinder *pFinder, const std::string &name)
{
    std::string directory = pFinder->pMedium;
    std::string found;
    struct stat info;

    for (size_t iStart = 0; iStart < name.size();) {
        const size_t iEnd = std::min(name.find('/', iStart), name.size());
        std::string part = name.substr(iStart, iEnd - iStart);
        iStart = iEnd + 1;
        if (part.empty())
            continue;
        if (lstat((directory + part).c_str(), &info) < 0) {
            const auto &names = namesIn(pFinder, directory);
            const auto same = names.find(smallLetters(part));
            if (same == names.end())
                return "";
            part = same->second;
        }
        found += (found.empty() ? "" : "/") + part;
        directory += part + "/";
    }
    return found == name ? "" : found; /* a link that leads nowhere has its own name */
}

static OV_SourceFile unreadable(OV_SourceFile source, const char *pReason)
{
    source.state = OV_SOURCE_UNREADABLE;
    source.reason = pReason;
    return source;
}

OV_SourceFile OV_mediumLookAt(OV_SourceFinder *pFinder, const char *pName)
{
    OwnedText path(OV_instBuildPath(pFinder->pMedium, pName, nullptr));
    OV_SourceFile source = {OV_SOURCE_THERE, path ? path.get() : "", "", "", 0};
    struct stat info;

    if (stat(source.path.c_str(), &info) < 0) {
        if (errno != ENOENT && errno != ENOTDIR)
            return unreadable(source, strerror(errno));
        source.state = OV_SOURCE_MISSING;
        if (source.path.size() <= OV_INST_PATH_SIZE)
            source.near = findNear(pFinder, pName);
        return source;
    }
    if (S_ISDIR(info.st_mode))
        return unreadable(source, "it is a directory");
    if (!S_ISREG(info.st_mode)) /* not opened: that could wait, or do something */
        return unreadable(source, "it is no file");
    OwnedFd file(open(source.path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (file.iFd < 0)
        return unreadable(source, strerror(errno));
    source.lSize = info.st_size;
    return source;
}

bool OV_checkSource(OV_Check *pCheck, const OV_SourceFile *pSource, const char *pName,
                    const _OV_InstOper *pOper)
{
    const OV_Spot spot = OV_checkSpot(pCheck, pName, pOper);

    if (pSource->state == OV_SOURCE_MISSING)
        OV_checkTell(pCheck, "source-missing", spot,
                     std::string("the medium has no file '") + pName + "'" +
                         (pSource->near.empty() ? "" : " (there is '" + pSource->near + "')"),
                     pName);
    if (pSource->state == OV_SOURCE_UNREADABLE)
        OV_checkTell(pCheck, "source-unreadable", spot,
                     std::string("'") + pName + "' cannot be read: " + pSource->reason, pName);
    return pSource->state == OV_SOURCE_THERE;
}
