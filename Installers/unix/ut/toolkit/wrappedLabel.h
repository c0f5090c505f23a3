/* Labels that break their text's lines anew whenever their width changes. */
#ifndef OVINST_TOOLKIT_WRAPPEDLABEL_H
#define OVINST_TOOLKIT_WRAPPEDLABEL_H

#include <X11/Intrinsic.h>

/* Shows the text in lines as wide as the label is, from its top on, whatever its size becomes. The
 * label must not follow its text in size (recomputeSize). */
void OV_instSetWrappedLabel(Widget label, const char *pText);

#endif
