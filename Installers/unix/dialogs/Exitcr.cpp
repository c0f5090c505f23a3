#include "dialogs/Exit.h"

#include <Xm/Form.h>
#include <Xm/Label.h>
#include <Xm/PushB.h>

#include "ut/toolkit/uibuild.h"

// clang-format off
static const OV_WidgetRow s_aRows[] = {
    {"foExit", nullptr, &xmFormWidgetClass,
     UI_SET("marginWidth", "14") UI_SET("marginHeight", "14") UI_SET("verticalSpacing", "14")},
    {"foExitButtons", "foExit", &xmFormWidgetClass, UI_BOTTOM UI_LEFT UI_RIGHT},
    {"pbExitExit", "foExitButtons", &xmPushButtonWidgetClass,
     UI_TEXT("Exit Setup") UI_TOP UI_LEFT UI_BOTTOM},
    {"pbExitResume", "foExitButtons", &xmPushButtonWidgetClass,
     UI_TEXT("Resume Setup") UI_TOP UI_RIGHT UI_BOTTOM},
    {"foExitLabels", "foExit", &xmFormWidgetClass, UI_TOP UI_LEFT UI_RIGHT
     UI_ABOVE("foExitButtons")},
    {"laExitPicture", "foExitLabels", &xmLabelWidgetClass,
     UI_SET("labelType", "PIXMAP") UI_SET("labelPixmap", "xm_question") UI_TOP UI_LEFT},
    {"laExitStatus", "foExitLabels", &xmLabelWidgetClass,
     UI_TEXT("Setup status") UI_TOP UI_RIGHT_OF("laExitPicture") UI_RIGHT},
    {"laExitMessage", "foExitLabels", &xmLabelWidgetClass,
     UI_TEXT("Are you sure you want to Exit?") UI_BELOW("laExitStatus")
     UI_RIGHT_OF("laExitPicture") UI_RIGHT},
    {nullptr, nullptr, nullptr, nullptr},
};
// clang-format on

static const OV_CallbackRow s_aCallbacks[] = {
    {"foExit",       XmNmapCallback,      OV_instExitCB      },
    {"pbExitExit",   XmNactivateCallback, OV_instExitExitCB  },
    {"pbExitResume", XmNactivateCallback, OV_instExitResumeCB},
    {nullptr,        nullptr,             nullptr            },
};

Widget CreatefoExit(Widget parent)
{
    return OV_instBuildDialog(parent, s_aRows, s_aCallbacks);
}
