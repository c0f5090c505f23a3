#include "ut/toolkit/appResources.h"

#include <X11/Shell.h>
#include <Xm/RepType.h>
#include <Xm/Xm.h>
#include <algorithm>
#include <string>
#include <vector>

#include "ut/toolkit/Scheme.h"
#include "ut/toolkit/bxutils.h"
#include "ut/toolkit/looks.h"

static const char s_caClass[] = "ORVANE Setup";

typedef struct LookRow {
    const char *pSpecifier;
    const char *pValue;
} LookRow;

/* Lengths are in pixels of a screen of 96 dots per inch and grow with finer dots. The class name
 * holds a blank, so no line can name it: each begins with "*". Colours: a light window with white
 * fields, one grey for all lines, and one blue for what has the focus or is chosen. */
#define WINDOW "#eff0f1"
#define FIELD "#ffffff"
#define BUTTON "#fcfcfc"
#define INK "#232629"
#define LINE "#b4b9be"
#define DARK_LINE "#8a9197"
#define THUMB "#a9b0b6"
#define TROUGH "#dfe2e5"
#define ACCENT "#3584c8"
#define CHOSEN "#8abbe8"
#define BAR "#2f6fb2" /* dark enough for light text on it */
#define PALE_ACCENT "#d6e6f3"

static const LookRow s_aLooks[] = {
    {"*background",                                      WINDOW               },
    {"*foreground",                                      INK                  },
    {"*topShadowColor",                                  LINE                 },
    {"*bottomShadowColor",                               LINE                 },
    {"*borderColor",                                     LINE                 },
    {"*highlightColor",                                  ACCENT               },
    {"*shadowThickness",                                 "1"                  },
    {"*highlightThickness",                              "1"                  },
    {"*defaultButtonEmphasis",                           "INTERNAL_HIGHLIGHT" },

    {"*XmLabel.highlightThickness",                      "0"                  },
    {"*XmLabelGadget.highlightThickness",                "0"                  },
    {"*XmLabel.alignment",                               "ALIGNMENT_BEGINNING"},

    {"*XmPushButton.background",                         BUTTON               },
    {"*XmPushButton.armColor",                           PALE_ACCENT          },
    {"*XmPushButton.marginWidth",                        "12"                 },
    {"*XmPushButton.marginHeight",                       "5"                  },
    {"*XmPushButton.defaultButtonShadowThickness",       "0"                  },
    {"*XmPushButtonGadget.background",                   BUTTON               },
    {"*XmPushButtonGadget.armColor",                     PALE_ACCENT          },
    {"*XmPushButtonGadget.marginWidth",                  "14"                 },
    {"*XmPushButtonGadget.marginHeight",                 "5"                  },
    {"*XmPushButtonGadget.defaultButtonShadowThickness", "1"                  },

    {"*XmToggleButton.indicatorOn",                      "INDICATOR_CHECK_BOX"},
    {"*XmToggleButton.indicatorSize",                    "16"                 },
    {"*XmToggleButton.spacing",                          "8"                  },
    {"*XmToggleButton.marginHeight",                     "2"                  },
    {"*XmToggleButton.shadowThickness",                  "0"                  },
    {"*XmToggleButton.detailShadowThickness",            "1"                  },
    {"*XmToggleButton.topShadowColor",                   DARK_LINE            },
    {"*XmToggleButton.bottomShadowColor",                DARK_LINE            },
    {"*XmToggleButton.selectColor",                      CHOSEN               },
    {"*XmToggleButton.unselectColor",                    FIELD                },

    {"*XmText.background",                               FIELD                },
    {"*XmText.marginWidth",                              "6"                  },
    {"*XmText.marginHeight",                             "5"                  },
    {"*XmTextField.background",                          FIELD                },
    {"*XmTextField.marginWidth",                         "6"                  },
    {"*XmTextField.marginHeight",                        "5"                  },
    {"*XmList.background",                               FIELD                },
    {"*XmList.selectColor",                              PALE_ACCENT          },
    {"*XmList.listMarginWidth",                          "4"                  },
    {"*XmList.listMarginHeight",                         "4"                  },

    {"*XmScrolledWindow.highlightThickness",             "0"                  },
    {"*XmScrolledWindow.spacing",                        "2"                  },
    {"*XmScrolledWindow.background",                     WINDOW               },
    {"*XmScrolledWindow*background",                     FIELD                },
    {"*XmScrolledWindow*XmText.shadowThickness",         "0"                  }, /* the window draws the line */
    {"*XmScrolledWindow*XmScrollBar.background",         THUMB                },
    {"*XmScrollBar.background",                          THUMB                },
    {"*XmScrollBar.troughColor",                         TROUGH               },
    {"*XmScrollBar.showArrows",                          "False"              },
    {"*XmScrollBar.shadowThickness",                     "0"                  },
    {"*XmScrollBar.highlightThickness",                  "0"                  },
    {"*VertScrollBar.width",                             "12"                 },
    {"*HorScrollBar.height",                             "12"                 },

    {"*XmMessageBox.marginWidth",                        "14"                 },
    {"*XmMessageBox.marginHeight",                       "14"                 },
    {"*XmMessageBox.shadowThickness",                    "0"                  },
    {"*XmMessageBox.minimizeButtons",                    "False"              },
    {"*XmFileSelectionBox.marginWidth",                  "14"                 },
    {"*XmFileSelectionBox.marginHeight",                 "14"                 },
    {"*XmFileSelectionBox.shadowThickness",              "0"                  },

    {"*XmForm.marginWidth",                              "0"                  },
    {"*XmForm.marginHeight",                             "0"                  },
    {"*XmForm.horizontalSpacing",                        "6"                  },
    {"*XmForm.verticalSpacing",                          "6"                  },
    {"*XmForm.shadowThickness",                          "0"                  },
    {"*XmRowColumn.marginWidth",                         "6"                  },
    {"*XmRowColumn.marginHeight",                        "6"                  },
    {"*XmRowColumn.spacing",                             "6"                  },
    {"*XmRowColumn.shadowThickness",                     "0"                  },
    {"*XmFrame.shadowType",                              "SHADOW_ETCHED_IN"   },
    {"*XmFrame.marginWidth",                             "14"                 },
    {"*XmFrame.marginHeight",                            "12"                 },
    {"*XmDrawingArea.foreground",                        BAR                  },
    {nullptr,                                            nullptr              },
};

