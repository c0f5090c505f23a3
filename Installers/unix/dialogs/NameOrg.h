/* The user's name and organization, and their confirmation. The values are kept for later runs.
 * No button reaches them today: no description sets the flag that asks for them. */
#ifndef OVINST_DIALOGS_NAMEORG_H
#define OVINST_DIALOGS_NAMEORG_H

#include <X11/Intrinsic.h>

/* Make the dialogs below parent, unmanaged; the results are their message boxes. The confirmation's
 * parent is the shell of the dialog that it confirms. */
Widget CreatembNameOrg(Widget parent);
Widget CreatembNameOrgConfirm(Widget parent);

/* Callbacks. */
void OV_instNameOrgMapCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instNameOrgOKCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instNameOrgExitCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instNameOrgConfirmMapCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instNameOrgConfirmOKCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instNameOrgConfirmChangeCB(Widget widget, XtPointer pClient, XtPointer pCall);

#endif
