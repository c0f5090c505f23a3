/* Opening the application on a display. */
#ifndef OVINST_TOOLKIT_APPRESOURCES_H
#define OVINST_TOOLKIT_APPRESOURCES_H

#include <X11/Intrinsic.h>

/* Opens the display that the arguments or DISPLAY name, in an application context of its own, and
 * makes the application's shell, with the looks below the user's resources and the converters
 * registered. The toolkit's options are taken out of the arguments. Null, without a message, when
 * the display cannot be opened. Each process of a run calls it once. */
Widget OV_instOpenApplication(int *piArgc, char **apArgv);

/* The same with a rebuilt vector (Scheme.h), which is freed again; the given one stays as it is. */
Widget OV_instOpenApplicationAs(int argc, char **argv);

#endif
