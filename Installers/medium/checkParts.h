/* The parts of check: each looks at one side of a medium and adds what it finds. */
#ifndef OVMEDIUM_CHECKPARTS_H
#define OVMEDIUM_CHECKPARTS_H

#include <string>
#include <unordered_set>
#include <vector>

#include "medium/findings.h"
#include "medium/reading.h"

/* A link whose target nothing that a line names installs. */
struct OV_LooseLink {
    const _OV_InstOper *pOper;
    std::string target; /* as a path of the installed tree */
};

/* A check under way. */
struct OV_Check {
    OV_Reading reading;
    OV_Findings findings;
    std::vector<OV_LooseLink> looseLinks;
    std::unordered_set<std::string> looseTargets; /* those that no archive has turned out to hold */
};

/* Where something stands; where that is not known, where the other does. */
OV_Spot OV_checkSpot(const OV_Check *pCheck, const void *pWhat, const void *pOther = nullptr);

/* Shorter names for what all parts do: a finding at a spot, named after its subject. */
OV_Finding *OV_checkTell(OV_Check *pCheck, const char *pCode, OV_Spot spot,
                         const std::string &message, const std::string &subject);

/* Whether the line of the operation was refused, so that it is not known what it has. */
bool OV_checkIsRefused(const OV_Check *pCheck, const _OV_InstOper *pOper);

inline bool OV_checkIsTar(const _OV_InstOper *pOper)
{
    return pOper->iType >= OV_OPER_UNTAR && pOper->iType <= OV_OPER_UNTARZ2;
}

/* A path without what does not matter in it: "." and empty parts, and ".." with what it takes
 * back. */
std::string OV_checkPlainPath(const std::string &path);

/* The directory that an archive is unpacked in, or a link is made in, or the path that another
 * operation makes, in a tree that stands for any: everything is relative to its root and to the
 * product's directory in it. */
std::string OV_checkBase(const _OV_InstOper *pOper);
void OV_checkImagineTree(OV_Check *pCheck);

/* What the reader told; the words and numbers of the lines; names. */
void OV_checkReading(OV_Check *pCheck);
void OV_checkFields(OV_Check *pCheck);
void OV_checkNames(OV_Check *pCheck);

/* Pages, lists and options. */
void OV_checkConfigurations(OV_Check *pCheck);

/* Paths of the installed tree. The second tells of the links that stayed loose. */
void OV_checkTargets(OV_Check *pCheck);
void OV_checkLooseLinks(OV_Check *pCheck);

/* What lies on the medium. Archives settle loose links. */
void OV_checkFiles(OV_Check *pCheck);
void OV_checkArchives(OV_Check *pCheck);
void OV_checkModules(OV_Check *pCheck);

#endif
