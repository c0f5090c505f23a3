/* Carrying over the user's preferences of an earlier version. No button reaches the dialog today,
 * so that the step of the sequence that would migrate finds nothing chosen. */
#ifndef OVINST_DIALOGS_MIGRATION_H
#define OVINST_DIALOGS_MIGRATION_H

#include <X11/Intrinsic.h>
#include <sys/types.h>

/* What was chosen: whether to migrate, and from which preferences directory (a heap string without
 * a trailing slash, or null). */
extern int g_iDoMigrate;
extern char *g_pPrefPath;

/* Texts in a row. The last node is an empty sentinel. */
struct OV_StringList {
    char *pText; /* null in the sentinel */
    OV_StringList *pNext;
};

/* A new list; null without memory. Lists stay for the whole run: freeing does nothing, so that
 * whoever still holds a node may read it. */
OV_StringList *CreateStringList();
void InsertStringList(OV_StringList *pList, const char *pText);
void FreeStringList(OV_StringList *pList);

/* Whether the path can be examined, and then its mode; whether it is a regular file, a directory.
 */
bool GetNodeMode(const char *pPath, mode_t *pMode);
bool IsFileExist(const char *pPath);
bool IsDirExist(const char *pPath);

/* A copy of $HOME for the caller to free, or null. */
char *GetHomeDirectory();

/* The subdirectories of a directory, the last of the alphabet first. */
OV_StringList *FindAllDirs(const char *pDirectory);

/* Those of the directories that hold preferences. */
OV_StringList *FindPreferencesDirs(const OV_StringList *pDirectories);

/* Makes the dialog below parent, unmanaged; the result is its form. */
Widget CreatemigrationDlg(Widget parent);

/* Fill the list and the path's field of a new dialog. */
void OnListCreate(Widget list);
void OnCreateTextFieldPathCreate(Widget textField);

/* Migrates when that was chosen, by the installed application, and says how it went. 0 when it
 * failed, else 1. */
int DoMigrate(Widget widget);

/* Callbacks of the dialog and of its browsers. */
void OnMigrationDlgMap(Widget widget, XtPointer pClient, XtPointer pCall);
void OnToggleMigrateValueChanged(Widget widget, XtPointer pClient, XtPointer pCall);
void OnListBrowseSelect(Widget widget, XtPointer pClient, XtPointer pCall);
void OnBrowseButton(Widget widget, XtPointer pClient, XtPointer pCall);
void OnUserRootBrowseButton(Widget widget, XtPointer pClient, XtPointer pCall);
void OnExitSetupButton(Widget widget, XtPointer pClient, XtPointer pCall);
void OnOkButton(Widget widget, XtPointer pClient, XtPointer pCall);
void _OnBrowseDialogPrefPathOk(Widget box, XtPointer pClient, XtPointer pCall);
void _OnBrowseDialogUserRootOk(Widget box, XtPointer pClient, XtPointer pCall);
void _OnBrowseDialogCancel(Widget box, XtPointer pClient, XtPointer pCall);

#endif
