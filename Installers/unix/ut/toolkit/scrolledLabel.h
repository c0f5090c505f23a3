/* Labels with texts of any length in a place of a given size: their lines are broken anew whenever
 * its width changes, begin at the top, and scroll where they are more than fit. */
#ifndef OVINST_TOOLKIT_SCROLLEDLABEL_H
#define OVINST_TOOLKIT_SCROLLEDLABEL_H

#include <X11/Intrinsic.h>

/* Shows the text from its first line on. The label and a vertical scroll bar are children of a
 * form, the label being attached to its left and to the bar, which is there when it is needed; the
 * label must not follow its text in size (recomputeSize). pBehind says where lines may be broken,
 * as for OV_instFoldText. Without a bar (null) nothing scrolls. Nothing for a null label or text.
 */
void OV_instSetScrolledLabel(Widget label, Widget bar, const char *pText,
                             const char *pBehind = nullptr);

/* Makes such a label as high as its text is at a width, but not higher than so many lines. */
void OV_instSizeScrolledLabel(Widget label, int iWidth, int iMostLines);

#endif
