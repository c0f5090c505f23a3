#include "dialogs/Exit.h"

void OV_instExitExitCB(Widget, XtPointer, XtPointer) {}

void OV_instExitResumeCB(Widget, XtPointer, XtPointer) {}

void OV_instExitCB(Widget, XtPointer, XtPointer) {}
