#include "dialogs/Reseller.h"

#include <Xm/Xm.h>

#include "Dialogs/ExitConfirmation.h"
#include "dialogs/ChangeDestination.h"
#include "dialogs/firstPages.h"
#include "Dialogs/windowTitle.h"
#include "ut/toolkit/fieldValue.h"
#include "ut/toolkit/widgetTree.h"

static const char s_caFile[] = ".setupinfo-ov-reseller";

static const std::vector<const char *> s_fields = {"txResellerName", "txResellerPhone",
                                                   "txResellerEmail"};

static const struct {
    const char *pField;
    const char *pValue;
} s_aConfirmed[] = {
    {"txResellerName",  "laResellerConfirmName" },
    {"txResellerPhone", "laResellerConfirmPhone"},
    {"txResellerEmail", "laResellerConfirmEmail"},
};

void OV_instResellerMapCB(Widget widget, XtPointer, XtPointer)
{
    OV_instDropHelp(widget, true);
    OV_instSetWindowTitle(widget);
    OV_instReadFields(widget, s_fields, s_caFile);
    (void)XmProcessTraversal(OV_instFindWidget(widget, s_fields[0]), XmTRAVERSE_CURRENT);
}

void OV_instResellerOKCB(Widget widget, XtPointer, XtPointer)
{
    Widget confirmation = OV_instConfirmBelow(widget, "dsResellerConfirm", CreatembResellerConfirm);

    for (const auto &[pField, pValue] : s_aConfirmed)
        OV_instShowValue(OV_instFindWidget(confirmation, pValue), OV_instFieldText(widget, pField),
                         OV_VALUE_WIDTH);
    XtManageChild(confirmation);
}

void OV_instResellerExitCB(Widget widget, XtPointer, XtPointer)
{
    OV_exitSetupConfirmation(OV_instGetShell(widget), "Setup has not yet modified any files", "");
}

void OV_instResellerConfirmMapCB(Widget widget, XtPointer, XtPointer)
{
    OV_instDropHelp(widget, true);
    OV_instSetWindowTitle(widget);
}

void OV_instResellerConfirmOKCB(Widget widget, XtPointer, XtPointer)
{
    Widget confirmed = XtParent(OV_instGetShell(widget)); /* the reseller dialog's shell */

    OV_instWriteFields(confirmed, s_fields, s_caFile);
    OV_instFollowWith(confirmed, CreatembChangeDestination);
}

void OV_instResellerConfirmChangeCB(Widget widget, XtPointer, XtPointer)
{
    XtDestroyWidget(OV_instGetShell(widget));
}
