/* The title that the dialogs share. */
#ifndef OVINST_DIALOGS2_WINDOWTITLE_H
#define OVINST_DIALOGS2_WINDOWTITLE_H

#include <X11/Intrinsic.h>

/* Titles the widget's shell "PRODUCT setup". */
void OV_instSetWindowTitle(Widget widget);

#endif
