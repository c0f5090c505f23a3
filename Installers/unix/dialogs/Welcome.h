/* The welcome page, the first of a new installation. */
#ifndef OVINST_DIALOGS_WELCOME_H
#define OVINST_DIALOGS_WELCOME_H

#include <X11/Intrinsic.h>

/* Makes the dialog below parent, unmanaged; the result is its message box. */
Widget CreatembWelcome(Widget parent);

/* Callbacks. */
void OV_instWelcomeCreateLabelCB(Widget label, XtPointer pClient, XtPointer pCall);
void OV_instWelcomeMapCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instWelcomeContinueCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instWelcomeExitCB(Widget widget, XtPointer pClient, XtPointer pCall);

#endif
