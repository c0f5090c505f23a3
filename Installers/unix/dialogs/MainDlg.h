/* The main dialog: a page of up to four large buttons. */
#ifndef OVINST_DIALOGS_MAINDLG_H
#define OVINST_DIALOGS_MAINDLG_H

#include <X11/Intrinsic.h>

#include "description/model.h"

/* Makes the dialog below parent, unmanaged; the result is its message box. */
Widget CreatembMainDlg(Widget parent);

/* Fills the dialog with a page, which becomes the configuration that is shown. */
void OV_instUISetMainDlg(Widget dialog, _OV_InstConfigList *pConfig);

/* Callbacks. */
void OV_instMainDlgMapCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instMainDlgExitCB(Widget widget, XtPointer pClient, XtPointer pCall);
void OV_instMainDlgInstallationCB(Widget widget, XtPointer pConfig, XtPointer pCall);
void OV_instMainDlgChangeFolderCB(Widget widget, XtPointer pClient, XtPointer pCall);

/* Makes the picture that the icon names (a shared object below "SetupFiles" and a symbol in it) the
 * widget's label; nothing when one of them is missing, a message on standard error when it cannot
 * be found. */
void OV_instSetPixmapOnWidget(Widget widget, const _OV_InstIcon *pIcon);

#endif
