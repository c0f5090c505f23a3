#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <set>
#include <sys/stat.h>
#include <vector>

#include "description/scanner.h"
#include "ut/owned.h"
#include "medium/commands.h"
#include "medium/examine.h"
#include "medium/expectation.h"
#include "medium/members.h"
#include "medium/model.h"
#include "medium/output.h"
#include "ut/OVinstFileUtils.h"
#include "ut/replaceFile.h"
#include "ut/wholeFile.h"

/* A piece of the file that gets another text. */
struct Change {
    size_t iStart;
    size_t iEnd;
    std::string text;
};

/* A member as a list has it. */
struct ListedMember {
    std::string name;
    int64_t lSize;
};

struct ArchiveList {
    bool bReadable;
    std::vector<ListedMember> members;
};

struct Update {
    std::string path; /* the description */
    std::string medium;
    std::string text;          /* as it is */
    std::vector<size_t> lines; /* where they begin */
    OV_Reading reading;
    std::map<std::string, ArchiveList> archives; /* each is read once */
    std::vector<Change> changes;
    bool bTold;
};

/* ---- places in the file ---- */

/* What is left of a logical line, as setup reads it, with the place of each of its characters and
 * of its end. */
struct LineRest {
    std::string text;
    std::vector<size_t> places;
};

static bool offsetOf(const Update *pUpdate, const void *pWhat, size_t *piOffset)
{
    const OV_ReadPlace *pPlace = OV_mediumPlaceOf(&pUpdate->reading, pWhat);

    if (!pPlace || pPlace->iLine < 1 || static_cast<size_t>(pPlace->iLine) > pUpdate->lines.size())
        return false;
    *piOffset = pUpdate->lines[static_cast<size_t>(pPlace->iLine) - 1] +
                static_cast<size_t>(pPlace->iColumn) - 1;
    return *piOffset < pUpdate->text.size();
}

static LineRest restOfLine(const std::string &text, size_t iStart)
{
    LineRest rest;
    size_t i = iStart;

    for (; i < text.size() && text[i] != '\n'; i++) {
        const bool bContinued = text[i] == '\\' && i + 1 < text.size() && text[i + 1] == '\n';
        rest.text += bContinued ? ' ' : text[i];
        rest.places.push_back(i);
        i += bContinued;
    }
    rest.places.push_back(i);
    return rest;
}

static void tell(Update *pUpdate, const std::string &text)
{
    OV_mediumTell("%s", OV_mediumShown(text).c_str());
    pUpdate->bTold = true;
}

/* The reader takes 0 for 1. */
static int64_t unitsFor(int64_t lSize)
{
    return std::max<int64_t>(lSize, 1);
}

/* ---- copies ---- */

/* Puts the size where the number stands, or behind everything where there is none. */
static void changeSize(Update *pUpdate, const _OV_InstOper *pOper, int64_t lSize)
{
    const std::string size = std::to_string(lSize);
    size_t iStart = 0;

    if (offsetOf(pUpdate, &pOper->lUnits, &iStart)) {
        size_t iEnd = iStart + strspn(pUpdate->text.c_str() + iStart, "0123456789");
        if (iEnd == iStart + 1 && strchr("xX", pUpdate->text[iEnd]) && pUpdate->text[iEnd])
            iEnd += 1 + strspn(pUpdate->text.c_str() + iEnd + 1, "0123456789abcdefABCDEF");
        pUpdate->changes.push_back({iStart, iEnd, size});
    } else if (offsetOf(pUpdate, pOper->body.copy.pSource, &iStart)) {
        const LineRest rest = restOfLine(pUpdate->text, iStart);
        const size_t iLast = rest.text.find_last_not_of(" \t");
        const size_t iEnd = rest.places[iLast == rest.text.npos ? 0 : iLast] + 1;
        pUpdate->changes.push_back({iEnd, iEnd, " " + size});
    }
}

static void updateCopy(Update *pUpdate, const _OV_InstOper *pOper)
{
    struct stat info = {};

    OwnedFd source(OV_mediumOpenSource(pUpdate->medium + pOper->body.copy.pSource, &info));
    if (source.iFd < 0)
        pUpdate->bTold = true;
    else if (unitsFor(info.st_size) != pOper->lUnits)
        changeSize(pUpdate, pOper, info.st_size);
}

