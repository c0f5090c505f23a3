#include "dialogs/Agreement.h"

#include <Xm/DialogS.h>
#include <Xm/MessageB.h>
#include <Xm/ScrolledW.h>
#include <Xm/Text.h>

#include "ut/toolkit/uibuild.h"
#include "ut/toolkit/widgetTree.h"

#define READ_ONLY                                                                                  \
    UI_SET("editMode", "MULTI_LINE_EDIT")                                                          \
    UI_SET("editable", "False") UI_SET("cursorPositionVisible", "False")

/* Return answers although the keyboard is in the text. */
static const char s_caKeys[] = "<Key>osfActivate: activate()\n<Key>Return: activate()";

// clang-format off
static const OV_WidgetRow s_aRows[] = {
    {"dsEULA", nullptr, &xmDialogShellWidgetClass, UI_SET("title", "End User License Agreement")},
    {"mbEULA", "dsEULA", &xmMessageBoxWidgetClass,
     UI_SET("okLabelString", "I ACCEPT") UI_SET("cancelLabelString", "I DECLINE")
     UI_SET("dialogStyle", "DIALOG_MODELESS") UI_SET("defaultButtonType", "DIALOG_OK_BUTTON")},
    {"scrolledWindow", "mbEULA", &xmScrolledWindowWidgetClass,
     UI_SET("scrollingPolicy", "APPLICATION_DEFINED") UI_SET("visualPolicy", "VARIABLE")},
    {"txEULA", "scrolledWindow", &xmTextWidgetClass,
     READ_ONLY UI_SET("rows", "20") UI_SET("width", "680") UI_SET("wordWrap", "True")
     UI_SET("scrollHorizontal", "False")},
    {nullptr, nullptr, nullptr, nullptr},
};
// clang-format on

static const OV_CallbackRow s_aCallbacks[] = {
    {"mbEULA", XmNmapCallback,    OV_instEULAMapCB    },
    {"mbEULA", XmNokCallback,     OV_instEULAAcceptCB },
    {"mbEULA", XmNcancelCallback, OV_instEULADeclineCB},
    {nullptr,  nullptr,           nullptr             },
};

Widget CreatembEULA(Widget parent)
{
    Widget dialog = OV_instBuildDialog(parent, s_aRows, s_aCallbacks);

    XtOverrideTranslations(OV_instFindWidget(dialog, "txEULA"), XtParseTranslationTable(s_caKeys));
    return dialog;
}
