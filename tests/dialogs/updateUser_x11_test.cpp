#include <gtest/gtest.h>

#include "Dialogs/UpdateUser.h"
#include "engine/environmentFile.h"

#include <Xm/List.h>

#include "dialogTest.h"
#include "ut/toolkit/bxutils.h"

struct UpdateUser : DialogTest {
    void prepare() override
    {
        fs::create_directories(full("@/tmp"));
        fs::create_directories(full("@/home"));
        OV_instSetPrivateDirectory(full("@/tmp").c_str());
        put("@/victim", "precious\n");
        put("D/KIVO_FILE", "OV=1\n");
    }
    static Widget dialog() { return openBox("mbUpdateUser"); }
    static Widget name() { return OV_instFindWidget(dialog(), "txUpdateUserUsername"); }
    /* Shows the dialog, uses it and continues. */
    void use(const std::function<void()> &steps)
    {
        (void)whileUsed({{"mbUpdateUser:Cancel", [&](Widget) { steps(); }}},
                        [&] { OV_instUpdateUser(main(), full("D/").c_str()); });
        EXPECT_EQ(nullptr, dialog());
    }
};

TEST_F(UpdateUser, TakesTheUserChosenAndAnswersForWhoIsNamed)
{
    use([&] {
        EXPECT_TRUE(press(dialog(), "pbUpdateUserSelectUser"));
        Widget list = openBox("*listUpdateUserUsernames");
        ASSERT_NE(nullptr, list);
        XmString root = OV_instLiteralXmString("root");
        XmListSelectItem(list, root, True);
        XmStringFree(root);
        settle();
        EXPECT_EQ("root", textIn(name()));
        EXPECT_EQ(nullptr, openBox("*listUpdateUserUsernames"));
        EXPECT_TRUE(fs::is_empty(full("@/tmp")));
        XmTextFieldSetString(name(), (char *)"nobody;touch /tmp/100%s");
        EXPECT_EQ("ERROR: User nobody;touch /tmp/100%s doesn't exist.|",
                  whileUsed({"y"}, [] { press(dialog(), "OK"); }));
        EXPECT_EQ("", textIn(name()));
    });
}

TEST_F(UpdateUser, NothingIsWrittenThroughPlantedLinks)
{
    for (const char *pTrap : {"@/home/KIVO_FILE", "@/home/.kivo_install_tmp_file"}) {
        fs::remove(full(pTrap));
        fs::create_symlink(full("@/victim"), full(pTrap));
        copy_orvane_file(full("@/home").c_str(), full("D/").c_str(), 4242, 4243);
        EXPECT_EQ("precious\n", got("@/victim")) << pTrap;
        EXPECT_EQ("OV=1\n", got("@/home/KIVO_FILE")) << pTrap;
    }
}

TEST_F(UpdateUser, AFileOfTwoNamesIsCopiedWithTheModeOfANewOne)
{
    const mode_t iMask = umask(027);

    fs::create_hard_link(full("D/KIVO_FILE"), full("D/other"));
    fs::permissions(full("D/KIVO_FILE"), fs::perms(0666));
    copy_orvane_file(full("@/home").c_str(), full("D/").c_str(), 4242, 4243);
    umask(iMask);
    EXPECT_EQ("OV=1\n", got("@/home/KIVO_FILE"));
    EXPECT_EQ(fs::perms(0640), fs::status(full("@/home/KIVO_FILE")).permissions());
}
