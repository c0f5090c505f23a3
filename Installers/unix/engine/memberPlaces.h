/* Where an archive's members may go: below the directory that it is unpacked into, and below those
 * that trusted links in the members' way lead to. A stranger's link leads nowhere. */
#ifndef OVINST_ENGINE_MEMBERPLACES_H
#define OVINST_ENGINE_MEMBERPLACES_H

#include "description/model.h"
#include "engine/confined.h"

/* Adds to a confinement, whose first directory is pDest, opened, the other directories that the
 * entry's members are to be written to. An entry without members says nothing of its links, so the
 * confinement is then switched off. False when a member is not to be written, for a stranger's link
 * in its way or too many places; the command had better not be started. */
bool OV_instAllowMembers(const _OV_InstTar *pTar, const char *pDest, OV_Confinement *pConfinement);

#endif
