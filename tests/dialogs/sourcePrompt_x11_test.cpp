#include <gtest/gtest.h>

#include "dialogs/SourcePrompt.h"

#include "dialogTest.h"

#include "browserScript.h"

#include "engine/mediaPrompt.h"

struct SourcePrompt : DialogTest {
    int m_iResult = -1;

    /* Asks for a file of the medium; what was seen. */
    std::string query(const std::vector<std::string> &steps, const char *pFile = "dir/f%s.t*r")
    {
        std::deque<std::string> given;
        for (const std::string &step : steps)
            given.push_back(full(step));
        BrowserScript script("Browser Install Directory", given);
        m_iResult = OV_instQueryForSource(m_pipe.pStream, "Can't open", pFile);
        settle();
        EXPECT_EQ(nullptr, openBox("Browser Install Directory"));
        script.stop();
        return shortened(script.seen);
    }
    void SetUp() override
    {
        DialogTest::SetUp();
        if (IsSkipped())
            return;
        describe("");
        put("@/other medium/dir/f%s.t*r", "");
        fs::create_directories(m_medium + "inner");
    }
};

TEST_F(SourcePrompt, ShowsTheMediumAndTakesADirectoryThatHoldsTheFile)
{
    const std::string question = "Can't open: dir/f%s.t*r|";

    EXPECT_EQ(question +
                  "Locate dir/f%s.t*r: M/ Source SetupFiles inner -> M/|"
                  "File:\n     'dir/f%s.t*r'\nDoes not exist in directory:\n     'M/inner'.\n"
                  "Try Again|File:\n     'dir/f%s.t*r'\nDoes not exist in directory:\n     ''.\n"
                  "Try Again|",
              query({"n", "?", ">M/inner", "y", ">", "y", ">@/other medium"}));
    EXPECT_EQ(1, m_iResult);
    EXPECT_EQ("@/other medium", shortened(OV_instGetSourceDirectory()));
    EXPECT_EQ("", records());
}

TEST_F(SourcePrompt, GivingUpLeavesTheSourceAndAsksAgain)
{
    const std::string question = "Can't open: dir/f%s.t*r|";

    EXPECT_EQ(question + question, query({"n", "c", "y"}));
    EXPECT_EQ(0, m_iResult);
    EXPECT_EQ("", records());
    EXPECT_EQ(question + question, query({"n", "c", "a"}));
    EXPECT_EQ(0, m_iResult);
    EXPECT_EQ("-1 abort\n", records());
    EXPECT_EQ(m_medium, std::string(OV_instGetSourceDirectory()) + "/");
}
