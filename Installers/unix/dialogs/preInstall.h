/* What the dialogs ask before they start a run. */
#ifndef OVINST_DIALOGS_PREINSTALL_H
#define OVINST_DIALOGS_PREINSTALL_H

#include "description/model.h"

/* 1 when there is something to do and the destination can be used, else 0 with the reason shown.
 * Brings the in-use counts up to date. */
int OV_instPreInstallCheck(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig);

#endif
