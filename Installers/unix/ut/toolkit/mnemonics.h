/* Letters that press a dialog's buttons together with Alt. The toolkit draws them under its labels
 * but acts on them in menus only. */
#ifndef OVINST_TOOLKIT_MNEMONICS_H
#define OVINST_TOOLKIT_MNEMONICS_H

#include <X11/Intrinsic.h>

/* Gives the dialog's labelled buttons a letter each whenever the dialog comes up, where the user's
 * resources have not chosen one, and acts on the keys. */
void OV_instUseMnemonics(Widget dialog);

/* A button's label has changed: another letter may be needed. Nothing for other widgets. */
void OV_instRenewMnemonic(Widget button);

#endif
