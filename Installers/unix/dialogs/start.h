/* The way from start-up to the first dialog. */
#ifndef OVINST_DIALOGS_START_H
#define OVINST_DIALOGS_START_H

/* Takes over from start-up: opens the display, reads the description and shows the first dialog.
 * The process ends from within; the result is its status when there is no display. Both strings
 * become this routine's to free. */
int OV_instStartDialogs(int argc, char **argv, char *pDescription, char *pDestination);

#endif
