#include <gtest/gtest.h>

#include "engine/engineTest.h"
#include "engine/uncompress.h"

struct Uncompress : EngineTest {
};

TEST_F(Uncompress, WritesTheContentsWithTheirMode)
{
    const auto uncompress = [this](const std::string &names) {
        const std::string target = full(names.substr(names.find('|') + 1));
        const int iResult = OV_instUncompress(names.substr(0, names.find('|')).c_str(),
                                              target.c_str(), 0640, 9, m_pipe.pStream, 0);
        return std::to_string(iResult) + " " + records();
    };
    load("");
    put("D/file", "");
    put("M/f `x` $y", "f");
    put("M/plain", "not compressed");
    ASSERT_EQ(0, system(full("bzip2 'M/f `x` $y'").c_str()));
    /* The decompressor tells as well. */
    (void)told([&] {
        expectRows(uncompress, R"(
            f `x` $y.bz2|D/new/f  => 0 +1 M/f `x` $y.bz2 D/new/f\n
            f `x` $y.bz2|D/file/f => 1 -1 Uncompress can't create destination directory for:\n
                                     D/file/f\n
            f `x` $y.bz2|D/new    => 1 0 Can't create file D/new\n
            plain|D/x             => 1 -1 Uncompress couldn't close input file M/plain\n
            plain|                => 1 -1 Uncompress invalid parameters\n)");
    });
    EXPECT_EQ("f", got("D/new/f"));
    EXPECT_EQ(0640u, modeOf("D/new/f"));
}
