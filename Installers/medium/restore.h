/* Putting one object of a tree in its place again: beside it first, on the disk, then renamed over
 * it, so that it is the old one or the new one whenever the power fails. Directories on the way are
 * reached as ut/guard.h says. All return 0, or -1 with errno set and what was there as it was. */
#ifndef OVMEDIUM_RESTORE_H
#define OVMEDIUM_RESTORE_H

#include <string>
#include <sys/types.h>

#include "medium/expectation.h"
#include "medium/members.h"

/* A file, from the medium's file or from the member that the walk stands at. One that replaces a
 * regular file keeps its owner where the runner may give it away, and of its mode what is not
 * judged. */
int OV_mediumRestoreFile(const std::string &path, const OV_Expected *pObject);
int OV_mediumRestoreMember(const std::string &path, const OV_Expected *pObject,
                           OV_MemberWalk *pWalk);

/* Links: "source" is the text, or the path of the file to have another name. */
int OV_mediumRestoreSoftLink(const std::string &path, const std::string &text);
int OV_mediumRestoreHardLink(const std::string &path, const std::string &target);

/* The judged bits of the mode of a file whose content is right. */
int OV_mediumRestoreMode(const std::string &path, const OV_Expected *pObject);

/* Removes what a kill has left beside the objects of a directory. */
void OV_mediumSweep(const std::string &directory);

#endif
