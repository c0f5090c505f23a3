/* Fallback values for resources. Whatever the user's own resources say for a widget, however
 * loosely, wins over any value that comes through here, however precisely it is addressed: a value
 * that the user has set is not even put beside it. */
#ifndef OVINST_TOOLKIT_LOOKS_H
#define OVINST_TOOLKIT_LOOKS_H

#include <X11/Intrinsic.h>
#include <X11/Xresource.h>

/* Takes what the display's resources hold as the user's. To be called before the first value is
 * added, or the first one does; the display must be open with its application's name and class. */
void OV_instStartLooks(Display *pDisplay);

/* Whether the user has set a resource of one of these names anywhere in the application; a null
 * ends the names. */
bool OV_instUserNames(Display *pDisplay, const char *const *apResources);

/* Adds a value for all that a specifier such as "*XmText.background" covers. */
void OV_instAddLook(Display *pDisplay, const char *pSpecifier, const char *pValue);

/* The same for the rows of a table, which a null specifier ends. */
struct OV_LookRow {
    const char *pSpecifier;
    const char *pValue;
};
void OV_instAddLooks(Display *pDisplay, const OV_LookRow *aRows);

/* Adds the "resource: value" lines for a widget about to be made below parent; of a value nothing
 * is special but its end of line. Returns 0, or -1 when a line has no colon. */
int OV_instAddWidgetLooks(Widget parent, const char *pName, WidgetClass kind, const char *pLines);

/* A length given in pixels of a screen of 96 dots per inch, in pixels of the display. The values
 * of lengths among the looks are scaled by this rule. */
int OV_instScaleLength(Display *pDisplay, int iLength);

#endif
