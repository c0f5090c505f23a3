#include <gtest/gtest.h>

#include "dialogs/firstPages.h"

#include "dialogTest.h"
#include "dialogs/Agreement.h"
#include "dialogs/NameOrg.h"
#include "dialogs/Reseller.h"
#include "dialogs/Welcome.h"
#include "ut/toolkit/fieldValue.h"

/* The first pages, with a directory of the test's own for what they keep. */
struct FirstPages : DialogTest {
    const std::string m_user = m_scratch / "tmp/.setupinfo-ov-user",
                      m_reseller = m_scratch / "tmp/.setupinfo-ov-reseller";

    void prepare() override
    {
        GTEST_FLAG_SET(death_test_style, "threadsafe"); /* a process that ends has a connection */
        fs::create_directory(m_scratch / "tmp");
        OV_instSetPrivateDirectory((m_scratch / "tmp").c_str());
        writeFile(m_medium + "SetupFiles/eula.txt", "Be %s.\r\nBe honest.\n");
        (void)OV_instSetCdinstDirectory(m_medium.c_str());
    }
    Widget show(Widget (*fpCreate)(Widget))
    {
        Widget dialog = fpCreate(main());
        EXPECT_FALSE(XtIsManaged(dialog));
        return managed(dialog);
    }
    static std::string user(Widget dialog)
    {
        return OV_instFieldText(dialog, "txNameOrgName") + "|" +
               OV_instFieldText(dialog, "txNameOrgOrg") + "|";
    }
    static std::string reseller(Widget dialog)
    {
        return OV_instFieldText(dialog, "txResellerName") + "|" +
               OV_instFieldText(dialog, "txResellerPhone") + "|" +
               OV_instFieldText(dialog, "txResellerEmail") + "|";
    }
    static void enter(Widget dialog, const char *pField, const std::string &text)
    {
        XmTextFieldSetString(OV_instFindWidget(dialog, pField), (char *)text.c_str());
    }
    static std::string text(Widget dialog) { return textIn(OV_instFindWidget(dialog, "txEULA")); }
};

TEST_F(FirstPages, AllPagesWithTheFlagSet)
{
    CDInstPtr->bUserOrgRes = 1;
    Widget dialog = show(CreatembEULA);
    EXPECT_EQ("Be %s.\nBe honest.\n", text(dialog));
    EXPECT_FALSE(XmTextGetEditable(OV_instFindWidget(dialog, "txEULA")));
    ASSERT_TRUE(press(dialog, "OK"));
    dialog = shown("mbNameOrg");
    ASSERT_NE(nullptr, dialog);
    EXPECT_EQ("||", user(dialog));
    enter(dialog, "txNameOrgOrg", "Org");
    enter(dialog, "txNameOrgName", " \t ");
    EXPECT_EQ("A name is required|", whileUsed({"y"}, [&] { press(dialog, "OK"); }));
    EXPECT_EQ(" \t |Org|", user(dialog));
    enter(dialog, "txNameOrgName", ":t\"Ann\" %s #Lee");

    ASSERT_TRUE(press(dialog, "OK"));
    ASSERT_TRUE(press(dialog, "OK")); /* confirmed once all the same */
    Widget confirmation = openBox("mbNameOrgConfirm");
    ASSERT_NE(nullptr, confirmation);
    EXPECT_EQ(1u, XtParent(dialog)->core.num_popups);
    EXPECT_EQ(":t\"Ann\" %s #Lee", label(confirmation, "laNameOrgConfirmName"));
    EXPECT_EQ("Org", label(confirmation, "laNameOrgConfirmOrg"));
    ASSERT_TRUE(press(confirmation, "Cancel"));
    EXPECT_EQ(nullptr, openBox("mbNameOrgConfirm"));
    EXPECT_EQ(":t\"Ann\" %s #Lee|Org|", user(dialog));
    EXPECT_FALSE(fs::exists(m_user));

    enter(dialog, "txNameOrgOrg", ""); /* need not be given */
    ASSERT_TRUE(press(dialog, "OK"));
    ASSERT_TRUE(press(openBox("mbNameOrgConfirm"), "OK"));
    EXPECT_EQ(":t\"Ann\" %s #Lee\n\n", readFile(m_user));
    EXPECT_EQ(nullptr, shown("mbNameOrg"));
    ASSERT_NE(nullptr, dialog = shown("mbReseller"));
    enter(dialog, "txResellerPhone", "12 34");
    ASSERT_TRUE(press(dialog, "OK")); /* nothing is required here */
    ASSERT_NE(nullptr, confirmation = openBox("mbResellerConfirm"));
    EXPECT_EQ("12 34", label(confirmation, "laResellerConfirmPhone"));
    ASSERT_TRUE(press(confirmation, "Cancel"));
    EXPECT_EQ("|12 34||", reseller(dialog));
    enter(dialog, "txResellerEmail", "a@b");
    ASSERT_TRUE(press(dialog, "OK"));
    ASSERT_TRUE(press(openBox("mbResellerConfirm"), "OK"));
    EXPECT_EQ("\n12 34\na@b\n", readFile(m_reseller));
    EXPECT_EQ(nullptr, shown("mbReseller"));
    EXPECT_NE(nullptr, shown("mbChangeDestination"));

    EXPECT_EQ(":t\"Ann\" %s #Lee||", user(show(CreatembNameOrg))); /* the next run */
    EXPECT_EQ("|12 34|a@b|", reseller(show(CreatembReseller)));
}

