/* Finding one's way in the tree of widgets. A routine that takes a widget accepts a null one. */
#ifndef OVINST_TOOLKIT_WIDGETTREE_H
#define OVINST_TOOLKIT_WIDGETTREE_H

#include <X11/Intrinsic.h>

/* The nearest shell, or top-level shell, at or above the widget; null if there is none. */
Widget OV_instGetShell(Widget widget);
Widget OV_instGetTLShell(Widget widget);

/* The widget directly below the widget's shell, or the widget itself if it is a shell. */
Widget OV_instGetTopManager(Widget widget);

/* The widget of that name in the dialog that the given one belongs to, dialogs opened from it left
 * aside; null if there is none. */
Widget OV_instFindWidget(Widget inDialog, const char *pName);

/* Whether the widget has been destroyed already and goes when the event being handled is done with.
 * Within nested loops that may be long before its destroy callbacks are called. */
bool OV_instIsDying(Widget widget);

/* A resource of the type Dimension, in pixels. */
int OV_instGetDimension(Widget widget, const char *pResource);

#endif