static const LookRow s_aXftFonts[] = {
    {"*renderTable",                 "bold, title"},
    {"*renderTable.fontType",        "FONT_IS_XFT"},
    {"*renderTable.fontName",        "Sans"       },
    {"*renderTable.fontSize",        "10"         },
    {"*renderTable.bold.fontType",   "FONT_IS_XFT"},
    {"*renderTable.bold.fontName",   "Sans"       },
    {"*renderTable.bold.fontSize",   "10"         },
    {"*renderTable.bold.fontStyle",  "Bold"       },
    {"*renderTable.title.fontType",  "FONT_IS_XFT"},
    {"*renderTable.title.fontName",  "Sans"       },
    {"*renderTable.title.fontSize",  "14"         },
    {"*renderTable.title.fontStyle", "Bold"       },
    {"*XmText.renderTable.fontName", "Monospace"  },
    {"*XmText.renderTable.fontType", "FONT_IS_XFT"},
    {"*XmText.renderTable.fontSize", "10"         },
    {nullptr,                        nullptr      },
};

/* Server fonts, by patterns that every server has something for. */
static const LookRow s_aServerFonts[] = {
    {"*renderTable",                 "bold, title"                                          },
    {"*renderTable.fontType",        "FONT_IS_FONTSET"                                      },
    {"*renderTable.fontName",        "-*-helvetica-medium-r-normal--*-120-*-*-*-*-*-*,fixed"},
    {"*renderTable.bold.fontType",   "FONT_IS_FONTSET"                                      },
    {"*renderTable.bold.fontName",   "-*-helvetica-bold-r-normal--*-120-*-*-*-*-*-*,fixed"  },
    {"*renderTable.title.fontType",  "FONT_IS_FONTSET"                                      },
    {"*renderTable.title.fontName",  "-*-helvetica-bold-r-normal--*-180-*-*-*-*-*-*,fixed"  },
    {"*XmText.renderTable.fontType", "FONT_IS_FONTSET"                                      },
    {"*XmText.renderTable.fontName", "fixed"                                                },
    {nullptr,                        nullptr                                                },
};