/* ---- archives ---- */

/* Names that differ only in how they are written: without "./", and without a directory's slash. */
static std::string plainName(const std::string &name)
{
    const std::string plain = OV_mediumCleanPath(name);

    return plain == "." ? "" : plain;
}

static bool isSpeakable(const std::string &name)
{
    return name.find_first_of("\"\\\n") == name.npos;
}

/* Takes a member in. One that stands in the archive twice is unpacked twice, the last one stays. */
static void takeMember(Update *pUpdate, const std::string &archive, const OV_Member &member,
                       std::map<std::string, size_t> *pKnown, ArchiveList *pList)
{
    const int64_t lSize = S_ISREG(member.iType) && !member.bHard ? member.lSize : 0;

    if (member.name.empty())
        return; /* what it is unpacked into */
    if (!isSpeakable(member.written)) {
        tell(pUpdate, archive + ": '" + member.written + "' cannot be listed");
        return;
    }
    const auto [known, bNew] = pKnown->emplace(plainName(member.written), pList->members.size());
    if (bNew)
        pList->members.push_back({member.written, lSize});
    else
        pList->members[known->second].lSize = lSize;
}

static const ArchiveList *listOf(Update *pUpdate, const std::string &archive)
{
    const auto [found, bNew] = pUpdate->archives.insert({
        archive, {false, {}}
    });
    std::map<std::string, size_t> known;
    OV_Member member;
    int iNext = -1;

    if (!bNew)
        return &found->second;
    OwnedMemberWalk walk = OV_mediumOpenArchive(pUpdate->medium + archive, true);
    while (walk && (iNext = OV_mediumNextMember(walk.get(), &member)) > 0)
        takeMember(pUpdate, archive, member, &known, &found->second);
    found->second.bReadable = iNext == 0;
    return &found->second;
}

static bool isTrue(const _OV_InstTar *pTar, const ArchiveList *pList)
{
    if (static_cast<size_t>(pTar->iCount) != pList->members.size())
        return false;
    for (size_t i = 0; i < pList->members.size(); i++)
        if (plainName(pTar->apMembers[i]) != plainName(pList->members[i].name) ||
            pTar->aUnits[i] != unitsFor(pList->members[i].lSize))
            return false;
    return true;
}

/* One member a line, and nothing behind the last one: the reader would take it for another. */
static std::string listText(const ArchiveList *pList)
{
    std::string text;

    for (const ListedMember &member : pList->members)
        text += " \\\n    \"" + member.name + "\" " + std::to_string(member.lSize);
    return text;
}

/* Puts the list behind the line's own number, which stays, or gets one where there is none. */
static void changeList(Update *pUpdate, const _OV_InstTar *pTar, const ArchiveList *pList)
{
    size_t iStart = 0;
    int64_t lNumber = 0;

    if (!offsetOf(pUpdate, pTar->pArchive, &iStart))
        return;
    const LineRest rest = restOfLine(pUpdate->text, iStart);
    const char *pCursor = rest.text.c_str();
    OwnedText archive(getQuotedString(pCursor, &pCursor));
    const char *pBehind = pCursor;
    if (!archive || scanInteger(pCursor, &pCursor, &lNumber) < 0)
        return; /* the reader has taken it, so this cannot be */
    const bool bNumber = pBehind[strcspn(pBehind, "0123456789")] != '\0';
    const size_t iFrom = static_cast<size_t>((bNumber ? pCursor : pBehind) - rest.text.c_str());
    pUpdate->changes.push_back(
        {rest.places[iFrom], rest.places.back(), (bNumber ? "" : " 0") + listText(pList)});
}

static void updateArchive(Update *pUpdate, const _OV_InstOper *pOper)
{
    const _OV_InstTar *pTar = &pOper->body.tar;
    const ArchiveList *pList = listOf(pUpdate, pTar->pArchive);

    if (!pList->bReadable)
        pUpdate->bTold = true;
    else if (!isTrue(pTar, pList))
        changeList(pUpdate, pTar, pList);
}

/* ---- the description ---- */

