#include <gtest/gtest.h>

#include <set>
#include <unistd.h>

#include "toolkit/display.h"
#include "ut/toolkit/messageBox.h"
#include "ut/toolkit/pressButton.h"

struct Uiut : OnDisplay {
    /* Asks and does the step once the box is up. */
    int ask(const char *pCancel, const char *pHelp, std::function<void()> step)
    {
        Later later(application, 20, std::move(step));
        return OV_instOkCancelMessageBox(parent, "Really?", "Yes", pCancel, pHelp);
    }
};

static Widget boxChild(Widget box, int iChild)
{
    return XmMessageBoxGetChild(box, (unsigned char)iChild);
}

static void press(int iChild)
{
    ASSERT_TRUE(openBox());
    EXPECT_TRUE(OV_instActivateButton(boxChild(openBox(), iChild)));
}

TEST(WithoutDisplay, BoxesPrint)
{
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, OV_instOkCancelMessageBox(nullptr, "%s 100%\n", "Con%dtinue", "No", nullptr));
    EXPECT_EQ("%s 100%\nReturning Con%dtinue\n", testing::internal::GetCapturedStdout());

    testing::internal::CaptureStderr();
    EXPECT_EQ(0, OV_instDisplayMessage(nullptr, "OK", nullptr, nullptr, nullptr));
    EXPECT_EQ(0, OV_instDisplayMessage(nullptr, "OK", nullptr, nullptr, "%s|%d\n", "%n", 5));
    const char *pEmpty = ""; /* gives the static text */
    EXPECT_EQ(0, OV_instDisplayMessage(nullptr, "OK", nullptr, nullptr, pEmpty, 0));
    EXPECT_EQ("%n|5\n", testing::internal::GetCapturedStderr());
}

static void destroyBox()
{
    XtDestroyWidget(XtParent(openBox()));
}

/* Buttons, keys, the frame, and a box that is destroyed from elsewhere; help is no answer. */
TEST_F(Uiut, AnswersAreThePositionsOfTheButtons)
{
    const auto pressing = [](int iChild) { return [=] { press(iChild); }; };
    const auto typing = [](KeySym key) { return [=] { pressKey(XtParent(openBox()), key); }; };
    const auto closing = [] { closeFrame(XtParent(openBox())); };
    const struct {
        const char *pCancel, *pHelp;
        std::function<void()> step;
        int iAnswer;
    } rows[] = {
        {"No", nullptr, pressing(XmDIALOG_OK_BUTTON), 0},
        {"No", nullptr, pressing(XmDIALOG_CANCEL_BUTTON), 1},
        {nullptr, "Abort", pressing(XmDIALOG_HELP_BUTTON), 2},
        {"No", nullptr, typing(XK_Return), 0},
        {"No", nullptr, typing(XK_Escape), 1},
        {nullptr, nullptr, typing(XK_Escape), 0},
        {"No", nullptr, closing, 1},
        {nullptr, nullptr, closing, 0},
        {nullptr, "Abort", closing, 0},
        {nullptr, nullptr, destroyBox, 0},
        {"Browse...", "Abort", destroyBox, 2},
    };

    for (const auto &row : rows) {
        EXPECT_EQ(row.iAnswer, ask(row.pCancel, row.pHelp, row.step)) << &row - rows;
        EXPECT_EQ(nullptr, openBox());
    }
    Later later(application, 200, [] { press(XmDIALOG_OK_BUTTON); });
    EXPECT_EQ(0, ask("Browse...", "Abort", typing(XK_F1)));
}

TEST_F(Uiut, BoxShowsWhatItWasGiven)
{
    const char *pFormat = "Can't %s\n'%s'";
    Later later(application, 20, [] {
        Widget box = openBox();
        ASSERT_TRUE(box);
        EXPECT_STREQ("Orvane Message", XtName(XtParent(box)));
        EXPECT_EQ("L 'Can't 100%d' / ''%n''", shownBy(boxChild(box, XmDIALOG_MESSAGE_LABEL)));
        EXPECT_EQ("L 'Yes' / 'indeed'", shownBy(boxChild(box, XmDIALOG_OK_BUTTON)));
        EXPECT_EQ("L 'No'", shownBy(boxChild(box, XmDIALOG_CANCEL_BUTTON)));
        EXPECT_TRUE(XtIsManaged(boxChild(box, XmDIALOG_CANCEL_BUTTON)));
        EXPECT_FALSE(XtIsManaged(boxChild(box, XmDIALOG_HELP_BUTTON)));
        EXPECT_FALSE(XtIsManaged(boxChild(box, XmDIALOG_SEPARATOR)));
        EXPECT_EQ(XmDIALOG_FULL_APPLICATION_MODAL, resourceOf<unsigned char>(box, XmNdialogStyle));
        press(XmDIALOG_CANCEL_BUTTON);
    });

    EXPECT_EQ(1, OV_instDisplayMessage(parent, ":t\"Yes\"\"indeed\"", "No", nullptr, pFormat,
                                       "100%d", "%n"));
}

