#include "dialogs/NameOrg.h"

#include <Xm/Xm.h>

#include "Dialogs/ExitConfirmation.h"
#include "dialogs/Reseller.h"
#include "dialogs/firstPages.h"
#include "Dialogs/windowTitle.h"
#include "ut/toolkit/messageBox.h"
#include "ut/toolkit/fieldValue.h"
#include "ut/toolkit/widgetTree.h"

static const char s_caFile[] = ".setupinfo-ov-user";

static const std::vector<const char *> s_fields = {"txNameOrgName", "txNameOrgOrg"};

void OV_instNameOrgMapCB(Widget widget, XtPointer, XtPointer)
{
    OV_instDropHelp(widget, true);
    OV_instSetWindowTitle(widget);
    OV_instReadFields(widget, s_fields, s_caFile);
    (void)XmProcessTraversal(OV_instFindWidget(widget, s_fields[0]), XmTRAVERSE_CURRENT);
}

void OV_instNameOrgOKCB(Widget widget, XtPointer, XtPointer)
{
    const std::string name = OV_instFieldText(widget, "txNameOrgName");

    if (name.find_first_not_of(" \t\n\v\f\r") == std::string::npos) {
        (void)OV_instOkCancelMessageBox(OV_instGetShell(widget), "A name is required", "OK",
                                        nullptr, nullptr);
        return;
    }
    Widget confirmation = OV_instConfirmBelow(widget, "dsNameOrgConfirm", CreatembNameOrgConfirm);
    OV_instShowValue(OV_instFindWidget(confirmation, "laNameOrgConfirmName"), name, OV_VALUE_WIDTH);
    OV_instShowValue(OV_instFindWidget(confirmation, "laNameOrgConfirmOrg"),
                     OV_instFieldText(widget, "txNameOrgOrg"), OV_VALUE_WIDTH);
    XtManageChild(confirmation);
}

void OV_instNameOrgExitCB(Widget widget, XtPointer, XtPointer)
{
    OV_exitSetupConfirmation(OV_instGetShell(widget), "Setup has not yet modified any files", "");
}

void OV_instNameOrgConfirmMapCB(Widget widget, XtPointer, XtPointer)
{
    OV_instDropHelp(widget, true);
    OV_instSetWindowTitle(widget);
}

void OV_instNameOrgConfirmOKCB(Widget widget, XtPointer, XtPointer)
{
    Widget confirmed = XtParent(OV_instGetShell(widget)); /* the user dialog's shell */

    OV_instWriteFields(confirmed, s_fields, s_caFile);
    OV_instFollowWith(confirmed, CreatembReseller);
}

void OV_instNameOrgConfirmChangeCB(Widget widget, XtPointer, XtPointer)
{
    XtDestroyWidget(OV_instGetShell(widget));
}
