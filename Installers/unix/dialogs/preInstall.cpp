#include "dialogs/preInstall.h"

#include <cstring>
#include <sys/stat.h>

#include "engine/fileOps.h"
#include "engine/pending.h"
#include "engine/selection.h"
#include "engine/setupState.h"
#include "ut/owned.h"
#include "ut/strprint.h"
#include "ut/toolkit/messageBox.h"
#include "ut/toolkit/uiut.h"

static int refuse(const char *pFormat, const char *pPath)
{
    OwnedText message(OV_instStrPrint(pFormat, pPath));

    if (message)
        (void)OV_instOkCancelMessageBox(OV_instGetMainTopLevelShell(), message.get(), "OK", nullptr,
                                        nullptr);
    return 0;
}

int OV_instPreInstallCheck(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig)
{
    struct stat info;

    OV_instSettlePending(pRoot, pConfig);
    OV_instUpdateNumInUseFlag(pRoot, pConfig, 1);
    OV_instUpdateNumInUseFlag(pRoot, pConfig, 0);
    if (OV_instNumPackagesAffected(pRoot, pConfig) <= 0)
        return refuse("%s", "Nothing to Install/Remove");
    OwnedText dest(strdup(GetDestinationDirectory(pRoot) ? GetDestinationDirectory(pRoot) : ""));
    OwnedText root(
        strdup(GetRootDestinationDirectory(pRoot) ? GetRootDestinationDirectory(pRoot) : ""));
    if (OV_instMkdir(dest.get(), OV_DIRECTORY_MODE, nullptr) < 0)
        return refuse("Unable to create install directory:\n%s", dest.get());
    if (stat(root.get(), &info) < 0)
        return 1;
    if (!S_ISDIR(info.st_mode))
        return refuse("Install path is not a directory:\n%s", root.get());
    if (!(info.st_mode & S_IRUSR) || !(info.st_mode & S_IWUSR))
        return refuse("Install path does not have read/write permissions:\n%s", root.get());
    return 1;
}
