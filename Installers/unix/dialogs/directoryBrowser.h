/* A modal file selection box in which the user points at a directory: the destination, a medium,
 * preferences. Only directories are listed. */
#ifndef OVINST_DIALOGS_DIRECTORYBROWSER_H
#define OVINST_DIALOGS_DIRECTORYBROWSER_H

#include <X11/Intrinsic.h>

/* What a browser is made of. The texts are copied. */
struct OV_DirectoryBrowser {
    const char *pShellName;
    const char *pTitle; /* null: that of every dialog, "PRODUCT setup" */
    const char *pBoxName;
    const char *pListLabel; /* over the list of directories */
    const char *pStart;     /* the directory that is listed first */
    const char *pSelection; /* the text that is selected first; null: pStart */
    XtCallbackProc fpOk;    /* of the box; its selection is OV_instGetBrowsed's */
    XtCallbackProc fpCancel;
    XtPointer pClient; /* of both */
};

/* Makes the browser over parent, unmanaged; the result is its file selection box, which stays open
 * after each answer until the program takes it down (ut/toolkit/modal.h). Closing its frame is
 * Cancel. The selection follows the directory that is listed. */
Widget OV_instCreateDirectoryBrowser(Widget parent, const OV_DirectoryBrowser *pBrowser);

/* The text that is selected, a new string that the caller frees. Null when nothing is, which the
 * user is told, or without memory. */
char *OV_instGetBrowsed(Widget box);

/* Asks over the box whether to create the folder pPath, which is not there, and creates it; what
 * fails is told. Both texts are formats that take the path. Returns whether it is there now. */
bool OV_instOfferFolder(Widget box, const char *pPath, const char *pQuestion, const char *pFailure)
    __attribute__((format(printf, 3, 0), format(printf, 4, 0)));

/* pPath, or where it is relative, the path joined to the working directory: a new string. Null with
 * *ppReason, which may be null, "can't get current working directory" or "can't build destination
 * path". */
char *OV_instGetAbsoluteChoice(const char *pPath, const char **ppReason);

#endif
