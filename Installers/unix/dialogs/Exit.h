/* An older page that asks whether to leave. No button reaches it today, and its own do nothing. */
#ifndef OVINST_DIALOGS_EXIT_H
#define OVINST_DIALOGS_EXIT_H

#include <X11/Intrinsic.h>

/* Makes the page below parent, unmanaged; the result is its form. */
Widget CreatefoExit(Widget parent);

/* Callbacks. */
void OV_instExitExitCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instExitResumeCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instExitCB(Widget widget, XtPointer pClient, XtPointer pCall);

#endif
