/* Dialogs that the caller waits for. */
#ifndef OVINST_TOOLKIT_MODAL_H
#define OVINST_TOOLKIT_MODAL_H

#include <X11/Intrinsic.h>

/* Shows the dialog, the widget below its shell, waits until *piDone is set, which is cleared first,
 * or somebody destroys the dialog, and takes it down. It is dying or gone afterwards. */
void OV_instRunDialog(Widget dialog, int *piDone);

/* Takes the dialog off the screen at once and destroys its shell: within nested loops the
 * destruction may come much later. Nothing for null; one that is dying just leaves the screen. */
void OV_instTakeDown(Widget dialog);

#endif
