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

#endif
