/* Message boxes: questions that wait for their answer, and a notice without buttons. Texts are in
 * the notation of compound.h and never formats. */
#ifndef OVINST_TOOLKIT_MESSAGEBOX_H
#define OVINST_TOOLKIT_MESSAGEBOX_H

#include <X11/Intrinsic.h>

/* Asks and waits: 0, 1 or 2 for the first, second or third button. pCancel and pHelp may be null
 * (no such button). With a null parent the message goes to standard output, followed by
 * "Returning %s\n" with the first label, and the answer is 0. Closing the box by its frame or by
 * Escape presses the second button where there is one, else the first; a box that is destroyed
 * from elsewhere answers with its last button, the one that gives up. */
int OV_instOkCancelMessageBox(Widget parent, const char *pMessage, const char *pOk,
                              const char *pCancel, const char *pHelp);

/* Asks whether to do what destroys something, with the buttons "Yes" and "No", the latter being the
 * default: whether the answer is "Yes". */
bool OV_instConfirm(Widget parent, const char *pQuestion);

/* OV_instOkCancelMessageBox with a message formatted by OV_instVStrprint; with a null parent the
 * text goes to standard error. 0 for a null format; ends the process with status 1 when the text
 * cannot be built. */
int OV_instDisplayMessage(Widget parent, const char *pOk, const char *pCancel, const char *pHelp,
                          const char *pFormat, ...) __attribute__((format(printf, 5, 6)));

/* Tells a formatted message over the widget's dialog, to be acknowledged with "OK". */
void OV_instTellOver(Widget widget, const char *pFormat, ...) __attribute__((format(printf, 2, 3)));

/* Shows a notice without buttons and draws it at once, since the caller is about to be busy. It
 * takes the place of an earlier notice and stays until it is removed. */
void OV_instDisplayMessageBox(Widget parent, const char *pText);
void OV_instRemoveMessageBox();

#endif
