#include "dialogs/ChangeDestination.h"

#include <Xm/DialogS.h>
#include <Xm/Form.h>
#include <Xm/Frame.h>
#include <Xm/Label.h>
#include <Xm/MessageB.h>
#include <Xm/PushB.h>
#include <Xm/RowColumn.h>
#include <Xm/TextF.h>

#include "ut/toolkit/uibuild.h"

#define INSTRUCTION                                                                                \
    ":::t\"Setup will install the program in the following destination directory.\""               \
    ":t\"\":t\"To install to this directory, click OK.\""                                          \
    ":t\"\":t\"To install to a different directory, click Change Destination and choose\""         \
    ":t\"another directory.\""                                                                     \
    ":t\"\"\"You can choose not to install the program by clicking Exit Setup.\""

// clang-format off
static const OV_WidgetRow s_aRows[] = {
    {"dsChangeDestination", nullptr, &xmDialogShellWidgetClass, UI_SET("title", "ORVANE|Setup")},
    {"mbChangeDestination", "dsChangeDestination", &xmMessageBoxWidgetClass,
     UI_SET("okLabelString", "OK") UI_SET("cancelLabelString", "Exit Setup")
     UI_SET("dialogStyle", "DIALOG_MODELESS") UI_SET("defaultButtonType", "DIALOG_OK_BUTTON")},
    {"rowColumn", "mbChangeDestination", &xmRowColumnWidgetClass,
     UI_SET("marginWidth", "0") UI_SET("marginHeight", "0") UI_SET("spacing", "12")},
    {"label", "rowColumn", &xmLabelWidgetClass, UI_TEXT(INSTRUCTION)},
    {"frame", "rowColumn", &xmFrameWidgetClass, ""},
    {"form", "frame", &xmFormWidgetClass, UI_SET("verticalSpacing", "8")},
    {"label2", "form", &xmLabelWidgetClass,
     UI_TEXT(":::t\"If this is a network installation,\"\"please type the network path (/MountPoint/Orvane)\"")
     UI_TOP UI_LEFT},
    {"form1", "form", &xmFormWidgetClass,
     UI_SET("horizontalSpacing", "0") UI_SET("verticalSpacing", "0")
     UI_BELOW("label2") UI_LEFT UI_RIGHT UI_BOTTOM},
    {"pushButton", "form1", &xmPushButtonWidgetClass,
     UI_TEXT("Change Destination") UI_SET("navigationType", "TAB_GROUP") UI_TOP UI_RIGHT},
    {"tfChangeDestination", "form1", &xmTextFieldWidgetClass,
     UI_SET("width", "360") UI_LEVEL_WITH("pushButton") UI_LEFT UI_LEFT_OF("pushButton") UI_SET("rightOffset", "8")},
    {"label1", "form1", &xmLabelWidgetClass,
     UI_TEXT("Available space:")
     UI_BELOW("pushButton") UI_SET("topOffset", "6") UI_LEFT UI_BOTTOM},
    {"laChangeDestinationAvailableSpace", "form1", &xmLabelWidgetClass,
     UI_TEXT("") UI_LEVEL_WITH("label1") UI_RIGHT_OF("label1") UI_SET("leftOffset", "6")},
    {nullptr, nullptr, nullptr, nullptr},
};
// clang-format on

static const OV_CallbackRow s_aCallbacks[] = {
    {"mbChangeDestination", XmNmapCallback,      OV_instChangeDestinationMapCB     },
    {"mbChangeDestination", XmNokCallback,       OV_instChangeDestinationOKCB      },
    {"mbChangeDestination", XmNcancelCallback,   OV_instChangeDestinationExitCB    },
    {"pushButton",          XmNactivateCallback, OV_instChangeDestinationActivateCB},
    {nullptr,               nullptr,             nullptr                           },
};

Widget CreatembChangeDestination(Widget parent)
{
    Widget dialog = OV_instBuildDialog(parent, s_aRows, s_aCallbacks);

    XtUnmanageChild(XmMessageBoxGetChild(dialog, XmDIALOG_SYMBOL_LABEL));
    return dialog;
}
