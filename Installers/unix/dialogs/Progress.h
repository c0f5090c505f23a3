/* The progress dialog: a bar drawn by hand, the file at hand, what is being done, and Cancel. The
 * message box's user data is the installing child's process id. One at a time. */
#ifndef OVINST_DIALOGS_PROGRESS_H
#define OVINST_DIALOGS_PROGRESS_H

#include <X11/Intrinsic.h>

/* Makes the dialog below parent, unmanaged; the result is its message box. */
Widget CreatembProgress(Widget parent);

/* Makes the dialog the one that the updates below go to; its destruction ends that. */
void OV_instProgressUse(Widget dialog);

/* Shows how much is done (more than 100 counts as 100, a negative value draws what was drawn last
 * again) and, unless it is null or shown already, the file at hand. Nothing without a dialog. */
void OV_instProgressUpdate(int iPercent, const char *pFile);

/* Says what is being done. */
void OV_instProgressUpdateLabel(const char *pText);

/* What of a file's name is shown: all of up to 60 characters, else "..." and its end, from a slash
 * where there is one. A new string, or null. */
char *OV_instProgressFileText(const char *pFile);

/* Callbacks. */
void OV_instProgressMapCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instProgressExposeCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instProgressCancelCB(Widget widget, XtPointer pClient, XtPointer pCall);

#endif
