/* The members of an archive as tar unpacks them, read once from the first to the last. */
#ifndef OVMEDIUM_MEMBERS_H
#define OVMEDIUM_MEMBERS_H

#include <cstdint>
#include <memory>
#include <string>
#include <sys/types.h>

struct OV_Member {
    std::string written; /* its name as the archive has it */
    std::string name;    /* below the directory that the archive goes to; empty for that itself */
    std::string link;    /* text of a symbolic link, or the member that a hard link names */
    mode_t iType;        /* S_IFREG and so on */
    mode_t iMode;
    int64_t lSize;
    bool bHard; /* another name of a member before it */
};

struct OV_MemberWalk;
struct OV_MemberWalkFreed {
    void operator()(OV_MemberWalk *pWalk) const;
};
using OwnedMemberWalk = std::unique_ptr<OV_MemberWalk, OV_MemberWalkFreed>;

/* Opens an archive. What cannot be opened is told: null. */
OwnedMemberWalk OV_mediumOpenArchive(const std::string &path, bool bCompressed);

/* The next member that tar unpacks: those with ".." in their names are passed over, as it does. 1,
 * 0 behind the last, -1 for an archive that cannot be read on (told). */
int OV_mediumNextMember(OV_MemberWalk *pWalk, OV_Member *pMember);

/* A piece of the member's content; what lies between the pieces is zero. 1, 0 behind the last, -1
 * as above. */
struct OV_MemberPiece {
    const void *pBytes;
    size_t iCount;
    int64_t lOffset;
};
int OV_mediumNextPiece(OV_MemberWalk *pWalk, OV_MemberPiece *pPiece);

#endif