static bool readText(Update *pUpdate)
{
    OwnedFile file(fopen(pUpdate->path.c_str(), "re"));

    if (!file || OV_instReadWhole(file.get(), &pUpdate->text) < 0) {
        OV_mediumTell("%s: %s", pUpdate->path.c_str(), strerror(errno));
        return false;
    }
    pUpdate->lines.push_back(0);
    for (size_t i = 0; (i = pUpdate->text.find('\n', i)) != pUpdate->text.npos;)
        pUpdate->lines.push_back(++i);
    return true;
}

/* Reads it twice: as a model, and byte for byte. */
static bool readDescription(Update *pUpdate)
{
    OV_mediumRead(pUpdate->path.c_str(), &pUpdate->reading);
    for (const OV_ReadFault &fault : pUpdate->reading.faults)
        if (fault.bRejects)
            tell(pUpdate, pUpdate->path + ":" + std::to_string(fault.iLine) + ": " +
                              OV_mediumFaultSentence(&fault));
    return pUpdate->reading.model && readText(pUpdate);
}

static void updateOper(Update *pUpdate, const _OV_InstOper *pOper)
{
    if (pUpdate->reading.refused.count(pOper))
        return; /* which was told */
    if (pOper->iType == OV_OPER_COPY || pOper->iType == OV_OPER_COPYZ)
        updateCopy(pUpdate, pOper);
    else if (OV_mediumIsArchive(pOper))
        updateArchive(pUpdate, pOper);
}

static void updateAll(Update *pUpdate)
{
    std::vector<const _OV_InstOper *> opers;

    for (auto *pNode = pUpdate->reading.model->pPackageHead; pNode; pNode = pNode->pNext)
        for (auto *pOper = pNode->pPackage->pOperHead; pOper; pOper = pOper->pNext)
            opers.push_back(pOper);
    for (size_t i = 0; i < opers.size(); i++) {
        OV_mediumShowProgress("operations", i, opers.size());
        updateOper(pUpdate, opers[i]);
    }
    OV_mediumShowProgress(nullptr, 0, 0);
}

static std::string changedText(const Update *pUpdate)
{
    std::string text;
    size_t iDone = 0;

    for (const Change &change : pUpdate->changes) { /* in the order of the file */
        text.append(pUpdate->text, iDone, change.iStart - iDone);
        text += change.text;
        iDone = change.iEnd;
    }
    return text + pUpdate->text.substr(iDone);
}

static void synchroniseDirectory(const std::string &directory)
{
    OwnedFd opened(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));

    if (opened.iFd >= 0)
        (void)fsync(opened.iFd); /* the file itself is on the disk already */
}

/* A link to the description stays one. */
static bool writeText(const Update *pUpdate, const std::string &text)
{
    OwnedText real(realpath(pUpdate->path.c_str(), nullptr));
    OwnedText directory(real ? OV_instDirname(real.get()) : nullptr);
    OwnedText name(real ? OV_instBasename(real.get()) : nullptr);
    const struct stat ours = {};
    OV_Replacement replacement;

    if (!directory || !name ||
        OV_instBeginReplacement(&replacement, directory.get(), ".ovmedium.new", name.get(), &ours) <
            0) {
        OV_mediumTell("%s: %s", pUpdate->path.c_str(), strerror(errno));
        return false;
    }
    (void)fwrite(text.data(), 1, text.size(), replacement.pStream); /* the end tells */
    if (OV_instEndReplacement(&replacement, true) < 0) {
        OV_mediumTell("%s could not be written: %s", pUpdate->path.c_str(), strerror(errno));
        return false;
    }
    synchroniseDirectory(directory.get());
    return true;
}

int OV_mediumUpdate(const OV_MediumOptions *pOptions)
{
    Update update = {};

    update.path = OV_mediumDescription(pOptions->place);
    if (!readDescription(&update)) {
        if (!update.bTold)
            OV_mediumTell("%s cannot be read", update.path.c_str());
        return OV_MEDIUM_FAILED;
    }
    update.medium = update.reading.model->pSourceDir;
    updateAll(&update);
    const std::string text = changedText(&update);
    if (!pOptions->bWrite)
        (void)fwrite(text.data(), 1, text.size(), OV_mediumOut()); /* looked at when it is closed */
    else if (!update.changes.empty() && !writeText(&update, text))
        return OV_MEDIUM_FAILED;
    else
        OV_mediumPrint("%zu changed", update.changes.size());
    return update.bTold ? OV_MEDIUM_FINDINGS : OV_MEDIUM_CLEAN;
}
