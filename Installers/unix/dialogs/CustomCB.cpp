#include "dialogs/Custom.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <Xm/MessageB.h>
#include <Xm/ToggleB.h>

#include "dialogs/Maintenance.h"
#include "dialogs/sequence.h"
#include "Dialogs/windowTitle.h"
#include "description/configParts.h"
#include "engine/choices.h"
#include "dialogs/moveFiles.h"
#include "dialogs/preInstall.h"
#include "engine/selection.h"
#include "engine/setupState.h"
#include "engine/sizes.h"
#include "ut/text.h"
#include "ut/toolkit/bxutils.h"
#include "ut/toolkit/messageBox.h"
#include "ut/toolkit/rowList.h"
#include "ut/toolkit/scrolledLabel.h"
#include "ut/toolkit/uiut.h"
#include "ut/toolkit/widgetTree.h"

enum { MOST_FOLDER_LINES = 3 };

/* The dialog in use, and what was counted. */
static struct {
    Widget dialog; /* null when there is none */
    OV_ChoiceCounts counts;
} s_custom;

static void forget(Widget dialog, XtPointer, XtPointer)
{
    if (s_custom.dialog == dialog)
        s_custom.dialog = nullptr;
}

void OV_instCustomUse(Widget dialog)
{
    s_custom.dialog = dialog;
    s_custom.counts = {0, 0};
    XtAddCallback(dialog, XmNdestroyCallback, forget, nullptr);
}

static Widget find(const char *pName)
{
    return OV_instFindWidget(s_custom.dialog, pName);
}

/* ---- counting ---- */

static void showCounts()
{
    OV_instSetLiteralLabel(find("laCustomRequiredValue1"),
                           std::to_string(s_custom.counts.iRemove).c_str());
    OV_instSetLiteralLabel(find("laCustomAvailableValue1"),
                           std::to_string(s_custom.counts.iAdd).c_str());
}

void OV_instCustomUpdate(_OV_InstConfigList *pConfig, const _OV_InstConfigList *pChanged)
{
    OV_instCountChoices(pConfig, pChanged, &s_custom.counts);
    if (pConfig && pConfig->iType == OV_CONFIG_CUSDLG)
        showCounts();
}

void OV_instCustomUpdateReset()
{
    s_custom.counts = {0, 0};
}

void OV_instCustomAddRemoveUpdate(_OV_InstConfigList *pConfig)
{
    OV_instCustomUpdateReset();
    OV_instCustomUpdate(pConfig, pConfig);
}

void OV_instCustomUpdateSpaceFields()
{
    char caAvailable[OV_SIZE_TEXT] = "";
    char caRequired[OV_SIZE_TEXT] = "";

    OV_instGetFreeSpaceString(OV_instGetDestinationDirectory(), caAvailable);
    OV_instSetLiteralLabel(find("laCustomAvailableValue"), caAvailable);
    OV_instGetRequiredSpaceString(CDInstPtr, OV_InstGetLastConfig(), caRequired);
    OV_instSetLiteralLabel(find("laCustomRequiredValue"), caRequired);
}

/* ---- filling ---- */

static void showDescription(const char *pText)
{
    OV_instSetScrolledLabel(find("laCustomDescriptionItem"), find("sbCustomDescriptionItem"),
                            pText);
}

/* The counts do not depend on how far the rows are made, so they are taken once, behind them. */
static void fillOptions(_OV_InstConfigList *pConfig, _OV_InstConfigList *pCurrent)
{
    showDescription("");
    OV_instCustomFillOptions(s_custom.dialog, pConfig, pCurrent);
    OV_instCustomAddRemoveUpdate(pConfig);
}

/* The page gets its width from the instruction. */
static void showFolder(const char *pPath)
{
    Widget label = find("laCustomFolderPath");
    XtWidgetGeometry page = {};

    OV_instSetScrolledLabel(label, find("sbCustomFolder"), pPath, "/");
    if (XtIsRealized(label))
        return;
    (void)XtQueryGeometry(find("laCustom"), nullptr, &page);
    OV_instSizeScrolledLabel(label, page.width, MOST_FOLDER_LINES);
}

void OV_instUISetCustomDlg(_OV_InstConfigList *pConfig)
{
    const char *pRoot = OV_instGetRootDestinationDirectory();
    _OV_InstConfigList *pLeft = OV_InstGetLastConfig(); /* one of its own on the way back */

    OV_instSetLastDlg(pConfig);
    if (!s_custom.dialog)
        return;
    fillOptions(pConfig, pLeft);
    XtUnmanageChild(XmMessageBoxGetChild(s_custom.dialog, XmDIALOG_HELP_BUTTON));
    OV_instUpdateLabelString(XmMessageBoxGetChild(s_custom.dialog, XmDIALOG_OK_BUTTON), "Continue");
    showFolder(pRoot ? pRoot : "");
    OV_instCustomUpdateSpaceFields();
}

/* ---- callbacks of the rows ---- */

void OV_instCustomItemFocusCB(Widget, XtPointer child, XtPointer)
{
    const auto *pChild = static_cast<const _OV_InstConfigList *>(child);
    Widget change = find("pbCustomChangeOption");

    if (!pChild || !change)
        return;
    showDescription(OV_instGetConfigText(pChild));
    XtSetSensitive(change, pChild->iType != OV_CONFIG_SUITE);
    XtRemoveAllCallbacks(change, XmNactivateCallback);
    XtAddCallback(change, XmNactivateCallback, OV_instCustomPBChangeOptionsCB, child);
}

