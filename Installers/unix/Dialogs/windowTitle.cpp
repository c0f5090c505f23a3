#include "Dialogs/windowTitle.h"

#include "engine/setupState.h"
#include "ut/owned.h"
#include "ut/strprint.h"
#include "ut/toolkit/dialogShell.h"

void OV_instSetWindowTitle(Widget widget)
{
    OwnedText title(OV_instStrPrint("%s setup", OV_instGetProductName()));

    OV_instSetTitle(widget, title ? title.get() : "");
}
