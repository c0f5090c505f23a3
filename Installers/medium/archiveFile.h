/* Archives, read from their first to their last byte without unpacking anything. */
#ifndef OVMEDIUM_ARCHIVEFILE_H
#define OVMEDIUM_ARCHIVEFILE_H

#include <cstdint>
#include <functional>
#include <string>
#include <sys/stat.h>

enum OV_ArchiveKind {
    OV_ARCHIVE_PLAIN, /* or none at all, which reading tells */
    OV_ARCHIVE_BZIP2,
    OV_ARCHIVE_PACKED_ELSE /* by something that setup does not unpack */
};

/* A member, its texts as long as it is told. */
struct OV_ArchiveMember {
    const char *pName;
    const char *pHardLink; /* the member that it is another name of, or null */
    mode_t iType;          /* as in S_IFMT */
    int64_t lSize;
};

/* Calls tell for every member. False, with the reason, where the file cannot be read to its end;
 * what was read before that has been told. Memory does not grow with the file or its members. */
bool OV_mediumReadArchive(const char *pPath, OV_ArchiveKind *pKind,
                          const std::function<void(const OV_ArchiveMember &member)> &tell,
                          std::string *pReason);

#endif
