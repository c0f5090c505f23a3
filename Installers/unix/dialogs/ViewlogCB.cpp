#include "dialogs/Viewlog.h"

#include "ut/toolkit/logViewer.h"
#include "ut/toolkit/modal.h"
#include "ut/toolkit/widgetTree.h"

/* Ends the wait for the dialog. */
static int ViewlogDone;

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
    OV_instRunDialog(CreatembViewlog(parent), &ViewlogDone);
}
