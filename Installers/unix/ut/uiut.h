/* The thin layer over the toolkit that the whole program uses. Without a display (unattended
 * runs) the parent of a message box is null: the box then prints, and its answer is the first
 * button's. */
#ifndef OVINST_UT_UIUT_H
#define OVINST_UT_UIUT_H

#include <X11/Intrinsic.h>

/* The shell that parents every dialog; null before its creation and in unattended runs. */
Widget OV_instGetMainTopLevelShell();

/* Asks and waits: 0, 1 or 2 for the first, second or third button. pCancel and pHelp may be null
 * (no such button). With a null parent the message goes to standard output, followed by
 * "Returning %s\n" with the first label, and the answer is 0. The texts are never formats. */
int OV_instOkCancelMessageBox(Widget parent, const char *pMessage, const char *pOk,
                              const char *pCancel, const char *pHelp);

/* The same with a message formatted by OV_instVStrprint; with a null parent the text goes to
 * standard error. 0 for a null format; ends the process with status 1 when the text cannot be
 * built. */
int OV_instDisplayMessage(Widget parent, const char *pOk, const char *pCancel, const char *pHelp,
                          const char *pFormat, ...);

/* Dispatches whatever the display has pending; nothing without a main shell. */
void OV_instDispatchPending();

#endif
