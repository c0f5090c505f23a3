#include "ut/toolkit/appFonts.h"

#include <Xm/Xm.h>
#include <cstdint>
#include <string>

#include "ut/toolkit/looks.h"

static const OV_LookRow s_aXftFonts[] = {
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
static const OV_LookRow s_aServerFonts[] = {
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
static bool hasXftFont(Widget shell, const char *pFoundry)
{
    static char s_caName[] = "probe";
    XtPointer font = nullptr;
    Arg aGet[] = {
        {const_cast<String>(XmNxftFont), reinterpret_cast<XtArgVal>(&font)}
    };
    Arg aSet[] = {
        {const_cast<String>(XmNfontType),    XmFONT_IS_XFT                       },
        {const_cast<String>(XmNfontName),    reinterpret_cast<XtArgVal>("Sans")  },
        {const_cast<String>(XmNfontSize),    10                                  },
        {const_cast<String>(XmNfontFoundry), reinterpret_cast<XtArgVal>(pFoundry)},
        {const_cast<String>(XmNloadModel),   XmLOAD_IMMEDIATE                    }
    };
    XtAppContext app = XtWidgetToApplicationContext(shell);
    XtErrorMsgHandler fpWarn = XtAppSetWarningMsgHandler(app, ignoreWarning);
    XmRendition rendition = XmRenditionCreate(shell, s_caName, aSet, XtNumber(aSet));

    XmRenditionRetrieve(rendition, aGet, XtNumber(aGet));
    XmRenditionFree(rendition);
    (void)XtAppSetWarningMsgHandler(app, fpWarn);
    return font && reinterpret_cast<uintptr_t>(font) != XmAS_IS;
}

void OV_instAddFonts(Widget shell)
{
    Display *pDisplay = XtDisplay(shell);
    const char *pFoundry = nextFoundry();

    OV_instAddLook(pDisplay, "*renderTable*fontFoundry", pFoundry);
    if (!OV_instUserNames(pDisplay, s_apFontLists))
        OV_instAddLooks(pDisplay, hasXftFont(shell, pFoundry) ? s_aXftFonts : s_aServerFonts);
}
