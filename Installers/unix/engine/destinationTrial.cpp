#include "engine/destinationTrial.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "engine/history.h"
#include "engine/setupState.h"

struct OV_DestinationTrial {
    bool bFound;
    std::string destination; /* what follows is of the time before */
    std::string source;
    std::vector<int32_t *> marks; /* every mark that a check can set, and its value */
    std::vector<int32_t> values;
};

static void noteMarks(OV_DestinationTrial *pTrial)
{
    for (auto *pNode = CDInstPtr->pPackageHead; pNode; pNode = pNode->pNext)
        pTrial->marks.push_back(&pNode->pPackage->iInstalled);
    for (auto *pSuite = CDInstPtr->pSuiteHead; pSuite; pSuite = pSuite->pNext)
        pTrial->marks.push_back(&pSuite->iState);
    for (auto *pConfig = CDInstPtr->pConfigHead; pConfig; pConfig = pConfig->pNext) {
        pTrial->marks.push_back(&pConfig->iInstalled);
        pTrial->marks.push_back(&pConfig->iSelected);
    }
    for (const int32_t *pMark : pTrial->marks)
        pTrial->values.push_back(*pMark);
}

OV_DestinationTrial *OV_instTryDestination(const char *pPath)
{
    if (!CDInstPtr)
        return nullptr;
    const char *pOld = CDInstPtr->pInstallDir ? CDInstPtr->pInstallDir : "";
    const char *pSource = CDInstPtr->pSourceDir ? CDInstPtr->pSourceDir : "";
    OwnedTrial trial(new OV_DestinationTrial{false, pOld, pSource, {}, {}});

    noteMarks(trial.get());
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
    for (size_t i = 0; i < pTrial->marks.size(); i++)
        *pTrial->marks[i] = pTrial->values[i];
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
