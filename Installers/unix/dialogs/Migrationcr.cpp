#include "dialogs/Migration.h"

#include <Xm/DialogS.h>
#include <Xm/Form.h>
#include <Xm/Frame.h>
#include <Xm/Label.h>
#include <Xm/List.h>
#include <Xm/PushB.h>
#include <Xm/ScrolledW.h>
#include <Xm/Separator.h>
#include <Xm/TextF.h>
#include <Xm/ToggleB.h>

#include "engine/userHome.h"
#include "ut/toolkit/frameClose.h"
#include "ut/toolkit/uibuild.h"

#define DESCRIPTION                                                                                \
    ":::t\"Setup can automatically migrate any selected preferences from a previous version \""    \
    ":t\"of ORVANE|KIVO to the current installation.\":t\"\""                                      \
    "\"Select a preferences path below, or click 'Browse' for another location.\""

/* A field and the button beside it share a line; the keyboard passes them from the left. */
#define FIELD_SIDE                                                                                 \
    UI_SET("width", "330")                                                                         \
    UI_LEFT UI_SET("rightAttachment", "ATTACH_POSITION") UI_SET("rightPosition", "78")
#define BUTTON_SIDE                                                                                \
    UI_SET("leftAttachment", "ATTACH_POSITION")                                                    \
    UI_SET("leftPosition", "78")                                                                   \
    UI_SET("leftOffset", "8") UI_RIGHT UI_SET("navigationType", "TAB_GROUP")

// clang-format off
static const OV_WidgetRow s_aRows[] = {
    {"migrationShell", nullptr, &xmDialogShellWidgetClass, ""},
    {"migrationDlg", "migrationShell", &xmFormWidgetClass,
     UI_SET("dialogStyle", "DIALOG_MODELESS") UI_SET("marginWidth", "14")
     UI_SET("marginHeight", "14") UI_SET("horizontalSpacing", "0")
     UI_SET("verticalSpacing", "12")},
    {"labelTitle", "migrationDlg", &xmLabelWidgetClass,
     UI_TEXT("#bold\"User's preferences :\"") UI_TOP UI_SET("topOffset", "14") UI_LEFT},
    {"separator", "migrationDlg", &xmSeparatorWidgetClass,
     UI_BELOW("labelTitle") UI_SET("topOffset", "6") UI_LEFT UI_RIGHT},

    {"frame1", "migrationDlg", &xmFrameWidgetClass, UI_BELOW("separator") UI_LEFT UI_RIGHT},
    {"form", "frame1", &xmFormWidgetClass, ""},
    {"labelDescription1", "form", &xmLabelWidgetClass,
     UI_TEXT("Click 'Browse' to change the default location of your user's preferences.")
     UI_TOP UI_LEFT},
    {"textFieldUserRoot", "form", &xmTextFieldWidgetClass,
     UI_SET("editable", "False") UI_SET("cursorPositionVisible", "False")
     UI_SET("traversalOn", "False") UI_BELOW("labelDescription1") FIELD_SIDE UI_BOTTOM},
    {"pushButtonBrowse1", "form", &xmPushButtonWidgetClass,
     UI_TEXT("Browse...") UI_BELOW("labelDescription1") BUTTON_SIDE UI_BOTTOM},

    {"pushButtonOk", "migrationDlg", &xmPushButtonWidgetClass,
     UI_TEXT("Continue") UI_LEFT UI_BOTTOM UI_SET("bottomOffset", "14")},
    {"pushButtonExitSetup", "migrationDlg", &xmPushButtonWidgetClass,
     UI_TEXT("Exit Setup") UI_RIGHT UI_BOTTOM UI_SET("bottomOffset", "14")},

    {"frame", "migrationDlg", &xmFrameWidgetClass,
     UI_BELOW("frame1") UI_LEFT UI_RIGHT UI_ABOVE("pushButtonOk")},
    {"form1", "frame", &xmFormWidgetClass, ""},
    {"toggleButtonMigrate", "form1", &xmToggleButtonWidgetClass,
     UI_TEXT("Migrate user's preferences") UI_TOP UI_LEFT},
    {"labelDescription2", "form1", &xmLabelWidgetClass,
     UI_TEXT(DESCRIPTION) UI_BELOW("toggleButtonMigrate") UI_LEFT},
    {"pushButtonBrowse", "form1", &xmPushButtonWidgetClass,
     UI_TEXT("Browse...") BUTTON_SIDE UI_BOTTOM},
    {"textFieldPath", "form1", &xmTextFieldWidgetClass,
     FIELD_SIDE UI_LEVEL_WITH("pushButtonBrowse")},
    {"scrolledWindow1", "form1", &xmScrolledWindowWidgetClass,
     UI_SET("scrollingPolicy", "APPLICATION_DEFINED") UI_SET("visualPolicy", "VARIABLE")
     UI_BELOW("labelDescription2") UI_LEFT UI_RIGHT UI_ABOVE("pushButtonBrowse")},
    {"migrationList", "scrolledWindow1", &xmListWidgetClass,
     UI_SET("selectionPolicy", "BROWSE_SELECT") UI_SET("listSizePolicy", "CONSTANT")
     UI_SET("visibleItemCount", "6")},
    {nullptr, nullptr, nullptr, nullptr},
};
// clang-format on

static const OV_CallbackRow s_aCallbacks[] = {
    {"migrationDlg",        XmNmapCallback,             OnMigrationDlgMap          },
    {"pushButtonBrowse1",   XmNactivateCallback,        OnUserRootBrowseButton     },
    {"toggleButtonMigrate", XmNvalueChangedCallback,    OnToggleMigrateValueChanged},
    {"migrationList",       XmNbrowseSelectionCallback, OnListBrowseSelect         },
    {"pushButtonBrowse",    XmNactivateCallback,        OnBrowseButton             },
    {"pushButtonExitSetup", XmNactivateCallback,        OnExitSetupButton          },
    {"pushButtonOk",        XmNactivateCallback,        OnOkButton                 },
    {nullptr,               nullptr,                    nullptr                    },
};

Widget CreatemigrationDlg(Widget parent)
{
    const char *pHome = GetDefaultUserHome();
    Widget dialog = OV_instBuildDialog(parent, s_aRows, s_aCallbacks);

    XtVaSetValues(dialog, XmNdefaultButton, XtNameToWidget(dialog, "pushButtonOk"), XmNcancelButton,
                  XtNameToWidget(dialog, "pushButtonExitSetup"), nullptr);
    OV_instHandleFrameClose(dialog, "pushButtonExitSetup");
    XmTextFieldSetString(XtNameToWidget(dialog, "*textFieldUserRoot"),
                         const_cast<char *>(pHome ? pHome : ""));
    OnListCreate(XtNameToWidget(dialog, "*migrationList"));
    OnCreateTextFieldPathCreate(XtNameToWidget(dialog, "*textFieldPath"));
    return dialog;
}