TEST_F(FirstPages, ReadsWhatIsThere)
{
    const std::pair<std::string, std::string> aCases[] = {
        {"", "||"},
        {"Ann\n\n", "Ann||"},
        {"\nOrg\nmore\n", "|Org|"},
        {std::string(499, 'x') + "\nOrg\n", std::string(499, 'x') + "|Org|"},
        {std::string(600, 'x') + "\nOrg\n", std::string(499, 'x') + "|Org|"},
    };

    for (const auto &[file, seen] : aCases) {
        ASSERT_EQ(0, OV_instWritePrivate(m_user.c_str(), file.c_str()));
        EXPECT_EQ(seen, user(show(CreatembNameOrg))) << file;
    }
}

/* A name of another locale, beside a field that is filled in. */
TEST_F(FirstPages, WhatCannotBeShownIsKept)
{
    const std::string before = setlocale(LC_CTYPE, nullptr);

    for (const auto &[pLocale, name] :
         {std::pair("C", "Jos\xc3\xa9 Lopez"), {"C.UTF-8", "Jos\xe9 Lopez"}}) {
        ASSERT_NE(nullptr, setlocale(LC_CTYPE, pLocale));
        ASSERT_EQ(0, OV_instWritePrivate(m_user.c_str(), name));
        Widget dialog = show(CreatembNameOrg);
        EXPECT_EQ("Jos? Lopez||", user(dialog));
        enter(dialog, "txNameOrgOrg", "Org");
        ASSERT_TRUE(press(dialog, "OK"));
        EXPECT_EQ("Jos? Lopez", label(openBox("mbNameOrgConfirm"), "laNameOrgConfirmName"));
        ASSERT_TRUE(press(openBox("mbNameOrgConfirm"), "OK"));
        EXPECT_EQ(std::string(name) + "\nOrg\n", readFile(m_user));
        XtDestroyWidget(XtParent(shown("mbReseller")));
        settle();
    }
    (void)setlocale(LC_CTYPE, before.c_str());
}

TEST_F(FirstPages, AnAgreementMayHoldAnything)
{
    std::string longText = "caf\xe9 \xa7\n"; /* not in the characters of the locale */
    for (int i = 0; i < 3000; i++)
        longText += "A line of the agreement, and one word: " + std::string(i % 200, 'w') + "\n";
    writeFile(m_medium + "SetupFiles/eula.txt", longText);
    Widget dialog = show(CreatembEULA);
    EXPECT_GE(text(dialog).size(), longText.size());
    EXPECT_TRUE(dialog->core.width < 800 && dialog->core.height < 600);
}

/* One question, whatever has been pressed in between; the page that asked may go meanwhile. */
TEST_F(FirstPages, TheExitQuestionResumes)
{
    const Step cancel("mbExitSetup:Cancel"), notice("mbExitSetup:OK", [](Widget) {
        EXPECT_EQ(1u, dialogsShown("mbExitSetupFinish").size());
    });
    Widget dialog = show(CreatembNameOrg);
    const auto askAnd = [&](const Steps &steps) {
        return whileUsed(steps, [&] { press(dialog, "Cancel"); });
    };
    for (const Steps &steps :
         {Steps{"mbExitSetup:x"}, {"mbExitSetup:Escape"}, {cancel, cancel, notice}})
        EXPECT_EQ(0u,
                  askAnd(steps).find("Are you sure you want to Exit?\nSetup has not yet modified "
                                     "any files|")); /* without a full stop */
    (void)askAnd({{"mbExitSetup:", [&](Widget) { XtDestroyWidget(XtParent(dialog)); }}});
    EXPECT_EQ(nullptr, openBox("mbExitSetup"));
    EXPECT_EQ(nullptr, shown("mbNameOrg"));
}

TEST_F(FirstPages, WaysOut)
{
    const auto escape = [&] {
        pressKey(XtParent(show(CreatembEULA)), XK_Escape); /* the keyboard is in the text */
        runFor(s_application, 3000);
    };
    const auto unreadable = [&] {
        const Step told("y", [&](Widget box) {
            fprintf(stderr, "%s <%s>", label(box, "OK").c_str(), shortened(message(box)).c_str());
        });
        (void)whileUsed({told}, [&] { (void)show(CreatembEULA); });
    };

    EXPECT_EXIT(escape(), testing::ExitedWithCode(0), "^$");
    fs::remove(m_medium + "SetupFiles/eula.txt");
    EXPECT_EXIT(unreadable(), testing::ExitedWithCode(1),
                "^Exit setup <Error: could not read <M/SetupFiles/eula.txt>>$");
}
