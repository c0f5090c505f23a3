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
    std::string fold(const std::string &text, int iWidth) const
    {
        return OV_instFoldText(m_label, text.c_str(), iWidth);
    }
};

TEST_F(FoldText, LinesBreakAtBlanksAndWithinWordsThatAreTooWide)
{
    const int iWidth = widthOf("0123456789 123");
    std::string umlauts;

    for (int i = 0; i < 100; i++)
        umlauts += "\u00e4\u20ac";
    for (const char *pFits : {"", "0123456789 123", "a\n0123456789\nb"})
        EXPECT_EQ(pFits, fold(pFits, iWidth));
    EXPECT_EQ("0123456789\n123456", fold("0123456789 123456", iWidth));
    EXPECT_EQ("W", fold("W", 1)); /* no room for a single character */
    for (const std::string &word : {std::string(200, 'w'), umlauts}) {
        const std::string folded = fold(word + " end", iWidth);
        std::istringstream lines(folded);
        EXPECT_EQ(word + "end", replaced(replaced(folded, "\n", ""), " ", ""));
        for (std::string line; std::getline(lines, line);) {
            EXPECT_GE(iWidth, widthOf(line)) << line;
            EXPECT_NE(0x80, line[0] & 0xc0) << line << " begins within a character";
        }
    }
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
