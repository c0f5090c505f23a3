#include "ut/toolkit/appLooks.h"

#include "ut/toolkit/looks.h"

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

/* Tab stops at every button, and the arrows go from one to the next. */
#define ARROWS(traversal)                                                                          \
    "#override\n<Key>osfLeft: " traversal "PrevTabGroup()\n<Key>osfUp: " traversal                 \
    "PrevTabGroup()\n<Key>osfRight: " traversal "NextTabGroup()\n<Key>osfDown: " traversal         \
    "NextTabGroup()\n"
#define BUTTON_KEYS ARROWS("Primitive")
#define BOX_KEYS ARROWS("ManagerGadget")

static const OV_LookRow s_aLooks[] = {
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

    {"*XmPushButton.navigationType",                     "TAB_GROUP"          },
    {"*XmPushButtonGadget.navigationType",               "TAB_GROUP"          },
    {"*XmPushButton.translations",                       BUTTON_KEYS          },
    {"*XmMessageBox.translations",                       BOX_KEYS             },
    {"*XmFileSelectionBox.translations",                 BOX_KEYS             },

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

void OV_instAddAppLooks(Display *pDisplay)
{
    OV_instAddLooks(pDisplay, s_aLooks);
}