/* The older way to name fonts, over which a render table of ours would win. */
static const char *const s_apFontLists[] = {"fontList", "buttonFontList", "labelFontList",
                                            "textFontList", nullptr};

static void addLooks(Display *pDisplay, const LookRow *pRow)
{
    for (; pRow->pSpecifier; pRow++)
        OV_instAddLook(pDisplay, pRow->pSpecifier, pRow->pValue);
}

static void ignoreWarning(String, String, String, String, String *, Cardinal *) {}

/* A foundry that no font has, and each display of the process another. The toolkit keeps the fonts
 * it has opened under their descriptions and forgets which display they belong to: the installing
 * process, with a connection of its own, would draw with the fonts of the one it was forked from.
 * A foundry found nowhere changes nothing about the choice of the font. */
static const char *nextFoundry()
{
    static int s_iOpened;
    const std::string name = "setup" + std::to_string(++s_iOpened);

    return XrmQuarkToString(XrmStringToQuark(name.c_str())); /* the toolkit keeps the pointer */
}

/* Whether an antialiased font can be had: not on a machine without fonts of that kind. */
static int hasXftFont(Widget shell, const char *pFoundry)
{
    XtPointer font = nullptr;
    Arg aGet[] = {
        {(String)XmNxftFont, (XtArgVal)&font}
    };
    Arg aSet[] = {
        {(String)XmNfontType,    XmFONT_IS_XFT     },
        {(String)XmNfontName,    (XtArgVal) "Sans" },
        {(String)XmNfontSize,    10                },
        {(String)XmNfontFoundry, (XtArgVal)pFoundry},
        {(String)XmNloadModel,   XmLOAD_IMMEDIATE  }
    };
    XtAppContext app = XtWidgetToApplicationContext(shell);
    XtErrorMsgHandler fpWarn = XtAppSetWarningMsgHandler(app, ignoreWarning);
    XmRendition rendition = XmRenditionCreate(shell, (char *)"probe", aSet, XtNumber(aSet));

    XmRenditionRetrieve(rendition, aGet, XtNumber(aGet));
    XmRenditionFree(rendition);
    (void)XtAppSetWarningMsgHandler(app, fpWarn);
    return font && font != (XtPointer)XmAS_IS;
}

/* The fonts come last: whether there are any is known once the shell exists. */
static void addFonts(Widget shell)
{
    Display *pDisplay = XtDisplay(shell);
    const char *pFoundry = nextFoundry();

    OV_instAddLook(pDisplay, "*renderTable*fontFoundry", pFoundry);
    if (!OV_instUserNames(pDisplay, s_apFontLists))
        addLooks(pDisplay, hasXftFont(shell, pFoundry) ? s_aXftFonts : s_aServerFonts);
}

Widget OV_instOpenApplicationAs(int argc, char **argv)
{
    int iCount = argc;
    char **apArgv = OV_instNewArgv(&iCount, argv);
    std::vector<char *> words(apArgv, apArgv + iCount); /* the toolkit drops those that it knows */
    int iLeft = iCount;
    Widget shell = OV_instOpenApplication(&iLeft, apArgv);

    std::copy(words.begin(), words.end(), apArgv);
    OV_instFreeArgv(iCount, apArgv);
    return shell;
}

Widget OV_instOpenApplication(int *piArgc, char **apArgv)
{
    String pName = nullptr;
    String pClass = nullptr;

    XtToolkitInitialize();
    XtAppContext app = XtCreateApplicationContext();
    Display *pDisplay = XtOpenDisplay(app, nullptr, nullptr, s_caClass, nullptr, 0, piArgc, apArgv);
    if (!pDisplay) {
        XtDestroyApplicationContext(app);
        return nullptr;
    }
    (void)XSetLocaleModifiers(""); /* input methods; without one, keys still give characters */
    XtGetApplicationNameAndClass(pDisplay, &pName, &pClass);
    OV_instStartLooks(pDisplay);
    addLooks(pDisplay, s_aLooks); /* some of them the toolkit reads when the first shell is made */
    Widget shell =
        XtAppCreateShell(pName, pClass, applicationShellWidgetClass, pDisplay, nullptr, 0);
    addFonts(shell);
    RegisterBxConverters(app);
    XmRepTypeInstallTearOffModelConverter();
    return shell;
}
