/* What an archive holds, without unpacking it. */
#ifndef OVINST_ENGINE_ARCHIVENAMES_H
#define OVINST_ENGINE_ARCHIVENAMES_H

#include <string>
#include <vector>

struct OV_ArchivedMember {
    std::string name;
    std::string symbolicLink; /* what it leads to; empty for none */
    std::string hardLink;     /* the member that it is a second name of; likewise */
    bool bDirectory;
};

/* All members of an opened archive, compressed or not, in their order; of a damaged one those in
 * front of the damage. Reads the file to its end and goes back to where it stood; nothing of a file
 * that cannot go back. */
std::vector<OV_ArchivedMember> OV_instArchivedMembers(int iArchive);

#endif
