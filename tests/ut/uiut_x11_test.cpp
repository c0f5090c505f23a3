#include <gtest/gtest.h>

#include <clocale>
#include <fcntl.h>
#include <set>
#include <sys/wait.h>
#include <unistd.h>

#include "ut/display.h"
#include "ut/frameClose.h"
#include "ut/uibuild.h"

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
    EXPECT_EQ(0, OV_instDisplayMessage(nullptr, "OK", nullptr, nullptr, "")); /* static text */
    EXPECT_EQ("%n|5\n", testing::internal::GetCapturedStderr());
}

TEST(WithoutDisplay, NullWidgetsDoNothing)
{
    int iNever = 0;

    OV_instMainLoop(nullptr, &iNever);
    OV_instPopup(nullptr, "t", "i");
    OV_instPopdown(nullptr);
    OV_instUpdateLabelString(nullptr, "x");
    OV_instSetLiteralLabel(nullptr, "x");
    OV_instDisplayMessageBox(nullptr, "x");
    OV_instRemoveMessageBox();
    OV_instHandleFrameClose(nullptr, nullptr);
    OV_makeAllWidgetSameMaxWidth(nullptr);
    EXPECT_EQ(nullptr, OV_instCreateMainTopLevelShell(nullptr));
    EXPECT_EQ(nullptr, OV_instGetShell(nullptr));
    EXPECT_EQ(nullptr, OV_instGetTLShell(nullptr));
    EXPECT_EQ(nullptr, OV_instGetTopManager(nullptr));
    EXPECT_EQ(nullptr, OV_instFindWidget(nullptr, "x"));
    EXPECT_EQ(0, OV_instActivateButton(nullptr));
    EXPECT_EQ(-1, OV_instOutputCmdInTextWidget(nullptr, "echo"));
}

static int mapState(Widget widget)
{
    XWindowAttributes state = {};

    XGetWindowAttributes(XtDisplay(widget), XtWindow(widget), &state);
    return state.map_state;
}

/* Whether the widget's shell is in the middle of the screen, going by the widget's size. */
static void expectCentred(Widget widget)
{
    Widget shell = OV_instGetShell(widget);
    Screen *pScreen = XtScreen(shell);

    EXPECT_EQ(WidthOfScreen(pScreen) / 2 - resourceOf<Dimension>(widget, XmNwidth) / 2,
              resourceOf<Position>(shell, XmNx));
    EXPECT_EQ(HeightOfScreen(pScreen) / 2 - resourceOf<Dimension>(widget, XmNheight) / 2,
              resourceOf<Position>(shell, XmNy));
}

TEST_F(Uiut, MainShellIsCentredHiddenAndReplaceable)
{
    EXPECT_STREQ("TopLevelShell", XtName(parent));
    EXPECT_EQ(IsUnmapped, mapState(parent));
    EXPECT_STREQ("", resourceOf<char *>(parent, XmNtitle));
    expectCentred(parent);

    Widget second = OV_instCreateMainTopLevelShell(application);
    EXPECT_EQ(second, OV_instGetMainTopLevelShell());
    XtDestroyWidget(parent); /* the replaced one takes nothing along */
    EXPECT_EQ(second, OV_instGetMainTopLevelShell());
    XtDestroyWidget(second);
    EXPECT_EQ(nullptr, OV_instGetMainTopLevelShell());
    OV_instDispatchPending(); /* nothing to do without a shell */
    parent = OV_instCreateMainTopLevelShell(application);
}

static Widget buildSample(Widget parent)
{
    Widget form = XtVaCreateWidget("foSample", xmFormWidgetClass, parent, XmNwidth, 301, XmNheight,
                                   151, nullptr);

    XtCreateManagedWidget("laSample", xmLabelGadgetClass, form, nullptr, 0);
    return form;
}

