#include "dialogs/Custom.h"

#include <Xm/DialogS.h>
#include <Xm/Form.h>
#include <Xm/Frame.h>
#include <Xm/Label.h>
#include <Xm/MessageB.h>
#include <Xm/PushB.h>
#include <Xm/RowColumn.h>
#include <Xm/ScrollBar.h>
#include <Xm/ScrolledW.h>

#include "ut/toolkit/rowList.h"
#include "ut/toolkit/uibuild.h"
#include "ut/toolkit/uiut.h"
#include "ut/toolkit/widgetTree.h"

/* The figures of a table end at one line. The text reserves the width for the longest of them. */
#define FIGURE(longest)                                                                            \
    UI_TEXT(longest) UI_SET("recomputeSize", "False") UI_SET("alignment", "ALIGNMENT_END")
#define SPACE FIGURE("1023.99 MB.")
#define COUNT FIGURE("99999")
#define SMALL_FRAME UI_SET("marginWidth", "6") UI_SET("marginHeight", "6")

#define BAR                                                                                        \
    UI_SET("orientation", "VERTICAL")                                                              \
    UI_SET("width", "12") UI_SET("traversalOn", "True") UI_SET("highlightThickness", "1")
#define NO_SPACING UI_SET("horizontalSpacing", "0") UI_SET("verticalSpacing", "0")
#define AT_OPTIONS UI_SET("rightAttachment", "ATTACH_POSITION") UI_SET("rightPosition", "58")
#define AT_DESCRIPTION                                                                             \
    UI_SET("leftAttachment", "ATTACH_POSITION")                                                    \
    UI_SET("leftPosition", "58") UI_SET("leftOffset", "12")

#define INSTRUCTION                                                                                \
    ":::t\"In the Options list, select the items you want installed; clear the items you\""        \
    ":t\"do not want installed. To choose among the parts of an item, click Change Option.\""      \
    "\"To select all the items, click Select All.\""

/* From the bottom upwards where the list and the description between take what is left over.
 * foCustomButtons has nothing in it, but has always been there. */
