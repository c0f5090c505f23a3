#include "dialogs/MainDlg.h"

#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <string>

#include <Xm/MessageB.h>

#include "Dialogs/ExitConfirmation.h"
#include "description/configParts.h"
#include "description/modules.h"
#include "dialogs/ChangeDestination.h"
#include "dialogs/Maintenance.h"
#include "dialogs/sequence.h"
#include "Dialogs/windowTitle.h"
#include "ut/toolkit/foldText.h"
#include "dialogs/moveFiles.h"
#include "engine/selection.h"
#include "engine/setupState.h"
#include "ut/toolkit/looks.h"
#include "ut/toolkit/picture.h"
#include "ut/owned.h"
#include "ut/toolkit/uiut.h"
#include "ut/toolkit/widgetTree.h"

enum { ONE_BUTTON_SLOT = 2, TEXT_WIDTH = 420 };

/* What a button does, in the order of OV_InstConfigType. */
static const XtCallbackProc s_afpActivate[] = {
    OV_instConfigureMainDlgCB, OV_instConfigureCustomDlgCB, OV_instMainDlgInstallationCB};
static_assert(sizeof(s_afpActivate) / sizeof(*s_afpActivate) == OV_CONFIG_COUNT,
              "one callback for each configuration kind");

/* ---- pictures ---- */

void OV_instSetPixmapOnWidget(Widget widget, const _OV_InstIcon *pIcon)
{
    if (!widget || !pIcon || !pIcon->pIcon1 || !*pIcon->pIcon1 || !pIcon->pIcon2 || !*pIcon->pIcon2)
        return;

    OwnedText path(OV_instModulePath(OV_instGetCdinstDirectory(), pIcon->pIcon1));
    if (!path) {
        fputs("Error: OV_instSetPixmapOnWidget, memory allocation error\n", stderr);
        exit(1);
    }
    void *pModule = dlopen(path.get(), RTLD_LAZY);
    if (!pModule) {
        fprintf(stderr, "Error: OV_instSetPixmapOnWidget, can't locate '%s'\n", path.get());
        return;
    }
    void *pLines = dlsym(pModule, pIcon->pIcon2);
    if (pLines)
        OV_instShowPicture(widget, static_cast<char **>(pLines));
    else
        fprintf(stderr, "Error: OV_instSetPixmapOnWidget, '%s' not in '%s'\n", pIcon->pIcon2,
                path.get());
    (void)dlclose(pModule); /* nothing could be done about a failure */
}

/* ---- filling a page ---- */

static Widget findSlot(Widget dialog, const char *pPrefix, int iSlot, const char *pSuffix = "")
{
    return OV_instFindWidget(dialog, (pPrefix + std::to_string(iSlot) + pSuffix).c_str());
}

[[noreturn]] static void badConfiguration()
{
    fputs("Error: bad configuration file\n", stderr);
    exit(1);
}

static void fillSlot(Widget dialog, int iSlot, _OV_InstConfigList *pChild)
{
    const int iWidth = OV_instScaleLength(XtDisplay(dialog), TEXT_WIDTH);
    Widget button = findSlot(dialog, "pbMainDlg", iSlot);

    if (!pChild || !pChild->pData || pChild->iType < 0 || pChild->iType >= OV_CONFIG_COUNT)
        badConfiguration();
    XtAddCallback(button, XmNactivateCallback, s_afpActivate[pChild->iType], pChild);
    OV_instSetPixmapOnWidget(button, pChild->pIcon);
    OV_instSetFoldedLabel(findSlot(dialog, "laMainDlg", iSlot, "Product"),
                          OV_instGetConfigName(pChild), iWidth);
    OV_instSetFoldedLabel(findSlot(dialog, "laMainDlg", iSlot, "Description"),
                          OV_instGetConfigText(pChild), iWidth);
}

static void emptySlot(Widget dialog, int iSlot)
{
    XtUnmanageChild(findSlot(dialog, "rcMainDlg", iSlot));
    if (iSlot == ONE_BUTTON_SLOT) /* spelt so: who drives dialogs by their texts knows it */
        OV_instUpdateLabelString(OV_instFindWidget(dialog, "laMainDlg"),
                                 "To start intallation, click the large button");
}

