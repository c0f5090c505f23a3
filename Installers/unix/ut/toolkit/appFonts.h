/* The fonts of all dialogs: antialiased ones where there are any, else the server's. */
#ifndef OVINST_TOOLKIT_APPFONTS_H
#define OVINST_TOOLKIT_APPFONTS_H

#include <X11/Intrinsic.h>

/* Adds the fonts below the user's resources (see looks.h): nothing where he names any in the older
 * way. What fonts there are is known once the application's shell exists. Each display that the
 * process opens gets fonts of its own. */
void OV_instAddFonts(Widget shell);

#endif
