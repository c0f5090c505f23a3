#include "dialogs/Custom.h"

#include <Xm/Form.h>
#include <Xm/Label.h>
#include <Xm/MessageB.h>
#include <Xm/ToggleB.h>
#include <algorithm>

#include "description/configParts.h"
#include "engine/choices.h"
#include "engine/selection.h"
#include "engine/setupState.h"
#include "engine/sizes.h"
#include "ut/toolkit/compound.h"
#include "ut/toolkit/foldText.h"
#include "ut/toolkit/looks.h"
#include "ut/toolkit/rowList.h"
#include "ut/toolkit/scrolledLabel.h"
#include "ut/toolkit/scrolledView.h"
#include "ut/toolkit/uibuild.h"
#include "ut/toolkit/uiut.h"
#include "ut/toolkit/widgetTree.h"

enum { ROW_GAP = 10 };

static const char s_caRow[] = "foCustomOptionsItem";
static const char s_caRowLooks[] = UI_SET("verticalSpacing", "0") UI_SET("horizontalSpacing", "0")
    UI_SET("shadowThickness", "1") UI_SET("marginWidth", "1") UI_SET("marginHeight", "1");

/* ---- a row ---- */

static Widget addToggle(Widget row, _OV_InstConfigList *pChild)
{
    XmString none = XmStringCreateLocalized(const_cast<char *>(""));
    Widget toggle = XtVaCreateManagedWidget(
        "tbCustomItem", xmToggleButtonWidgetClass, row, XmNlabelString, none, XmNset,
        pChild->iSelected == 1 ? XmSET : XmUNSET, XmNleftAttachment, XmATTACH_FORM,
        XmNtopAttachment, XmATTACH_FORM, XmNbottomAttachment, XmATTACH_FORM, nullptr);

    XmStringFree(none);
    XtAddCallback(toggle, XmNvalueChangedCallback, OV_instCustomTBChangeCB, pChild);
    return toggle;
}

static Widget addLabel(Widget row, const char *pName)
{
    return XtVaCreateManagedWidget(pName, xmLabelWidgetClass, row, XmNtopAttachment, XmATTACH_FORM,
                                   XmNbottomAttachment, XmATTACH_FORM, nullptr);
}

/* The size stands at the right edge, and the name between the two. */
static void addRow(Widget rows, _OV_InstConfigList *pChild)
{
    char caSize[OV_SIZE_TEXT];
    Widget row = XtVaCreateWidget(s_caRow, xmFormWidgetClass, rows, XmNuserData, pChild, nullptr);
    Widget toggle = addToggle(row, pChild);
    Widget name = addLabel(row, "laCustomItemName");
    Widget size = addLabel(row, "laCustomItemSize");

    diskSpace2String(OV_instGetWriteSize(CDInstPtr, pChild, 0), caSize);
    OV_instUpdateLabelString(size, caSize);
    XtVaSetValues(size, XmNrightAttachment, XmATTACH_FORM, nullptr);
    XtVaSetValues(name, XmNleftAttachment, XmATTACH_WIDGET, XmNleftWidget, toggle,
                  XmNrightAttachment, XmATTACH_WIDGET, XmNrightWidget, size, XmNrightOffset,
                  OV_instScaleLength(XtDisplay(row), ROW_GAP), nullptr);
    XtSetSensitive(name, OV_instIsAllConfigSelected(pChild, 0) ? True : False);
    XtAddCallback(row, XmNfocusCallback, OV_instCustomItemFocusCB, pChild);
    OV_instUseRow(row);
}

/* ---- the list ---- */

static _OV_InstConfigList *childOf(Widget row)
{
    _OV_InstConfigList *pChild = nullptr;

    XtVaGetValues(row, XmNuserData, &pChild, nullptr);
    return pChild;
}

static int preferredWidth(Widget row, const char *pPart)
{
    XtWidgetGeometry wanted = {};

    (void)XtQueryGeometry(XtNameToWidget(row, pPart), nullptr, &wanted);
    return wanted.width;
}

/* Names too long for the room between check box and size take more lines. */
static void foldName(Widget row, int iWidth)
{
    Widget name = XtNameToWidget(row, "laCustomItemName");

    iWidth -= preferredWidth(row, "tbCustomItem") + preferredWidth(row, "laCustomItemSize") +
              OV_instScaleLength(XtDisplay(row), 2 * ROW_GAP); /* its own borders, too */
    OV_instSetFoldedLabel(name, OV_instGetConfigName(childOf(row)), iWidth);
}

