#include <gtest/gtest.h>

#include "engine/engineTest.h"

struct Links : EngineTest {
};

TEST_F(Links, AreMadeFromTheirDirectory)
{
    const std::string common = R"(
        '' 'file' 'l'                => 0 +1 $ l\n
        '' 'file' 'l'                => 0 +1 $ l\n
        'dir' '../file' 'new/x/../l' => 0 +1 $ new/x/../l\n
        '' 'file' 'dir'              => 1 -1 $ linking file dir to file\n+1 $ dir\n
        'no' 'file' 'l'              => 1 -1 $ can't change directory to: D/no:file->l\n
        '' 'file' 'file/l'           => 1 -1 Uncompress can't create destination directory for:\n
                                        file/l\n
        '' '' 'l'                    => 1 -1 $ invalid parameters\n
        'dir' 'file' ''              => 1 -1 $ invalid parameters\n
        '' 'gone' 'k'                => )";
    put("D/file", "kept");
    put("D/dir/x", "");
    fs::current_path(m_medium);
    for (bool bHard : {true, false}) {
        const std::string line = bHard ? "HardLink " : "SoftLink ",
                          word = bHard ? "Hardlink" : "Softlink",
                          toGone =
                              bHard ? "1 -1 $ linking file k to gone\\n+1 $ k\\n" : "0 +1 $ k\\n";
        const auto run = [&](const std::string &rest) { return runLines(line + rest); };
        expectRows(run, replaced(common + toGone, "$", word));
        EXPECT_EQ("kept", got("D/l")) << "replaced by the second row";
        EXPECT_EQ(0755u, modeOf("D/dir/new"));
        EXPECT_EQ(!bHard, fs::is_symlink(m_dest + "dir/new/l"));
        EXPECT_EQ("0 +1 D//l\n", runLines(line + "'' 'any' 'l'", OV_INST_DELETE_MODE));
        EXPECT_FALSE(exists("D/l"));
        EXPECT_EQ(m_medium, fs::current_path().string() + "/");
        fs::remove_all(m_dest + "dir/new");
    }
}

TEST_F(Links, AndArchivesNeedAWorkingDirectory)
{
    put("D/t", "");
    put("M/t", "");
    fs::create_directories(full("@/gone"));
    fs::current_path(full("@/gone"));
    fs::remove(full("@/gone"));
    EXPECT_EQ("1 -1 Softlink can't get current working directory\n-1 Can't get current working\n",
              runLines("SoftLink '' 'a' 'b'\nUntar 't' 1"));
}
