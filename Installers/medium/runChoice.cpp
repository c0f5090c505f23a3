#include "medium/runChoice.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <set>

#include "description/reader.h"
#include "engine/choices.h"
#include "engine/history.h"
#include "engine/pending.h"
#include "engine/selection.h"
#include "engine/setupState.h"
#include "engine/sizes.h"
#include "engine/startup.h"
#include "medium/model.h"
#include "medium/output.h"
#include "ut/OVinstFileUtils.h"
#include "ut/guard.h"
#include "ut/owned.h"

static bool readMedium(const std::string &place, bool bToRun)
{
    const std::string path = OV_mediumDescription(place);
    std::string reason;

    CDInstPtr = OV_mediumReadModel(path.c_str(), &reason);
    if (CDInstPtr && bToRun) { /* it has been looked at: now with its modules */
        OV_instFreeCDinst(CDInstPtr);
        CDInstPtr = OV_instReadCDinst(path.c_str(), nullptr);
        reason = path + ": not taken";
    }
    if (!CDInstPtr) {
        OV_mediumTell("%s", reason.c_str());
        return false;
    }
    OwnedText directory(OV_instGetRealPath(path.c_str()));
    return directory && OV_instSetRunningDirectory(directory.get()) == 0;
}

static bool setDestination(const std::string &given)
{
    std::error_code failed;
    const std::string named = !given.empty()           ? given
                              : CDInstPtr->pInstallDir ? CDInstPtr->pInstallDir
                                                       : OV_DEFAULT_DESTINATION;
    const std::string path = std::filesystem::absolute(named, failed).string();

    OV_instSetDestinationGiven(true);
    if (!failed && OV_instSetRootDestination(path.c_str()) == 0 && OV_instGetDestinationDirectory())
        return true;
    OV_mediumTell("%s: no destination", named.c_str());
    return false;
}

/* ---- a configuration of all suites ---- */

static int unusedId()
{
    int iMost = 0;

    for (auto *pConfig = CDInstPtr->pConfigHead; pConfig; pConfig = pConfig->pNext)
        iMost = std::max(iMost, pConfig->iId);
    return iMost + 1;
}

static _OV_InstConfigList *addConfig(int *piId, int iType)
{
    _OV_InstConfigList *pConfig = newConfig(CDInstPtr, (*piId)++, iType);

    return pConfig && newConfigData(pConfig) ? pConfig : nullptr;
}

static int32_t *membersOf(_OV_InstConfigList *pGroup)
{
    return static_cast<_OV_InstCusDlg *>(pGroup->pData)->aChildren;
}

static bool addSuite(_OV_InstSuiteList *pSuite, int *piId)
{
    _OV_InstConfigList *pConfig = addConfig(piId, OV_CONFIG_SUITE);

    if (!pConfig)
        return false;
    static_cast<_OV_InstSuiteChoice *>(pConfig->pData)->pSuite = pSuite;
    pConfig->iInstalled = pConfig->iSelected = pSuite->iState;
    return true;
}

/* A list holds no more than so many members, so there are lists in a list. Null without memory, or
 * for more suites than that has room for. */
static _OV_InstConfigList *listAllSuites()
{
    int iId = unusedId();
    _OV_InstConfigList *pTop = addConfig(&iId, OV_CONFIG_CUSDLG);
    _OV_InstSuiteList *pSuite = CDInstPtr->pSuiteHead;

    for (int i = 0; pTop && pSuite && i < OV_CUSDLG_CHILDREN; i++) {
        membersOf(pTop)[i] = iId;
        _OV_InstConfigList *pList = addConfig(&iId, OV_CONFIG_CUSDLG);
        for (int j = 0; pList && pSuite && j < OV_CUSDLG_CHILDREN; j++, pSuite = pSuite->pNext) {
            membersOf(pList)[j] = iId;
            if (!addSuite(pSuite, &iId))
                return nullptr;
        }
        if (!pList)
            return nullptr;
    }
    return pSuite ? nullptr : pTop;
}

