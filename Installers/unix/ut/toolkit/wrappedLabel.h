/* Texts of any length in labels, which the toolkit draws on one line. A text in the notation of
 * compound.h says itself where its lines end and is never broken. */
#ifndef OVINST_TOOLKIT_WRAPPEDLABEL_H
#define OVINST_TOOLKIT_WRAPPEDLABEL_H

#include <X11/Intrinsic.h>
#include <string>

/* The text with its lines broken so that none is wider than iWidth pixels in the label's font: at
 * blanks, and within a word that is wider; a single character may be. */
std::string OV_instFoldText(Widget label, const char *pText, int iWidth);

/* Shows the text with lines of at most iWidth pixels. */
void OV_instSetFoldedLabel(Widget label, const char *pText, int iWidth);

/* Shows the text in lines as wide as the label is, from its top on, whatever its size becomes. The
 * label must not follow its text in size (recomputeSize). */
void OV_instSetWrappedLabel(Widget label, const char *pText);

#endif
