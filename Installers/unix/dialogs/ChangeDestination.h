/* Choosing the destination directory. */
#ifndef OVINST_DIALOGS_CHANGEDESTINATION_H
#define OVINST_DIALOGS_CHANGEDESTINATION_H

#include <X11/Intrinsic.h>

/* Makes the dialog below parent, unmanaged; the result is its message box. */
Widget CreatembChangeDestination(Widget parent);

/* Opens the browser over a dialog's shell and returns when it has been answered; the root
 * destination is then what the user chose, or as it was. When what was chosen holds an installation
 * to be maintained, OV_instInstallationMode is 1. */
void OV_instChangeDestination(Widget parent);

/* Callbacks, the latter two of the browser. */
void OV_instChangeDestinationMapCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instChangeDestinationOKCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instChangeDestinationExitCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instChangeDestinationActivateCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instChangeDestinationBrowseOkCB(Widget box, XtPointer pClient, XtPointer pCall);
void OV_instChangeDestinationBrowseCancelCB(Widget box, XtPointer pClient, XtPointer pCall);

/* Shows the destination, of a long one the end, and the space that is free there in the named label
 * and text field of a dialog. */
void OV_instShowDestination(Widget inDialog, const char *pSpaceLabel, const char *pFolderField);

#endif
