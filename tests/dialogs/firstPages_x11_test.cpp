#include <gtest/gtest.h>

#include "dialogs/firstPages.h"

#include "dialogTest.h"
#include "dialogs/Agreement.h"
#include "dialogs/NameOrg.h"
#include "dialogs/Reseller.h"
#include "dialogs/Welcome.h"
#include "ut/privateFile.h"

/* The first pages, with a directory of the test's own for what they keep. */
struct FirstPages : DialogTest {
    const std::string m_user = m_scratch / "tmp/.setupinfo-ov-user",
                      m_reseller = m_scratch / "tmp/.setupinfo-ov-reseller";

    void SetUp() override
    {
        GTEST_FLAG_SET(death_test_style, "threadsafe"); /* a process that ends has a connection */
        DialogTest::SetUp();
        if (IsSkipped())
            return;
        describe("1 MainDlg 'T' 'D' '' 10\n10 Suite 'P' '' '' 1\n");
        fs::create_directory(m_scratch / "tmp");
        OV_instSetPrivateDirectory((m_scratch / "tmp").c_str());
        writeFile(m_medium + "SetupFiles/eula.txt", "Be %s.\r\nBe honest.\n");
        (void)OV_instSetCdinstDirectory(m_medium.c_str());
    }
    void TearDown() override
    {
        OV_instSetPrivateDirectory(nullptr);
        (void)OV_instSetCdinstDirectory("");
        DialogTest::TearDown();
    }
    Widget show(Widget (*fpCreate)(Widget))
    {
        Widget dialog = fpCreate(OV_instGetMainTopLevelShell());
        EXPECT_FALSE(XtIsManaged(dialog));
        XtManageChild(dialog);
        settle();
        return dialog;
    }
    static std::string fieldsOf(Widget dialog, const std::vector<const char *> &names)
    {
        std::string all;
        for (const char *pName : names)
            all += OV_instFieldText(dialog, pName) + "|";
        return all;
    }
    static std::string user(Widget dialog)
    {
        return fieldsOf(dialog, {"txNameOrgName", "txNameOrgOrg"});
    }
    static std::string reseller(Widget dialog)
    {
        return fieldsOf(dialog, {"txResellerName", "txResellerPhone", "txResellerEmail"});
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
    ASSERT_TRUE(press(show(CreatembEULA), "OK"));
    Widget dialog = shown("mbNameOrg");
    ASSERT_NE(nullptr, dialog);
    EXPECT_EQ("||", user(dialog));
    enter(dialog, "txNameOrgName", ":t\"Ann\" %s #Lee");
    enter(dialog, "txNameOrgOrg", "Org");

    ASSERT_TRUE(press(dialog, "OK"));
    ASSERT_TRUE(press(dialog, "OK")); /* confirmed once all the same */
    Widget confirmation = openBox("mbNameOrgConfirm");
    ASSERT_NE(nullptr, confirmation);
    EXPECT_EQ(1u, XtParent(dialog)->core.num_popups);
    EXPECT_EQ(XtParent(dialog), XtParent(XtParent(confirmation)));
    EXPECT_EQ(":t\"Ann\" %s #Lee", label(confirmation, "laNameOrgConfirmName"));
    EXPECT_EQ("Org", label(confirmation, "laNameOrgConfirmOrg"));
    ASSERT_TRUE(press(confirmation, "Cancel"));
    EXPECT_EQ(nullptr, openBox("mbNameOrgConfirm"));
    EXPECT_EQ(":t\"Ann\" %s #Lee|Org|", user(dialog));
    EXPECT_EQ("none", fs::exists(m_user) ? readFile(m_user) : "none");

    enter(dialog, "txNameOrgOrg", ""); /* need not be given */
    ASSERT_TRUE(press(dialog, "OK"));
    ASSERT_TRUE(press(openBox("mbNameOrgConfirm"), "OK"));
    EXPECT_EQ(":t\"Ann\" %s #Lee\n\n", readFile(m_user));
    EXPECT_EQ(nullptr, shown("mbNameOrg"));
    ASSERT_NE(nullptr, dialog = shown("mbReseller"));
    EXPECT_EQ(0u, label(dialog, "laReseller").find("Information about your Reseller or Dealer:\n"));

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

TEST_F(FirstPages, ANameIsRequired)
{
    Widget dialog = show(CreatembNameOrg);

    for (const std::string name : {"", " \t "}) {
        std::string refusal;
        enter(dialog, "txNameOrgName", name);
        enter(dialog, "txNameOrgOrg", "Org");
        Later answer(s_application, 150, [&] {
            refusal = message(openBox());
            EXPECT_TRUE(press(openBox(), "OK"));
        });
        ASSERT_TRUE(press(dialog, "OK"));
        EXPECT_EQ("A name is required", refusal);
        EXPECT_TRUE(XtIsManaged(dialog));
        EXPECT_EQ(nullptr, openBox("mbNameOrgConfirm"));
        EXPECT_EQ(name + "|Org|", user(dialog));
    }
}

TEST_F(FirstPages, ReadsWhatIsThere)
{
    const struct {
        std::string file;
        std::string seen;
    } aCases[] = {
        {"", "||"},
        {"Ann", "Ann||"},
        {"Ann\n\n", "Ann||"},
        {"\nOrg\nmore\n", "|Org|"},
        {std::string(499, 'x') + "\nOrg\n", std::string(499, 'x') + "|Org|"},
        {std::string(600, 'x') + "\nOrg\n", std::string(499, 'x') + "|Org|"},
    };

    for (const auto &row : aCases) {
        ASSERT_EQ(0, OV_instWritePrivate(m_user.c_str(), row.file.c_str()));
        EXPECT_EQ(row.seen, user(show(CreatembNameOrg))) << row.file;
    }
}

/* A planted link (more traps have their tests with the files), then no directory at all. */
TEST_F(FirstPages, TrapsAreNeitherReadNorWritten)
{
    const std::string secret = m_scratch / "secret";

    writeFile(secret, "secret\n");
    fs::create_symlink(secret, m_user);
    for (int i = 0; i < 2; i++) {
        Widget dialog = show(CreatembNameOrg);
        EXPECT_EQ("||", user(dialog));
        enter(dialog, "txNameOrgName", "Ann");
        ASSERT_TRUE(press(dialog, "OK"));
        ASSERT_TRUE(press(openBox("mbNameOrgConfirm"), "OK"));
        ASSERT_NE(nullptr, shown("mbReseller")); /* it goes on */
        EXPECT_EQ("secret\n", readFile(secret));
        XtDestroyWidget(XtParent(shown("mbReseller")));
        fs::remove_all(m_scratch / "tmp");
    }
}

TEST_F(FirstPages, TextsFromOutsideAreShownAsTheyAre)
{
    writeFile(m_medium + "SetupFiles/eula.txt", "caf\xe9 \xa7 %s\n"); /* not of the locale */
    free(CDInstPtr->pProductName);
    CDInstPtr->pProductName = strdup((std::string(60, 'W') + "%s").c_str());
    Widget dialog = show(CreatembWelcome);
    EXPECT_NE(std::string::npos, label(dialog, "laWelcomeTop").find("WW%s\"\nsetup program."));
    ASSERT_TRUE(press(dialog, "OK"));
    EXPECT_EQ(0u, text(shown("mbEULA")).find("caf"));
    EXPECT_NE(std::string::npos, text(shown("mbEULA")).find(" %s\n"));

    dialog = show(CreatembNameOrg);
    enter(dialog, "txNameOrgName", std::string(499, 'W')); /* nowhere to break it */
    ASSERT_TRUE(press(dialog, "OK"));
    EXPECT_LE(openBox("mbNameOrgConfirm")->core.width, WidthOfScreen(XtScreen(dialog)));
}

TEST_F(FirstPages, WaysOut)
{
    const auto report = [](Widget box) {
        fprintf(stderr, "<%s>", message(box).c_str());
        (void)press(box, "Cancel");
    };
    const struct {
        Widget (*fpCreate)(Widget);
        const char *pStop;
    } aRows[] = {{CreatembWelcome, "\\."}, {CreatembNameOrg, ""}, {CreatembReseller, ""}};

    for (const auto &row : aRows) {
        const auto leave = [&] {
            Widget dialog = show(row.fpCreate);
            Later question(s_application, 150, [&] { report(openBox("mbExitSetup")); });
            Later notice(s_application, 300,
                         [] { (void)press(openBox("mbExitSetupFinish"), "OK"); });
            closeFrame(XtParent(dialog));
            runFor(dialog, 3000);
        };
        EXPECT_EXIT(leave(), testing::ExitedWithCode(10),
                    std::string("<Are you sure you want to Exit.\nSetup has not yet modified any "
                                "files") +
                        row.pStop + ">$");
    }

    const auto escape = [&] {
        pressKey(XtParent(show(CreatembEULA)), XK_Escape); /* the keyboard is in the text */
        runFor(s_application, 3000);
    };
    EXPECT_EXIT(escape(), testing::ExitedWithCode(0), "^$");
    fs::remove(m_medium + "SetupFiles/eula.txt");
    const auto unreadable = [&] {
        Later answer(s_application, 150, [&] {
            fprintf(stderr, "%s ", label(openBox(), "OK").c_str());
            fprintf(stderr, "<%s>", replaced(message(openBox()), m_medium, "M/").c_str());
            (void)press(openBox(), "OK");
        });
        (void)show(CreatembEULA);
    };
    EXPECT_EXIT(unreadable(), testing::ExitedWithCode(1),
                "^Exit setup <Error: could not read <M/SetupFiles/eula.txt>>$");
}

TEST_F(FirstPages, ReturnAcceptsFromWithinTheText)
{
    Widget dialog = show(CreatembEULA);

    EXPECT_EQ("Be %s.\nBe honest.\n", text(dialog));
    EXPECT_FALSE(XmTextGetEditable(OV_instFindWidget(dialog, "txEULA")));
    pressKey(XtParent(dialog), XK_Return);
    runFor(s_application, 200);
    EXPECT_EQ(nullptr, shown("mbEULA"));
    EXPECT_NE(nullptr, shown("mbChangeDestination"));
}
