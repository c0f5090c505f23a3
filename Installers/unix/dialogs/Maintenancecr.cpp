#include "dialogs/Maintenance.h"

#include <Xm/DialogS.h>
#include <Xm/Form.h>
#include <Xm/Frame.h>
#include <Xm/Label.h>
#include <Xm/MessageB.h>
#include <Xm/PushB.h>
#include <Xm/RowColumn.h>

#include "ut/toolkit/uibuild.h"

/* A button, and beside it in a column what it does. */
#define ROW                                                                                        \
    UI_SET("orientation", "HORIZONTAL")                                                            \
    UI_SET("isAligned", "False")                                                                   \
    UI_SET("spacing", "14") UI_SET("marginWidth", "0") UI_SET("marginHeight", "3")
#define COLUMN UI_SET("marginWidth", "0") UI_SET("marginHeight", "0")
#define BUTTON UI_SET("alignment", "ALIGNMENT_CENTER") UI_SET("marginHeight", "10")

// clang-format off
static const OV_WidgetRow s_aRows[] = {
    {"dsMaintenance", nullptr, &xmDialogShellWidgetClass, UI_SET("title", "ORVANE|Setup")},
    {"mbMaintenance", "dsMaintenance", &xmMessageBoxWidgetClass,
     UI_SET("cancelLabelString", "Exit Setup") UI_SET("dialogStyle", "DIALOG_MODELESS")},
    {"rowColumn", "mbMaintenance", &xmRowColumnWidgetClass,
     UI_SET("marginWidth", "0") UI_SET("marginHeight", "0") UI_SET("spacing", "8")},
    {"frame", "rowColumn", &xmFrameWidgetClass, ""},
    {"form", "frame", &xmFormWidgetClass, UI_SET("verticalSpacing", "8")},
    {"laMaintenanceWelcome", "form", &xmLabelWidgetClass,
     UI_TEXT("") UI_SET("renderTable.fontStyle", "Bold") UI_TOP UI_LEFT},
    {"label1", "form", &xmLabelWidgetClass,
     UI_TEXT(":::t\"This program lets you make changes to the current installation. Click one\""
             "\"of the following options:\"")
     UI_BELOW("laMaintenanceWelcome") UI_LEFT UI_BOTTOM},
    {"rcMaintenanceAddRemove", "rowColumn", &xmRowColumnWidgetClass, ROW},
    {"pbMaintenanceAddRemove", "rcMaintenanceAddRemove", &xmPushButtonWidgetClass,
     UI_TEXT("Add/Remove...") BUTTON},
    {"rowColumn4", "rcMaintenanceAddRemove", &xmRowColumnWidgetClass, COLUMN},
    {"label", "rowColumn4", &xmLabelWidgetClass,
     UI_TEXT(":::t\"Add new components or remove installed \""
             "\"components from the current installation.\"")},
    {"rowColumn3", "rowColumn", &xmRowColumnWidgetClass, ROW},
    {"pbMaintenanceRemoveall", "rowColumn3", &xmPushButtonWidgetClass,
     UI_TEXT("Remove all") BUTTON},
    {"rowColumn6", "rowColumn3", &xmRowColumnWidgetClass, COLUMN},
    {"label3", "rowColumn6", &xmLabelWidgetClass,
     UI_TEXT(":::t\"Remove all previous installed components\"")},
    {nullptr, nullptr, nullptr, nullptr},
};
// clang-format on

static const OV_CallbackRow s_aCallbacks[] = {
    {"mbMaintenance",          XmNmapCallback,      OV_instMaintenanceMapCB      },
    {"mbMaintenance",          XmNcancelCallback,   OV_instMaintenaceExitCB      },
    {"pbMaintenanceAddRemove", XmNactivateCallback, OV_instMaintenanceAddRemoveCB},
    {"pbMaintenanceRemoveall", XmNactivateCallback, OV_instMaintenanceRemoveallCB},
    {nullptr,                  nullptr,             nullptr                      },
};

Widget CreatembMaintenance(Widget parent)
{
    Widget dialog = OV_instBuildDialog(parent, s_aRows, s_aCallbacks);

    XtUnmanageChild(XmMessageBoxGetChild(dialog, XmDIALOG_SYMBOL_LABEL));
    OV_instMaintenanceWelcomeCreateCB(XtNameToWidget(dialog, "*laMaintenanceWelcome"), nullptr,
                                      nullptr);
    OV_instMaintenanceUse(dialog);
    return dialog;
}
