#include "medium/archiveFile.h"

#include <algorithm>
#include <archive.h>
#include <archive_entry.h>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <vector>

#include "ut/owned.h"

enum { PIECE = 256 * 1024, MAGIC = 6 };

struct ReadArchiveFreed {
    void operator()(struct archive *pArchive) const { (void)archive_read_free(pArchive); }
};
using OwnedReadArchive = std::unique_ptr<struct archive, ReadArchiveFreed>;

/* Where a plain archive's bytes come from: the file, or what its compression is undone by. */
struct Bytes {
    int iFile;
    int64_t lLeft;           /* of the file; what is passed over is not read */
    struct archive *pPacked; /* null for a plain file */
    std::vector<char> piece;
};

/* ---- the bytes ---- */

static la_ssize_t readPlain(struct archive *pArchive, Bytes *pBytes, const void **ppPiece)
{
    ssize_t iRead;

    do {
        iRead = read(pBytes->iFile, pBytes->piece.data(), pBytes->piece.size());
    } while (iRead < 0 && errno == EINTR);
    if (iRead < 0) {
        archive_set_error(pArchive, errno, "%s", strerror(errno));
        return -1;
    }
    pBytes->lLeft -= std::min<int64_t>(iRead, pBytes->lLeft);
    *ppPiece = pBytes->piece.data();
    return iRead;
}

static la_ssize_t readPacked(struct archive *pArchive, Bytes *pBytes, const void **ppPiece)
{
    size_t iSize = 0;
    la_int64_t lOffset = 0;
    int iResult;

    do {
        iResult = archive_read_data_block(pBytes->pPacked, ppPiece, &iSize, &lOffset);
    } while (iResult == ARCHIVE_RETRY || (iResult == ARCHIVE_OK && iSize == 0));
    if (iResult == ARCHIVE_EOF)
        return 0;
    if (iResult == ARCHIVE_OK || iResult == ARCHIVE_WARN)
        return static_cast<la_ssize_t>(iSize);
    archive_set_error(pArchive, EIO, "%s", archive_error_string(pBytes->pPacked));
    return -1;
}

static la_ssize_t readBytes(struct archive *pArchive, void *pContext, const void **ppPiece)
{
    Bytes *pBytes = static_cast<Bytes *>(pContext);

    return pBytes->pPacked ? readPacked(pArchive, pBytes, ppPiece)
                           : readPlain(pArchive, pBytes, ppPiece);
}

/* Never beyond the file's end: what is missing there has to be missed. */
static la_int64_t skipBytes(struct archive *, void *pContext, la_int64_t lWanted)
{
    Bytes *pBytes = static_cast<Bytes *>(pContext);
    const int64_t lSkipped = pBytes->pPacked ? 0 : std::min<int64_t>(lWanted, pBytes->lLeft);

    if (lSkipped <= 0 || lseek(pBytes->iFile, lSkipped, SEEK_CUR) < 0)
        return 0;
    pBytes->lLeft -= lSkipped;
    return lSkipped;
}

/* ---- compression ---- */

static const struct {
    const char *pMagic;
    size_t iLength;
    OV_ArchiveKind kind;
} s_aMagic[] = {
    {"BZh",                  3, OV_ARCHIVE_BZIP2      },
    {"\x1f\x8b",             2, OV_ARCHIVE_PACKED_ELSE},
    {"\x1f\x9d",             2, OV_ARCHIVE_PACKED_ELSE},
    {"\xfd\x37\x7a\x58\x5a", 5, OV_ARCHIVE_PACKED_ELSE},
    {"\x28\xb5\x2f\xfd",     4, OV_ARCHIVE_PACKED_ELSE},
    {nullptr,                0, OV_ARCHIVE_PLAIN      },
};

static OV_ArchiveKind kindOf(int iFile)
{
    char caStart[MAGIC] = "";
    const ssize_t iRead = pread(iFile, caStart, sizeof(caStart), 0);

    for (const auto *pRow = s_aMagic; pRow->pMagic; pRow++)
        if (iRead >= static_cast<ssize_t>(pRow->iLength) &&
            memcmp(caStart, pRow->pMagic, pRow->iLength) == 0)
            return pRow->kind;
    return OV_ARCHIVE_PLAIN;
}

