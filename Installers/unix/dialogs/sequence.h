/* The dialogs' way through a run. */
#ifndef OVINST_DIALOGS_SEQUENCE_H
#define OVINST_DIALOGS_SEQUENCE_H

/* Takes over from start-up: opens the display, reads the description and shows the first dialog.
 * The process ends from within; the result is its status when there is nothing to show. Both
 * strings become this routine's to free. */
int OV_instStartDialogs(int argc, char **argv, char *pDescription, char *pDestination);

#endif
