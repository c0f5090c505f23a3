/* Modules of functions and of pictures. */
#include "description/modules.h"
#include "medium/checkParts.h"
#include "medium/model.h"
#include "ut/owned.h"
#include "ut/text.h"

static void checkFunction(OV_Check *pCheck, OV_ModuleFiles *pFiles, const _OV_InstOper *pOper)
{
    const _OV_InstFunction *pFunction = &pOper->body.function;

    if (!OV_instIsText(pFunction->pModule))
        return; /* which was told */
    OV_mediumWatchFunction(
        pFiles, pCheck->reading.model->pSourceDir, pFunction, [&](const OV_ModuleFault &fault) {
            if (fault.subject.empty())
                return; /* likewise */
            const void *pWhat = !fault.bMissing && OV_instIsText(pFunction->pFunction) &&
                                        fault.subject == pFunction->pFunction
                                    ? pFunction->pFunction
                                    : pFunction->pModule;
            OV_checkTell(pCheck, fault.bMissing ? "module-missing" : "symbol-missing",
                         OV_checkSpot(pCheck, pWhat, pOper), fault.sentence, fault.subject)
                ->bRejects = true;
        });
}

/* An icon's module is looked for when its button is shown; without it the button has no picture. */
static void checkIcon(OV_Check *pCheck, OV_ModuleFiles *pFiles, const _OV_InstConfigList *pConfig)
{
    const _OV_InstIcon *pIcon = pConfig->pIcon;
    std::string reason;

    if (!pIcon || !OV_instIsText(pIcon->pIcon1) || !OV_instIsText(pIcon->pIcon2))
        return;
    OwnedText path(OV_instModulePath(pCheck->reading.model->pSourceDir, pIcon->pIcon1));
    const OV_Spot spot = OV_checkSpot(pCheck, pIcon, &pConfig->iId);
    if (!path || !OV_mediumOpenObject(pFiles, path.get(), &reason))
        OV_checkTell(pCheck, "module-missing", spot,
                     std::string("the module 'SetupFiles/") + pIcon->pIcon1 +
                         "' of the picture cannot be loaded: " + reason,
                     pIcon->pIcon1);
    else if (!OV_mediumHasSymbol(pFiles, path.get(), pIcon->pIcon2))
        OV_checkTell(pCheck, "symbol-missing", spot,
                     std::string("the module '") + pIcon->pIcon1 + "' has no picture '" +
                         pIcon->pIcon2 + "'",
                     pIcon->pIcon2);
}

void OV_checkModules(OV_Check *pCheck)
{
    const _OV_instCDinst *pRoot = pCheck->reading.model.get();
    OV_ModuleFiles files;

    for (auto *pNode = pRoot->pPackageHead; pNode; pNode = pNode->pNext)
        for (auto *pOper = pNode->pPackage->pOperHead; pOper; pOper = pOper->pNext)
            if (pOper->iType == OV_OPER_FUNCTION && !OV_checkIsRefused(pCheck, pOper))
                checkFunction(pCheck, &files, pOper);
    for (auto *pConfig = pRoot->pConfigHead; pConfig; pConfig = pConfig->pNext)
        checkIcon(pCheck, &files, pConfig);
}
