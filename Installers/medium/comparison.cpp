#include "medium/comparison.h"

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

#include "engine/driver.h"
#include "medium/examine.h"
#include "medium/output.h"
#include "ut/guard.h"

struct Word {
    OV_Difference difference;
    const char *pWord;
};

static const Word s_aWords[] = {
    {OV_DIFF_MISSING, "missing"},
    {OV_DIFF_TYPE,    "type"   },
    {OV_DIFF_CONTENT, "content"},
    {OV_DIFF_MODE,    "mode"   },
    {OV_DIFF_TARGET,  "target" },
};

/* ---- archives ---- */

std::string OV_mediumArchivePath(const OV_MediumTree *pTree, const _OV_InstOper *pOper)
{
    return pTree->medium + pOper->body.tar.pArchive;
}

std::string OV_mediumArchiveBase(const OV_MediumTree *pTree, const _OV_InstOper *pOper)
{
    OwnedText base(OV_instPlaceOf(pOper, pTree->dest.c_str()));

    return OV_mediumCleanPath(base ? base.get() : pTree->dest);
}

static bool isZero(int iFd, int64_t lCount)
{
    static const char s_caZero[4096] = {};
    char caBlock[sizeof(s_caZero)];

    while (lCount > 0) {
        const size_t iWanted =
            static_cast<size_t>(std::min<int64_t>(lCount, static_cast<int64_t>(sizeof(caBlock))));
        if (OV_mediumReadFull(iFd, caBlock, iWanted) != static_cast<ssize_t>(iWanted) ||
            memcmp(caBlock, s_caZero, iWanted) != 0)
            return false;
        lCount -= static_cast<int64_t>(iWanted);
    }
    return true;
}

/* Whether the file goes on with these bytes. */
static bool goesOnWith(int iFd, const char *pBytes, size_t iCount)
{
    char caBlock[64 * 1024];

    while (iCount > 0) {
        const size_t iWanted = std::min(iCount, sizeof(caBlock));
        if (OV_mediumReadFull(iFd, caBlock, iWanted) != static_cast<ssize_t>(iWanted) ||
            memcmp(caBlock, pBytes, iWanted) != 0)
            return false;
        pBytes += iWanted;
        iCount -= iWanted;
    }
    return true;
}

/* 1 or 0 for a file that holds the member's content or not, -1 for an archive that cannot be
 * read. */
static int holdsMember(int iFd, OV_MemberWalk *pWalk, int64_t lSize)
{
    OV_MemberPiece piece = {};
    int64_t lDone = 0;
    int iNext;

    while ((iNext = OV_mediumNextPiece(pWalk, &piece)) > 0) {
        if (!isZero(iFd, piece.lOffset - lDone) ||
            !goesOnWith(iFd, static_cast<const char *>(piece.pBytes), piece.iCount))
            return 0;
        lDone = piece.lOffset + static_cast<int64_t>(piece.iCount);
    }
    if (iNext < 0)
        return -1;
    return isZero(iFd, lSize - lDone);
}

static bool compareRegular(OV_MemberWalk *pWalk, const OV_Member &member, const std::string &path,
                           const OV_TreeObject *pFound, OV_Expected *pObject)
{
    if (pFound->info.st_size != member.lSize) {
        pObject->iDifferences |= OV_DIFF_CONTENT;
        return true;
    }
    OwnedFd file(OV_mediumOpenFound(pFound, path));
    const int iSame = file.iFd < 0 ? -1 : holdsMember(file.iFd, pWalk, member.lSize);
    if (iSame == 0)
        pObject->iDifferences |= OV_DIFF_CONTENT;
    return iSame >= 0;
}

/* A link to a directory stands for it. */
static bool leadsToDirectory(const std::string &path)
{
    OwnedFd directory(OV_instGuardedOpenDir(path.c_str()));

    return directory.iFd >= 0;
}

/* Notes what can be seen without reading: false when there is nothing more to be compared. */
static bool compareKind(const std::string &path, const OV_TreeObject *pFound, OV_Expected *pObject)
{
    if (pFound->iError) {
        pObject->iDifferences = OV_DIFF_MISSING;
        return false;
    }
    if (S_ISDIR(pObject->iType)) {
        if (!S_ISDIR(pFound->info.st_mode) && !leadsToDirectory(path))
            pObject->iDifferences = OV_DIFF_TYPE;
        return false;
    }
    if ((pFound->info.st_mode & S_IFMT) != pObject->iType) {
        pObject->iDifferences = OV_DIFF_TYPE;
        return false;
    }
    if ((pFound->info.st_mode & pObject->iJudged) != (pObject->iMode & pObject->iJudged))
        pObject->iDifferences = OV_DIFF_MODE;
    return true;
}