/* The refill labels the button "Continue" again: users find that on every list, however deep. */
void OV_instCustomPBChangeOptionsCB(Widget, XtPointer child, XtPointer)
{
    auto *pChild = static_cast<_OV_InstConfigList *>(child);

    if (!pChild || !s_custom.dialog)
        return;
    OV_instUpdateLabelString(XmMessageBoxGetChild(s_custom.dialog, XmDIALOG_OK_BUTTON), "OK");
    pChild->pParent = OV_InstGetLastConfig();
    OV_instUISetCustomDlg(pChild);
}

void OV_instCustomTBChangeCB(Widget, XtPointer child, XtPointer call)
{
    auto *pChild = static_cast<_OV_InstConfigList *>(child);
    const auto *pCall = static_cast<const XmToggleButtonCallbackStruct *>(call);

    if (!pChild || !pCall)
        return;
    pChild->iSelected = pCall->set ? 1 : 0;
    if (!pChild->iSelected && OV_instIsVital(pChild))
        (void)OV_instOkCancelMessageBox(
            OV_instGetMainTopLevelShell(),
            "This component is an essential part of the\napplication. If it is not installed, the "
            "application\nwill not run properly",
            "OK", nullptr, nullptr);
    OV_instCustomUpdateReset();
    OV_instCustomUpdate(OV_InstGetLastConfig(), pChild);
    OV_instCustomUpdateSpaceFields();
}

/* ---- callbacks of the dialog ---- */

void OV_instCustomMapCB(Widget widget, XtPointer, XtPointer)
{
    Widget rows = OV_instFindWidget(widget, "rcCustomOptions");

    OV_instSetWindowTitle(widget);
    OV_instGoToRow(rows, OV_instCurrentRow(rows));
}

void OV_instCustomSelectAllCB(Widget, XtPointer, XtPointer)
{
    _OV_InstConfigList *pShown = OV_InstGetLastConfig();

    if (!pShown)
        return;
    OV_instMarkAllConfig(pShown, 1);
    fillOptions(pShown, OV_instCustomCurrentOption(s_custom.dialog));
    OV_instCustomUpdateSpaceFields();
}

void OV_instCustomOKCB(Widget widget, XtPointer, XtPointer)
{
    _OV_InstConfigList *pShown = OV_InstGetLastConfig();

    if (!pShown)
        exit(1);
    if (pShown->pParent && pShown->pParent->iType != OV_CONFIG_MAINDLG) {
        _DisplayPreviousDlg(widget);
        pShown->pParent = nullptr;
        return;
    }
    SetConfigToInstall(pShown);
    if (!OV_instEnoughSpace(pShown) || !OV_instPreInstallCheck(CDInstPtr, pShown))
        return;
    (void)OV_instMoveFiles(widget, pShown); /* takes the dialog down; what fails is shown there */
}

void OV_instCustomCancelCB(Widget widget, XtPointer, XtPointer)
{
    _OV_InstConfigList *pShown = OV_InstGetLastConfig();

    if (!pShown)
        exit(1);
    if (OV_instMaintenanceExists())
        OV_instUndoChoices(pShown); /* beneath nested lists as well */
    if (pShown->pParent) {
        _DisplayPreviousDlg(widget);
        pShown->pParent = nullptr;
        return;
    }
    Widget maintenance = CreatembMaintenance(OV_instGetMainTopLevelShell());
    XtDestroyWidget(OV_instGetShell(widget));
    XtManageChild(maintenance);
    (void)OV_instRestoreLastDlg();
}

void OV_instCustomContinueCB(Widget, XtPointer, XtPointer) {}

/* ---- setting resources by text ---- */

static void setValue(Widget widget, const std::string &line)
{
    const size_t iEquals = line.find('=');
    const size_t iDot = line.rfind('.', iEquals);

    if (iEquals == std::string::npos || iDot == std::string::npos) {
        fputs(
            "Callback Error (BxSetValuesCB):\n\tSyntax Error - specify BxSetValuesCB data as\n\t  "
            "  <Widget Name>.<Resource> = <Value>",
            stdout);
        return;
    }
    WidgetList aNamed = BxWidgetIdsFromNames(widget, "BxSetValuesCB", line.substr(0, iDot).c_str());
    const std::string resource = OV_instTrimmed(line.substr(iDot + 1, iEquals - iDot - 1));
    const std::string value = OV_instTrimmed(line.substr(iEquals + 1));
    if (aNamed[0])
        XtVaSetValues(aNamed[0], XtVaTypedArg, resource.c_str(), XmRString, value.c_str(),
                      static_cast<int>(value.size() + 1), nullptr);
    XtFree(reinterpret_cast<char *>(aNamed));
}

void BxSetValuesCB(Widget widget, XtPointer text, XtPointer)
{
    const char *pLines = static_cast<const char *>(text);

    while (pLines && *pLines) {
        const size_t iLength = strcspn(pLines, "\n");
        if (iLength)
            setValue(widget, std::string(pLines, iLength));
        pLines += iLength + (pLines[iLength] == '\n');
    }
}
