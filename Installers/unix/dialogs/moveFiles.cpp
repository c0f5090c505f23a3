#include "dialogs/moveFiles.h"

#include <cstdio>
#include <cstdlib>

#include "engine/installer.h"
#include "dialogs/preInstall.h"
#include "engine/selection.h"
#include "engine/setupState.h"
#include "engine/sizes.h"
#include "ut/toolkit/widgetTree.h"

[[noreturn]] static void cannotMove()
{
    puts("*** Unable to move files");
    exit(1);
}

/* What the room is needed for: a suite itself, or the list that was shown last. */
static _OV_InstConfigList *spaceTarget(_OV_InstConfigList *pConfig)
{
    if (!pConfig)
        cannotMove();
    if (pConfig->iType == OV_CONFIG_SUITE)
        return pConfig;
    const _OV_InstCusDlg *pData = static_cast<const _OV_InstCusDlg *>(pConfig->pData);
    if (!pData || pData->iMoveBlocked)
        cannotMove();
    return OV_InstGetLastConfig();
}

int OV_instMoveFiles(Widget dialog, _OV_InstConfigList *pConfig)
{
    if (!OV_instEnoughSpace(spaceTarget(pConfig)))
        return 0;
    if (!OV_instPreInstallCheck(CDInstPtr, pConfig))
        return 0;
    int iResult = OV_instCommandLineInstall(CDInstPtr, pConfig, 0);
    if (iResult == 0 && dialog) /* a run that cannot start leaves the page as it was */
        XtDestroyWidget(OV_instGetShell(dialog));
    return iResult;
}
