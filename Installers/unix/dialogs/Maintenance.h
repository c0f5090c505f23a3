/* The maintenance dialog, shown in place of the first pages when the product is installed. */
#ifndef OVINST_DIALOGS_MAINTENANCE_H
#define OVINST_DIALOGS_MAINTENANCE_H

#include <X11/Intrinsic.h>

/* Makes the dialog below parent, unmanaged; the result is its message box. */
Widget CreatembMaintenance(Widget parent);

/* Makes Add/Remove of the dialog that was made last insensitive when there is but one suite. */
void OV_DisableAddButtonIfNecessary(void);

#endif
