/* The dialog that offers the setup log after an installation. */
#ifndef OVINST_DIALOGS_VIEWLOG_H
#define OVINST_DIALOGS_VIEWLOG_H

#include <X11/Intrinsic.h>

/* Makes the dialog below parent, unmanaged; the result is its message box. */
Widget CreatembViewlog(Widget parent);

/* Shows the dialog and returns when "Done" has been pressed; it is gone then. Nothing for a null
 * parent. */
void OV_instPopupViewlog(Widget parent);

/* Callbacks. */
void OV_instViewlogCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instViewlogDoneCB(Widget widget, XtPointer pClient, XtPointer pCall);

#endif
