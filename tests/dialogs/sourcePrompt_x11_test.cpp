#include <gtest/gtest.h>

#include "dialogTest.h"
#include "engine/mediaPrompt.h"

struct SourcePrompt : DialogTest {
};

TEST_F(SourcePrompt, ShowsTheMediumAndAsksUntilItIsAnswered)
{
    static const std::string s_asks = "Can't open: dir/f%s.t*r|",
                             s_not = "File:\n     'dir/f%s.t*r'\nDoes not exist in directory:\n";
    const auto ask = [this](const Steps &steps) {
        const auto query = [&] {
            (void)OV_instQueryForSource(m_pipe.pStream, "Can't open", "dir/f%s.t*r");
        };
        const std::string seen = whileUsed(steps, query, "Browser Install Directory");
        return seen + records() + shortened(fs::path(OV_instGetSourceDirectory()) / "");
    };
    put("@/other medium/dir/f%s.t*r", "");
    fs::create_directories(m_medium + "inner");
    EXPECT_EQ(s_asks + s_asks + "M/", ask({"n", "c", "y"}));
    EXPECT_EQ(s_asks + "-1 abort\nM/", ask({"mbOkCancel:Help"}));
    EXPECT_EQ(s_asks + "Locate dir/f%s.t*r: M/ Source SetupFiles inner -> M/|" + s_not +
                  "     'M/inner'.\nTry Again|" + s_not + "     ''.\nTry Again|@/other medium/",
              ask({"n", "?", ">M/inner", "y", ">", "y", ">@/other medium"}));
}
