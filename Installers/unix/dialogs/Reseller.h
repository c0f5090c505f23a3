/* The reseller's name, phone and e-mail address, and their confirmation. The values are kept for
 * later runs. No button reaches them today: the page before them, NameOrg, is not reached. */
#ifndef OVINST_DIALOGS_RESELLER_H
#define OVINST_DIALOGS_RESELLER_H

#include <X11/Intrinsic.h>

/* Make the dialogs below parent, unmanaged; the results are their message boxes. The confirmation's
 * parent is the shell of the dialog that it confirms. */
Widget CreatembReseller(Widget parent);
Widget CreatembResellerConfirm(Widget parent);

/* Callbacks. */
void OV_instResellerMapCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instResellerOKCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instResellerExitCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instResellerConfirmMapCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instResellerConfirmOKCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instResellerConfirmChangeCB(Widget widget, XtPointer pClient, XtPointer pCall);

#endif
