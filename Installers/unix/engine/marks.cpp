#include "engine/marks.h"

#include <vector>

struct Mark {
    int32_t *pPlace;
    int32_t iValue;
};

struct OV_Marks {
    std::vector<Mark> marks;
};

static void note(OV_Marks *pMarks, int32_t *pPlace)
{
    pMarks->marks.push_back({pPlace, *pPlace});
}

OV_Marks *OV_instNoteMarks(_OV_instCDinst *pRoot)
{
    OV_Marks *pMarks = new OV_Marks;

    for (auto *pNode = pRoot->pPackageHead; pNode; pNode = pNode->pNext) {
        note(pMarks, &pNode->pPackage->iInstalled);
        note(pMarks, &pNode->pPackage->iPending);
    }
    for (auto *pSuite = pRoot->pSuiteHead; pSuite; pSuite = pSuite->pNext)
        note(pMarks, &pSuite->iState);
    for (auto *pConfig = pRoot->pConfigHead; pConfig; pConfig = pConfig->pNext) {
        note(pMarks, &pConfig->iInstalled);
        note(pMarks, &pConfig->iSelected);
        note(pMarks, &pConfig->iPending);
    }
    return pMarks;
}

void OV_instRestoreMarks(const OV_Marks *pMarks)
{
    for (const Mark &mark : pMarks->marks)
        *mark.pPlace = mark.iValue;
}

void OV_instFreeMarks(OV_Marks *pMarks)
{
    delete pMarks;
}
