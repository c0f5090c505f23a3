#include <algorithm>

#include "engine/setupState.h"
#include "medium/checkParts.h"
#include "medium/commands.h"
#include "medium/model.h"
#include "medium/output.h"

OV_Spot OV_checkSpot(const OV_Check *pCheck, const void *pWhat, const void *pOther)
{
    const OV_ReadPlace *pPlace = OV_mediumPlaceOf(&pCheck->reading, pWhat);
    OV_Spot spot;

    if (!pPlace)
        pPlace = OV_mediumPlaceOf(&pCheck->reading, pOther);
    if (pPlace) {
        spot.iLine = pPlace->iLine;
        spot.iColumn = pPlace->iColumn;
    }
    return spot;
}

OV_Finding *OV_checkTell(OV_Check *pCheck, const char *pCode, OV_Spot spot,
                         const std::string &message, const std::string &subject)
{
    return OV_mediumAddFinding(&pCheck->findings, pCode, spot, message, subject);
}

bool OV_checkIsRefused(const OV_Check *pCheck, const _OV_InstOper *pOper)
{
    return pCheck->reading.refused.count(pOper) > 0;
}

/* In the order in which they are wanted: archives settle links that targets leave loose. */
static void (*const s_aParts[])(OV_Check *pCheck) = {
    OV_checkReading, OV_checkFields,  OV_checkNames,    OV_checkConfigurations, OV_checkModules,
    OV_checkFiles,   OV_checkTargets, OV_checkArchives, OV_checkLooseLinks,
};

static bool isRejecting(const OV_Finding &finding)
{
    return finding.bRejects;
}

int OV_mediumCheck(const OV_MediumOptions *pOptions)
{
    const std::string path = OV_mediumDescription(pOptions->place);
    OV_Check check = {};

    OV_mediumRead(path.c_str(), &check.reading);
    for (const OV_ReadFault &fault : check.reading.faults)
        if (fault.code == OV_FAULT_UNREADABLE) {
            OV_mediumTell("%s: %s", path.c_str(), OV_mediumFaultSentence(&fault).c_str());
            return OV_MEDIUM_FAILED;
        }
    if (!check.reading.model) {
        OV_mediumTell("%s: the description cannot be read", path.c_str());
        return OV_MEDIUM_FAILED;
    }
    OV_checkImagineTree(&check);
    for (auto part : s_aParts)
        part(&check);
    const auto &all = check.findings.all;
    const OV_FindingsReport report = {path, !check.reading.bRejected &&
                                                std::none_of(all.begin(), all.end(), isRejecting)};
    CDInstPtr = nullptr;
    OV_mediumPrintFindings(&check.findings, &report, pOptions->format);
    const bool bErrors = OV_mediumCountFindings(&check.findings, OV_ERROR) > 0;
    const bool bWarnings = OV_mediumCountFindings(&check.findings, OV_WARNING) > 0;
    return bErrors || (pOptions->bStrict && bWarnings) ? OV_MEDIUM_FINDINGS : OV_MEDIUM_CLEAN;
}
