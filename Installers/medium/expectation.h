/* What the packages of an installation leave in its tree, by setup's own rules. */
#ifndef OVMEDIUM_EXPECTATION_H
#define OVMEDIUM_EXPECTATION_H

#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

#include "description/model.h"
#include "medium/tree.h"

enum OV_ExpectedKind {
    OV_EXPECT_FILE,   /* a copy of the medium's file "source" */
    OV_EXPECT_MEMBER, /* a member of an archive: file, symbolic link, directory or other */
    OV_EXPECT_DIRECTORY,
    OV_EXPECT_SOFTLINK, /* "source" is its text */
    OV_EXPECT_HARDLINK  /* "source" is the path of the file that it is another name of */
};

/* How what is there differs. */
enum OV_Difference : unsigned {
    OV_DIFF_MISSING = 1,
    OV_DIFF_CONTENT = 2,
    OV_DIFF_MODE = 4,
    OV_DIFF_TYPE = 8,
    OV_DIFF_TARGET = 16
};

struct OV_Expected {
    OV_ExpectedKind kind;
    const _OV_InstPackage *pPackage;
    const _OV_InstOper *pOper;
    mode_t iType; /* S_IFREG and so on */
    mode_t iMode;
    mode_t iJudged;   /* the bits of the mode that have to be so */
    bool bAnyContent; /* others write to it */
    size_t iMember;   /* which one of the archive, from 0 */
    std::string source;
    unsigned iDifferences;
};

/* By path, which is absolute and has no slash at its end. */
using OV_Expectation = std::map<std::string, OV_Expected>;

/* A step of building one: an operation of a package that is installed or pending. */
struct OV_InstalledOper {
    const _OV_InstPackage *pPackage;
    const _OV_InstOper *pOper;
};

/* The operations that leave something, in the order in which setup carries them out. Packages that
 * the medium does not have are told, and *pbAll becomes false. */
std::vector<OV_InstalledOper> OV_mediumInstalledOpers(const OV_MediumTree *pTree, bool *pbAll);

/* Adds what an operation leaves, over what an earlier one left there; archives are not looked
 * into. */
void OV_mediumExpect(const OV_MediumTree *pTree, const OV_InstalledOper *pOper,
                     OV_Expectation *pExpectation);

bool OV_mediumIsArchive(const _OV_InstOper *pOper);

/* The path as an expectation has it. */
std::string OV_mediumCleanPath(const std::string &path);

/* The path as results have it: relative to the product's directory as long as it is below the root
 * destination. */
std::string OV_mediumShownPath(const OV_MediumTree *pTree, const std::string &path);

#endif
