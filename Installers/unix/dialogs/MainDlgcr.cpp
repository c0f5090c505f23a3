#include "dialogs/MainDlg.h"

#include <Xm/DialogS.h>
#include <Xm/Form.h>
#include <Xm/Frame.h>
#include <Xm/Label.h>
#include <Xm/MessageB.h>
#include <Xm/PushB.h>
#include <Xm/RowColumn.h>
#include <Xm/TextF.h>

#include "ut/toolkit/uibuild.h"

/* A slot of the page: a large button, and the product and its description beside it. */
#define SLOT(number, column)                                                                       \
    {"rcMainDlg" number, "rowColumn", &xmRowColumnWidgetClass, ROW},                               \
        {"pbMainDlg" number, "rcMainDlg" number, &xmPushButtonWidgetClass, LARGE},                 \
        {column, "rcMainDlg" number, &xmRowColumnWidgetClass, COLUMN},                             \
        {"laMainDlg" number "Product", column, &xmLabelWidgetClass, BOLD},                         \
    {                                                                                              \
        "laMainDlg" number "Description", column, &xmLabelWidgetClass, UI_TEXT("")                 \
    }

#define ROW                                                                                        \
    UI_SET("orientation", "HORIZONTAL")                                                            \
    UI_SET("isAligned", "False")                                                                   \
    UI_SET("spacing", "14") UI_SET("marginWidth", "0") UI_SET("marginHeight", "3")
#define COLUMN UI_SET("marginWidth", "0") UI_SET("marginHeight", "3") UI_SET("spacing", "2")
#define BOLD UI_TEXT("") UI_SET("renderTable.fontStyle", "Bold")

/* The arrow is what a button shows that has no picture. */
#define LARGE                                                                                      \
    UI_TEXT("#title\">\"")                                                                         \
    UI_SET("alignment", "ALIGNMENT_CENTER") UI_SET("marginWidth", "8") UI_SET("marginHeight", "8")

/* Rows that fill several lines are not aligned in columns. */
// clang-format off
static const OV_WidgetRow s_aRows[] = {
    {"dsMainDlg", nullptr, &xmDialogShellWidgetClass, UI_SET("title", "ORVANE|Setup")},
    {"mbMainDlg", "dsMainDlg", &xmMessageBoxWidgetClass, UI_SET("dialogStyle", "DIALOG_MODELESS")},
    {"rowColumn", "mbMainDlg", &xmRowColumnWidgetClass,
     UI_SET("marginWidth", "0") UI_SET("marginHeight", "0") UI_SET("spacing", "8")},
    {"laMainDlg", "rowColumn", &xmLabelWidgetClass,
     UI_TEXT("To choose the installation you want, click on the following buttons")
     UI_SET("marginBottom", "6")},
    SLOT("1", "rowColumn2"),
    SLOT("2", "rowColumn4"),
    SLOT("3", "rowColumn6"),
    SLOT("4", "rowColumn8"),
    {"frame1", "rowColumn", &xmFrameWidgetClass, ""},
    {"form", "frame1", &xmFormWidgetClass, ""},
    {"label", "form", &xmLabelWidgetClass, UI_TEXT("Available space:") UI_TOP UI_LEFT},
    {"laMainDlgAvailableSpace", "form", &xmLabelWidgetClass,
     UI_TEXT("") UI_TOP UI_RIGHT_OF("label")},
    {"rowColumn9", "form", &xmRowColumnWidgetClass,
     UI_SET("orientation", "HORIZONTAL") UI_SET("marginWidth", "0") UI_SET("marginHeight", "0")
     UI_SET("adjustLast", "False") UI_BELOW("label") UI_LEFT UI_RIGHT UI_BOTTOM},
    {"txMainDlgFolder", "rowColumn9", &xmTextFieldWidgetClass,
     UI_SET("columns", "42") UI_SET("editable", "False") UI_SET("cursorPositionVisible", "False")
     UI_SET("traversalOn", "False")},
    {"pbMainDlgFolder", "rowColumn9", &xmPushButtonWidgetClass, UI_TEXT("Change Destination")},
    {nullptr, nullptr, nullptr, nullptr},
};
// clang-format on

static const OV_CallbackRow s_aCallbacks[] = {
    {"mbMainDlg",       XmNmapCallback,      OV_instMainDlgMapCB         },
    {"mbMainDlg",       XmNcancelCallback,   OV_instMainDlgExitCB        },
    {"pbMainDlgFolder", XmNactivateCallback, OV_instMainDlgChangeFolderCB},
    {nullptr,           nullptr,             nullptr                     },
};

Widget CreatembMainDlg(Widget parent)
{
    Widget dialog = OV_instBuildDialog(parent, s_aRows, s_aCallbacks);

    XtUnmanageChild(XmMessageBoxGetChild(dialog, XmDIALOG_MESSAGE_LABEL));
    XtUnmanageChild(XmMessageBoxGetChild(dialog, XmDIALOG_SYMBOL_LABEL));
    return dialog;
}
