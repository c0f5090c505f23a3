/* What the windows have in common besides what is shown in them. */
#ifndef OVINST_TOOLKIT_DIALOGSHELL_H
#define OVINST_TOOLKIT_DIALOGSHELL_H

#include <X11/Intrinsic.h>

/* Titles the shell of the widget, which may be the shell itself: in the old way and in that of
 * window managers of today. The text is in the characters of the locale; what is none of them, and
 * what is not to be seen, is replaced. A window that is titled so cannot be made smaller than what
 * it needs when it is shown first, but for what scrolls in it, unless the user's resources say
 * otherwise. Nothing for a null widget or text. */
void OV_instSetTitle(Widget widget, const char *pTitle);

/* To be called for each dialog, the widget below its shell, once all of it is made: closing its
 * frame presses its Cancel or OK button (frameClose.h), its buttons have mnemonics, and what its
 * shell is titled is said as OV_instSetTitle says it. */
void OV_instCompleteDialog(Widget dialog);

#endif