static bool compareMember(OV_MemberWalk *pWalk, const OV_Member &member, const std::string &path,
                          OV_Expected *pObject)
{
    OV_TreeObject found;

    if (!OV_mediumLook(path, &found))
        return false;
    if (!compareKind(path, &found, pObject))
        return true;
    if (S_ISREG(member.iType))
        return compareRegular(pWalk, member, path, &found, pObject);
    if (S_ISLNK(member.iType) && OV_mediumLinkText(&found) != member.link)
        pObject->iDifferences |= OV_DIFF_TARGET;
    return true;
}

static OV_Expected expectedMember(const OV_InstalledOper *pOper, const OV_Member &member,
                                  const std::string &base, size_t iIndex)
{
    OV_Expected object = {member.bHard ? OV_EXPECT_HARDLINK : OV_EXPECT_MEMBER,
                          pOper->pPackage,
                          pOper->pOper,
                          member.bHard ? static_cast<mode_t>(S_IFREG) : member.iType,
                          member.iMode,
                          0,
                          false,
                          iIndex,
                          member.link,
                          0};

    if (S_ISREG(member.iType) && !member.bHard)
        object.iJudged = S_IRWXU; /* the rest is what the umask left of it */
    if (member.bHard)
        object.source = OV_mediumCleanPath(base + "/" + member.link);
    return object;
}

static bool compareArchive(const OV_MediumTree *pTree, const OV_InstalledOper *pOper,
                           OV_Comparison *pComparison)
{
    const size_t iListed = static_cast<size_t>(pOper->pOper->body.tar.iCount);
    bool bAll = true;
    const bool bRead = OV_mediumVisitMembers(
        pTree, pOper->pOper,
        [&](OV_MemberWalk *pWalk, const OV_Member &member, const std::string &base, size_t i) {
            if (member.name.empty())
                return true; /* the directory that it goes to */
            const std::string path = OV_mediumCleanPath(base + "/" + member.name);
            OV_Expected object = expectedMember(pOper, member, base, i);
            if (object.kind == OV_EXPECT_MEMBER && !compareMember(pWalk, member, path, &object))
                bAll = false;
            pComparison->objects[path] = object;
            OV_mediumShowProgress("members", i, std::max(i + 1, iListed));
            return true;
        });

    return bRead && bAll;
}

/* ---- the rest ---- */

static bool compareFile(const std::string &path, const OV_TreeObject *pFound, OV_Expected *pObject)
{
    struct stat source;

    if (pObject->bAnyContent)
        return true;
    OwnedFd from(OV_mediumOpenSource(pObject->source, &source));
    if (from.iFd < 0)
        return false;
    if (source.st_dev == pFound->info.st_dev && source.st_ino == pFound->info.st_ino)
        return true;
    if (source.st_size != pFound->info.st_size) {
        pObject->iDifferences |= OV_DIFF_CONTENT;
        return true;
    }
    OwnedFd file(OV_mediumOpenFound(pFound, path));
    const int iSame = file.iFd < 0 ? -1 : OV_mediumSameContent(from.iFd, file.iFd, source.st_size);
    if (iSame == 0)
        pObject->iDifferences |= OV_DIFF_CONTENT;
    if (file.iFd >= 0 && iSame < 0)
        OV_mediumTell("%s: it cannot be read to its end", path.c_str());
    return iSame >= 0;
}

/* Another name of the same file, whatever kind that is. */
static bool compareHardLink(const OV_TreeObject *pFound, OV_Expected *pObject)
{
    OV_TreeObject target;

    if (!OV_mediumLook(pObject->source, &target))
        return false;
    if (pFound->iError)
        pObject->iDifferences = OV_DIFF_MISSING;
    else if (!target.iError && (target.info.st_mode & S_IFMT) != (pFound->info.st_mode & S_IFMT))
        pObject->iDifferences = OV_DIFF_TYPE;
    else if (target.iError || target.info.st_dev != pFound->info.st_dev ||
             target.info.st_ino != pFound->info.st_ino)
        pObject->iDifferences = OV_DIFF_TARGET;
    return true;
}

