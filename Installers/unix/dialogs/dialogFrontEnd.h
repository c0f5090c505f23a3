/* The table of functions by which description and engine reach the person before the dialogs. */
#ifndef OVINST_DIALOGS_DIALOGFRONTEND_H
#define OVINST_DIALOGS_DIALOGFRONTEND_H

/* Puts the dialogs' table in use. To be called once, when the main shell is there. */
void OV_instUseDialogs();

#endif
