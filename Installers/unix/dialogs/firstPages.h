/* What the pages before the choice of the destination share: how one follows another, and the
 * values that are kept from one run to the next. */
#ifndef OVINST_DIALOGS_FIRSTPAGES_H
#define OVINST_DIALOGS_FIRSTPAGES_H

#include <X11/Intrinsic.h>
#include <string>
#include <vector>

/* Takes down the dialog of the shell and shows the next one below the main shell, without a Help
 * button. */
void OV_instFollowWith(Widget shell, Widget (*fpCreate)(Widget parent));

/* Takes away the message box's Help button and, where it is asked for, its separator. */
void OV_instDropHelp(Widget dialog, bool bSeparatorToo);

/* Shows a confirmation below the shell of the dialog, in place of one that is still there. */
Widget OV_instConfirmBelow(Widget dialog, const char *pName, Widget (*fpCreate)(Widget parent));

/* Fills the named text fields of a dialog from the lines of a file among those that
 * ut/privateFile.h keeps apart from strangers'; a line counts up to 499 bytes. Fields without a
 * line stay as they are. What a field cannot show of a line is written back all the same unless the
 * user changes the field (ut/toolkit/fieldValue.h). */
void OV_instReadFields(Widget dialog, const std::vector<const char *> &names, const char *pFile);

/* Writes the fields' values to the file, one line each; nothing when that cannot be done. */
void OV_instWriteFields(Widget dialog, const std::vector<const char *> &names, const char *pFile);

enum { OV_VALUE_WIDTH = 360 }; /* of what a confirmation shows */

/* Shows a text from outside in a label: literally, in lines of about that many pixels of a screen
 * of 96 dots per inch however long it and its words are. */
void OV_instShowValue(Widget label, const std::string &text, int iWidth);

#endif
