/* Starting a run from a dialog. */
#ifndef OVINST_DIALOGS_MOVEFILES_H
#define OVINST_DIALOGS_MOVEFILES_H

#include <X11/Intrinsic.h>

#include "description/model.h"

/* Starts the run over pConfig, or over the last list shown, when there is room and something to do;
 * the dialog's shell is destroyed then. The result of starting it, or 0 when it was refused. A
 * configuration that cannot be installed ends the process with status 1. */
int OV_instMoveFiles(Widget dialog, _OV_InstConfigList *pConfig);

#endif
