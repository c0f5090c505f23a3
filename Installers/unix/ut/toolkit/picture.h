/* Pictures in XPM form. */
#ifndef OVINST_TOOLKIT_PICTURE_H
#define OVINST_TOOLKIT_PICTURE_H

#include <X11/Intrinsic.h>

/* Shows the picture in place of a label's or a button's text: as large on a screen of fine dots as
 * on one of 96 to the inch, and with the widget's background where it is transparent. What is no
 * picture leaves the text there. */
void OV_instShowPicture(Widget widget, char **apLines);

#endif
