#include "ut/toolkit/uibuild.h"

#include <X11/IntrinsicP.h>
#include <X11/CoreP.h>
#include <X11/Shell.h>
#include <Xm/Xm.h>
#include <Xm/MessageB.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "ut/toolkit/dialogShell.h"
#include "ut/toolkit/looks.h"

enum { MAX_WIDGETS = 64 };

/* A dialog being made. */
struct Build {
    const OV_WidgetRow *aRows;
    Widget aMade[MAX_WIDGETS];
    int iCount;
};

/* A wrong table is a mistake in the program, which its first run shows. */
[[noreturn]] static void badTable(const char *pName, const char *pReason)
{
    fprintf(stderr, "Error: dialog table, %s: %s\n", pName, pReason);
    exit(1);
}

/* The row made under that name, or -1. */
static int findRow(const Build *pBuild, const char *pName)
{
    for (int i = 0; i < pBuild->iCount; i++) {
        if (!strcmp(pBuild->aRows[i].pName, pName))
            return i;
    }
    return -1;
}

static bool isShellClass(WidgetClass kind)
{
    for (; kind; kind = kind->core_class.superclass) {
        if (kind == shellWidgetClass)
            return true;
    }
    return false;
}

/* The widget that a row belongs below. */
static Widget parentOf(const Build *pBuild, const OV_WidgetRow *pRow, Widget parent)
{
    if (pBuild->iCount == 0 && pRow->pParent)
        badTable(pRow->pName, "the first row has a parent");
    if (pBuild->iCount == 0)
        return parent;

    int iUp = pRow->pParent ? findRow(pBuild, pRow->pParent) : -1;
    if (iUp < 0)
        badTable(pRow->pName, "no such parent above it");
    return pBuild->aMade[iUp];
}

/* What the program's logic rests on is no look, so resources do not change it. */
static Widget makeWidget(const OV_WidgetRow *pRow, Widget up)
{
    Arg aShellArgs[] = {
        {const_cast<String>(XmNallowShellResize), True}
    };
    Arg aDialogArgs[] = {
        {const_cast<String>(XmNautoUnmanage), False}
    };

    if (OV_instAddWidgetLooks(up, pRow->pName, *pRow->ppClass, pRow->pLooks) < 0)
        badTable(pRow->pName, "a look without a colon");
    if (isShellClass(*pRow->ppClass))
        return XtCreatePopupShell(pRow->pName, *pRow->ppClass, up, aShellArgs, 1);
    return XtCreateWidget(pRow->pName, *pRow->ppClass, up, aDialogArgs, XtIsShell(up) ? 1 : 0);
}

/* A message box keeps room for a message, which a dialog that brings its own contents leaves
 * empty. */
static void dropEmptyMessage(Widget dialog)
{
    XmString message = nullptr;

    if (!XmIsMessageBox(dialog))
        return;
    XtVaGetValues(dialog, XmNmessageString, &message, nullptr);
    if (!message || XmStringEmpty(message))
        XtUnmanageChild(XmMessageBoxGetChild(dialog, XmDIALOG_MESSAGE_LABEL));
    XmStringFree(message);
}

static void addCallbacks(const Build *pBuild, const OV_CallbackRow *pRow)
{
    for (; pRow && pRow->pName; pRow++) {
        int i = findRow(pBuild, pRow->pName);
        if (i < 0 || XtHasCallbacks(pBuild->aMade[i], pRow->pReason) == XtCallbackNoList)
            badTable(pRow->pName, "nothing to call back from");
        XtAddCallback(pBuild->aMade[i], pRow->pReason, pRow->fpCallback, nullptr);
    }
}

Widget OV_instBuildDialog(Widget parent, const OV_WidgetRow *aRows,
                          const OV_CallbackRow *aCallbacks)
{
    Build build = {aRows, {}, 0};

    for (const OV_WidgetRow *pRow = aRows; pRow->pName; pRow++) {
        if (build.iCount == MAX_WIDGETS || findRow(&build, pRow->pName) >= 0)
            badTable(pRow->pName, "too many rows, or two of the name");
        Widget up = parentOf(&build, pRow, parent);
        build.aMade[build.iCount] = makeWidget(pRow, up);
        build.iCount++;
    }
    if (build.iCount == 0)
        return nullptr;
    addCallbacks(&build, aCallbacks);

    int iDialog = XtIsShell(build.aMade[0]) && build.iCount > 1 ? 1 : 0;
    /* From the leaves upwards, so that each manager is laid out once with all it holds. */
    for (int i = build.iCount - 1; i > iDialog; i--)
        XtManageChild(build.aMade[i]);
    if (iDialog) {
        dropEmptyMessage(build.aMade[iDialog]);
        OV_instCompleteDialog(build.aMade[iDialog]);
    }
    return build.aMade[iDialog];
}
