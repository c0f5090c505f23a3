#include "dialogs/Viewlog.h"

#include <Xm/DialogS.h>
#include <Xm/Form.h>
#include <Xm/Frame.h>
#include <Xm/Label.h>
#include <Xm/MessageB.h>
#include <Xm/PushB.h>
#include <algorithm>
#include <initializer_list>

#include "ut/toolkit/looks.h"
#include "ut/toolkit/uibuild.h"
#include "ut/toolkit/widgetTree.h"

// clang-format off
static const OV_WidgetRow s_aRows[] = {
    {"dsViewlog", nullptr, &xmDialogShellWidgetClass, UI_SET("title", "ORVANE|Setup")},
    {"mbViewlog", "dsViewlog", &xmMessageBoxWidgetClass,
     UI_SET("okLabelString", "Done") UI_SET("dialogStyle", "DIALOG_MODELESS")
     UI_SET("defaultButtonType", "DIALOG_OK_BUTTON") UI_SET("defaultPosition", "False")
     UI_SET("x", "7") UI_SET("y", "31") UI_ESCAPE_IS_OK},
    {"frame", "mbViewlog", &xmFrameWidgetClass, UI_SET("marginWidth", "10")},
    {"form", "frame", &xmFormWidgetClass, UI_SET("verticalSpacing", "10")},
    {"label", "form", &xmLabelWidgetClass,
     UI_TEXT("#bold\"Installation Setup Log\"") UI_TOP UI_LEFT},
    {"form1", "form", &xmFormWidgetClass,
     UI_SET("horizontalSpacing", "10") UI_BELOW("label") UI_LEFT UI_RIGHT},
    {"pushButton", "form1", &xmPushButtonWidgetClass,
     UI_TEXT("View Log") UI_TOP UI_BOTTOM UI_LEFT UI_SET("leftOffset", "0")},
    {"label1", "form1", &xmLabelWidgetClass,
     UI_TEXT(":::t\"View information about events that occur\"\"during setup.\"")
     UI_TOP UI_BOTTOM UI_RIGHT_OF("pushButton")},
    {nullptr, nullptr, nullptr, nullptr},
};
// clang-format on

static const OV_CallbackRow s_aCallbacks[] = {
    {"mbViewlog",  XmNokCallback,       OV_instViewlogDoneCB},
    {"pushButton", XmNactivateCallback, OV_instViewlogCB    },
    {nullptr,      nullptr,             nullptr             },
};

enum { LEAST_WIDTH = 425, LEAST_HEIGHT = 248 };

/* A size in the table would be kept where larger fonts need more. */
static void growToLeastSize(Widget dialog, XtPointer, XtPointer)
{
    const int iWidth = OV_instScaleLength(XtDisplay(dialog), LEAST_WIDTH);
    const int iHeight = OV_instScaleLength(XtDisplay(dialog), LEAST_HEIGHT);
    Dimension width = 0;
    Dimension height = 0;

    XtVaGetValues(dialog, XmNwidth, &width, XmNheight, &height, nullptr);
    XtVaSetValues(dialog, XmNwidth, static_cast<Dimension>(std::max<int>(width, iWidth)), XmNheight,
                  static_cast<Dimension>(std::max<int>(height, iHeight)), nullptr);
}

Widget CreatembViewlog(Widget parent)
{
    Widget dialog = OV_instBuildDialog(parent, s_aRows, s_aCallbacks);

    for (unsigned char child :
         {XmDIALOG_CANCEL_BUTTON, XmDIALOG_HELP_BUTTON, XmDIALOG_SYMBOL_LABEL})
        XtUnmanageChild(XmMessageBoxGetChild(dialog, child));
    /* A message box's own cancel button cannot be changed, and Escape on "View Log" asks for one.
     */
    XtVaSetValues(OV_instFindWidget(dialog, "form1"), XmNcancelButton,
                  XmMessageBoxGetChild(dialog, XmDIALOG_OK_BUTTON), nullptr);
    Dimension width = 0; /* the user's, if any */
    XtVaGetValues(dialog, XmNwidth, &width, nullptr);
    if (!width)
        XtAddCallback(dialog, XmNmapCallback, growToLeastSize, nullptr);
    return dialog;
}