TEST_F(Uiut, BoxesNest)
{
    int iInner = -1;
    int bOuterStood = 0;

    EXPECT_EQ(0, ask("No", nullptr, [&] {
                  Widget outer = openBox();
                  /* neither the frame nor the keyboard reach the lower box meanwhile */
                  Later close(application, 20, [&] { closeFrame(XtParent(outer)); });
                  Later check(application, 100, [&] {
                      EXPECT_NE(outer, openBox());
                      press(XmDIALOG_CANCEL_BUTTON);
                  });
                  iInner = OV_instOkCancelMessageBox(parent, "inner", "a", "b", "c");
                  bOuterStood = openBox() == outer;
                  press(XmDIALOG_OK_BUTTON);
              }));
    EXPECT_EQ(1, iInner);
    EXPECT_TRUE(bOuterStood);
    EXPECT_EQ(1, ask("No", nullptr, [] { closeFrame(XtParent(openBox())); })) << "still closable";
}

/* Within a callback a destruction from a timer stays half done until the callback returns. */
TEST_F(Uiut, BoxOpenedByACallbackEndsWhenDestroyed)
{
    static Uiut *s_pTest;
    static int s_iAnswer;
    auto asks = [](Widget, XtPointer, XtPointer) {
        s_iAnswer = s_pTest->ask("No", nullptr, destroyBox);
    };
    Widget dialog = XmCreateMessageDialog(parent, (char *)"mbOuter", nullptr, 0);

    s_pTest = this;
    s_iAnswer = -1;
    XtAddCallback(dialog, XmNcancelCallback, asks, nullptr);
    XtManageChild(dialog);
    runFor(application, 20);
    pressKey(XtParent(dialog), XK_Escape);
    runFor(application, 200);
    EXPECT_EQ(1, s_iAnswer);
    XtDestroyWidget(XtParent(dialog));
}

TEST_F(Uiut, AnyoneCanEndAWait)
{
    int aPipe[2];
    auto ignores = [](XtPointer, int *, XtInputId *) {};
    int bDone = 0;

    OV_instMainLoop(parent, nullptr);
    { /* a timer, with no event to come */
        Later later(application, 10, [&] { bDone = 1; });
        OV_instMainLoop(parent, &bDone);
        EXPECT_EQ(0u, later.timer);
    }

    /* a pipe that is never empty does not keep the user out */
    ASSERT_EQ(0, pipe(aPipe));
    ASSERT_EQ(1, write(aPipe[1], "x", 1));
    XtInputId input =
        XtAppAddInput(context(), aPipe[0], (XtPointer)XtInputReadMask, ignores, nullptr);
    EXPECT_EQ(1, ask("No", nullptr, [] { pressKey(XtParent(openBox()), XK_Escape); }));
    XtRemoveInput(input);
    close(aPipe[0]);
    close(aPipe[1]);
}

/* How many colours the window shows: more than one means that something is drawn. */
static size_t coloursOf(Widget shell)
{
    const CorePart &core = shell->core;
    XImage *pImage = XGetImage(XtDisplay(shell), XtWindow(shell), 0, 0, core.width, core.height,
                               AllPlanes, ZPixmap);
    std::set<unsigned long> colours;

    for (int i = 0; i < core.width * core.height; i++)
        colours.insert(XGetPixel(pImage, i % core.width, i / core.width));
    XDestroyImage(pImage);
    return colours.size();
}

TEST_F(Uiut, NoticeIsDrawnWithoutALoop)
{
    OV_instDisplayMessageBox(parent, "Updating the system registry");
    Widget first = openBox("mbMessage");
    ASSERT_TRUE(first);
    EXPECT_GT(coloursOf(XtParent(first)), 2u) << "text on a ground";
    for (const char *pName : {"OK", "Cancel", "Help"})
        EXPECT_FALSE(XtIsManaged(XtNameToWidget(first, pName)));
    closeFrame(XtParent(first));
    runFor(application, 50);
    EXPECT_EQ(first, openBox("mbMessage"));

    OV_instDisplayMessageBox(parent, "Another");
    ASSERT_EQ(1u, dialogsShown("mbMessage").size());
    EXPECT_EQ("L 'Another'", shownBy(boxChild(openBox("mbMessage"), XmDIALOG_MESSAGE_LABEL)));
    OV_instRemoveMessageBox();
    EXPECT_EQ(nullptr, openBox("mbMessage"));
}
