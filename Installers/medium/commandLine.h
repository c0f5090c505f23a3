/* The command line of ovmedium. */
#ifndef OVMEDIUM_COMMANDLINE_H
#define OVMEDIUM_COMMANDLINE_H

#include <string>
#include <vector>

/* How every command ends. */
enum OV_MediumStatus {
    OV_MEDIUM_CLEAN = 0,    /* nothing to report */
    OV_MEDIUM_FINDINGS = 1, /* differences, something that would fail */
    OV_MEDIUM_FAILED = 2    /* it could not be done; the reason was told on standard error */
};

enum OV_MediumFormat { OV_MEDIUM_TEXT, OV_MEDIUM_JSON, OV_MEDIUM_SARIF };

/* What was asked for. What a command does not know stays as it is here. */
struct OV_MediumOptions {
    std::string command;
    std::string place = "."; /* the medium, or its description */
    std::string tree;        /* DEST, or DIR of "new" */
    std::string dest;        /* --dest */
    std::string medium;      /* --medium */
    OV_MediumFormat format = OV_MEDIUM_TEXT;
    std::vector<std::string> suites;
    std::vector<std::string> paths;
    bool bStrict = false;
    bool bWrite = false;
    bool bRemoveAll = false;
    bool bNoRoot = false;
    bool bDryRun = false;
};

/* The version of this program, which is setup's. */
const char *OV_mediumVersionNumber();

/* Reads the words into *pOptions. -1 when the command is to be carried out, else the status to end
 * with: help or the version were printed, or what is wrong was told. */
int OV_mediumReadOptions(int argc, char **argv, OV_MediumOptions *pOptions);

#endif