/* The texts begin at one line whatever the pictures' sizes are. */
static void alignButtons(Widget dialog)
{
    OV_makeAllWidgetSameMaxWidth(findSlot(dialog, "pbMainDlg", 1), findSlot(dialog, "pbMainDlg", 2),
                                 findSlot(dialog, "pbMainDlg", 3), findSlot(dialog, "pbMainDlg", 4),
                                 nullptr);
    for (int iSlot = 1; iSlot <= OV_MAINDLG_CHILDREN; iSlot++)
        XtVaSetValues(findSlot(dialog, "pbMainDlg", iSlot), XmNrecomputeSize, False, nullptr);
}

void OV_instUISetMainDlg(Widget dialog, _OV_InstConfigList *pConfig)
{
    int iMost = 0;
    const int32_t *aChildren = OV_instGetConfigChildren(pConfig, &iMost);

    XtUnmanageChild(XmMessageBoxGetChild(dialog, XmDIALOG_OK_BUTTON));
    XtUnmanageChild(XmMessageBoxGetChild(dialog, XmDIALOG_HELP_BUTTON));
    OV_instSetLastDlg(pConfig);
    OV_instUpdateLabelString(XmMessageBoxGetChild(dialog, XmDIALOG_CANCEL_BUTTON),
                             pConfig->pParent ? "Cancel" : "Exit Setup");
    for (int iSlot = 1; iSlot <= OV_MAINDLG_CHILDREN; iSlot++) {
        const int iId = aChildren && iSlot <= iMost ? aChildren[iSlot - 1] : 0;
        if (iId < 1) {
            emptySlot(dialog, iSlot);
            continue;
        }
        fillSlot(dialog, iSlot, OV_instGetConfigFromId(CDInstPtr, iId));
    }
    alignButtons(dialog);
}

/* ---- callbacks ---- */

static void showDestination(Widget widget)
{
    OV_instShowDestination(widget, "laMainDlgAvailableSpace", "txMainDlgFolder");
}

/* The keyboard starts at the page's first button, not at the one that leaves. */
static void focusFirst(Widget dialog)
{
    int iSlot = 1;

    while (iSlot < OV_MAINDLG_CHILDREN && !XtIsManaged(findSlot(dialog, "rcMainDlg", iSlot)))
        iSlot++;
    (void)XmProcessTraversal(findSlot(dialog, "pbMainDlg", iSlot), XmTRAVERSE_CURRENT);
}

void OV_instMainDlgMapCB(Widget widget, XtPointer, XtPointer)
{
    showDestination(widget);
    focusFirst(widget);
    OV_instSetWindowTitle(widget);
}

void OV_instMainDlgExitCB(Widget widget, XtPointer, XtPointer)
{
    _OV_InstConfigList *pLeft = OV_InstGetLastConfig();
    Widget shell = OV_instGetShell(widget);

    if (!pLeft)
        exit(1);
    if (!pLeft->pParent) {
        OV_exitSetupConfirmation(shell, "Setup has not yet modified any files", "");
        return;
    }
    Widget dialog = CreatembMainDlg(OV_instGetTLShell(widget));
    XtDestroyWidget(shell);
    OV_instUISetMainDlg(dialog, pLeft->pParent);
    pLeft->pParent = nullptr;
    XtManageChild(dialog);
}

void OV_instMainDlgInstallationCB(Widget widget, XtPointer config, XtPointer)
{
    _OV_InstConfigList *pConfig = static_cast<_OV_InstConfigList *>(config);

    if (!pConfig || pConfig->iType != OV_CONFIG_SUITE) {
        fputs("Error: can only install suites\n", stderr);
        exit(1);
    }
    SetConfigToInstall(pConfig);
    (void)OV_instMoveFiles(widget, pConfig); /* what fails there is shown there */
}

/* The way here is given up: one entry for every page of it. Pages can lead to each other, so the
 * links may go round. */
static void forgetWay()
{
    const _OV_InstConfigList *pConfig = OV_InstGetLastConfig();

    for (int i = 0; pConfig && i < OV_CONFIG_STORE; i++, pConfig = pConfig->pParent)
        (void)OV_instRestoreLastDlg();
}

void OV_instMainDlgChangeFolderCB(Widget widget, XtPointer, XtPointer)
{
    Widget shell = OV_instGetShell(widget);

    OV_instChangeDestination(shell);
    if (!OV_instInstallationMode) {
        showDestination(widget);
        return;
    }
    Widget maintenance = CreatembMaintenance(OV_instGetMainTopLevelShell());
    forgetWay();
    XtDestroyWidget(shell);
    OV_DisableAddButtonIfNecessary();
    XtManageChild(maintenance);
}
