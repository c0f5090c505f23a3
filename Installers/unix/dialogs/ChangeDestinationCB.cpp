#include "dialogs/ChangeDestination.h"

#include <cstdlib>
#include <memory>
#include <string>
#include <unistd.h>

#include <Xm/MessageB.h>
#include <Xm/TextF.h>

#include "Dialogs/ExitConfirmation.h"
#include "dialogs/Maintenance.h"
#include "dialogs/directoryBrowser.h"
#include "dialogs/sequence.h"
#include "Dialogs/windowTitle.h"
#include "engine/destinationTrial.h"
#include "engine/setupState.h"
#include "engine/sizes.h"
#include "ut/OVinstFileUtils.h"
#include "ut/owned.h"
#include "ut/toolkit/fieldValue.h"
#include "ut/toolkit/messageBox.h"
#include "ut/toolkit/modal.h"
#include "ut/toolkit/uiut.h"
#include "ut/toolkit/widgetTree.h"

static const char s_caField[] = "tfChangeDestination";

static int ChangeDestinationDone; /* ends the browser's loop */

/* ---- taking a path ---- */

static std::string rootDestination()
{
    const char *pRoot = OV_instGetRootDestinationDirectory();

    return pRoot ? pRoot : "";
}

static bool tellInternal(Widget box, const char *pReason)
{
    OV_instTellOver(box, "Internal error:\n(OV_instChangeDestinationBrowseOkCB) %s", pReason);
    return false;
}

/* Whether the folder is there, created where the user wants it. */
static bool provideFolder(Widget box, const char *pPath)
{
    return OV_instIsThere(pPath) ||
           OV_instOfferFolder(
               box, pPath,
               "The destination folder:\n'%s'\ndoes not exist. Do you want to create it?",
               "Unable to create install directory:\n%s");
}

/* Whether setup can go on with the destination. */
static bool takeDestination(Widget box, const char *pPath)
{
    OwnedTrial trial(OV_instTryDestination(pPath));

    if (!trial)
        return tellInternal(box, "can't duplicate destination path");
    if (!OV_instFoundInstallation(trial.get()))
        return true;
    if (OV_instOkCancelMessageBox(
            OV_instGetShell(box),
            "Previous installation found.\nDo you want to run setup in maintenance mode ?", "Yes",
            "No", nullptr) == 0) {
        OV_instInstallationMode = 1;
        return true;
    }
    /* The folder stays chosen, for an installation that knows nothing of the earlier one. */
    OV_instUndoTrial(trial.get());
    (void)OV_instSetRootDestination(pPath); /* it could be set a moment ago */
    return false;
}

/* The same for what the user has chosen or typed over the box. */
static bool takePath(Widget box, const char *pText)
{
    const char *pReason = nullptr;
    OwnedText path(OV_instGetAbsoluteChoice(pText, &pReason));

    if (!path)
        return tellInternal(box, pReason);
    return provideFolder(box, path.get()) && takeDestination(box, path.get());
}

/* ---- the browser ---- */

void OV_instChangeDestinationBrowseOkCB(Widget box, XtPointer, XtPointer)
{
    OwnedText text(OV_instGetBrowsed(box));

    if (text && takePath(box, text.get()))
        ChangeDestinationDone = 1;
}

void OV_instChangeDestinationBrowseCancelCB(Widget, XtPointer, XtPointer)
{
    ChangeDestinationDone = 1;
}

void OV_instChangeDestination(Widget parent)
{
    const char *pRoot = OV_instGetRootDestinationDirectory();
    OwnedText working(getcwd(nullptr, 0));
    const char *pStart = OV_instIsThere(pRoot) ? pRoot : working.get();
    const OV_DirectoryBrowser browser = {"dsChangeDestinationSelection",
                                         nullptr,
                                         "fsbChangeDestinationSelection",
                                         "Destination",
                                         pStart ? pStart : "",
                                         pRoot ? pRoot : "",
                                         OV_instChangeDestinationBrowseOkCB,
                                         OV_instChangeDestinationBrowseCancelCB,
                                         nullptr};

    OV_instRunDialog(OV_instCreateDirectoryBrowser(parent, &browser), &ChangeDestinationDone);
}

/* ---- the dialog ---- */

void OV_instShowDestination(Widget inDialog, const char *pSpaceLabel, const char *pFolderField)
{
    char caSpace[OV_SIZE_TEXT] = "";
    Widget field = OV_instFindWidget(inDialog, pFolderField);

    OV_instGetFreeSpaceString(OV_instGetDestinationDirectory(), caSpace);
    OV_instSetLiteralLabel(OV_instFindWidget(inDialog, pSpaceLabel), caSpace);
    OV_instSetFieldValue(field, rootDestination());
    /* The end of a long path says more than its beginning. */
    XmTextFieldSetInsertionPosition(field, XmTextFieldGetLastPosition(field));
}

static void showDestination(Widget widget)
{
    OV_instShowDestination(widget, "laChangeDestinationAvailableSpace", s_caField);
}

/* Whether setup can go on with what the field holds: with the destination as it is, where nobody
 * has typed. */
static bool takeField(Widget widget)
{
    const std::string typed = OV_instFieldText(widget, s_caField);

    if (!OV_instIsFieldChanged(OV_instFindWidget(widget, s_caField)))
        return true;
    if (typed.empty()) {
        OV_instTellOver(widget, "No directory is selected.");
        return false;
    }
    const std::string before = rootDestination();
    const bool bTaken = takePath(widget, typed.c_str());
    if (!bTaken && rootDestination() != before) /* taken, but not for maintenance */
        showDestination(widget);
    return bTaken;
}

static void showMaintenance(Widget shell)
{
    OV_instTellUnfinished();
    Widget maintenance = CreatembMaintenance(OV_instGetMainTopLevelShell());

    XtDestroyWidget(shell);
    OV_DisableAddButtonIfNecessary();
    XtManageChild(maintenance);
}

void OV_instChangeDestinationMapCB(Widget widget, XtPointer, XtPointer)
{
    XtUnmanageChild(XmMessageBoxGetChild(widget, XmDIALOG_HELP_BUTTON));
    showDestination(widget);
    OV_instSetWindowTitle(widget);
}

void OV_instChangeDestinationActivateCB(Widget widget, XtPointer, XtPointer)
{
    Widget shell = OV_instGetShell(widget);

    OV_instChangeDestination(shell);
    if (OV_instInstallationMode) {
        showMaintenance(shell);
        return;
    }
    showDestination(widget);
    /* Return takes what was chosen, and does not open the browser again. */
    (void)XmProcessTraversal(XmMessageBoxGetChild(OV_instGetTopManager(widget), XmDIALOG_OK_BUTTON),
                             XmTRAVERSE_CURRENT);
}

void OV_instChangeDestinationOKCB(Widget widget, XtPointer, XtPointer)
{
    Widget shell = OV_instGetShell(widget);

    if (!takeField(widget))
        return;
    if (OV_instInstallationMode) {
        showMaintenance(shell);
        return;
    }
    XtDestroyWidget(shell);
    OV_instShowFirstMainDlg();
}

void OV_instChangeDestinationExitCB(Widget widget, XtPointer, XtPointer)
{
    OV_exitSetupConfirmation(OV_instGetShell(widget), "Setup has not yet modified any files.", "");
}
