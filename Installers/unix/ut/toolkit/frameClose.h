/* Closing a dialog by its window frame. It does what a button of the dialog does: its window never
 * just vanishes while the program waits for an answer. */
#ifndef OVINST_TOOLKIT_FRAMECLOSE_H
#define OVINST_TOOLKIT_FRAMECLOSE_H

#include <X11/Intrinsic.h>

/* From now on closing the shell of the dialog (the widget below the shell) activates the button of
 * that name within the dialog; with a null name the Cancel button of a message or selection box
 * where it is managed, else its OK button. A dialog over which a modal one is open stays. The name
 * must live as long as the dialog. */
void OV_instHandleFrameClose(Widget dialog, const char *pButton);

/* Activates a button, gadget or widget, as its keyboard action does: for use outside the handling
 * of an event, as in a timer. The call dispatches an event of its own, so that what the button's
 * callbacks destroy lives until they are through. Nothing happens, and the result is 0, when the
 * button is null, insensitive, not managed or not realized; else 1, and it may be gone. */
int OV_instActivateButton(Widget button);

#endif
