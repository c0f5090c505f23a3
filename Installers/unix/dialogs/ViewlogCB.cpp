#include "dialogs/Viewlog.h"

#include <Xm/Xm.h>

#include "ut/toolkit/logViewer.h"
#include "ut/toolkit/uiut.h"
#include "ut/toolkit/widgetTree.h"

/* Ends the wait for the dialog. */
static int ViewlogDone;

static void forgetDialog(Widget, XtPointer dialog, XtPointer)
{
    *static_cast<Widget *>(dialog) = nullptr;
}

void OV_instViewlogCB(Widget widget, XtPointer, XtPointer)
{
    ViewLogfile(OV_instGetShell(widget));
}

void OV_instViewlogDoneCB(Widget, XtPointer, XtPointer)
{
    ViewlogDone = 1;
}

void OV_instPopupViewlog(Widget parent)
{
    if (!parent)
        return;
    Widget dialog = CreatembViewlog(parent);

    XtAddCallback(dialog, XmNdestroyCallback, forgetDialog, &dialog);
    ViewlogDone = 0;
    XtManageChild(dialog);
    OV_instMainLoop(dialog, &ViewlogDone);
    if (!dialog)
        return;
    XtRemoveCallback(dialog, XmNdestroyCallback, forgetDialog, &dialog); /* its variable goes */
    XtUnmanageChild(dialog); /* within nested loops the destruction may come much later */
    XtDestroyWidget(OV_instGetShell(dialog));
}
