#include "runs/asDialogs.h"

#include <unistd.h>

#include "description/reader.h"
#include "dialogs/moveFiles.h"
#include "dialogs/preInstall.h"
#include "engine/choices.h"
#include "engine/history.h"
#include "engine/installer.h"
#include "engine/selection.h"
#include "engine/setupState.h"
#include "engine/sizes.h"
#include "engine/startup.h"

enum { MAINTENANCE = 2 };

void workAsTheDialogsDo(const Medium &medium, bool bRemoveAll, const std::set<int> &selected,
                        const std::function<void(bool)> &started)
{
    bool bReady = freopen((medium.scratch / "output").c_str(), "w", stdout) != nullptr;
    (void)OV_instSetRunningDirectory(medium.place.c_str());
    OV_instPrepareEnvironment();
    CDInstPtr = OV_instReadCDinst((medium.place + "/cdinst.dat").c_str(), nullptr);
    if (!bReady || !CDInstPtr || OV_instSetRootDestination(medium.dest.c_str()) != 0)
        _exit(2);
    (void)OV_instSetSizes(CDInstPtr);
    std::string dest = OV_instGetDestinationDirectory();
    _OV_InstConfigList *pConfig = OV_instGetConfigFromId(CDInstPtr, MAINTENANCE);
    int iFound = OV_UpdateSuiteHistory(CDInstPtr, pConfig, CDInstPtr->pSuiteHead, dest.c_str(),
                                       OV_instGetProductName(), OV_instGetProductVersion());
    if (iFound)
        OV_instSetMaintenanceExists();
    if (started)
        started(iFound != 0);
    OV_instSetLastDlg(pConfig);
    SetConfigToInstall(pConfig);
    if (!bRemoveAll) {
        for (auto *pEach = CDInstPtr->pConfigHead; pEach; pEach = pEach->pNext)
            pEach->iSelected = selected.count(pEach->iId) > 0;
        (void)OV_instMoveFiles(nullptr, pConfig);
    } else {
        (void)OV_instPreInstallCheck(CDInstPtr, pConfig); /* nothing was changed: refused */
        SetSelectedFlags(pConfig, 0);
        (void)OV_instCommandLineInstall(CDInstPtr, pConfig, 1);
    }
    (void)fflush(nullptr);
    _exit(0);
}
