/* Archives: whether they can be unpacked, and whether their lines list what they hold. Each is read
 * once, however many lines name it. */
#include <algorithm>
#include <deque>
#include <unordered_map>
#include <unordered_set>

#include "medium/archiveFile.h"
#include "medium/checkParts.h"
#include "medium/output.h"
#include "medium/sourceFile.h"
#include "ut/text.h"

enum { MOST_UNSAFE = 100 }; /* so many members of an archive are told one by one */

static const int64_t s_lNotThere = -1;

/* A line that unpacks the archive, and what was found of its members. */
struct Use {
    const _OV_InstOper *pOper;
    std::vector<int64_t> units; /* of the members that are there */
    size_t iMatched;            /* members of the archive that it lists */
    size_t iLastMatch;
};

/* A member's name in a line's list. */
struct Listed {
    size_t iUse;
    int32_t iMember;
};

/* An archive, and while it is read what is known of its members. */
struct ArchiveCheck {
    const char *pName; /* as the first line has it */
    OV_SourceFile source;
    std::vector<Use> uses;
    std::unordered_map<std::string, std::vector<Listed>> listed;
    std::unordered_set<std::string> links; /* symbolic ones */
    std::unordered_set<std::string> bases; /* directories that it is unpacked in */
    size_t iMembers;
    size_t iUnsafe;
};

/* A member's name as lists and archives may write it differently: without "./" and without the
 * slash of a directory. ".." stays. */
static std::string plainName(const std::string &name)
{
    std::string plain = !name.empty() && name[0] == '/' ? "/" : "";

    for (size_t iStart = 0; iStart < name.size();) {
        const size_t iEnd = std::min(name.find('/', iStart), name.size());
        const size_t iLength = iEnd - iStart;
        if (iLength > 0 && !(iLength == 1 && name[iStart] == '.')) {
            if (!plain.empty() && plain.back() != '/')
                plain += '/';
            plain.append(name, iStart, iLength);
        }
        iStart = iEnd + 1;
    }
    return plain;
}

/* ---- members ---- */

/* Why it does not belong into an archive; null for one that does. */
static const char *whyUnsafe(const ArchiveCheck *pArchive, const OV_ArchiveMember &member,
                             const std::string &name)
{
    if (name[0] == '/')
        return "has an absolute name";
    if (("/" + name + "/").find("/../") != std::string::npos)
        return "has '..' in its name";
    if (S_ISCHR(member.iType) || S_ISBLK(member.iType))
        return "is a device";
    for (size_t iAt = name.find('/'); !pArchive->links.empty() && iAt != std::string::npos;
         iAt = name.find('/', iAt + 1))
        if (pArchive->links.count(name.substr(0, iAt)))
            return "lies behind a link of the archive";
    return nullptr;
}

static void watchSafety(OV_Check *pCheck, ArchiveCheck *pArchive, const OV_ArchiveMember &member,
                        const std::string &name)
{
    const char *pWhy = whyUnsafe(pArchive, member, name);

    if (S_ISLNK(member.iType))
        pArchive->links.insert(name);
    if (!pWhy || pArchive->iUnsafe++ >= MOST_UNSAFE)
        return;
    OV_checkTell(pCheck, "archive-unsafe", OV_checkSpot(pCheck, pArchive->pName),
                 std::string("the member '") + member.pName + "' " + pWhy, member.pName);
}

/* What a list has to say of it: 0 counts as 1, and another name of a member as much as that one. */
static int64_t unitsOf(const ArchiveCheck *pArchive, const OV_ArchiveMember &member,
                       const Listed &where)
{
    const Use &use = pArchive->uses[where.iUse];
    const int64_t lListed = use.pOper->body.tar.aUnits[where.iMember];

    if (member.pHardLink && lListed != 1) {
        const auto first = pArchive->listed.find(plainName(member.pHardLink));
        if (first == pArchive->listed.end())
            return lListed;
        for (const Listed &other : first->second)
            if (other.iUse == where.iUse)
                return use.units[static_cast<size_t>(other.iMember)];
        return lListed;
    }
    if (member.pHardLink || !S_ISREG(member.iType) || member.lSize == 0)
        return 1;
    return member.lSize;
}

