/* Leaving setup before it has a result: the question, the notice that follows it, and a notice of
 * completion. */
#ifndef OVINST_DIALOGS2_EXITCONFIRMATION_H
#define OVINST_DIALOGS2_EXITCONFIRMATION_H

#include <X11/Intrinsic.h>

/* Asks over the dialog whether to leave and waits for the answer; pMessage (may be null) says what
 * leaving means. Neither text is a format. Does not return when the user wants to leave; the
 * process then ends with status 10. All dialogs stay live meanwhile: asking again while the
 * question is open brings it to the front and returns at once, and when the dialog that it was
 * asked over goes away, the call goes on handling events and never returns. */
void OV_exitSetupConfirmation(Widget parent, const char *pMessage, const char *pProduct);

/* Make the boxes below parent, unmanaged. No button reaches the last one today. */
Widget CreatembExitSetup(Widget parent);
Widget CreatembExitSetupFinish(Widget parent);
Widget CreatembExitSetupComplete(Widget parent);

/* Callbacks. */
void ExitSetupResumeCB(Widget widget, XtPointer pClient, XtPointer pCall);
void ExitSetupExitCB(Widget widget, XtPointer pClient, XtPointer pCall);
void ExitSetupFinishCB(Widget widget, XtPointer pClient, XtPointer pCall);
void ExitSetupCompleteCB(Widget widget, XtPointer pClient, XtPointer pCall);

#endif
