/* What is entered in text fields. A field shows the characters of the locale only, so the value
 * that it was given is kept beside it: what a user leaves alone stays as it was. */
#ifndef OVINST_TOOLKIT_FIELDVALUE_H
#define OVINST_TOOLKIT_FIELDVALUE_H

#include <X11/Intrinsic.h>
#include <string>

/* Gives the field a value, of which it shows what it can. Nothing for a null field. */
void OV_instSetFieldValue(Widget field, const std::string &value);

/* Whether the field holds something else than it has shown since its value was set. */
bool OV_instIsFieldChanged(Widget field);

/* The value that the field was given, or what it holds once that was changed. */
std::string OV_instFieldValue(Widget field);

/* What the named field of a dialog holds; nothing where there is none. */
std::string OV_instFieldText(Widget dialog, const char *pName);

#endif
