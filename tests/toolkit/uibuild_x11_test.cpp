#include <gtest/gtest.h>

#include "ut/toolkit/bxutils.h"
#include "toolkit/display.h"
#include "ut/toolkit/frameClose.h"
#include "ut/toolkit/looks.h"
#include "ut/toolkit/pressButton.h"
#include "ut/toolkit/uibuild.h"

struct Uibuild : OnDisplay {
};

static std::string s_calls;

static void noteCall(Widget widget, XtPointer data, XtPointer)
{
    s_calls += std::string(XtName(widget)) + (data ? "! " : " ");
}

static const OV_WidgetRow s_aRows[] = {
    {"dsFolderDlg", nullptr, &xmDialogShellWidgetClass, UI_SET("title", "ORVANE|Setup")},
    {"mbFolderDlg", "dsFolderDlg", &xmMessageBoxWidgetClass, UI_SET("okLabelString", "Continue")},
    {"foFolderDlg", "mbFolderDlg", &xmFormWidgetClass, ""},
    {"laFolderDlg", "foFolderDlg", &xmLabelWidgetClass,
     UI_TEXT(":::t\"Folder: \\\"here\\\"\"\"C:\\\\new\"") UI_TOP UI_LEFT},
    {"tfFolderDlg", "foFolderDlg", &xmTextFieldWidgetClass, UI_BELOW("laFolderDlg") UI_LEFT},
    {"pbFolderBrowse", "foFolderDlg", &xmPushButtonWidgetClass,
     UI_TEXT("Browse...") UI_LEVEL_WITH("tfFolderDlg") UI_RIGHT_OF("tfFolderDlg")},
    {nullptr, nullptr, nullptr, nullptr},
};

static const OV_CallbackRow s_aCallbacks[] = {
    {"mbFolderDlg", XmNokCallback, noteCall},
    {"mbFolderDlg", XmNcancelCallback, noteCall},
    {"pbFolderBrowse", XmNactivateCallback, noteCall},
    {nullptr, nullptr, nullptr},
};

TEST_F(Uibuild, CallbacksAreFoundByNameAndDialogsStay)
{
    Widget dialog = OV_instBuildDialog(parent, s_aRows, s_aCallbacks);
    Widget browse = OV_instFindWidget(dialog, "pbFolderBrowse");
    const auto called = [&](auto act) {
        s_calls.clear();
        act();
        runFor(application, 30);
        EXPECT_TRUE(XtIsManaged(dialog));
        return s_calls;
    };
    const auto closing = [&] { closeFrame(XtParent(dialog)); };

    XtManageChild(dialog);
    runFor(application, 20);
    XtAddCallback(dialog, XmNokCallback, noteCall, dialog);
    EXPECT_EQ("pbFolderBrowse ", called([&] { EXPECT_TRUE(OV_instActivateButton(browse)); }));

    /* closing: Cancel; without it OK; a button of the dialog's own where it says so */
    EXPECT_EQ("mbFolderDlg ", called(closing));
    XtUnmanageChild(XmMessageBoxGetChild(dialog, XmDIALOG_CANCEL_BUTTON));
    EXPECT_EQ("mbFolderDlg mbFolderDlg! ", called(closing));
    OV_instHandleFrameClose(dialog, "pbFolderBrowse");
    EXPECT_EQ("pbFolderBrowse ", called(closing));
    XtSetSensitive(browse, False);
    EXPECT_EQ("", called(closing));
    EXPECT_EQ(0, OV_instActivateButton(browse));
    XtDestroyWidget(XtParent(dialog));
}

/* A dialog opened from another may use the same names. */
TEST_F(Uibuild, LooksStayWithTheirDialog)
{
    static const OV_WidgetRow s_aTables[2][4] = {
        {{"dsAsk", nullptr, &xmDialogShellWidgetClass, ""},
         {"mbAsk", "dsAsk", &xmMessageBoxWidgetClass, ""},
         {"label", "mbAsk", &xmLabelWidgetClass, UI_TEXT("outer") UI_SET("marginWidth", "7")},
         {nullptr, nullptr, nullptr, nullptr}},
        {{"dsAskConfirm", nullptr, &xmDialogShellWidgetClass, ""},
         {"mbAskConfirm", "dsAskConfirm", &xmMessageBoxWidgetClass, ""},
         {"label", "mbAskConfirm", &xmLabelWidgetClass, UI_TEXT("inner")},
         {nullptr, nullptr, nullptr, nullptr}},
    };
    for (int i = 0; i < 2; i++) { /* the second time the looks are there already */
        Widget outer = OV_instBuildDialog(parent, s_aTables[0], nullptr);
        Widget inner = OV_instBuildDialog(XtParent(outer), s_aTables[1], nullptr);
        EXPECT_EQ("L 'outer'", shownBy(OV_instFindWidget(outer, "label")));
        EXPECT_EQ("L 'inner'", shownBy(OV_instFindWidget(inner, "label")));
        EXPECT_NE(7, resourceOf<Dimension>(OV_instFindWidget(inner, "label"), XmNmarginWidth));
        XtDestroyWidget(XtParent(outer));
    }
}

