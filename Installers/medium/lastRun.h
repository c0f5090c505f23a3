/* How the last run in a tree ended, by its lock, its run file and its log. */
#ifndef OVMEDIUM_LASTRUN_H
#define OVMEDIUM_LASTRUN_H

#include <string>
#include <vector>

#include "medium/tree.h"

enum OV_Verdict { OV_RUN_COMPLETE, OV_RUN_FAILED, OV_RUN_UNFINISHED, OV_RUN_RUNNING };

struct OV_LastRun {
    OV_Verdict verdict;
    std::vector<std::string> log; /* the lines behind the header of the last run */
};

OV_LastRun OV_mediumLastRun(const OV_MediumTree *pTree);

/* "complete", "failed" and so on. */
const char *OV_mediumVerdictWord(OV_Verdict verdict);

/* Adds to the log that everything is in its place again: until the next run, that is the verdict.
 * Without a log, or where the verdict is that already, nothing is written. */
void OV_mediumLogRepair(const OV_MediumTree *pTree);

#endif
