#include "dialogs/Custom.h"

#include <Xm/Form.h>
#include <Xm/Label.h>
#include <Xm/RowColumn.h>
#include <Xm/ScrolledW.h>
#include <Xm/ToggleB.h>

#include "ut/toolkit/wrappedLabel.h"
#include "description/configParts.h"
#include "engine/choices.h"
#include "engine/selection.h"
#include "engine/setupState.h"
#include "engine/sizes.h"
#include "ut/toolkit/compound.h"
#include "ut/toolkit/looks.h"
#include "ut/toolkit/uibuild.h"
#include "ut/toolkit/uiut.h"
#include "ut/toolkit/widgetTree.h"

enum { ROW_GAP = 10 };

static const char s_caRow[] = "foCustomOptionsItem";
static const char s_caRowLooks[] = UI_SET("verticalSpacing", "0") UI_SET("horizontalSpacing", "0");

/* ---- a row ---- */

/* A press anywhere in a row makes it the current one, as its check box does. */
static void rowPressed(Widget, XtPointer toggle, XEvent *, Boolean *)
{
    (void)XmProcessTraversal(static_cast<Widget>(toggle), XmTRAVERSE_CURRENT);
}

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

static Widget addLabel(Widget row, const char *pName, Widget after, Widget toggle,
                       const char *pText)
{
    Widget label = XtVaCreateManagedWidget(
        pName, xmLabelWidgetClass, row, XmNleftAttachment, XmATTACH_WIDGET, XmNleftWidget, after,
        XmNtopAttachment, XmATTACH_FORM, XmNbottomAttachment, XmATTACH_FORM, nullptr);

    OV_instUpdateLabelString(label, pText);
    XtAddEventHandler(label, ButtonPressMask, False, rowPressed, toggle);
    return label;
}

static void addRow(Widget rows, _OV_InstConfigList *pChild)
{
    char caSize[OV_SIZE_TEXT];
    Widget row = XtVaCreateWidget(s_caRow, xmFormWidgetClass, rows, nullptr);
    Widget toggle = addToggle(row, pChild);
    Widget name = addLabel(row, "laCustomItemName", toggle, toggle, OV_instGetConfigName(pChild));

    diskSpace2String(OV_instGetWriteSize(CDInstPtr, pChild, 0), caSize);
    Widget size = addLabel(row, "laCustomItemSize", name, toggle, caSize);
    XtVaSetValues(size, XmNrightAttachment, XmATTACH_FORM, XmNalignment, XmALIGNMENT_END,
                  XmNleftOffset, OV_instScaleLength(XtDisplay(row), ROW_GAP), nullptr);
    XtSetSensitive(name, OV_instIsAllConfigSelected(pChild, 0) ? True : False);
    XtAddCallback(row, XmNfocusCallback, OV_instCustomItemFocusCB, pChild);
    XtManageChild(row);
}

/* ---- the list ---- */

static Dimension preferredWidth(Widget row)
{
    static const char *const s_apParts[] = {"tbCustomItem", "laCustomItemName", "laCustomItemSize"};
    int iWidth = OV_instScaleLength(XtDisplay(row), 2 * ROW_GAP);

    for (const char *pPart : s_apParts) {
        XtWidgetGeometry wanted = {};
        (void)XtQueryGeometry(XtNameToWidget(row, pPart), nullptr, &wanted);
        iWidth += wanted.width;
    }
    return static_cast<Dimension>(iWidth);
}

/* Rows are as wide as what is seen of the list, or as the longest of them: the figures then stand
 * in one column at its right. */
static void fitRows(Widget rows)
{
    Dimension width = 0;
    Dimension margin = 0;
    WidgetList aRows = nullptr;
    Cardinal iRows = 0;

    XtVaGetValues(XtParent(rows), XmNwidth, &width, nullptr);
    XtVaGetValues(rows, XmNchildren, &aRows, XmNnumChildren, &iRows, nullptr);
    for (Cardinal i = 0; i < iRows; i++) {
        Dimension preferred = preferredWidth(aRows[i]);
        width = preferred > width ? preferred : width;
    }
    XtVaGetValues(rows, XmNmarginWidth, &margin, nullptr);
    width = static_cast<Dimension>(width > 2 * margin ? width - 2 * margin : 1);
    for (Cardinal i = 0; i < iRows; i++)
        XtVaSetValues(aRows[i], XmNwidth, width, nullptr);
}

static void listResized(Widget, XtPointer rows, XEvent *, Boolean *)
{
    fitRows(static_cast<Widget>(rows));
}

/* The keyboard reaches the rows that are out of sight as well. */
static void showObscured(Widget window, XtPointer, XtPointer call)
{
    const auto *pCall = static_cast<const XmTraverseObscuredCallbackStruct *>(call);

    XmScrollVisible(window, pCall->traversal_destination, 0, 0);
}

static void clearRows(Widget rows)
{
    WidgetList aRows = nullptr;
    Cardinal iRows = 0;

    XtVaGetValues(rows, XmNchildren, &aRows, XmNnumChildren, &iRows, nullptr);
    XtUnmanageChildren(aRows, iRows);
    for (Cardinal i = iRows; i-- > 0;) /* within a callback they stay among the children for now */
        XtDestroyWidget(aRows[i]);
}

/* Once for each dialog: the toolkit's own clip window is not there before. */
static void watchList(Widget window, Widget rows)
{
    if (XtHasCallbacks(window, XmNtraverseObscuredCallback) == XtCallbackHasSome)
        return;
    XtAddCallback(window, XmNtraverseObscuredCallback, showObscured, nullptr);
    XtAddEventHandler(XtParent(rows), StructureNotifyMask, False, listResized, rows);
}

void OV_instCustomFillOptions(Widget dialog, _OV_InstConfigList *pConfig)
{
    Widget rows = OV_instFindWidget(dialog, "rcCustomOptions");
    Widget change = OV_instFindWidget(dialog, "pbCustomChangeOption");
    int iMost = 0;
    int iGroups = 0;
    bool bFocused = false;
    const int32_t *aChildren = OV_instGetConfigChildren(pConfig, &iMost);

    if (!rows)
        return;
    watchList(OV_instFindWidget(dialog, "swCustomOptions"), rows);
    clearRows(rows);
    (void)OV_instAddWidgetLooks(rows, s_caRow, xmFormWidgetClass, s_caRowLooks);
    OV_instSetWrappedLabel(OV_instFindWidget(dialog, "laCustomDescriptionItem"), "");
    XtRemoveAllCallbacks(change, XmNactivateCallback); /* of the list before */
    for (int i = 0; i < iMost && aChildren[i] > 0; i++) {
        _OV_InstConfigList *pChild = OV_instGetConfigFromId(CDInstPtr, aChildren[i]);
        if (!pChild)
            continue;
        OV_instResetPackagePasses(CDInstPtr->pPackageHead);
        if (!OV_instIsHidden(pChild))
            addRow(rows, pChild);
        if (!bFocused) /* shown or not: authors may hide the option whose text the page begins with
                        */
            OV_instCustomItemFocusCB(rows, pChild, nullptr);
        bFocused = true;
        iGroups += pChild->iType == OV_CONFIG_CUSDLG;
    }
    (iGroups ? XtManageChild : XtUnmanageChild)(change);
    fitRows(rows);
}
