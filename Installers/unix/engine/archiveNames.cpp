#include "engine/archiveNames.h"

#include <archive.h>
#include <archive_entry.h>
#include <memory>
#include <unistd.h>

enum { BLOCK = 128 * 1024 };

struct ArchiveFreed {
    void operator()(struct archive *pArchive) const { (void)archive_read_free(pArchive); }
};
using OwnedArchive = std::unique_ptr<struct archive, ArchiveFreed>;

/* A name as the locale has it, or as it stands there where the locale cannot show it. */
static std::string textOf(const char *pText, const char *pAsUtf8)
{
    return pText ? pText : pAsUtf8 ? pAsUtf8 : "";
}

static OV_ArchivedMember memberOf(struct archive_entry *pEntry)
{
    return {textOf(archive_entry_pathname(pEntry), archive_entry_pathname_utf8(pEntry)),
            textOf(archive_entry_symlink(pEntry), archive_entry_symlink_utf8(pEntry)),
            textOf(archive_entry_hardlink(pEntry), archive_entry_hardlink_utf8(pEntry)),
            archive_entry_filetype(pEntry) == AE_IFDIR};
}

static bool isHeader(int iResult)
{
    return iResult == ARCHIVE_OK || iResult == ARCHIVE_WARN;
}

std::vector<OV_ArchivedMember> OV_instArchivedMembers(int iArchive)
{
    std::vector<OV_ArchivedMember> members;
    struct archive_entry *pEntry = nullptr;
    const off_t lStart = lseek(iArchive, 0, SEEK_CUR);
    OwnedArchive archive(archive_read_new());

    if (!archive || lStart < 0)
        return members;
    (void)archive_read_support_filter_all(archive.get()); /* the missing ones are not met */
    (void)archive_read_support_format_tar(archive.get());
    if (archive_read_open_fd(archive.get(), iArchive, BLOCK) == ARCHIVE_OK)
        while (isHeader(archive_read_next_header(archive.get(), &pEntry)))
            members.push_back(memberOf(pEntry));
    (void)lseek(iArchive, lStart, SEEK_SET); /* could go back a moment ago */
    return members;
}
