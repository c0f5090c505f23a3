/* The files that the medium has to have. */
#include "medium/checkParts.h"
#include "medium/sourceFile.h"
#include "ut/text.h"

static void checkCopy(OV_Check *pCheck, OV_SourceFinder *pFinder, const _OV_InstOper *pOper)
{
    const _OV_InstCopy *pCopy = &pOper->body.copy;
    const OV_SourceFile source = OV_mediumLookAt(pFinder, pCopy->pSource);

    if (!OV_checkSource(pCheck, &source, pCopy->pSource, pOper))
        return;
    if (OV_checkIsRefused(pCheck, pOper) || !OV_mediumPlaceOf(&pCheck->reading, &pOper->lUnits))
        return;                                                 /* it has none, which was told */
    const int64_t lBytes = source.lSize > 0 ? source.lSize : 1; /* as the reader counts it */
    if (lBytes != pOper->lUnits)
        OV_checkTell(pCheck, "size-differs", OV_checkSpot(pCheck, &pOper->lUnits, pOper),
                     std::string("'") + pCopy->pSource + "' has " + std::to_string(source.lSize) +
                         " bytes, not " + std::to_string(pOper->lUnits),
                     pCopy->pSource);
}

/* What setup itself looks for, without a line that names it. */
static void checkOwnFile(OV_Check *pCheck, OV_SourceFinder *pFinder, const char *pName,
                         const char *pCode, const char *pText)
{
    if (OV_mediumLookAt(pFinder, pName).state != OV_SOURCE_THERE)
        OV_checkTell(pCheck, pCode, {}, std::string("the medium has no '") + pName + "'" + pText,
                     pName);
}

void OV_checkFiles(OV_Check *pCheck)
{
    const _OV_instCDinst *pRoot = pCheck->reading.model.get();
    OV_SourceFinder finder = {pRoot->pSourceDir, {}};

    for (auto *pNode = pRoot->pPackageHead; pNode; pNode = pNode->pNext)
        for (auto *pOper = pNode->pPackage->pOperHead; pOper; pOper = pOper->pNext)
            if ((pOper->iType == OV_OPER_COPY || pOper->iType == OV_OPER_COPYZ) &&
                OV_instIsText(pOper->body.copy.pSource))
                checkCopy(pCheck, &finder, pOper);
    checkOwnFile(pCheck, &finder, "SetupFiles/eula.txt", "eula-missing",
                 ": the dialogs end behind the first page");
    checkOwnFile(pCheck, &finder, "Setup/Help/index.html", "help-missing", "");
}
