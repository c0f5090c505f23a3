/* The question that is asked before setup is left without a result. */
#ifndef OVINST_DIALOGS2_EXITCONFIRMATION_H
#define OVINST_DIALOGS2_EXITCONFIRMATION_H

#include <X11/Intrinsic.h>

/* Asks over the dialog whether to leave; the message and the product's name are no formats. Does
 * not return when the user wants to leave. */
void OV_exitSetupConfirmation(Widget parent, const char *pMessage, const char *pProduct);

#endif
