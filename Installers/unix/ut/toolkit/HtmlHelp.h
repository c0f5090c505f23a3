/* Help in an external web browser. */
#ifndef OVINST_TOOLKIT_HTMLHELP_H
#define OVINST_TOOLKIT_HTMLHELP_H

#include <X11/Intrinsic.h>

/* Sets the directory of the local help files; the path is copied. Null: there are none. */
void OV_instSetHelpDirectory(const char *pPath);

/* Whether there is such a directory. */
bool OV_instHasHelp();

/* Opens a file of the help directory in the browser, or where pFile is null an address, or where
 * both are null the maker's web site. A browser that is not there can be pointed at in a dialog
 * over the widget's. The browser runs on its own and outlives setup. */
void OV_instHtmlHelpCB(Widget widget, const char *pFile, const char *pAddress);

#endif
