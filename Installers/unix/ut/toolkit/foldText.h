/* Texts of any length in lines of a given width; the toolkit breaks none. A text in the notation of
 * compound.h says itself where its lines end and is never broken. */
#ifndef OVINST_TOOLKIT_FOLDTEXT_H
#define OVINST_TOOLKIT_FOLDTEXT_H

#include <X11/Intrinsic.h>
#include <string>

/* The text with its lines broken so that none is wider than iWidth pixels in the label's font: at
 * blanks, which the break replaces, or where pBehind is given, behind its characters instead, and
 * within what is too wide without any. A single character may be wider. */
std::string OV_instFoldText(Widget label, const char *pText, int iWidth,
                            const char *pBehind = nullptr);

/* The text in one line of that width, with "..." for what is left out. */
std::string OV_instCutText(Widget label, const char *pText, int iWidth);

/* Shows the text in a label, with lines of at most iWidth pixels; where pBehind is given, the text
 * is taken literally. Nothing for a null label or text. */
void OV_instSetFoldedLabel(Widget label, const char *pText, int iWidth,
                           const char *pBehind = nullptr);

#endif
