/* Showing the setup log: as it is now, in a window over a dialog, and in a viewer that stands alone
 * and looks at a log once more after a while. A log may be of any size and hold any bytes; what is
 * no character of the user's locale is shown as a question mark. */
#ifndef OVINST_TOOLKIT_LOGVIEWER_H
#define OVINST_TOOLKIT_LOGVIEWER_H

#include <X11/Intrinsic.h>

/* Shows the log of this run (see OVinstLogfile.h) over the parent and returns when it has been
 * closed. A log that cannot be opened is told on standard output and shown as empty. Nothing for a
 * null parent. */
void ViewLogfile(Widget parent);

/* No button reaches the stand-alone viewer, which the rest is about, today. */

/* Makes the stand-alone viewer below the parent, whose shell it shows, and lets it look at the file
 * 1.5 seconds later. There is one viewer at a time. */
void ViewFile(Widget parent, const char *pPath);

/* One look at the viewer's file, as its timer; nothing for any other timer. The file is shown anew,
 * behind what is shown already, when both its time and its size have changed. The client data is
 * the path. */
void OV_instCheckLogfile(XtPointer pPath, XtIntervalId *pTimer);

/* The viewer's timer; it stays the viewer's after it has run out. */
extern XtIntervalId g_xTimer;

/* Ends the viewer and the process, with status 0. */
void KillViewer(Widget widget);

/* The callback of the viewer's menu; the client data is the number of the entry. */
void menuCB(Widget widget, XtPointer pNumber, XtPointer pCall);

#endif
