/* How all dialogs look, apart from their fonts. */
#ifndef OVINST_TOOLKIT_APPLOOKS_H
#define OVINST_TOOLKIT_APPLOOKS_H

#include <X11/Intrinsic.h>

/* Adds the looks below the user's resources (see looks.h). Some of them the toolkit reads when the
 * first shell of a display is made. */
void OV_instAddAppLooks(Display *pDisplay);

#endif
