/* Pressing a dialog's button for the user: by a letter, by the window's frame, from outside. */
#ifndef OVINST_TOOLKIT_PRESSBUTTON_H
#define OVINST_TOOLKIT_PRESSBUTTON_H

#include <X11/Intrinsic.h>

/* Whether the button is there, managed and sensitive, and stays. Null is not. */
bool OV_instCanPress(Widget button);

/* Presses a button, gadget or widget, as its keyboard action does: within the handling of the
 * event. */
void OV_instPressButton(Widget button, XEvent *pEvent);

/* Makes the action "OvPress(NAME)" known to translations: it presses the button of that name in the
 * dialog, whichever has the keyboard. */
void OV_instAddPressAction(XtAppContext app);

/* OV_instPressButton for use outside the handling of an event, as in a timer. The call dispatches
 * an event of its own, so that what the button's callbacks destroy lives until they are through.
 * Nothing happens, and the result is false, when the button cannot be pressed or is not realized;
 * else true, and it may be gone. */
bool OV_instActivateButton(Widget button);

#endif
