#include "dialogs/Maintenance.h"

#include <cstdlib>

#include <Xm/MessageB.h>

#include "Dialogs/ExitConfirmation.h"
#include "dialogs/sequence.h"
#include "Dialogs/windowTitle.h"
#include "ut/toolkit/foldText.h"
#include "engine/choices.h"
#include "engine/driver.h"
#include "engine/installer.h"
#include "engine/marks.h"
#include "engine/pending.h"
#include "engine/runLock.h"
#include "engine/setupState.h"
#include "ut/toolkit/looks.h"
#include "ut/frontEnd.h"
#include "ut/owned.h"
#include "ut/strprint.h"
#include "ut/toolkit/messageBox.h"
#include "ut/toolkit/uiut.h"
#include "ut/toolkit/widgetTree.h"

enum { WELCOME_WIDTH = 460 };

static struct {
    Widget dialog; /* the one made last; null when it is gone */
} s_maintenance;

static void forget(Widget dialog, XtPointer, XtPointer)
{
    if (s_maintenance.dialog == dialog)
        s_maintenance.dialog = nullptr;
}

void OV_instMaintenanceUse(Widget dialog)
{
    s_maintenance.dialog = dialog;
    OV_instSetMaintenanceExists();
    XtAddCallback(dialog, XmNdestroyCallback, forget, nullptr);
}

static _OV_InstConfigList *maintenanceConfig()
{
    return OV_instGetConfigFromId(CDInstPtr, OV_MAINTENANCE_CONFIG);
}

void OV_instTellUnfinished()
{
    const char *pDest = OV_instGetDestinationDirectory();

    if (pDest && OV_instIsRunLocked(pDest))
        return OV_instTellRunLocked(pDest);
    if (!OV_instHasPending(CDInstPtr))
        return;
    OwnedText text(
        OV_instStrPrint("The last installation of %s did not complete.\nAdd/Remove completes it.",
                        OV_instGetProductName()));
    (void)OV_instAsk(text.get(), "OK");
}

void OV_DisableAddButtonIfNecessary()
{
    if (s_maintenance.dialog && OV_instIsSingleSuite(maintenanceConfig()) &&
        !OV_instHasPending(CDInstPtr))
        XtSetSensitive(OV_instFindWidget(s_maintenance.dialog, "pbMaintenanceAddRemove"), False);
}

void OV_instMaintenanceWelcomeCreateCB(Widget label, XtPointer, XtPointer)
{
    OwnedText text(OV_instStrPrint("Welcome to the %s installation maintenance program.",
                                   OV_instGetProductName()));

    if (label)
        OV_instSetFoldedLabel(label, text.get(),
                              OV_instScaleLength(XtDisplay(label), WELCOME_WIDTH));
}

void OV_instMaintenanceMapCB(Widget widget, XtPointer, XtPointer)
{
    Widget addRemove = OV_instFindWidget(widget, "pbMaintenanceAddRemove");

    XtUnmanageChild(XmMessageBoxGetChild(widget, XmDIALOG_OK_BUTTON));
    XtUnmanageChild(XmMessageBoxGetChild(widget, XmDIALOG_HELP_BUTTON));
    Widget removeAll = OV_instFindWidget(widget, "pbMaintenanceRemoveall");
    OV_makeAllWidgetSameMaxWidth(addRemove, removeAll, nullptr);
    for (Widget button : {addRemove, removeAll}) /* whatever size the window gets */
        XtVaSetValues(button, XmNrecomputeSize, False, nullptr);
    OV_instSetWindowTitle(widget);
    /* Where it is insensitive the keyboard starts at the button that leaves, not at the one that
     * removes everything. */
    (void)XmProcessTraversal(
        XtIsSensitive(addRemove) ? addRemove : XmMessageBoxGetChild(widget, XmDIALOG_CANCEL_BUTTON),
        XmTRAVERSE_CURRENT);
}

void OV_instMaintenaceExitCB(Widget widget, XtPointer, XtPointer)
{
    OV_exitSetupConfirmation(OV_instGetShell(widget), "Setup has not yet modified any files", "");
}

[[noreturn]] static void noMaintenance()
{
    (void)OV_instOkCancelMessageBox(OV_instGetMainTopLevelShell(),
                                    "Error: invalid or incomplete setup configuration file",
                                    "Exit Setup", nullptr, nullptr);
    exit(1);
}

void OV_instMaintenanceAddRemoveCB(Widget widget, XtPointer, XtPointer)
{
    _OV_InstConfigList *pRoot = maintenanceConfig();

    if (!pRoot)
        noMaintenance();
    XtDestroyWidget(OV_instGetShell(widget));
    OV_instInstallationMode = 1;
    OV_instResetChoices(pRoot); /* what was chosen in an earlier visit */
    OV_instConfigureCustomDlgCB(nullptr, pRoot, nullptr);
    pRoot->pParent = nullptr; /* its Cancel comes back here, whatever was visited before */
}

/* Without a run there would be no window left to go on with, and what was marked for it must not
 * come into the next one. */
static void startRun(_OV_InstConfigList *pRoot, OV_InstMode iMode, const OV_Marks *pBefore)
{
    if (OV_instCommandLineInstall(CDInstPtr, pRoot, iMode) == 0)
        return;
    OV_instRestoreMarks(pBefore);
    Widget again = CreatembMaintenance(OV_instGetMainTopLevelShell());
    OV_DisableAddButtonIfNecessary();
    XtManageChild(again);
}

static bool isSure(const char *pQuestion)
{
    return OV_instConfirm(OV_instGetMainTopLevelShell(), pQuestion);
}

void OV_instMaintenanceRemoveallCB(Widget widget, XtPointer, XtPointer)
{
    _OV_InstConfigList *pRoot = maintenanceConfig();

    if (!isSure("Remove all files - are you sure ?"))
        return;
    XtDestroyWidget(OV_instGetShell(widget));
    const OwnedMarks before(OV_instNoteMarks(CDInstPtr));
    SetSelectedFlags(pRoot, 0);
    startRun(pRoot, OV_INST_DELETE_MODE, before.get());
}

void OV_instMaintenanceReinstallCB(Widget widget, XtPointer, XtPointer)
{
    _OV_InstConfigList *pRoot = maintenanceConfig();

    if (!isSure("Reinstall files - are you sure ?"))
        return;
    XtDestroyWidget(OV_instGetShell(widget));
    SetInstalledFlags(pRoot, 0);
    const OwnedMarks before(OV_instNoteMarks(CDInstPtr));
    startRun(pRoot, OV_INST_INSTALL_MODE, before.get());
}
