#include <gtest/gtest.h>

#include <Xm/Label.h>

#include "dialogs/dialogTest.h"
#include "ut/toolkit/bxutils.h"
#include "ut/toolkit/foldText.h"

struct FoldText : DialogTest {
    Widget m_label = nullptr;

    void SetUp() override
    {
        DialogTest::SetUp();
        if (!IsSkipped())
            m_label = XtCreateWidget("label", xmLabelWidgetClass, s_application, nullptr, 0);
    }
    void TearDown() override
    {
        if (m_label)
            XtDestroyWidget(m_label);
        DialogTest::TearDown();
    }
    int widthOf(const std::string &line) const
    {
        XmRenderTable table = nullptr;
        XtVaGetValues(m_label, XmNrenderTable, &table, nullptr);
        XmString drawn = OV_instLiteralXmString(line.c_str());
        const int iWidth = XmStringWidth(table, drawn);
        XmStringFree(drawn);
        return iWidth;
    }
    /* The number of lines; each fits, begins with a whole character and is not empty. */
    int linesOf(const std::string &text, int iWidth)
    {
        std::istringstream folded(OV_instFoldText(m_label, text.c_str(), iWidth));
        int iLines = 0;
        for (std::string line; std::getline(folded, line); iLines++) {
            EXPECT_GE(iWidth, widthOf(line)) << line;
            EXPECT_FALSE(line.empty()) << iLines;
            EXPECT_NE(0x80, line[0] & 0xc0) << line;
        }
        return iLines;
    }
};

TEST_F(FoldText, LinesBreakAtBlanksAndWithinWordsThatAreTooWide)
{
    const int iWidth = widthOf("0123456789 123");
    const auto fold = [&](const char *pText) { return OV_instFoldText(m_label, pText, iWidth); };

    EXPECT_EQ("", fold(""));
    EXPECT_EQ("0123456789 123", fold("0123456789 123"));
    EXPECT_EQ("0123456789\n123456", fold("0123456789 123456"));
    EXPECT_EQ("a\n0123456789\nb", fold("a\n0123456789\nb"));
    std::string word(200, 'w');
    std::string broken = fold((word + " end").c_str());
    EXPECT_NE(std::string::npos, broken.find('\n'));
    EXPECT_EQ(word + "end", replaced(replaced(broken, "\n", ""), " ", ""));
    EXPECT_LT(5, linesOf(word, iWidth));
    std::string umlauts;
    for (int i = 0; i < 100; i++)
        umlauts += "\u00e4\u20ac";
    EXPECT_LT(5, linesOf(umlauts, iWidth));
    EXPECT_EQ(umlauts, replaced(fold(umlauts.c_str()), "\n", ""));
    EXPECT_EQ("W", OV_instFoldText(m_label, "W", 1)); /* no room for a single character */
}

/* Of a path nothing is lost, not even a blank. */
TEST_F(FoldText, PathsBreakBehindSlashes)
{
    const int iWidth = widthOf("0123456789 123");
    const auto fold = [&](const char *pText) {
        return OV_instFoldText(m_label, pText, iWidth, "/");
    };

    EXPECT_EQ("/12/45/78 0/23", fold("/12/45/78 0/23"));
    EXPECT_EQ("/0123/567/\n 12345678/\n012345678", fold("/0123/567/ 12345678/012345678"));
    const std::string word(200, 'w');
    EXPECT_EQ("/" + word + "/ end", replaced(fold(("/" + word + "/ end").c_str()), "\n", ""));
}
