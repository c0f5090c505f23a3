#include "medium/members.h"

#include <archive.h>
#include <archive_entry.h>

#include "medium/output.h"

enum { READ_SIZE = 256 * 1024 };

struct OV_MemberWalk {
    struct archive *pArchive;
    std::string path;
};

void OV_MemberWalkFreed::operator()(OV_MemberWalk *pWalk) const
{
    (void)archive_read_free(pWalk->pArchive); /* it was only read */
    delete pWalk;
}

static int tellUnreadable(const OV_MemberWalk *pWalk)
{
    const char *pReason = archive_error_string(pWalk->pArchive);

    OV_mediumTell("%s: %s", pWalk->path.c_str(), pReason ? pReason : "it cannot be read");
    return -1;
}

OwnedMemberWalk OV_mediumOpenArchive(const std::string &path, bool bCompressed)
{
    OwnedMemberWalk walk(new OV_MemberWalk{archive_read_new(), path});
    struct archive *pArchive = walk->pArchive;

    if (!pArchive || (bCompressed && archive_read_support_filter_all(pArchive) < ARCHIVE_WARN) ||
        archive_read_support_format_tar(pArchive) != ARCHIVE_OK ||
        archive_read_open_filename(pArchive, path.c_str(), READ_SIZE) != ARCHIVE_OK) {
        if (pArchive)
            (void)tellUnreadable(walk.get());
        return nullptr;
    }
    return walk;
}

/* The name as tar makes it: below the directory, whatever it begins with. False for one that leads
 * out of it. */
static bool cleanName(const std::string &name, std::string *pClean)
{
    pClean->clear();
    for (size_t iAt = 0; iAt < name.size();) {
        size_t iEnd = name.find('/', iAt);
        iEnd = iEnd == name.npos ? name.size() : iEnd;
        const std::string part = name.substr(iAt, iEnd - iAt);
        if (part == "..")
            return false;
        if (!part.empty() && part != ".")
            *pClean += (pClean->empty() ? "" : "/") + part;
        iAt = iEnd + 1;
    }
    return true;
}

/* A name that the locale cannot show is the archive's own bytes. */
static std::string textOf(const char *pText, const char *pBytes)
{
    return pText ? pText : pBytes ? pBytes : "";
}

int OV_mediumNextMember(OV_MemberWalk *pWalk, OV_Member *pMember)
{
    struct archive_entry *pEntry = nullptr;
    int iResult;

    for (;;) {
        iResult = archive_read_next_header(pWalk->pArchive, &pEntry);
        if (iResult == ARCHIVE_EOF)
            return 0;
        if (iResult == ARCHIVE_RETRY)
            continue;
        if (iResult < ARCHIVE_WARN)
            return tellUnreadable(pWalk);
        pMember->written =
            textOf(archive_entry_pathname(pEntry), archive_entry_pathname_utf8(pEntry));
        pMember->link = textOf(archive_entry_hardlink(pEntry), archive_entry_hardlink_utf8(pEntry));
        pMember->bHard = !pMember->link.empty();
        /* tar makes no link that leads out of the directory either */
        if (cleanName(pMember->written, &pMember->name) &&
            (!pMember->bHard || cleanName(std::string(pMember->link), &pMember->link)))
            break;
    }
    if (!pMember->bHard)
        pMember->link = textOf(archive_entry_symlink(pEntry), archive_entry_symlink_utf8(pEntry));
    pMember->iType = archive_entry_filetype(pEntry);
    pMember->iMode = archive_entry_perm(pEntry);
    pMember->lSize = archive_entry_size(pEntry);
    return 1;
}

int OV_mediumNextPiece(OV_MemberWalk *pWalk, OV_MemberPiece *pPiece)
{
    la_int64_t lOffset = 0;
    int iResult;

    do {
        iResult =
            archive_read_data_block(pWalk->pArchive, &pPiece->pBytes, &pPiece->iCount, &lOffset);
    } while (iResult == ARCHIVE_RETRY);
    pPiece->lOffset = lOffset;
    if (iResult == ARCHIVE_EOF)
        return 0;
    return iResult < ARCHIVE_WARN ? tellUnreadable(pWalk) : 1;
}
