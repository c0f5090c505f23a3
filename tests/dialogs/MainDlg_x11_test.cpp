#include <gtest/gtest.h>

#include "dialogs/MainDlg.h"

#include "dialogTest.h"

struct MainDlg : DialogTest {
    Widget show(int iId)
    {
        Widget dialog = CreatembMainDlg(main());
        config(iId)->pParent = nullptr;
        OV_instUISetMainDlg(dialog, config(iId));
        return managed(dialog);
    }
    /* The slots that are seen: "number product: description|". */
    static std::string slots(Widget dialog)
    {
        std::string seen;
        for (const char *pSlot : {"1", "2", "3", "4"})
            if (isManaged(dialog, std::string("rcMainDlg") + pSlot))
                seen += pSlot +
                        (" " + label(dialog, std::string("laMainDlg") + pSlot + "Product")) + ": " +
                        label(dialog, std::string("laMainDlg") + pSlot + "Description") + "|";
        return seen;
    }
};

TEST_F(MainDlg, HeadingFollowsTheSecondSlotAndAllSlotsCount)
{
    const char *const pOne = "To start intallation, click the large button";

    describe("1 MainDlg 'T' 'D' '' 10 20 30\n10 Suite 'P' '100%s safe' '' 1\n"
             "20 CusDlg 'List' 'Choose' '' 1 21\n21 Suite 'Q' '' '' 1\n"
             "30 MainDlg 'Page' 'More' '' 10\n");
    Widget dialog = show(1);
    EXPECT_EQ("1 P: 100%s safe|2 List: Choose|3 Page: More|", slots(dialog));
    EXPECT_FALSE(isManaged(dialog, "OK") || isManaged(dialog, "Help"));
    EXPECT_EQ("Exit Setup", label(dialog, "Cancel"));
    EXPECT_EQ(m_root, textIn(OV_instFindWidget(dialog, "txMainDlgFolder")));
    EXPECT_EQ('B', label(dialog, "laMainDlgAvailableSpace").back());
    XtDestroyWidget(XtParent(dialog));
    dialog = show(30);
    EXPECT_EQ("1 P: 100%s safe|", slots(dialog));
    EXPECT_EQ(pOne, label(dialog, "laMainDlg"));
    XtDestroyWidget(XtParent(dialog));

    int32_t *aChildren = static_cast<_OV_InstMainDlg *>(config(30)->pData)->aChildren;
    aChildren[0] = -1;
    aChildren[2] = 10;
    dialog = show(30);
    EXPECT_EQ("3 P: 100%s safe|", slots(dialog));
    EXPECT_EQ(pOne, label(dialog, "laMainDlg"));
    aChildren[0] = 99; /* no such configuration */
    EXPECT_EXIT((void)show(30), testing::ExitedWithCode(1), "^Error: bad configuration file\n$");
}

TEST_F(MainDlg, PicturesAndTheirFaults)
{
    const std::string prefix = "Error: OV_instSetPixmapOnWidget, ";
    const auto typeOf = [](Widget dialog, const char *pName) {
        return resourceOf<unsigned char>(OV_instFindWidget(dialog, pName), XmNlabelType);
    };
    describe("1 MainDlg 'T' 'D' '' 10 11 12 13\n10 Suite 'P' '' 'iconModule.so,tinyPicture' 1\n"
             "11 Suite 'P' '' 'absent.so,tinyPicture' 1\n12 Suite 'P' '' 'iconModule.so,none' 1\n"
             "13 Suite 'P' '' ',tinyPicture' 1\n");
    (void)OV_instSetCdinstDirectory(m_medium.c_str());
    Widget dialog = nullptr;
    EXPECT_EQ(prefix + "can't locate 'M/SetupFiles/absent.so'\n" + prefix +
                  "'none' not in 'M/SetupFiles/iconModule.so'\n",
              shortened(told([&] { dialog = show(1); })));
    EXPECT_EQ(XmPIXMAP, typeOf(dialog, "pbMainDlg1"));
    for (const char *pName : {"pbMainDlg2", "pbMainDlg3", "pbMainDlg4"})
        EXPECT_EQ(XmSTRING, typeOf(dialog, pName)) << pName;
}
