/* Choosing the destination directory. */
#ifndef OVINST_DIALOGS_CHANGEDESTINATION_H
#define OVINST_DIALOGS_CHANGEDESTINATION_H

#include <X11/Intrinsic.h>

/* Makes the dialog below parent, unmanaged; the result is its message box. */
Widget CreatembChangeDestination(Widget parent);

/* Opens the browser over a dialog's shell and returns when it has been answered; the root
 * destination is then what the user chose, or as it was. */
void OV_instChangeDestination(Widget parent);

#endif
