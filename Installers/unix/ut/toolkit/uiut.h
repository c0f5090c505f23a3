/* The thin layer over the toolkit that the whole program uses: the main shell that parents every
 * dialog, showing and hiding, waiting for an answer, labels. A routine that takes a widget does
 * nothing for a null one; unattended runs have none. */
#ifndef OVINST_TOOLKIT_UIUT_H
#define OVINST_TOOLKIT_UIUT_H

#include <X11/Intrinsic.h>

/* The shell that parents every dialog; null before its creation and in unattended runs. */
Widget OV_instGetMainTopLevelShell();

/* Makes the main shell below an application's shell: realized at the screen's centre, never mapped
 * by itself. It replaces an earlier one, which a child process inherits from its parent and must
 * not touch. For a null parent the result is null, and there is no main shell from then on. */
Widget OV_instCreateMainTopLevelShell(Widget parent);

/* Shows the widget's shell in the middle of the screen. The texts may be null. */
void OV_instPopup(Widget widget, const char *pTitle, const char *pIconName);

/* Shows in the main shell itself what fpBuild makes below it; returns what was made. No
 * dialog is opened by it today. */
Widget OV_instCreateAndPopup(Widget (*fpBuild)(Widget parent));

/* Hides the widget's shell. */
void OV_instPopdown(Widget widget);

/* Handles events of the widget's application, timers and input sources included, until *piDone is
 * set, by whomever, or the widget is destroyed, since its answer then will not come. */
void OV_instMainLoop(Widget widget, const int *piDone);

/* Dispatches whatever the display has pending; nothing without a main shell. */
void OV_instDispatchPending();

/* Sets the label of a label or button, widget or gadget. The first takes the notation of
 * compound.h and leaves each text in the conversion cache until the widget goes; the second takes
 * the text as it is: for names and texts from outside, and for labels that change often. */
void OV_instUpdateLabelString(Widget widget, const char *pText);
void OV_instSetLiteralLabel(Widget widget, const char *pText);

/* Appends a shell command's output to a text widget. Returns pclose's status, or -1 when the
 * command cannot be started. Nothing calls it today. */
int OV_instOutputCmdInTextWidget(Widget text, const char *pCommand);

/* Gives all widgets up to the terminating null the width of the widest. */
void OV_makeAllWidgetSameMaxWidth(Widget first, ...);

#endif
