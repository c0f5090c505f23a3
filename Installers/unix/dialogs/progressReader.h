/* The reading side of a run with a display: the pipe's records drive the progress dialog, and the
 * child is stopped while the user is asked about an error. */
#ifndef OVINST_DIALOGS_PROGRESSREADER_H
#define OVINST_DIALOGS_PROGRESSREADER_H

#include <X11/Intrinsic.h>
#include <sys/types.h>

/* Creates the progress dialog under parent, unmanaged, remembers the child's id in it, and reads
 * iFd from the toolkit's loop from now on. The process ends in here: with status 0 at the
 * completion marker, 1 when the run is aborted or the child dies. */
void OV_instCreateProgressBar(Widget parent, int iFd, pid_t iChild);

/* The toolkit's input handler for the pipe. */
void UpdateProgressBar(XtPointer pClient, int *piFd, XtInputId *pInput);

#endif
