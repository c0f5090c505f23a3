#include "engine/destinationTrial.h"

#include <cstdlib>
#include <cstring>
#include <string>

#include "engine/history.h"
#include "engine/marks.h"
#include "engine/setupState.h"

struct OV_DestinationTrial {
    bool bFound;
    std::string destination; /* what follows is of the time before */
    std::string source;
    OwnedMarks marks;
};

OV_DestinationTrial *OV_instTryDestination(const char *pPath)
{
    if (!CDInstPtr)
        return nullptr;
    const char *pOld = CDInstPtr->pInstallDir ? CDInstPtr->pInstallDir : "";
    const char *pSource = CDInstPtr->pSourceDir ? CDInstPtr->pSourceDir : "";
    OwnedTrial trial(
        new OV_DestinationTrial{false, pOld, pSource, OwnedMarks(OV_instNoteMarks(CDInstPtr))});

    if (OV_instSetRootDestination(pPath) < 0)
        return nullptr;
    trial->bFound = OV_instFindInstallation(OV_MAINTENANCE_CONFIG);
    if (!trial->bFound) /* a tree elsewhere that turned out to be useless */
        (void)OV_instSetRootDestination(pPath);
    return trial.release();
}

bool OV_instFoundInstallation(const OV_DestinationTrial *pTrial)
{
    return pTrial->bFound;
}

void OV_instUndoTrial(const OV_DestinationTrial *pTrial)
{
    OV_instRestoreMarks(pTrial->marks.get());
    if (char *pSource = strdup(pTrial->source.c_str())) { /* as it was, resolved or not */
        free(CDInstPtr->pSourceDir);
        CDInstPtr->pSourceDir = pSource;
    }
    (void)OV_instSetRootDestination(pTrial->destination.c_str());
}

void OV_instFreeTrial(OV_DestinationTrial *pTrial)
{
    delete pTrial;
}
