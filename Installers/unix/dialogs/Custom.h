/* The custom dialog: a list of options with check boxes, for a new installation and for
 * maintenance. One such dialog is shown at a time. */
#ifndef OVINST_DIALOGS_CUSTOM_H
#define OVINST_DIALOGS_CUSTOM_H

#include <X11/Intrinsic.h>

#include "description/model.h"

/* Makes the dialog below parent, unmanaged; the result is its message box. */
Widget CreatembCustom(Widget parent);

/* Makes a dialog the one that the routines below fill; CreatembCustom does it. */
void OV_instCustomUse(Widget dialog);

/* Shows a row for each option of a list, in place of those that were there. The option pCurrent, or
 * else the first one, gets the keyboard and its description is shown. Nothing without a dialog. */
void OV_instCustomFillOptions(Widget dialog, _OV_InstConfigList *pConfig,
                              _OV_InstConfigList *pCurrent);

/* The option whose row is the current one; null for none. */
_OV_InstConfigList *OV_instCustomCurrentOption(Widget dialog);

/* Fills the dialog that was made last with a list, which becomes the configuration that is shown.
 */
void OV_instUISetCustomDlg(_OV_InstConfigList *pConfig);

/* Counting what is chosen anew and what is dropped, into the maintenance labels. */
void OV_instCustomUpdate(_OV_InstConfigList *pConfig, const _OV_InstConfigList *pChanged);
void OV_instCustomAddRemoveUpdate(_OV_InstConfigList *pConfig);
void OV_instCustomUpdateReset();
void OV_instCustomUpdateSpaceFields();

/* Callbacks; the client data of a row's is its configuration. No button reaches the last one today.
 */
void OV_instCustomMapCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instCustomOKCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instCustomCancelCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instCustomSelectAllCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instCustomItemFocusCB(Widget widget, XtPointer pChild, XtPointer pCall);
void OV_instCustomPBChangeOptionsCB(Widget widget, XtPointer pChild, XtPointer pCall);
void OV_instCustomTBChangeCB(Widget widget, XtPointer pChild, XtPointer pCall);
void OV_instCustomContinueCB(Widget widget, XtPointer pClient, XtPointer pCall);

/* The generated code's way of setting resources: lines of "WIDGET.RESOURCE = VALUE". Nothing calls
 * it today. */
void BxSetValuesCB(Widget widget, XtPointer pText, XtPointer pCall);

#endif
