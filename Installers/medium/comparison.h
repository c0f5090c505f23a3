/* An installed tree against its medium. */
#ifndef OVMEDIUM_COMPARISON_H
#define OVMEDIUM_COMPARISON_H

#include <string>
#include <vector>

#include "medium/expectation.h"
#include "medium/members.h"
#include "medium/tree.h"

struct OV_Comparison {
    OV_Expectation objects;           /* with their differences */
    std::vector<std::string> pending; /* packages */
    bool bAll = true;                 /* false when something could not be compared (told) */
};

/* Compares every package that is installed or pending. */
void OV_mediumCompare(const OV_MediumTree *pTree, OV_Comparison *pComparison);

/* Looks once more at an object that is not a member of an archive. False when something cannot be
 * read (told). */
bool OV_mediumCompareOne(const std::string &path, OV_Expected *pObject);

/* How many objects differ. */
size_t OV_mediumCountDifferent(const OV_Comparison *pComparison);

/* The lines that verify prints, and the status that it ends with. */
void OV_mediumPrintComparison(const OV_MediumTree *pTree, const OV_Comparison *pComparison);
int OV_mediumComparisonStatus(const OV_Comparison *pComparison);

/* The word for each difference that is set. */
std::vector<const char *> OV_mediumDifferenceWords(unsigned iDifferences);

/* Visits the members of an operation's archive in order, each with its path in the tree and its
 * number. False when the archive cannot be read to its end (told), or a visit gave false. */
template <typename Visit>
bool OV_mediumVisitMembers(const OV_MediumTree *pTree, const _OV_InstOper *pOper, Visit visit);

/* ---- for the template alone ---- */

std::string OV_mediumArchivePath(const OV_MediumTree *pTree, const _OV_InstOper *pOper);
std::string OV_mediumArchiveBase(const OV_MediumTree *pTree, const _OV_InstOper *pOper);

template <typename Visit>
bool OV_mediumVisitMembers(const OV_MediumTree *pTree, const _OV_InstOper *pOper, Visit visit)
{
    const bool bCompressed = pOper->iType == OV_OPER_UNTARZ || pOper->iType == OV_OPER_UNTARZ2;
    const std::string base = OV_mediumArchiveBase(pTree, pOper);
    OwnedMemberWalk walk = OV_mediumOpenArchive(OV_mediumArchivePath(pTree, pOper), bCompressed);
    OV_Member member;
    int iNext = walk ? 1 : -1;

    for (size_t i = 0; iNext > 0 && (iNext = OV_mediumNextMember(walk.get(), &member)) > 0; i++)
        if (!visit(walk.get(), member, base, i))
            return false;
    return iNext == 0;
}

#endif
