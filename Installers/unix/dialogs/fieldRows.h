/* Looks that the pages with text fields, and the pages that confirm them, have in common. */
#ifndef OVINST_DIALOGS_FIELDROWS_H
#define OVINST_DIALOGS_FIELDROWS_H

#include "ut/toolkit/uibuild.h"

#define PAGE_FORM UI_SET("verticalSpacing", "10") UI_SET("horizontalSpacing", "8")

#define FORM_BOX                                                                                   \
    UI_SET("okLabelString", "OK")                                                                  \
    UI_SET("cancelLabelString", "Exit Setup")                                                      \
    UI_SET("dialogStyle", "DIALOG_MODELESS") UI_SET("defaultButtonType", "DIALOG_OK_BUTTON")

/* Labels as high as fields, which then begin beside the widest label. */
#define FIELD_LABEL(text, above) UI_TEXT(text) UI_SET("marginHeight", "7") UI_LEFT UI_BELOW(above)
#define FIELD_BESIDE(label, widest)                                                                \
    UI_SET("width", "320") UI_LEVEL_WITH(label) UI_RIGHT_OF(widest) UI_RIGHT

/* Nothing can be entered beneath a confirmation. */
#define CONFIRM_BOX                                                                                \
    UI_SET("okLabelString", "OK")                                                                  \
    UI_SET("cancelLabelString", "Change")                                                          \
    UI_SET("dialogStyle", "DIALOG_PRIMARY_APPLICATION_MODAL")                                      \
    UI_SET("defaultButtonType", "DIALOG_OK_BUTTON")

#define CONFIRM_TEXT                                                                               \
    ":::t\"Confirm that the information you entered is correct. If it is,\""                       \
    ":t\"click OK. To change any of the information, click Change.\""

/* Values of any number of lines, each with its label at its first. */
#define VALUE(above)                                                                               \
    UI_TEXT("")                                                                                    \
    UI_BELOW(above)                                                                                \
    UI_RIGHT UI_SET("leftAttachment", "ATTACH_POSITION") UI_SET("leftPosition", "26")
#define VALUE_LABEL(text, value) UI_TEXT(text) UI_LEFT UI_OPPOSITE("top", value)

#endif
