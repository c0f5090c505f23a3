/* Looking for the directory that holds a file which installation needs: another mount point or
 * medium. It is shown by the installing child, on its own display connection. */
#ifndef OVINST_DIALOGS_SOURCEPROMPT_H
#define OVINST_DIALOGS_SOURCEPROMPT_H

#include <X11/Intrinsic.h>

/* What the browser's OK works on. */
struct OV_SourceBrowse {
    char **ppNewSource; /* gets a new string */
    const char *pFile;
    Widget text; /* the selection */
};

/* Lets the user point at the directory of pFile, which is relative to it, and stores it in
 * *ppNewSource as a new string; what was there is not freed. It is not touched when the user gives
 * up. The search starts in pSource, which may be null. */
void OV_instBrowseForSource(const char *pFile, char **ppNewSource, const char *pSource);

/* Makes the browser, unmanaged: its title names the file, pRealSource is listed and selected first.
 * The context must live as long as the result, its file selection box. */
Widget OV_instCreateSourceBrowser(Widget parent, OV_SourceBrowse *pBrowse, const char *pRealSource);

/* Callbacks. The client data is the context. */
void OV_BrowseSourceOkCB(Widget box, XtPointer pBrowse, XtPointer pCall);
void OV_BrowseSourceExitCB(Widget box, XtPointer pBrowse, XtPointer pCall);

#endif
