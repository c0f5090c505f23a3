/* Dialogs as tables. A row is a widget with its name, parent, class and looks; the looks are
 * fallback resources (see looks.h), so they go through the registered converters and the user's
 * own resources win over every one of them. */
#ifndef OVINST_TOOLKIT_UIBUILD_H
#define OVINST_TOOLKIT_UIBUILD_H

#include <X11/Intrinsic.h>

struct OV_WidgetRow {
    const char *pName;    /* resources and lookups use it; a null name ends the table */
    const char *pParent;  /* an earlier row; null in row 0 */
    WidgetClass *ppClass; /* the class pointer's address keeps the table constant */
    const char *pLooks;   /* "resource: value" lines, best made with the macros below */
};

struct OV_CallbackRow {
    const char *pName;   /* a widget of the table; a null name ends the table */
    const char *pReason; /* the callback list's resource name */
    XtCallbackProc fpCallback;
};

/* Lines for the looks. A text is in the notation of compound.h and has no line end in it; lengths
 * are in pixels of a screen of 96 dots per inch. */
#define UI_SET(resource, value) resource ": " value "\n"
#define UI_TEXT(text) UI_SET("labelString", text)

/* Where a child of a form is: at an edge of the form, ... */
#define UI_TOP UI_SET("topAttachment", "ATTACH_FORM")
#define UI_BOTTOM UI_SET("bottomAttachment", "ATTACH_FORM")
#define UI_LEFT UI_SET("leftAttachment", "ATTACH_FORM")
#define UI_RIGHT UI_SET("rightAttachment", "ATTACH_FORM")
#define UI_FILL UI_TOP UI_BOTTOM UI_LEFT UI_RIGHT

/* ... beside an earlier row, ... */
#define UI_BELOW(name) UI_SET("topAttachment", "ATTACH_WIDGET") UI_SET("topWidget", name)
#define UI_ABOVE(name) UI_SET("bottomAttachment", "ATTACH_WIDGET") UI_SET("bottomWidget", name)
#define UI_RIGHT_OF(name) UI_SET("leftAttachment", "ATTACH_WIDGET") UI_SET("leftWidget", name)
#define UI_LEFT_OF(name) UI_SET("rightAttachment", "ATTACH_WIDGET") UI_SET("rightWidget", name)

/* ... or in line with one: as high as it (texts are centred), or at its left or right edge. */
#define UI_OPPOSITE(side, name)                                                                    \
    UI_SET(side "Attachment", "ATTACH_OPPOSITE_WIDGET")                                            \
    UI_SET(side "Widget", name) UI_SET(side "Offset", "0")
#define UI_LEVEL_WITH(name) UI_OPPOSITE("top", name) UI_OPPOSITE("bottom", name)
#define UI_FLUSH_LEFT(name) UI_OPPOSITE("left", name)
#define UI_FLUSH_RIGHT(name) UI_OPPOSITE("right", name)

/* For a message box: Escape presses its first button, since it has no other, or none that may be
 * pressed so easily. */
#define UI_ESCAPE_IS_OK UI_SET("translations", "#override <Key>osfCancel: OvPress(OK)")

/* Makes what the tables describe below parent. Row 0 is a popup shell and row 1, the dialog,
 * its child; the result is row 1, not managed, since managing it shows the dialog. All rows below
 * are managed. A table whose row 0 is no shell makes that row an unmanaged child of parent and the
 * result. The dialog is completed (dialogShell.h), and a message box stays managed until it is
 * taken down. A table that contradicts itself ends the process with status 1. aCallbacks may be
 * null. */
Widget OV_instBuildDialog(Widget parent, const OV_WidgetRow *aRows,
                          const OV_CallbackRow *aCallbacks);

#endif
