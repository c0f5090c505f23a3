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
    static void leave(Widget button, XtPointer, XtPointer)
    {
        XtDestroyWidget(OV_instGetShell(button));
    }
    void SetUp() override
    {
        /* A process that ends takes its connection along: it must be one of its own. */
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        DialogTest::SetUp();
        if (IsSkipped())
            return;
        describe("1 MainDlg 'T' 'D' '' 10\n10 Suite 'P' '' '' 1\n");
        char caName[] = "caller";
        m_dialog = XmCreateFormDialog(OV_instGetMainTopLevelShell(), caName, nullptr, 0);
        XtVaSetValues(m_dialog, XmNautoUnmanage, False, nullptr);
        addButton("ask", ask);
        addButton("leave", leave);
        XtManageChild(m_dialog);
        settle();
    }
    void addButton(const char *pName, XtCallbackProc fpPressed)
    {
        Widget button = XtVaCreateManagedWidget(pName, xmPushButtonWidgetClass, m_dialog, nullptr);
        XtAddCallback(button, XmNactivateCallback, fpPressed, this);
    }
    /* Presses the dialog's button and runs the steps one after the other while it waits. */
    void askAnd(const std::vector<std::function<void()>> &steps)
    {
        std::vector<std::unique_ptr<Later>> timers;
        unsigned long lAt = 0;
        for (const auto &step : steps)
            timers.push_back(std::make_unique<Later>(s_application, lAt += 150, step));
        (void)press(m_dialog, "ask");
    }
    static std::function<void()> pressing(const char *pBox, const char *pButton)
    {
        return [=] { EXPECT_TRUE(press(openBox(pBox), pButton)) << pBox << ' ' << pButton; };
    }
    /* How many of these boxes there are below the dialog that asks. */
    static int count(Widget shell, const char *pBox)
    {
        int iCount = XtNameToWidget(shell, pBox) ? 1 : 0;
        for (Cardinal i = 0; i < shell->core.num_popups; i++)
            iCount += count(shell->core.popup_list[i], pBox);
        return iCount;
    }
};

TEST_F(ExitDialogs, ResumeReturnsToTheDialog)
{
    std::string text;

    askAnd({[&] {
                Widget box = openBox("mbExitSetup");
                ASSERT_NE(nullptr, box);
                text = message(box);
                EXPECT_EQ("Product setup", title(box));
                EXPECT_EQ(0, m_iAnswered);
            },
            pressing("mbExitSetup", "OK")});
    EXPECT_EQ(1, m_iAnswered);
    EXPECT_EQ(s_caQuestion + std::string("100%s unchanged."), text);
    EXPECT_EQ(nullptr, openBox("mbExitSetup"));
    EXPECT_TRUE(XtIsManaged(m_dialog));

    m_pMessage = nullptr; /* and again, with nothing to add */
    askAnd({[&] { text = message(openBox("mbExitSetup")); }, pressing("mbExitSetup", "OK")});
    EXPECT_EQ(2, m_iAnswered);
    EXPECT_EQ("Are you sure you want to Exit?", text.substr(0, strlen(s_caQuestion) - 1));
}

TEST_F(ExitDialogs, SecondClickBringsBackTheQuestion)
{
    int iBoxes = 0, iNotices = 0, iAfterSecond = 0;

    askAnd({[&] {
                ASSERT_TRUE(press(m_dialog, "ask"));
                iAfterSecond = m_iAnswered;
                iBoxes = count(XtParent(m_dialog), "mbExitSetup");
            },
            pressing("mbExitSetup", "Cancel"), pressing("mbExitSetup", "Cancel"),
            [&] {
                ASSERT_TRUE(press(m_dialog, "ask"));
                iBoxes += count(XtParent(m_dialog), "mbExitSetup");
                iNotices = count(XtParent(m_dialog), "mbExitSetupFinish");
            },
            pressing("mbExitSetup", "OK")});
    EXPECT_EQ(1, iAfterSecond); /* the second one does not wait */
    EXPECT_EQ(2, iBoxes);
    EXPECT_EQ(1, iNotices);
    EXPECT_EQ(3, m_iAnswered); /* resumed, whatever had been pressed before */
    EXPECT_EQ(nullptr, openBox("mbExitSetupFinish"));
}

/* What is pressed to leave, with a word of what the notice says. */
TEST_F(ExitDialogs, LeavingEndsWithStatus10)
{
    static const char s_caRest[] =
        " Setup was interrupted before your\nnew software was fully installed";
    const auto say = [&] {
        Widget notice = openBox("mbExitSetupFinish");
        fprintf(stderr, "<%s>%d%d%s.", message(openBox("mbExitSetupFinish")).c_str(),
                isManaged(notice, "Cancel"), isManaged(notice, "Help"),
                title(openBox("mbExitSetupFinish")).c_str());
    };
    const auto closing = [](const char *pBox) {
        return [=] { closeFrame(XtParent(openBox(pBox))); };
    };
    const auto escaping = [](const char *pBox) {
        return [=] { pressKey(XtParent(openBox(pBox)), XK_Escape); };
    };

    EXPECT_EXIT(
        askAnd({pressing("mbExitSetup", "Cancel"), say, pressing("mbExitSetupFinish", "OK")}),
        testing::ExitedWithCode(10), std::string("<") + s_caRest + ">00Product setup\\.$");
    m_pName = "A%sB";
    EXPECT_EXIT(askAnd({closing("mbExitSetup"), say, escaping("mbExitSetupFinish")}),
                testing::ExitedWithCode(10), std::string("<A%sB") + s_caRest);
}

TEST_F(ExitDialogs, TheDialogThatAskedMayGo)
{
    const auto report = [&] {
        fprintf(stderr, "answered %d, %d boxes", m_iAnswered, openBox("mbExitSetup") ? 1 : 0);
        exit(7);
    };

    EXPECT_EXIT(askAnd({[&] { (void)press(m_dialog, "leave"); }, report}),
                testing::ExitedWithCode(7), "^answered 0, 0 boxes$");
}

TEST_F(ExitDialogs, PagesThatNobodyShows)
{
    Widget box = CreatembExitSetupComplete(XtParent(m_dialog));
    XtManageChild(box);
    settle();
    EXPECT_TRUE(press(box, "OK"));
    EXPECT_TRUE(XtIsManaged(box));

    Widget page = CreatefoExit(m_dialog);
    EXPECT_FALSE(XtIsManaged(page));
    XtManageChild(page);
    settle();
    EXPECT_NE(XmUNSPECIFIED_PIXMAP,
              resourceOf<Pixmap>(OV_instFindWidget(page, "laExitPicture"), XmNlabelPixmap));
    for (const char *pName : {"pbExitExit", "pbExitResume"})
        EXPECT_TRUE(press(page, pName));
    EXPECT_TRUE(XtIsManaged(page));
}
