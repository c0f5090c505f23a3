#include "dialogs/Welcome.h"

#include <string>

#include "Dialogs/ExitConfirmation.h"
#include "dialogs/Agreement.h"
#include "dialogs/firstPages.h"
#include "Dialogs/windowTitle.h"
#include "engine/setupState.h"
#include "ut/toolkit/uiut.h"
#include "ut/toolkit/widgetTree.h"

enum { HEADING_WIDTH = 480 };

static const char s_caWarning[] =
    ":::t\"WARNING: This program is protected by copyright law and by international\""
    ":t\"treaties. It may be installed on a single computer. Copying or distributing\""
    ":t\"it, or any part of it, without permission may be prosecuted to the maximum\""
    ":t\"extent possible under the law.\""
    ":t\"\""
    ":t\"Please take a moment to read the End User License Agreement, which comes next.\""
    "\"By accepting it you agree to its terms.\"";

void OV_instWelcomeCreateLabelCB(Widget label, XtPointer, XtPointer)
{
    const std::string text =
        std::string("Welcome to the \"") + OV_instGetProductName() + "\" setup program.";

    OV_instShowValue(label, text, HEADING_WIDTH);
}

void OV_instWelcomeMapCB(Widget widget, XtPointer, XtPointer)
{
    OV_instDropHelp(widget, false);
    OV_instUpdateLabelString(OV_instFindWidget(widget, "laWelcomeMiddle"), s_caWarning);
    OV_instSetWindowTitle(widget);
}

void OV_instWelcomeContinueCB(Widget widget, XtPointer, XtPointer)
{
    OV_instFollowWith(OV_instGetShell(widget), CreatembEULA);
}

void OV_instWelcomeExitCB(Widget widget, XtPointer, XtPointer)
{
    OV_exitSetupConfirmation(OV_instGetShell(widget), "Setup has not yet modified any files.", "");
}
