/* Setting up a user's account for the installed application: the dialog that picks the user and
 * puts the application's environment file into his home. No button reaches it today. */
#ifndef OVINST_DIALOGS2_UPDATEUSER_H
#define OVINST_DIALOGS2_UPDATEUSER_H

#include <X11/Intrinsic.h>

/* Makes the dialog below parent, unmanaged; the result is its message box. */
Widget CreatembUpdateUser(Widget parent);

/* Makes the list of users below parent, unmanaged and empty. */
Widget CreateswUpdateUserUserList(Widget parent);

/* Shows the dialog for an installation directory and returns when the user continues. Nothing for a
 * null parent or directory. */
void OV_instUpdateUser(Widget parent, const char *pDestination);

/* 1 when the host asks a NIS server for its users, else 0. */
int check_if_yp();

/* 0 when the file exists, else 1. */
int check_if_file_exist(const char *pPath);

/* Callbacks. The client data of a toggle is its choice: 0 copies the file, 1 makes a new one. */
void UpdateUserContinueCB(Widget widget, XtPointer pClient, XtPointer pCall);
void UpdateUserUpdateCB(Widget widget, XtPointer pClient, XtPointer pCall);
void UpdateUserSelectUserCB(Widget widget, XtPointer pClient, XtPointer pCall);
void UpdateUserValueChangeCB(Widget widget, XtPointer pWhich, XtPointer pState);
void user_sel_name_ok(Widget list, XtPointer pClient, XtPointer pCall);

#endif