/* A list within a list says whose parts it has, in one line. */
static void showTitle(Widget label, int iWidth)
{
    const _OV_InstConfigList *pShown = OV_InstGetLastConfig();
    const bool bNested = pShown && pShown->pParent && pShown->pParent->iType == OV_CONFIG_CUSDLG;
    const char *pTitle = bNested ? OV_instGetConfigName(pShown) : "";

    if (OV_instIsCompoundText(pTitle))
        OV_instUpdateLabelString(label, pTitle);
    else
        OV_instSetLiteralLabel(label, OV_instCutText(label, pTitle, iWidth).c_str());
}

static int fitRows(Widget window, int iWidth)
{
    Widget rows = nullptr;
    Widget title = OV_instFindWidget(window, "laCustomOptionsOf");
    Dimension margin = 0;
    Dimension height = 0;

    showTitle(title, iWidth - preferredWidth(XtParent(title), "laCustomOptions"));

    XtVaGetValues(window, XmNworkWindow, &rows, nullptr);
    XtVaGetValues(rows, XmNmarginWidth, &margin, nullptr);
    iWidth = std::max(iWidth - 2 * margin, 1);
    for (Widget row : OV_instRows(rows)) {
        foldName(row, iWidth);
        XtVaSetValues(row, XmNwidth, static_cast<Dimension>(iWidth), nullptr);
    }
    XtVaGetValues(rows, XmNheight, &height, nullptr);
    return height;
}

/* They are managed all at once: laying the list out takes its time. */
static void showRows(Widget rows)
{
    std::vector<Widget> all = OV_instRows(rows);
    Widget clip = XtParent(rows);

    XtManageChildren(all.data(), static_cast<Cardinal>(all.size()));
    OV_instFitView(XtParent(clip), fitRows);
}

/* Without rows, a button that is about to go must not hand the keyboard to another. */
static void goToChild(Widget dialog, Widget rows, _OV_InstConfigList *pChild)
{
    const std::vector<Widget> all = OV_instRows(rows);
    const auto found =
        std::find_if(all.begin(), all.end(), [&](Widget row) { return childOf(row) == pChild; });

    if (all.empty())
        (void)XmProcessTraversal(XmMessageBoxGetChild(dialog, XmDIALOG_OK_BUTTON),
                                 XmTRAVERSE_CURRENT);
    if (found != all.end())
        OV_instCustomItemFocusCB(rows, pChild, nullptr);
    OV_instGoToRow(rows, found == all.end() ? 0 : static_cast<int>(found - all.begin()));
}

_OV_InstConfigList *OV_instCustomCurrentOption(Widget dialog)
{
    Widget rows = OV_instFindWidget(dialog, "rcCustomOptions");
    const int iRow = rows ? OV_instCurrentRow(rows) : -1;

    return iRow < 0 ? nullptr : childOf(OV_instRows(rows)[static_cast<size_t>(iRow)]);
}

/* A row for each option, and the description of the first. */
static int addRows(Widget rows, _OV_InstConfigList *pConfig)
{
    int iMost = 0;
    int iGroups = 0;
    bool bFocused = false;
    const int32_t *aChildren = OV_instGetConfigChildren(pConfig, &iMost);

    for (int i = 0; i < iMost && aChildren[i] > 0; i++) {
        _OV_InstConfigList *pChild = OV_instGetConfigFromId(CDInstPtr, aChildren[i]);
        if (!pChild)
            continue;
        OV_instResetPackagePasses(CDInstPtr->pPackageHead);
        if (!OV_instIsHidden(pChild))
            addRow(rows, pChild);
        if (!bFocused) /* shown or not: meant so */
            OV_instCustomItemFocusCB(rows, pChild, nullptr);
        bFocused = true;
        iGroups += pChild->iType == OV_CONFIG_CUSDLG;
    }
    return iGroups;
}

void OV_instCustomFillOptions(Widget dialog, _OV_InstConfigList *pConfig,
                              _OV_InstConfigList *pCurrent)
{
    Widget rows = OV_instFindWidget(dialog, "rcCustomOptions");
    Widget change = OV_instFindWidget(dialog, "pbCustomChangeOption");

    if (!rows)
        return;
    OV_instClearRows(rows);
    (void)OV_instAddWidgetLooks(rows, s_caRow, xmFormWidgetClass, s_caRowLooks);
    XtRemoveAllCallbacks(change, XmNactivateCallback); /* of the list before */
    const int iGroups = addRows(rows, pConfig);
    showRows(rows);
    goToChild(dialog, rows, pCurrent);
    (iGroups ? XtManageChild : XtUnmanageChild)(change);
}