// clang-format off
static const OV_WidgetRow s_aRows[] = {
    {"dsCustomDlg", nullptr, &xmDialogShellWidgetClass, UI_SET("title", "ORVANE|Setup")},
    {"mbCustom", "dsCustomDlg", &xmMessageBoxWidgetClass,
     UI_SET("okLabelString", "Continue") UI_SET("cancelLabelString", "Cancel")
     UI_SET("dialogStyle", "DIALOG_MODELESS") UI_SET("defaultButtonType", "DIALOG_OK_BUTTON")},
    {"foCustom", "mbCustom", &xmFormWidgetClass, UI_SET("verticalSpacing", "8")},
    {"laCustom", "foCustom", &xmLabelWidgetClass, UI_TEXT(INSTRUCTION) UI_TOP UI_LEFT},

    {"foCustomButtons", "foCustom", &xmFormWidgetClass,
     UI_SET("height", "1") UI_BOTTOM UI_LEFT UI_RIGHT},
    {"foCustomSpace", "foCustom", &xmFormWidgetClass,
     UI_SET("verticalSpacing", "2") UI_LEFT UI_ABOVE("foCustomButtons")
     UI_SET("bottomOffset", "0")},
    {"laCustomRequired", "foCustomSpace", &xmLabelWidgetClass,
     UI_TEXT("Space required:") UI_TOP UI_LEFT},
    {"laCustomAvailable", "foCustomSpace", &xmLabelWidgetClass,
     UI_TEXT("Space available:") UI_BELOW("laCustomRequired") UI_LEFT UI_BOTTOM},
    {"laCustomRequiredValue", "foCustomSpace", &xmLabelWidgetClass,
     SPACE UI_LEVEL_WITH("laCustomRequired") UI_RIGHT_OF("laCustomAvailable") UI_RIGHT},
    {"laCustomAvailableValue", "foCustomSpace", &xmLabelWidgetClass,
     SPACE UI_LEVEL_WITH("laCustomAvailable") UI_RIGHT_OF("laCustomAvailable") UI_RIGHT},
    {"foCustomComponentCount", "foCustom", &xmFormWidgetClass,
     UI_SET("verticalSpacing", "2") UI_RIGHT UI_ABOVE("foCustomButtons")
     UI_SET("bottomOffset", "0")},
    {"laCustomRequired1", "foCustomComponentCount", &xmLabelWidgetClass,
     UI_TEXT("Components to Add:") UI_TOP UI_LEFT},
    {"laCustomAvailable1", "foCustomComponentCount", &xmLabelWidgetClass,
     UI_TEXT("Components to Remove:") UI_BELOW("laCustomRequired1") UI_LEFT UI_BOTTOM},
    {"laCustomRequiredValue1", "foCustomComponentCount", &xmLabelWidgetClass,
     COUNT UI_LEVEL_WITH("laCustomRequired1")
     UI_RIGHT_OF("laCustomAvailable1") UI_RIGHT},
    {"laCustomAvailableValue1", "foCustomComponentCount", &xmLabelWidgetClass,
     COUNT UI_LEVEL_WITH("laCustomAvailable1")
     UI_RIGHT_OF("laCustomAvailable1") UI_RIGHT},

    {"foCustomSelected", "foCustom", &xmFormWidgetClass,
     NO_SPACING UI_ABOVE("foCustomSpace") UI_LEFT UI_RIGHT},
    {"laCustomFolder", "foCustomSelected", &xmLabelWidgetClass,
     UI_TEXT("#bold\"Folder for Currently Selected Options:\"") UI_TOP UI_LEFT},
    {"frCustomFolder", "foCustomSelected", &xmFrameWidgetClass,
     SMALL_FRAME UI_BELOW("laCustomFolder") UI_SET("topOffset", "4") UI_LEFT UI_RIGHT UI_BOTTOM},
    {"foCustomFolder", "frCustomFolder", &xmFormWidgetClass, NO_SPACING},
    {"sbCustomFolder", "foCustomFolder", &xmScrollBarWidgetClass, BAR UI_TOP UI_RIGHT UI_BOTTOM},
    {"laCustomFolderPath", "foCustomFolder", &xmLabelWidgetClass,
     UI_TEXT("Destination path") UI_SET("recomputeSize", "False") UI_TOP UI_LEFT
     UI_LEFT_OF("sbCustomFolder") UI_BOTTOM},

    {"foCustomOptions", "foCustom", &xmFormWidgetClass,
     NO_SPACING UI_BELOW("laCustom") UI_ABOVE("foCustomSelected") UI_LEFT AT_OPTIONS},
    {"laCustomOptions", "foCustomOptions", &xmLabelWidgetClass,
     UI_TEXT("#bold\"Options:\"") UI_TOP UI_LEFT},
    {"laCustomOptionsOf", "foCustomOptions", &xmLabelWidgetClass,
     UI_TEXT("") UI_SET("recomputeSize", "False") UI_LEVEL_WITH("laCustomOptions")
     UI_RIGHT_OF("laCustomOptions") UI_RIGHT},
    {"swCustomOptions", "foCustomOptions", &xmScrolledWindowWidgetClass,
     UI_SET("scrollingPolicy", "AUTOMATIC") UI_SET("width", "400") UI_SET("height", "220")
     UI_BELOW("laCustomOptions") UI_SET("topOffset", "4") UI_LEFT UI_RIGHT UI_BOTTOM},
    {"rcCustomOptions", "swCustomOptions", &xmRowColumnWidgetClass,
     UI_SET("marginWidth", "4") UI_SET("marginHeight", "4") UI_SET("spacing", "0")
     UI_SET("adjustLast", "False")},

    {"foCustomDescription", "foCustom", &xmFormWidgetClass,
     NO_SPACING UI_BELOW("laCustom") UI_ABOVE("foCustomSelected") AT_DESCRIPTION UI_RIGHT},
    {"laCustomDescription", "foCustomDescription", &xmLabelWidgetClass,
     UI_TEXT("#bold\"Description:\"") UI_TOP UI_LEFT},
    {"frCustomDescription", "foCustomDescription", &xmFrameWidgetClass,
     SMALL_FRAME UI_BELOW("laCustomDescription") UI_SET("topOffset", "4") UI_LEFT UI_RIGHT UI_BOTTOM},
    {"foCustomDescriptionItem", "frCustomDescription", &xmFormWidgetClass,
     UI_SET("horizontalSpacing", "0")},
    {"pbCustomDescriptionItem", "foCustomDescriptionItem", &xmPushButtonWidgetClass,
     UI_TEXT("Select All") UI_LEFT UI_BOTTOM},
    {"pbCustomChangeOption", "foCustomDescriptionItem", &xmPushButtonWidgetClass,
     UI_TEXT("Change Option") UI_RIGHT UI_BOTTOM},
    {"sbCustomDescriptionItem", "foCustomDescriptionItem", &xmScrollBarWidgetClass,
     BAR UI_TOP UI_RIGHT UI_ABOVE("pbCustomDescriptionItem")},
    {"laCustomDescriptionItem", "foCustomDescriptionItem", &xmLabelWidgetClass,
     UI_TEXT("") UI_SET("recomputeSize", "False") UI_SET("width", "250") UI_TOP UI_LEFT
     UI_LEFT_OF("sbCustomDescriptionItem") UI_ABOVE("pbCustomDescriptionItem")
     UI_SET("alignment", "ALIGNMENT_BEGINNING")},
    {nullptr, nullptr, nullptr, nullptr},
};
// clang-format on

static const char *const s_apFigures[] = {"laCustomRequiredValue", "laCustomAvailableValue",
                                          "laCustomRequiredValue1", "laCustomAvailableValue1"};

static const OV_CallbackRow s_aCallbacks[] = {
    {"mbCustom",                XmNmapCallback,      OV_instCustomMapCB      },
    {"mbCustom",                XmNokCallback,       OV_instCustomOKCB       },
    {"mbCustom",                XmNcancelCallback,   OV_instCustomCancelCB   },
    {"pbCustomDescriptionItem", XmNactivateCallback, OV_instCustomSelectAllCB},
    {nullptr,                   nullptr,             nullptr                 },
};

Widget CreatembCustom(Widget parent)
{
    Widget dialog = OV_instBuildDialog(parent, s_aRows, s_aCallbacks);

    XtUnmanageChild(XmMessageBoxGetChild(dialog, XmDIALOG_MESSAGE_LABEL));
    XtUnmanageChild(XmMessageBoxGetChild(dialog, XmDIALOG_SYMBOL_LABEL));
    for (const char *pFigure : s_apFigures)
        OV_instSetLiteralLabel(OV_instFindWidget(dialog, pFigure), "");
    OV_instUseRowList(OV_instFindWidget(dialog, "rcCustomOptions"));
    OV_instCustomUse(dialog);
    return dialog;
}
