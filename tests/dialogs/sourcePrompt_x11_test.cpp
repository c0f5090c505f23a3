#include <gtest/gtest.h>

#include "dialogs/SourcePrompt.h"

#include "dialogTest.h"
#include "engine/mediaPrompt.h"

struct SourcePrompt : DialogTest {
};

TEST_F(SourcePrompt, ShowsTheMediumAndAsksUntilItIsAnswered)
{
    static const char s_caAsks[] = "Can't open: dir/f%s.t*r|";
    static const struct {
        Steps steps;
        std::string seen;
        int iResult;
        const char *pRecords, *pSource;
    } s_aRows[] = {
        {{"n", "c", "y"}, std::string(s_caAsks) + s_caAsks, 0, "", "@/medium"},
        {{"n", "c", "a"}, std::string(s_caAsks) + s_caAsks, 0, "-1 abort\n", "@/medium"},
        {{"n", "?", ">M/inner", "y", ">", "y", ">@/other medium"},
         s_caAsks +
             std::string("Locate dir/f%s.t*r: M/ Source SetupFiles inner -> M/|"
                         "File:\n     'dir/f%s.t*r'\nDoes not exist in directory:\n     "
                         "'M/inner'.\nTry Again|File:\n     'dir/f%s.t*r'\nDoes not exist in "
                         "directory:\n     ''.\nTry Again|"),
         1,
         "",
         "@/other medium"},
    };

    put("@/other medium/dir/f%s.t*r", "");
    fs::create_directories(m_medium + "inner");
    for (const auto &row : s_aRows) {
        int iResult = -1;
        const auto ask = [&] {
            iResult = OV_instQueryForSource(m_pipe.pStream, "Can't open", "dir/f%s.t*r");
        };
        EXPECT_EQ(row.seen, whileUsed(row.steps, ask, "Browser Install Directory"));
        EXPECT_EQ(row.iResult, iResult);
        EXPECT_EQ(row.pRecords, records());
        EXPECT_EQ(fs::path(full(row.pSource) + "/"), fs::path(OV_instGetSourceDirectory()) / "");
    }
}
