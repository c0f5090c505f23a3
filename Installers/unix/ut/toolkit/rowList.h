/* Lists of rows in an automatic scrolled window: a row column (vertical) with a form for each row,
 * in which one check box has the keyboard. One row is the current one and marked so, wherever the
 * keyboard is; the arrows, Page Up, Page Down, Home and End make another one current, and so does a
 * press anywhere in it, also on what is insensitive. The list is one stop for the Tab key. */
#ifndef OVINST_TOOLKIT_ROWLIST_H
#define OVINST_TOOLKIT_ROWLIST_H

#include <X11/Intrinsic.h>
#include <vector>

/* Makes the action of the lists' keys, "OvGo(WHERE)", known to translations. */
void OV_instAddListAction(XtAppContext app);

/* Prepares the row column of a list before it is realized. */
void OV_instUseRowList(Widget rows);

/* Takes in a row that is not realized yet and has all its parts. */
void OV_instUseRow(Widget row);

/* The rows that stay, in their order. */
std::vector<Widget> OV_instRows(Widget rows);

/* Destroys all rows. */
void OV_instClearRows(Widget rows);

/* The number of the current row, -1 for none. */
int OV_instCurrentRow(Widget rows);

/* Makes a row the current one and gives it the keyboard, if it is on the screen; nothing when there
 * is no such row. */
void OV_instGoToRow(Widget rows, int iRow);

#endif