static void takeMember(OV_Check *pCheck, ArchiveCheck *pArchive, const OV_ArchiveMember &member)
{
    const std::string name = plainName(member.pName);

    if (name.empty())
        return; /* the directory that everything is unpacked in */
    pArchive->iMembers++;
    watchSafety(pCheck, pArchive, member, name);
    for (const std::string &base : pArchive->bases)
        if (!pCheck->looseTargets.empty())
            pCheck->looseTargets.erase(OV_checkPlainPath(base + "/" + name));
    const auto found = pArchive->listed.find(name);
    if (found != pArchive->listed.end())
        for (const Listed &where : found->second) {
            Use *pUse = &pArchive->uses[where.iUse];
            pUse->units[static_cast<size_t>(where.iMember)] = unitsOf(pArchive, member, where);
            if (pUse->iLastMatch != pArchive->iMembers)
                pUse->iMatched++;
            pUse->iLastMatch = pArchive->iMembers;
        }
}

/* ---- what the lines list ---- */

static void listMembers(ArchiveCheck *pArchive)
{
    for (size_t iUse = 0; iUse < pArchive->uses.size(); iUse++) {
        const _OV_InstTar *pTar = &pArchive->uses[iUse].pOper->body.tar;
        pArchive->uses[iUse].units.assign(static_cast<size_t>(pTar->iCount), s_lNotThere);
        for (int32_t i = 0; i < pTar->iCount; i++)
            pArchive->listed[plainName(pTar->apMembers[i])].push_back({iUse, i});
    }
}

static void compareMembers(OV_Check *pCheck, const ArchiveCheck *pArchive, const Use &use)
{
    const _OV_InstTar *pTar = &use.pOper->body.tar;
    const OV_Spot spot = OV_checkSpot(pCheck, pTar->pArchive, use.pOper);
    size_t iDiffering = 0;

    for (int32_t i = 0; i < pTar->iCount; i++) {
        const int64_t lUnits = use.units[static_cast<size_t>(i)];
        const std::string name = pTar->apMembers[i];
        if (name.empty())
            continue; /* which was told */
        if (lUnits == s_lNotThere)
            OV_checkTell(
                pCheck, "member-missing", OV_checkSpot(pCheck, pTar->apMembers[i], use.pOper),
                "'" + std::string(pTar->pArchive) + "' has no member '" + name + "'", name);
        else if (lUnits != pTar->aUnits[i])
            iDiffering++;
    }
    if (iDiffering > 0)
        OV_checkTell(pCheck, "size-differs", spot,
                     std::to_string(iDiffering) + " member" + (iDiffering == 1 ? "" : "s") +
                         " of '" + pTar->pArchive + "' with another size than the one given",
                     std::to_string(iDiffering));
    const size_t iUnlisted = pArchive->iMembers - use.iMatched;
    if (iUnlisted > 0)
        OV_checkTell(pCheck, "member-unlisted", spot,
                     std::to_string(iUnlisted) + " member" + (iUnlisted == 1 ? "" : "s") + " of '" +
                         pTar->pArchive + "' not listed: never removed, and not counted",
                     std::to_string(iUnlisted));
}

/* ---- archives ---- */

static void checkKind(OV_Check *pCheck, const Use &use, OV_ArchiveKind kind)
{
    const bool bPacked = use.pOper->iType == OV_OPER_UNTARZ || use.pOper->iType == OV_OPER_UNTARZ2;
    const char *pName = use.pOper->body.tar.pArchive;

    if (bPacked == (kind == OV_ARCHIVE_BZIP2))
        return;
    OV_checkTell(pCheck, "archive-kind", OV_checkSpot(pCheck, pName, use.pOper),
                 std::string("'") + pName + "' is " +
                     (kind == OV_ARCHIVE_PLAIN   ? "not compressed"
                      : kind == OV_ARCHIVE_BZIP2 ? "compressed"
                                                 : "compressed, and not with bzip2"),
                 pName);
}

