#include "ut/toolkit/modal.h"

#include <Xm/Xm.h>

#include "ut/toolkit/uiut.h"
#include "ut/toolkit/widgetTree.h"

static void noteGone(Widget, XtPointer dialog, XtPointer)
{
    *static_cast<Widget *>(dialog) = nullptr;
}

void OV_instTakeDown(Widget dialog)
{
    if (!dialog)
        return;
    XtUnmanageChild(dialog);
    OV_instPopdown(dialog); /* one that is dying cannot be unmanaged any more */
    XtDestroyWidget(OV_instGetShell(dialog));
}

void OV_instRunDialog(Widget dialog, int *piDone)
{
    Widget open = dialog;

    if (!dialog || !piDone)
        return;
    *piDone = 0;
    XtAddCallback(dialog, XmNdestroyCallback, noteGone, &open);
    XtManageChild(dialog);
    OV_instMainLoop(dialog, piDone);
    if (!open)
        return;
    XtRemoveCallback(dialog, XmNdestroyCallback, noteGone, &open); /* its variable is about to go */
    OV_instTakeDown(dialog);
}
