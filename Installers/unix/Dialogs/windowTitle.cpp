#include "Dialogs/windowTitle.h"

#include <Xm/Xm.h>

#include "engine/setupState.h"
#include "ut/owned.h"
#include "ut/strprint.h"
#include "ut/toolkit/widgetTree.h"

void OV_instSetWindowTitle(Widget widget)
{
    OwnedText title(OV_instStrPrint("%s setup", OV_instGetProductName()));
    Widget shell = OV_instGetShell(widget);

    if (shell)
        XtVaSetValues(shell, XmNtitle, title ? title.get() : "", nullptr);
}
