#include "dialogs/sequence.h"

#include <cstdlib>

#include <Xm/MessageB.h>
#include <Xm/Xm.h>

#include "dialogs/Custom.h"
#include "dialogs/MainDlg.h"
#include "dialogs/Migration.h"
#include "dialogs/Viewlog.h"
#include "engine/selection.h"
#include "engine/setupState.h"
#include "ut/toolkit/messageBox.h"
#include "ut/owned.h"
#include "ut/strprint.h"
#include "ut/toolkit/uiut.h"
#include "ut/toolkit/widgetTree.h"

static _OV_InstConfigList *configOf(XtPointer pConfig)
{
    return static_cast<_OV_InstConfigList *>(pConfig);
}

static void takeDown(Widget widget)
{
    if (widget)
        XtDestroyWidget(OV_instGetShell(widget));
}

static void showMainDlg(_OV_InstConfigList *pConfig)
{
    Widget dialog = CreatembMainDlg(OV_instGetMainTopLevelShell());

    OV_instUISetMainDlg(dialog, pConfig);
    XtManageChild(dialog);
}

void OV_instConfigureMainDlgCB(Widget widget, XtPointer pConfig, XtPointer)
{
    takeDown(widget);
    configOf(pConfig)->pParent = OV_InstGetLastConfig(); /* by it Cancel is labelled and works */
    showMainDlg(configOf(pConfig));
}

void OV_instConfigureCustomDlgCB(Widget widget, XtPointer pConfig, XtPointer)
{
    Widget dialog;

    takeDown(widget);
    dialog = CreatembCustom(OV_instGetMainTopLevelShell());
    if (OV_instInstallationMode != 1)
        XtUnmanageChild(OV_instFindWidget(dialog, "foCustomComponentCount"));
    configOf(pConfig)->pParent = OV_InstGetLastConfig();
    OV_instUISetCustomDlg(configOf(pConfig));
    XtManageChild(dialog);
}

void _DisplayPreviousDlg(Widget widget)
{
    _OV_InstConfigList *pLast = OV_InstGetLastConfig();
    _OV_InstConfigList *pParent = pLast ? pLast->pParent : nullptr;

    if (!pParent)
        return;
    if (pParent->iType == OV_CONFIG_MAINDLG) {
        takeDown(widget);
        showMainDlg(pParent);
    } else if (pParent->iType == OV_CONFIG_CUSDLG) {
        OV_instUISetCustomDlg(pParent);
    }
}

void OV_instShowFirstMainDlg()
{
    _OV_InstConfigList *pFirst = OV_instGetConfigFromId(CDInstPtr, OV_FIRST_CONFIG);

    if (!pFirst) {
        (void)OV_instOkCancelMessageBox(OV_instGetMainTopLevelShell(),
                                        "Error: invalid or incomplete setup configuration file",
                                        "Exit Setup", nullptr, nullptr);
        exit(1);
    }
    pFirst->pParent = nullptr;
    showMainDlg(pFirst);
}

void OV_instPopupAfterMoveDataDialogs(Widget widget)
{
    (void)DoMigrate(widget); /* it tells */
    if (CDInstPtr && CDInstPtr->bDisplayLog)
        OV_instPopupViewlog(widget);
}