/* ---- the choices ---- */

static bool chooseSuites(const OV_MediumOptions *pOptions, OV_RunChoice *pChoice)
{
    std::set<const _OV_InstSuiteList *> wanted;

    for (const std::string &name : pOptions->suites) {
        const _OV_InstSuiteList *pSuite = OV_instGetSuiteFromName(CDInstPtr, name.c_str());
        if (!pSuite) {
            OV_mediumTell("the description has no suite '%s'", name.c_str());
            return false;
        }
        wanted.insert(pSuite);
    }
    pChoice->bInstalled = OV_instFindInstallation(OV_UNATTENDED_CONFIG);
    pChoice->pConfig = listAllSuites();
    if (!pChoice->pConfig) {
        OV_mediumTell("too many suites");
        return false;
    }
    OV_instMarkPending(CDInstPtr, pChoice->pConfig);
    for (auto *pConfig = pChoice->pConfig; pConfig; pConfig = pConfig->pNext)
        if (pConfig->iType == OV_CONFIG_SUITE)
            pConfig->iSelected = static_cast<int>(
                wanted.count(static_cast<_OV_InstSuiteChoice *>(pConfig->pData)->pSuite));
    return true;
}

static bool chooseRemoval(OV_RunChoice *pChoice)
{
    pChoice->pConfig = OV_instGetConfigFromId(CDInstPtr, OV_MAINTENANCE_CONFIG);
    pChoice->bRemoveAll = true;
    if (!pChoice->pConfig) {
        OV_mediumTell("the description has no configuration %d to remove by",
                      OV_MAINTENANCE_CONFIG);
        return false;
    }
    pChoice->bInstalled = OV_instFindInstallation(OV_MAINTENANCE_CONFIG);
    SetSelectedFlags(pChoice->pConfig, 0);
    return true;
}

static bool chooseUnattended(OV_RunChoice *pChoice)
{
    pChoice->pConfig = OV_instGetConfigFromId(CDInstPtr, OV_UNATTENDED_CONFIG);
    if (!pChoice->pConfig) {
        OV_mediumTell("the description has no configuration %d to install by",
                      OV_UNATTENDED_CONFIG);
        return false;
    }
    OV_instMarkAllConfig(pChoice->pConfig, 1);
    pChoice->bInstalled = OV_instFindInstallation(OV_UNATTENDED_CONFIG);
    return true;
}

/* A run takes a history that it can also write; without that it would take what is installed for
 * nothing. */
static bool isOutOfReach()
{
    const std::string dest = OV_instGetDestinationDirectory();
    const std::string path = dest + OV_SETUP_FOLDER + "/" + OV_instGetHistoryFile();
    OwnedFd history(OV_instGuardedOpen(path.c_str(), O_RDWR, 0));
    OV_RunFile installed;

    if (history.iFd >= 0 || (errno != EACCES && errno != EPERM && errno != EROFS))
        return false;
    const int iError = errno;
    if (!OV_instReadHistory(dest.c_str(), &installed))
        return false;
    OV_mediumTell("the installation in %s cannot be changed: %s", dest.c_str(), strerror(iError));
    return true;
}

bool OV_mediumChooseRun(const OV_MediumOptions *pOptions, bool bToRun, OV_RunChoice *pChoice)
{
    *pChoice = {nullptr, false, false};
    if (!readMedium(pOptions->place, bToRun) || !setDestination(pOptions->dest))
        return false;
    if (bToRun && OV_instSetSizes(CDInstPtr) == -1) {
        OV_mediumTell("the sizes cannot be computed");
        return false;
    }
    const bool bChosen = pOptions->bRemoveAll       ? chooseRemoval(pChoice)
                         : pOptions->suites.empty() ? chooseUnattended(pChoice)
                                                    : chooseSuites(pOptions, pChoice);
    return bChosen && (pChoice->bInstalled || !isOutOfReach());
}

void OV_mediumEndRunChoice()
{
    OV_instFreeCDinst(CDInstPtr);
    CDInstPtr = nullptr;
}
