#include "dialogs/Progress.h"

#include <Xm/DialogS.h>
#include <Xm/DrawingA.h>
#include <Xm/Form.h>
#include <Xm/Frame.h>
#include <Xm/Label.h>
#include <Xm/MessageB.h>

#include "ut/toolkit/uibuild.h"

/* Reserves the label's width for the longest name that is shown. */
#define WIDEST_NAME "RRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRRR"

/* The bar has the labels' background, or it would be filled with theirs; see the drawing. */
// clang-format off
static const OV_WidgetRow s_aRows[] = {
    {"dsProgress", nullptr, &xmDialogShellWidgetClass, UI_SET("title", "ORVANE|Setup")},
    {"mbProgress", "dsProgress", &xmMessageBoxWidgetClass,
     UI_SET("dialogStyle", "DIALOG_MODELESS") UI_SET("defaultButtonType", "DIALOG_CANCEL_BUTTON")},
    {"form", "mbProgress", &xmFormWidgetClass, ""},
    {"frame", "form", &xmFrameWidgetClass, UI_FILL},
    {"form1", "frame", &xmFormWidgetClass, ""},
    {"laProgressAction", "form1", &xmLabelWidgetClass,
     UI_TEXT("Destination Files:") UI_TOP UI_LEFT},
    {"laProgressDestination", "form1", &xmLabelWidgetClass,
     UI_TEXT(WIDEST_NAME) UI_SET("recomputeSize", "False") UI_BELOW("laProgressAction") UI_LEFT
     UI_RIGHT},
    {"frame1", "form1", &xmFrameWidgetClass,
     UI_SET("shadowType", "SHADOW_IN") UI_SET("marginWidth", "0") UI_SET("marginHeight", "0")
     UI_BELOW("laProgressDestination") UI_LEFT UI_RIGHT UI_BOTTOM},
    {"daProgress", "frame1", &xmDrawingAreaWidgetClass, UI_SET("height", "26") UI_SET("traversalOn", "False")},
    {nullptr, nullptr, nullptr, nullptr},
};
// clang-format on

static const OV_CallbackRow s_aCallbacks[] = {
    {"mbProgress", XmNmapCallback,    OV_instProgressMapCB   },
    {"mbProgress", XmNcancelCallback, OV_instProgressCancelCB},
    {"daProgress", XmNexposeCallback, OV_instProgressExposeCB},
    {nullptr,      nullptr,           nullptr                },
};

Widget CreatembProgress(Widget parent)
{
    Widget dialog = OV_instBuildDialog(parent, s_aRows, s_aCallbacks);

    OV_instProgressUse(dialog);
    return dialog;
}
