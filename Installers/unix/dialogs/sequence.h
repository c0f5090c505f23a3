/* Which dialog follows which, the way back, and what the dialogs share. Every transition destroys
 * the dialog that is shown and builds the next one from the model. */
#ifndef OVINST_DIALOGS_SEQUENCE_H
#define OVINST_DIALOGS_SEQUENCE_H

#include <X11/Intrinsic.h>

#include "description/model.h"

/* Shows a page or a list in place of the dialog that the widget belongs to (null: there is none),
 * with the configuration shown until now as its parent. Callbacks; the client data is the
 * configuration. */
void OV_instConfigureMainDlgCB(Widget widget, XtPointer pConfig, XtPointer pCall);
void OV_instConfigureCustomDlgCB(Widget widget, XtPointer pConfig, XtPointer pCall);

/* Shows the parent of the configuration that is shown: a page in a dialog of its own, a list in the
 * custom dialog that is still there. The caller clears the parent link of what was left. */
void _DisplayPreviousDlg(Widget widget);

/* Shows the first page of a new installation. Without one the process ends with status 1. */
void OV_instShowFirstMainDlg();

/* What follows a completed run, before the completion message. */
void OV_instPopupAfterMoveDataDialogs(Widget widget);

#endif
