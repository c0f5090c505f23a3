/* What the dialogs' tables stand on: converters that turn texts of the compound notation (see
 * compound.h) into compound strings, a conversion to any resource type, and the routines that put
 * fallback values into the display's resources without overriding what the user has there.
 * The mixed names are those that the dialogs have always called. */
#ifndef OVINST_TOOLKIT_BXUTILS_H
#define OVINST_TOOLKIT_BXUTILS_H

#include <Xm/Xm.h>

/* One row of a table of an application's defaults. A row with a null instance name ends it. */
struct _UIAppDefault {
    const char *pClass;
    const char *pInstance; /* empty: as the class part */
    const char *pSubName;  /* may be null */
    const char *pResource;
    char *pValue; /* filled in by InitAppDefaults; the row's, to be freed with XtFree */
};

/* Makes String convert to XmString and XmStringTable by the rules below in this application
 * context. To be called once its application shell exists: the toolkit registers converters of its
 * own when its first shell is made. */
void RegisterBxConverters(XtAppContext app);

/* The compound string for a text of the notation, for the caller to free with XmStringFree; null
 * for null. A newline in a text breaks the line, like a separator. */
XmString StringToXmString(const char *pText);

/* The compound string for a text taken literally, whatever it begins with. */
XmString OV_instLiteralXmString(const char *pText);

/* The converters themselves, of XtTypeConverter and XtDestructor form. A string table lists its
 * items as getCStrCount says; it ends with a null entry. */
Boolean CvtStringToXmString(Display *pDisplay, XrmValue *aArgs, Cardinal *piArgs, XrmValue *pFrom,
                            XrmValue *pTo, XtPointer *pData);
void XmStringCvtDestroy(XtAppContext app, XrmValue *pTo, XtPointer data, XrmValue *aArgs,
                        Cardinal *piArgs);
Boolean CvtStringToXmStringTable(Display *pDisplay, XrmValue *aArgs, Cardinal *piArgs,
                                 XrmValue *pFrom, XrmValue *pTo, XtPointer *pData);
void XmStringTableCvtDestroy(XtAppContext app, XrmValue *pTo, XtPointer data, XrmValue *aArgs,
                             Cardinal *piArgs);

/* The text converted to the named resource type: for "String", "Double" and "Float" the address
 * of the value, for any other type the value itself. *pOk says whether it could be done; 0 if not.
 * iSize is the caller's idea of the type's size; the converter's word is what counts. The value
 * belongs to the widget's conversion cache and lives as long as the widget. */
XtArgVal CONVERT(Widget widget, const char *pText, const char *pTypeName, int iSize, Boolean *pOk);

/* From here to the end only OV_instMergeResources is called today; the rest is what generated
 * dialogs call. */

/* Event handler that posts the popup menu given as client data, when the event is of the menu's
 * mouse button. */
void MENU_POST(Widget widget, XtPointer menu, XEvent *pEvent, Boolean *pContinue);

/* Puts a background colour behind the *piCount arguments that there are. */
void SET_BACKGROUND_COLOR(Widget widget, ArgList aArgs, Cardinal *piCount, Pixel pixel);

/* The ancestor that has no parent. */
Widget BxFindTopShell(Widget widget);

/* The widgets that a list of names such as "caption [one, two]" names, searched for from the widget
 * upwards. A name found nowhere is told on standard output with the caller's name. The result ends
 * with a null and is freed with XtFree. */
WidgetList BxWidgetIdsFromNames(Widget widget, const char *pCallerName, const char *pNames);

/* The number in memory of its own, to be freed with XtFree. */
float *SINGLE(float value);
double *DOUBLE(double value);

/* Reads exactly iLength decimal digits: 1 and the value, of which 32 bits are kept, or 0 with
 * *piValue untouched when something else stands among them. */
int atoui(const char *pText, unsigned int iLength, unsigned int *piValue);

/* Merges a database into the display's without overriding anything, and uses it up. */
void OV_instMergeResources(Display *pDisplay, XrmDatabase added);

/* Merges resource lines, each put behind "*" and the name; a null ends them. */
void setDefaultResources(const char *pName, Widget widget, const char *const *apLines);

/* Takes the values of a table's rows from the display's resources; a row without one keeps its
 * value. */
void InitAppDefaults(Widget widget, _UIAppDefault *aTable);

/* Merges the table's values as resource lines for what lies below the widget; nothing for a null
 * name. */
void SetAppDefaults(Widget widget, const _UIAppDefault *aTable, const char *pName);

#endif
