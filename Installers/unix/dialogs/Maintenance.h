/* The maintenance dialog, shown in place of the first pages when the product is installed. */
#ifndef OVINST_DIALOGS_MAINTENANCE_H
#define OVINST_DIALOGS_MAINTENANCE_H

#include <X11/Intrinsic.h>

/* Makes the dialog below parent, unmanaged; the result is its message box. */
Widget CreatembMaintenance(Widget parent);

/* Tells, before the dialog is shown, of a last run that did not end well, or has not ended yet. */
void OV_instTellUnfinished();

/* Makes Add/Remove of the dialog that was made last insensitive when there is but one suite, and
 * nothing to be completed. */
void OV_DisableAddButtonIfNecessary(void);

/* Makes a dialog the one that the routine above acts on; CreatembMaintenance does it. */
void OV_instMaintenanceUse(Widget dialog);

/* Callbacks. No button reaches the last one today. */
void OV_instMaintenanceWelcomeCreateCB(Widget label, XtPointer pClient, XtPointer pCall);
void OV_instMaintenanceMapCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instMaintenaceExitCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instMaintenanceAddRemoveCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instMaintenanceRemoveallCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instMaintenanceReinstallCB(Widget widget, XtPointer pClient, XtPointer pCall);

#endif
