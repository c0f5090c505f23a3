#include <gtest/gtest.h>

#include "Dialogs/ExitConfirmation.h"
#include "dialogs/Exit.h"

#include <Xm/Form.h>
#include <Xm/PushB.h>

#include "dialogTest.h"

static const char s_caQuestion[] = "Are you sure you want to Exit?\n";

/* A dialog with one button that asks, as the Exit buttons of setup do. */
struct ExitDialogs : DialogTest {
    Widget m_dialog = nullptr;
    int m_iAnswered = 0;
    const char *m_pMessage = "100%s unchanged.";
    const char *m_pName = "";

    static void ask(Widget button, XtPointer test, XtPointer)
    {
        ExitDialogs *pTest = static_cast<ExitDialogs *>(test);
        OV_exitSetupConfirmation(OV_instGetShell(button), pTest->m_pMessage, pTest->m_pName);
        pTest->m_iAnswered++;
    }
    void prepare() override
    {
        /* A process that ends takes its connection along: it must be one of its own. */
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        char caName[] = "caller";
        m_dialog = XmCreateFormDialog(main(), caName, nullptr, 0);
        XtVaSetValues(m_dialog, XmNautoUnmanage, False, nullptr);
        Widget button = XtVaCreateManagedWidget("ask", xmPushButtonWidgetClass, m_dialog, nullptr);
        XtAddCallback(button, XmNactivateCallback, ask, this);
        XtManageChild(m_dialog);
        settle();
    }
    std::string askAnd(const Steps &steps)
    {
        return whileUsed(steps, [this] { press(m_dialog, "ask"); });
    }
};

/* One question, whatever has been pressed in between; it may have nothing to add. */
TEST_F(ExitDialogs, ResumeReturnsToTheDialog)
{
    const std::string text = s_caQuestion + std::string("100%s unchanged.|");
    EXPECT_EQ(text + text + text,
              askAnd({"mbExitSetup:Cancel",
                      "mbExitSetup:Cancel",
                      {"mbExitSetup:OK",
                       [](Widget) { EXPECT_EQ(1u, dialogsShown("mbExitSetupFinish").size()); }}}));
    EXPECT_EQ(1, m_iAnswered);
    EXPECT_EQ(nullptr, openBox("mbExitSetupFinish"));
    EXPECT_TRUE(XtIsManaged(m_dialog));
    EXPECT_EQ(text + text, askAnd({"mbExitSetup:x"}) + askAnd({"mbExitSetup:Escape"}));
    EXPECT_EQ(3, m_iAnswered);
    m_pMessage = nullptr;
    EXPECT_EQ(0u, askAnd({"mbExitSetup:OK"}).find("Are you sure you want to Exit?"));
}

TEST_F(ExitDialogs, LeavingEndsWithStatus10)
{
    static const char s_caRest[] =
        " Setup was interrupted before your\nnew software was fully installed";
    const Step notice("mbExitSetupFinish:Escape", [](Widget box) {
        fprintf(stderr, "<%s>%d%d", message(box).c_str(), isManaged(box, "Cancel"),
                isManaged(box, "Help"));
    });

    for (const char *pName : {"", "A%sB"}) {
        m_pName = pName;
        EXPECT_EXIT(askAnd({"mbExitSetup:Cancel", notice}), testing::ExitedWithCode(10),
                    std::string("<") + pName + s_caRest + ">00$");
    }
}

TEST_F(ExitDialogs, TheDialogThatAskedMayGo)
{
    const auto leave = [this] {
        (void)askAnd({{"mbExitSetup:", [this](Widget) { XtDestroyWidget(XtParent(m_dialog)); }}});
        fprintf(stderr, "answered %d, %d boxes", m_iAnswered, openBox("mbExitSetup") ? 1 : 0);
        exit(7);
    };

    EXPECT_EXIT(leave(), testing::ExitedWithCode(7), "^answered 1, 0 boxes$");
}

TEST_F(ExitDialogs, PagesThatNobodyShows)
{
    Widget box = CreatembExitSetupComplete(XtParent(m_dialog)), page = CreatefoExit(m_dialog);
    XtManageChild(box);
    EXPECT_FALSE(isManaged(box, "Cancel") || isManaged(box, "Help"));
    EXPECT_TRUE(press(box, "OK"));
    EXPECT_TRUE(XtIsManaged(box));

    EXPECT_FALSE(XtIsManaged(page));
    XtManageChild(page);
    EXPECT_NE(XmUNSPECIFIED_PIXMAP,
              resourceOf<Pixmap>(OV_instFindWidget(page, "laExitPicture"), XmNlabelPixmap));
    EXPECT_TRUE(press(page, "pbExitExit") && press(page, "pbExitResume"));
    EXPECT_TRUE(XtIsManaged(page));
}
