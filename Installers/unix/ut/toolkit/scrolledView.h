/* An automatic scrolled window whose contents are laid out for just the width that is seen, so that
 * they scroll up and down and never sideways. The wheel scrolls them wherever the pointer is in the
 * window. */
#ifndef OVINST_TOOLKIT_SCROLLEDVIEW_H
#define OVINST_TOOLKIT_SCROLLEDVIEW_H

#include <X11/Intrinsic.h>

/* Lays the contents of a window out for a width, and says how high they are then. */
using OV_FitContents = int (*)(Widget window, int iWidth);

/* Fits the contents now and whenever the window gets another size. To be called again when the
 * contents are others. */
void OV_instFitView(Widget window, OV_FitContents fpFit);

/* What is seen of the contents at a time. */
int OV_instViewHeight(Widget window);

/* The wheel moves a vertical scroll bar when it is turned over the widget, where that gets the
 * presses of buttons. */
void OV_instScrollByWheel(Widget over, Widget bar);

#endif