TEST_F(Uiut, ShellsAreFoundUpwards)
{
    Widget shell = XtCreatePopupShell("dsOne", xmDialogShellWidgetClass, parent, nullptr, 0);
    Widget form = buildSample(shell);
    Widget label = XtNameToWidget(form, "laSample");
    Widget over = XtCreatePopupShell("dsTwo", xmDialogShellWidgetClass, shell, nullptr, 0);
    Widget overForm = buildSample(over);
    Widget overLabel = XtNameToWidget(overForm, "laSample");

    EXPECT_EQ(shell, OV_instGetShell(label));
    EXPECT_EQ(shell, OV_instGetShell(shell));
    EXPECT_EQ(parent, OV_instGetTLShell(overLabel));
    EXPECT_EQ(form, OV_instGetTopManager(label));
    EXPECT_EQ(form, OV_instGetTopManager(form));
    EXPECT_EQ(over, OV_instGetTopManager(over));
    EXPECT_EQ(label, OV_instFindWidget(label, "laSample"));
    EXPECT_EQ(overLabel, OV_instFindWidget(overForm, "laSample"));
    EXPECT_EQ(form, OV_instFindWidget(label, "foSample"));
    EXPECT_EQ(nullptr, OV_instFindWidget(label, "dsTwo"));
    XtDestroyWidget(shell);
}

TEST_F(Uiut, PopupCentresAndPopdownHides)
{
    Widget shell = XtVaCreatePopupShell("dsOne", xmDialogShellWidgetClass, parent, nullptr);
    Widget form = buildSample(shell);

    OV_instPopup(form, "A %s title", "icon");
    runFor(application, 20);
    EXPECT_STREQ("A %s title", resourceOf<char *>(shell, XmNtitle));
    EXPECT_EQ(IsViewable, mapState(shell));
    expectCentred(form);
    OV_instPopdown(XtNameToWidget(form, "laSample"));
    EXPECT_EQ(IsUnmapped, mapState(shell));
    XtDestroyWidget(shell);

    Widget made = OV_instCreateAndPopup(buildSample);
    runFor(application, 20);
    ASSERT_TRUE(made);
    EXPECT_EQ(parent, XtParent(made));
    EXPECT_EQ(301, resourceOf<Dimension>(made, XmNwidth));
    EXPECT_EQ(301, resourceOf<Dimension>(parent, XmNwidth));
    EXPECT_EQ(151, resourceOf<Dimension>(parent, XmNheight));
    expectCentred(made);
    EXPECT_EQ(IsViewable, mapState(parent));
    XtDestroyWidget(parent);
    parent = OV_instCreateMainTopLevelShell(application);
}

