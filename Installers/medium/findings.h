/* What check has found, and how it is told. */
#ifndef OVMEDIUM_FINDINGS_H
#define OVMEDIUM_FINDINGS_H

#include <string>
#include <vector>

#include "medium/commandLine.h"

enum OV_Severity { OV_ERROR, OV_WARNING, OV_NOTE, OV_SEVERITY_COUNT };

/* A kind of finding. */
struct OV_FindingKind {
    const char *pCode;
    OV_Severity severity;
    const char *pTitle; /* for lists of all kinds */
};

/* All of them; a null code ends the table. */
extern const OV_FindingKind OV_mediumFindingKinds[];

/* A physical line and a byte in it, both from 1. What belongs to no line stands here. */
struct OV_Spot {
    int iLine = 1;
    int iColumn = 1;
};

struct OV_Finding {
    const OV_FindingKind *pKind;
    OV_Severity severity;
    bool bRejects; /* setup refuses the description for it */
    OV_Spot spot;
    std::string message;
    std::string subject;
};

struct OV_Findings {
    std::vector<OV_Finding> all;
};

/* Adds one with the severity of its kind, and gives it for whatever is different about it. */
OV_Finding *OV_mediumAddFinding(OV_Findings *pFindings, const char *pCode, OV_Spot spot,
                                const std::string &message, const std::string &subject);

/* What is printed besides the findings. */
struct OV_FindingsReport {
    std::string description; /* as it was named */
    bool bAccepted;
};

/* Sorts the findings and prints them. */
void OV_mediumPrintFindings(OV_Findings *pFindings, const OV_FindingsReport *pReport,
                            OV_MediumFormat format);

size_t OV_mediumCountFindings(const OV_Findings *pFindings, OV_Severity severity);

#endif