/* Setup fills the file that a link of root's or ours leads to, and so that may be it. */
static bool isBehindLink(const std::string &path, const OV_Expected *pObject)
{
    OV_TreeObject behind;
    OV_Expected file = *pObject;

    behind.object.reset(OV_instGuardedOpen(path.c_str(), O_PATH, 0));
    return behind.object.iFd >= 0 && fstat(behind.object.iFd, &behind.info) == 0 &&
           compareKind(path, &behind, &file) && compareFile(path, &behind, &file) &&
           !file.iDifferences;
}

/* A source that the medium lacks is told also where the file is missing. */
static bool hasSource(const OV_Expected *pObject)
{
    struct stat info;

    if (pObject->kind != OV_EXPECT_FILE)
        return true;
    OwnedFd source(OV_mediumOpenSource(pObject->source, &info));
    return source.iFd >= 0;
}

bool OV_mediumCompareOne(const std::string &path, OV_Expected *pObject)
{
    OV_TreeObject found;

    pObject->iDifferences = 0;
    if (!OV_mediumLook(path, &found))
        return false;
    if (pObject->kind == OV_EXPECT_HARDLINK)
        return compareHardLink(&found, pObject);
    if (pObject->kind == OV_EXPECT_FILE && !found.iError && S_ISLNK(found.info.st_mode) &&
        isBehindLink(path, pObject))
        return true;
    if (!compareKind(path, &found, pObject))
        return hasSource(pObject);
    if (pObject->kind == OV_EXPECT_FILE)
        return compareFile(path, &found, pObject);
    if (pObject->kind == OV_EXPECT_SOFTLINK && OV_mediumLinkText(&found) != pObject->source)
        pObject->iDifferences |= OV_DIFF_TARGET;
    return true;
}

/* ---- all of it ---- */

/* An archive that several packages unpack into the same place is read once. */
static bool isNew(const OV_MediumTree *pTree, const _OV_InstOper *pOper,
                  std::set<std::string> *pKnown)
{
    return pKnown
        ->insert(OV_mediumArchivePath(pTree, pOper) + "\n" + OV_mediumArchiveBase(pTree, pOper))
        .second;
}

void OV_mediumCompare(const OV_MediumTree *pTree, OV_Comparison *pComparison)
{
    const std::vector<OV_InstalledOper> opers = OV_mediumInstalledOpers(pTree, &pComparison->bAll);
    std::set<std::string> archives;
    size_t iDone = 0;

    for (const OV_InstalledOper &oper : opers)
        if (!OV_mediumIsArchive(oper.pOper))
            OV_mediumExpect(pTree, &oper, &pComparison->objects);
        else if (isNew(pTree, oper.pOper, &archives))
            pComparison->bAll &= compareArchive(pTree, &oper, pComparison);
    for (auto &[path, object] : pComparison->objects) {
        OV_mediumShowProgress("compared", iDone++, pComparison->objects.size());
        if (object.kind != OV_EXPECT_MEMBER && !OV_mediumCompareOne(path, &object))
            pComparison->bAll = false;
    }
    OV_mediumShowProgress(nullptr, 0, 0);
    pComparison->pending = OV_mediumPending(pTree);
}

size_t OV_mediumCountDifferent(const OV_Comparison *pComparison)
{
    size_t iCount = 0;

    for (const auto &[path, object] : pComparison->objects)
        iCount += object.iDifferences != 0;
    return iCount;
}

std::vector<const char *> OV_mediumDifferenceWords(unsigned iDifferences)
{
    std::vector<const char *> words;

    for (const Word &word : s_aWords)
        if (iDifferences & word.difference)
            words.push_back(word.pWord);
    return words;
}

void OV_mediumPrintComparison(const OV_MediumTree *pTree, const OV_Comparison *pComparison)
{
    for (const auto &[path, object] : pComparison->objects)
        for (const char *pWord : OV_mediumDifferenceWords(object.iDifferences))
            OV_mediumPrint("%s %s", pWord, OV_mediumShownPath(pTree, path).c_str());
    for (const std::string &name : pComparison->pending)
        OV_mediumPrint("pending %s", name.c_str());
    OV_mediumPrint("%zu checked, %zu different", pComparison->objects.size(),
                   OV_mediumCountDifferent(pComparison));
}

int OV_mediumComparisonStatus(const OV_Comparison *pComparison)
{
    if (!pComparison->bAll)
        return OV_MEDIUM_FAILED;
    return OV_mediumCountDifferent(pComparison) || !pComparison->pending.empty()
               ? OV_MEDIUM_FINDINGS
               : OV_MEDIUM_CLEAN;
}