static void tellMoreUnsafe(OV_Check *pCheck, const ArchiveCheck *pArchive)
{
    if (pArchive->iUnsafe <= MOST_UNSAFE)
        return;
    const std::string more = std::to_string(pArchive->iUnsafe - MOST_UNSAFE);
    OV_checkTell(pCheck, "archive-unsafe", OV_checkSpot(pCheck, pArchive->pName),
                 more + " more members like these", more);
}

static void checkArchive(OV_Check *pCheck, ArchiveCheck *pArchive)
{
    OV_ArchiveKind kind = OV_ARCHIVE_PLAIN;
    std::string reason;

    listMembers(pArchive);
    const bool bRead = OV_mediumReadArchive(
        pArchive->source.path.c_str(), &kind,
        [&](const OV_ArchiveMember &member) { takeMember(pCheck, pArchive, member); }, &reason);
    tellMoreUnsafe(pCheck, pArchive);
    for (const Use &use : pArchive->uses) {
        if (bRead || kind != OV_ARCHIVE_PLAIN)
            checkKind(pCheck, use, kind);
        if (!bRead) {
            const char *pName = use.pOper->body.tar.pArchive;
            OV_checkTell(pCheck, "source-unreadable", OV_checkSpot(pCheck, pName, use.pOper),
                         std::string("'") + pName + "' cannot be read to its end: " + reason,
                         pName);
        } else if (!OV_checkIsRefused(pCheck, use.pOper)) {
            compareMembers(pCheck, pArchive, use);
        }
    }
}

/* The archive of a line: one that an earlier line has named, or a new one. Null where there is
 * none, which is told. */
static ArchiveCheck *archiveOf(OV_Check *pCheck, OV_SourceFinder *pFinder,
                               std::deque<ArchiveCheck> *pArchives,
                               std::unordered_map<std::string, ArchiveCheck *> *pByName,
                               const _OV_InstOper *pOper)
{
    const char *pName = pOper->body.tar.pArchive;
    auto [known, bNew] = pByName->emplace(plainName(pName), nullptr);

    if (bNew) {
        pArchives->emplace_back();
        known->second = &pArchives->back();
        known->second->pName = pName;
        known->second->source = OV_mediumLookAt(pFinder, pName);
    }
    const bool bThere = OV_checkSource(pCheck, &known->second->source, pName, pOper);
    return bThere ? known->second : nullptr;
}

void OV_checkArchives(OV_Check *pCheck)
{
    const _OV_instCDinst *pRoot = pCheck->reading.model.get();
    OV_SourceFinder finder = {pRoot->pSourceDir, {}};
    std::deque<ArchiveCheck> archives;
    std::unordered_map<std::string, ArchiveCheck *> byName;

    for (auto *pNode = pRoot->pPackageHead; pNode; pNode = pNode->pNext)
        for (auto *pOper = pNode->pPackage->pOperHead; pOper; pOper = pOper->pNext) {
            if (!OV_checkIsTar(pOper) || !OV_instIsText(pOper->body.tar.pArchive))
                continue;
            ArchiveCheck *pArchive = archiveOf(pCheck, &finder, &archives, &byName, pOper);
            if (!pArchive)
                continue;
            pArchive->uses.push_back({pOper, {}, 0, 0});
            pArchive->bases.insert(OV_checkBase(pOper));
        }
    for (size_t i = 0; i < archives.size(); i++) {
        OV_mediumShowProgress("archives", i, archives.size());
        if (!archives[i].uses.empty())
            checkArchive(pCheck, &archives[i]);
        archives[i] = {};
    }
    OV_mediumShowProgress(nullptr, 0, 0);
}