/* An application of its own with one more resource line, and the sample dialog in it. */
struct Application {
    Widget shell = nullptr;
    Widget dialog = nullptr;

    explicit Application(const char *pLine = nullptr)
    {
        char *apArgs[] = {(char *)"setup", (char *)"-xrm", (char *)pLine, nullptr};
        int iArgs = pLine ? 3 : 1;

        shell = OV_instOpenApplication(&iArgs, apArgs);
        dialog = OV_instBuildDialog(OV_instCreateMainTopLevelShell(shell), s_aRows, nullptr);
    }
    Application(const Application &) = delete;
    Application &operator=(const Application &) = delete;
    ~Application()
    {
        /* the display stays open: the toolkit's font cache outlives it */
        OV_instCreateMainTopLevelShell(testApplication());
        OV_instStartLooks(XtDisplay(testApplication()));
    }
    Widget operator[](const char *pName) const { return OV_instFindWidget(dialog, pName); }
};

TEST_F(Uibuild, UsersResourcesWin)
{
    for (const char *pLine :
         {"*dsFolderDlg*pbFolderBrowse.labelString: Mine", "*pbFolderBrowse.labelString: Mine",
          "setup.TopLevelShell.dsFolderDlg*labelString: Mine", "*XmPushButton.labelString: Mine"}) {
        Application user(pLine);
        EXPECT_EQ("L 'Mine'", shownBy(user["pbFolderBrowse"])) << pLine;
    }
    Application wide("*marginWidth: 31");
    EXPECT_EQ(31, resourceOf<Dimension>(wide["pbFolderBrowse"], XmNmarginWidth));
    /* what the program's logic rests on is not for resources to say */
    Application user("*autoUnmanage: True");
    EXPECT_FALSE(resourceOf<Boolean>(user.dialog, XmNautoUnmanage));
}

/* The width of a text in the label's fonts. */
static int widthOfText(Widget label, const char *pText)
{
    XmString text = StringToXmString(pText);
    XmRenderTable table = resourceOf<XmRenderTable>(label, XmNrenderTable);
    int iWidth = XmStringWidth(table, text);

    XmStringFree(text);
    return iWidth;
}

TEST_F(Uibuild, LengthsAndFontsGrowWithTheDots)
{
    Application usual("Xft.dpi: 96");
    const int iUsual = widthOfText(usual["laFolderDlg"], "Destination");
    EXPECT_EQ(12, resourceOf<Dimension>(usual["pbFolderBrowse"], XmNmarginWidth));
    EXPECT_EQ(10, OV_instScaleLength(XtDisplay(usual.shell), 10));
    EXPECT_LT(iUsual, widthOfText(usual["laFolderDlg"], "#bold\"Destination\""));
    EXPECT_LT(iUsual + 10, widthOfText(usual["laFolderDlg"], "#title\"Destination\""));
    {
        Application fine("Xft.dpi: 144");
        EXPECT_EQ(18, resourceOf<Dimension>(fine["pbFolderBrowse"], XmNmarginWidth));
        EXPECT_NEAR(3 * iUsual / 2, widthOfText(fine["laFolderDlg"], "Destination"), iUsual / 5);
    }
    {
        Application larger("*renderTable.fontSize: 15"); /* one of our lines replaced, no other */
        EXPECT_NEAR(3 * iUsual / 2, widthOfText(larger["laFolderDlg"], "Destination"), iUsual / 5);
        EXPECT_EQ(18, resourceOf<Dimension>(larger["pbFolderBrowse"], XmNmarginWidth));
    }
    {
        Application user("*XmLabel.FontList: fixed"); /* replaces all of our fonts */
        EXPECT_EQ(11 * 6, widthOfText(user["laFolderDlg"], "Destination"));
    }
    Application crowded("Xft.dpi: 384"); /* more than a screen as wide as the tests' can hold */
    const int iMost = WidthOfScreen(XtScreen(crowded.shell)) * 100 / 800;
    EXPECT_GE(iMost, OV_instScaleLength(XtDisplay(crowded.shell), 100));
}
