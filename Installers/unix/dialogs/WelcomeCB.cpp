#include "dialogs/Welcome.h"

#include <string>

#include <Xm/Xm.h>

#include "Dialogs/ExitConfirmation.h"
#include "dialogs/Agreement.h"
#include "dialogs/firstPages.h"
#include "Dialogs/windowTitle.h"
#include "engine/setupState.h"
#include "ut/toolkit/foldText.h"
#include "ut/toolkit/looks.h"
#include "ut/toolkit/widgetTree.h"
#include "ut/toolkit/scrolledLabel.h"

enum { TEXT_WIDTH = 540 };

static const char s_caWarning[] =
    "WARNING: This program is protected by copyright law and by international treaties. It may be "
    "installed on a single computer. Copying or distributing it, or any part of it, without "
    "permission may be prosecuted to the maximum extent possible under the law.\n\n"
    "Please take a moment to read the End User License Agreement, which comes next. By accepting "
    "it you agree to its terms.";

void OV_instWelcomeCreateLabelCB(Widget label, XtPointer, XtPointer)
{
    const std::string text =
        std::string("Welcome to the \"") + OV_instGetProductName() + "\" setup program.";

    OV_instShowValue(label, text, TEXT_WIDTH);
}

/* As wide as the page at first, and as the window later. */
static void showWarning(Widget label)
{
    OV_instSetFoldedLabel(label, s_caWarning, OV_instScaleLength(XtDisplay(label), TEXT_WIDTH));
    XtVaSetValues(label, XmNrecomputeSize, False, nullptr);
    OV_instSetScrolledLabel(label, nullptr, s_caWarning);
}

void OV_instWelcomeMapCB(Widget widget, XtPointer, XtPointer)
{
    OV_instDropHelp(widget, false);
    showWarning(OV_instFindWidget(widget, "laWelcomeMiddle"));
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