/* What undoes the compression of a file, or null. */
static OwnedReadArchive openPacked(int iFile, std::string *pReason)
{
    OwnedReadArchive packed(archive_read_new());
    struct archive_entry *pEntry = nullptr;

    if (!packed)
        return nullptr;
    (void)archive_read_support_filter_bzip2(packed.get()); /* what is missing is not met */
    (void)archive_read_support_filter_gzip(packed.get());
    (void)archive_read_support_filter_compress(packed.get());
    (void)archive_read_support_filter_xz(packed.get());
    (void)archive_read_support_filter_zstd(packed.get());
    (void)archive_read_support_format_raw(packed.get());
    if (archive_read_open_fd(packed.get(), iFile, PIECE) == ARCHIVE_OK &&
        archive_read_next_header(packed.get(), &pEntry) == ARCHIVE_OK)
        return packed;
    const char *pWhy = archive_error_string(packed.get());
    *pReason = pWhy ? pWhy : "it holds nothing";
    return nullptr;
}

/* ---- members ---- */

/* The name that a member has as bytes, or the nearest to it. */
static const char *nameOf(struct archive_entry *pEntry)
{
    const char *pName = archive_entry_pathname(pEntry);

    if (!pName)
        pName = archive_entry_pathname_utf8(pEntry);
    return pName ? pName : "";
}

static bool readMembers(struct archive *pArchive,
                        const std::function<void(const OV_ArchiveMember &member)> &tell)
{
    struct archive_entry *pEntry = nullptr;
    int iResult;

    while ((iResult = archive_read_next_header(pArchive, &pEntry)) != ARCHIVE_EOF) {
        if (iResult == ARCHIVE_FATAL || iResult == ARCHIVE_FAILED)
            return false;
        if (iResult == ARCHIVE_RETRY)
            continue;
        tell({nameOf(pEntry), archive_entry_hardlink(pEntry), archive_entry_filetype(pEntry),
              archive_entry_size_is_set(pEntry) ? archive_entry_size(pEntry) : 0});
    }
    return true;
}

/* What stands behind the last member: damage there is damage, too. */
static bool readRest(struct archive *pArchive, Bytes *pBytes)
{
    const void *pPiece = nullptr;
    la_ssize_t iRead = 0;

    while (pBytes->pPacked && (iRead = readPacked(pArchive, pBytes, &pPiece)) > 0)
        continue;
    return iRead == 0;
}

static bool readAll(Bytes *pBytes, const std::function<void(const OV_ArchiveMember &member)> &tell,
                    std::string *pReason)
{
    OwnedReadArchive archive(archive_read_new());

    if (!archive)
        return false;
    (void)archive_read_support_format_tar(archive.get()); /* always there, like the next */
    (void)archive_read_support_format_empty(archive.get());
    (void)archive_read_set_read_callback(archive.get(), readBytes);
    (void)archive_read_set_skip_callback(archive.get(), skipBytes);
    (void)archive_read_set_callback_data(archive.get(), pBytes);
    if (archive_read_open1(archive.get()) == ARCHIVE_OK && readMembers(archive.get(), tell) &&
        readRest(archive.get(), pBytes))
        return true;
    const char *pWhy = archive_error_string(archive.get());
    *pReason = pWhy ? pWhy : "it is no archive";
    return false;
}

bool OV_mediumReadArchive(const char *pPath, OV_ArchiveKind *pKind,
                          const std::function<void(const OV_ArchiveMember &member)> &tell,
                          std::string *pReason)
{
    OwnedFd file(open(pPath, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    OwnedReadArchive packed;
    struct stat info;

    *pKind = OV_ARCHIVE_PLAIN;
    if (file.iFd < 0 || fstat(file.iFd, &info) < 0) {
        *pReason = strerror(errno);
        return false;
    }
    if (!S_ISREG(info.st_mode)) {
        *pReason = "it is no file";
        return false;
    }
    *pKind = kindOf(file.iFd);
    Bytes bytes = {file.iFd, info.st_size, nullptr, {}};
    if (*pKind == OV_ARCHIVE_PLAIN) {
        bytes.piece.resize(PIECE);
    } else {
        packed = openPacked(file.iFd, pReason);
        bytes.pPacked = packed.get();
        if (!packed)
            return false;
    }
    return readAll(&bytes, tell, pReason);
}