TEST_F(Uiut, AnswersAreThePositionsOfTheButtons)
{
    const std::tuple<const char *, const char *, int, int> rows[] = {
        {nullptr, nullptr, XmDIALOG_OK_BUTTON, 0},
        {"No", nullptr, XmDIALOG_OK_BUTTON, 0},
        {"No", nullptr, XmDIALOG_CANCEL_BUTTON, 1},
        {"Browse...", "Abort", XmDIALOG_HELP_BUTTON, 2},
        {nullptr, "Abort", XmDIALOG_HELP_BUTTON, 2},
    };

    for (const auto &[pCancel, pHelp, iChild, iAnswer] : rows) {
        const int iPressed = iChild;
        EXPECT_EQ(iAnswer, ask(pCancel, pHelp, [=] { press(iPressed); })) << iPressed;
        EXPECT_EQ(nullptr, openBox());
    }
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

TEST_F(Uiut, LongLinesStayOnTheScreen)
{
    const std::string path = "/" + std::string(3000, 'x');
    const std::string message = "Can't open\n" + path + " though it is " + path + "\nshort";
    Later later(application, 20, [&] {
        Widget label = boxChild(openBox(), XmDIALOG_MESSAGE_LABEL);
        std::string shown = shownBy(label);
        EXPECT_LT(resourceOf<Dimension>(XtParent(label), XmNwidth),
                  WidthOfScreen(XtScreen(application)));
        EXPECT_EQ(0u, shown.find("L 'Can't open' / '/xxx"));
        EXPECT_EQ("/ 'short'", shown.substr(shown.size() - 9));
        EXPECT_EQ(6000, std::count(shown.begin(), shown.end(), 'x'));
        press(XmDIALOG_OK_BUTTON);
    });

    EXPECT_EQ(0, OV_instOkCancelMessageBox(parent, message.c_str(), "OK", nullptr, nullptr));
}

TEST_F(Uiut, KeysAnswer)
{
    const std::tuple<KeySym, const char *, int> rows[] = {
        {XK_Return, "No", 0},
        {XK_Escape, "No", 1},
        {XK_Escape, nullptr, 0},
        {XK_Return, nullptr, 0},
    };

    for (const auto &[key, pCancel, iAnswer] : rows) {
        const KeySym pressed = key;
        EXPECT_EQ(iAnswer, ask(pCancel, nullptr, [=] { pressKey(XtParent(openBox()), pressed); }));
    }
    /* asking for help is no answer */
    Later later(application, 200, [] { press(XmDIALOG_OK_BUTTON); });
    EXPECT_EQ(0, ask("Browse...", "Abort", [] { pressKey(XtParent(openBox()), XK_F1); }));
}

TEST_F(Uiut, ClosingTheFrameIsTheCancelButton)
{
    const std::tuple<const char *, const char *, int> rows[] = {
        {"No", nullptr, 1},
        {nullptr, nullptr, 0},
        {"Browse...", "Abort", 1},
        {nullptr, "Abort", 0},
    };

    for (const auto &[pCancel, pHelp, iAnswer] : rows)
        EXPECT_EQ(iAnswer, ask(pCancel, pHelp, [] { closeFrame(XtParent(openBox())); }));
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

static void destroyBox()
{
    XtDestroyWidget(XtParent(openBox()));
}

TEST_F(Uiut, BoxDestroyedFromElsewhereGivesUp)
{
    EXPECT_EQ(0, ask(nullptr, nullptr, destroyBox));
    EXPECT_EQ(1, ask("No", nullptr, destroyBox));
    EXPECT_EQ(2, ask("Browse...", "Abort", destroyBox));
}

/* Within a callback a destruction from a timer stays half done until the callback returns. */
TEST_F(Uiut, BoxOpenedByACallbackEndsWhenDestroyed)
{
    static Uiut *s_pTest;
    static int s_iAnswer;
    static const OV_WidgetRow s_aRows[] = {
        {"dsOuter", nullptr, &xmDialogShellWidgetClass, ""},
        {"mbOuter", "dsOuter", &xmMessageBoxWidgetClass, ""},
        {nullptr, nullptr, nullptr, nullptr},
    };
    auto asks = [](Widget, XtPointer, XtPointer) {
        s_iAnswer = s_pTest->ask("No", nullptr, destroyBox);
        s_iAnswer += 10 * s_pTest->ask("No", nullptr, [] { press(XmDIALOG_CANCEL_BUTTON); });
    };
    Widget dialog = OV_instBuildDialog(parent, s_aRows, nullptr);

    s_pTest = this;
    s_iAnswer = -1;
    XtAddCallback(dialog, XmNcancelCallback, asks, nullptr);
    XtManageChild(dialog);
    runFor(application, 20);
    closeFrame(XtParent(dialog));
    runFor(application, 200);
    EXPECT_EQ(11, s_iAnswer);
    EXPECT_EQ(nullptr, openBox());
    EXPECT_TRUE(XtIsManaged(dialog));

    /* a box whose parent is on its way out comes up all the same */
    static const auto leaves = [](Widget box, XtPointer, XtPointer) {
        XtDestroyWidget(XtParent(box));
        Later later(s_pTest->application, 20, [] { press(XmDIALOG_OK_BUTTON); });
        s_iAnswer = OV_instOkCancelMessageBox(box, "gone?", "Yes", "No", nullptr);
    };
    XtAddCallback(dialog, XmNokCallback, leaves, nullptr);
    Later ok(application, 20, [&] { pressKey(XtParent(dialog), XK_Return); });
    runFor(application, 200);
    EXPECT_EQ(0, s_iAnswer);
}

/* What the installing process does: it inherits a display and opens one of its own. */
static int askInChild(const Uiut *pTest)
{
    static char s_caName[] = "ovint Installer thread";
    char *apArgs[] = {s_caName, nullptr};
    int iArgs = 1;

    close(ConnectionNumber(XtDisplay(pTest->application)));
    Widget main = OV_instCreateMainTopLevelShell(OV_instOpenApplication(&iArgs, apArgs));
    OV_instRemoveMessageBox(); /* the parent's notice is not ours to touch */
    OV_instDisplayMessageBox(main, "A notice");
    OV_instRemoveMessageBox();
    Later later(main, 20, [] { press(XmDIALOG_HELP_BUTTON); });
    return OV_instOkCancelMessageBox(main, "#bold\"Where?\"", "Continue", "Browse...", "Abort");
}

TEST_F(Uiut, ChildShowsBoxesOnADisplayOfItsOwn)
{
    for (int i = 0; i < 2; i++) { /* before the parent has shown anything, and after */
        int iStatus = 0;
        if (i > 0)
            OV_instDisplayMessageBox(parent, "The parent's notice");
        pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0)
            _exit(askInChild(this));
        ASSERT_EQ(child, waitpid(child, &iStatus, 0));
        EXPECT_EQ(2 << 8, iStatus);
        OV_instRemoveMessageBox();
        EXPECT_EQ(1, ask("No", nullptr, [] { press(XmDIALOG_CANCEL_BUTTON); }));
    }
}

TEST_F(Uiut, AnyoneCanEndAWait)
{
    int aPipe[2];
    static char s_cRead;
    auto reads = [](XtPointer done, int *piFd, XtInputId *) {
        *(int *)done = read(*piFd, &s_cRead, 1) == 1 && s_cRead == '.';
    };
    int bDone = 0;

    OV_instMainLoop(parent, nullptr);
    { /* a timer, with no event to come */
        Later later(application, 10, [&] { bDone = 1; });
        OV_instMainLoop(parent, &bDone);
        EXPECT_EQ(0u, later.timer);
    }
    ASSERT_EQ(0, pipe(aPipe));
    XtInputId input = XtAppAddInput(context(), aPipe[0], (XtPointer)XtInputReadMask, reads, &bDone);
    ASSERT_EQ(3, write(aPipe[1], "ab.", 3));
    bDone = 0;
    OV_instMainLoop(parent, &bDone);
    EXPECT_EQ('.', s_cRead);

    { /* a pipe that is never empty does not keep the user out */
        Widget dialog =
            buildSample(XtCreatePopupShell("dsBusy", xmDialogShellWidgetClass, parent, nullptr, 0));
        XtRemoveInput(input);
        auto ignores = [](XtPointer, int *, XtInputId *) {};
        input = XtAppAddInput(context(), aPipe[0], (XtPointer)XtInputReadMask, ignores, nullptr);
        ASSERT_EQ(1, write(aPipe[1], "x", 1));
        auto typed = [](Widget, XtPointer done, XEvent *, Boolean *) { *(int *)done = 1; };
        OV_instPopup(dialog, "", "");
        XtAddEventHandler(dialog, KeyPressMask, False, typed, &bDone);
        bDone = 0;
        pressKey(dialog, XK_a);
        OV_instMainLoop(dialog, &bDone);
        EXPECT_EQ(1, bDone);
        XtDestroyWidget(XtParent(dialog));
    }
    XtRemoveInput(input);
    close(aPipe[0]);
    close(aPipe[1]);
}

TEST_F(Uiut, PendingEventsAreDispatchedWithoutWaiting)
{
    Widget dialog =
        buildSample(XtCreatePopupShell("dsPending", xmDialogShellWidgetClass, parent, nullptr, 0));
    int iTyped = 0;
    auto typed = [](Widget, XtPointer count, XEvent *, Boolean *) { ++*(int *)count; };

    OV_instPopup(dialog, "", "");
    XtAddEventHandler(dialog, KeyPressMask, False, typed, &iTyped);
    for (int i = 0; i < 5; i++)
        pressKey(dialog, XK_a);
    XSync(XtDisplay(dialog), False);
    OV_instDispatchPending();
    EXPECT_EQ(5, iTyped);
    OV_instDispatchPending();
    XtDestroyWidget(XtParent(dialog));
}

/* How many colours the window shows: more than one means that something is drawn. */
static size_t coloursOf(Widget shell)
{
    XImage *pImage =
        XGetImage(XtDisplay(shell), XtWindow(shell), 0, 0, resourceOf<Dimension>(shell, XmNwidth),
                  resourceOf<Dimension>(shell, XmNheight), AllPlanes, ZPixmap);
    std::set<unsigned long> colours;

    for (int y = 0; y < pImage->height; y++) {
        for (int x = 0; x < pImage->width; x++)
            colours.insert(XGetPixel(pImage, x, y));
    }
    XDestroyImage(pImage);
    return colours.size();
}

TEST_F(Uiut, NoticeIsDrawnWithoutALoop)
{
    OV_instDisplayMessageBox(parent, "Updating the system registry");
    Widget first = openBox("mbMessage");
    ASSERT_TRUE(first);
    EXPECT_EQ(IsViewable, mapState(first));
    EXPECT_GT(coloursOf(XtParent(first)), 2u) << "text on a ground";
    for (int iChild :
         {XmDIALOG_OK_BUTTON, XmDIALOG_CANCEL_BUTTON, XmDIALOG_HELP_BUTTON, XmDIALOG_SEPARATOR})
        EXPECT_FALSE(XtIsManaged(boxChild(first, iChild)));
    closeFrame(XtParent(first));
    runFor(application, 50);
    EXPECT_EQ(first, openBox("mbMessage"));

    int bGone = 0;
    auto gone = [](Widget, XtPointer flag, XtPointer) { *(int *)flag = 1; };
    XtAddCallback(first, XmNdestroyCallback, gone, &bGone);
    OV_instDisplayMessageBox(parent, "Another");
    EXPECT_EQ(1, bGone);
    Widget second = openBox("mbMessage");
    ASSERT_TRUE(second);
    EXPECT_EQ("L 'Another'", shownBy(boxChild(second, XmDIALOG_MESSAGE_LABEL)));
    OV_instRemoveMessageBox();
    EXPECT_EQ(nullptr, openBox("mbMessage"));
    OV_instRemoveMessageBox();

    OV_instDisplayMessageBox(parent, "Third"); /* goes with somebody else's hand */
    XtDestroyWidget(XtParent(openBox("mbMessage")));
    OV_instRemoveMessageBox();
}

TEST_F(Uiut, LabelsTakeNotationOrTheTextAsItIs)
{
    Widget form = XtCreateWidget("form", xmFormWidgetClass, parent, nullptr, 0);

    for (WidgetClass kind : {xmLabelWidgetClass, xmLabelGadgetClass, xmPushButtonGadgetClass}) {
        Widget label = XtCreateManagedWidget("label", kind, form, nullptr, 0);
        OV_instUpdateLabelString(label, ":t\"%s\"\"b\"");
        EXPECT_EQ("L '%s' / 'b'", shownBy(label));
        OV_instSetLiteralLabel(label, "#1 \"%s\"\nnext");
        EXPECT_EQ("L '#1 \"%s\"' / 'next'", shownBy(label));
    }
    XtDestroyWidget(form);
}

TEST_F(Uiut, CommandOutputIsAppended)
{
    Widget form = XtCreateWidget("form", xmFormWidgetClass, parent, nullptr, 0);
    Widget text = XtVaCreateManagedWidget("text", xmTextWidgetClass, form, XmNeditMode,
                                          XmMULTI_LINE_EDIT, XmNvalue, "before\n", nullptr);
    int iStatus = OV_instOutputCmdInTextWidget(
        text, "echo 'one %s'; head -c 25000 /dev/zero | tr '\\0' x; printf '\\nlast'; exit 3");
    char *pShown = XmTextGetString(text);

    EXPECT_EQ(3, WEXITSTATUS(iStatus));
    EXPECT_EQ("before\none %s\n" + std::string(25000, 'x') + "\nlast", pShown);
    XtFree(pShown);
    XtDestroyWidget(form);
}

TEST_F(Uiut, WidestButtonSetsTheWidth)
{
    Widget row = XtCreateWidget("row", xmRowColumnWidgetClass, parent, nullptr, 0);
    Widget small = XtCreateManagedWidget("a", xmPushButtonWidgetClass, row, nullptr, 0);
    Widget wide = XtCreateManagedWidget("Add/Remove...", xmPushButtonWidgetClass, row, nullptr, 0);
    Dimension width = resourceOf<Dimension>(wide, XmNwidth);

    EXPECT_LT(resourceOf<Dimension>(small, XmNwidth), width);
    OV_makeAllWidgetSameMaxWidth(small, wide, nullptr);
    EXPECT_EQ(width, resourceOf<Dimension>(small, XmNwidth));
    EXPECT_EQ(width, resourceOf<Dimension>(wide, XmNwidth));
    XtDestroyWidget(row);
}
