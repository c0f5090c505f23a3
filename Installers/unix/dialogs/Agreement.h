/* The end-user agreement, read from the medium. */
#ifndef OVINST_DIALOGS_AGREEMENT_H
#define OVINST_DIALOGS_AGREEMENT_H

#include <X11/Intrinsic.h>

/* Makes the dialog below parent, unmanaged; the result is its message box. */
Widget CreatembEULA(Widget parent);

/* Callbacks. Without an agreement to show, or when it is declined, the process ends. */
void OV_instEULAMapCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instEULAAcceptCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instEULADeclineCB(Widget widget, XtPointer pClient, XtPointer pCall);

#endif
