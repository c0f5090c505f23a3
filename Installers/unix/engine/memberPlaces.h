/* Where an archive's members may go: below the directory that it is unpacked into, and below those
 * that trusted links in the members' way lead to. A stranger's link leads nowhere. */
#ifndef OVINST_ENGINE_MEMBERPLACES_H
#define OVINST_ENGINE_MEMBERPLACES_H

#include <string>
#include <unordered_map>
#include <vector>

#include "engine/archiveNames.h"
#include "engine/confined.h"

struct OV_MemberPlaces {
    const char *pDest;                            /* unpacked into */
    OV_Confinement *pConfinement;                 /* whose first directory is pDest */
    std::unordered_map<std::string, bool> exists; /* directories below pDest that were tried */
    std::string refusal; /* why a member is not to be written, for the log */
};

/* Adds to the confinement what one member needs. False when it is not to be written, for a link in
 * its way that is not followed; the archive had better not be unpacked. */
bool OV_instAllowMember(OV_MemberPlaces *pPlaces, const char *pMember);

/* The same for members as they stand in the archive, where links among them lead, too; false as
 * well for one that would leave pDest where the kernel does not see to that. */
bool OV_instAllowArchived(OV_MemberPlaces *pPlaces, const std::vector<OV_ArchivedMember> &members);

/* Whether there is any symbolic link below pDest. */
bool OV_instHoldsLinks(const char *pDest);

#endif
