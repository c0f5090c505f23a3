#include <gtest/gtest.h>

#include "engine/engineTest.h"
#include "engine/uncompress.h"

struct Uncompress : EngineTest {
};

TEST_F(Uncompress, WritesTheContentsWithTheirMode)
{
    const auto uncompress = [this](const char *pName, const std::string &target) {
        (void)OV_instUncompress(pName, full(target).c_str(), 0640, 9, m_pipe.pStream, 0);
        return records();
    };
    load("");
    put("M/f `x` $y", "f");
    put("M/plain", "not compressed");
    ASSERT_EQ(0, system(full("bzip2 'M/f `x` $y'").c_str()));
    EXPECT_EQ("+1 M/f `x` $y.bz2 D/new/f\n", uncompress("f `x` $y.bz2", "D/new/f"));
    EXPECT_EQ("f", got("D/new/f"));
    EXPECT_EQ(0640u, modeOf("D/new/f"));
    EXPECT_EQ("0 Can't create file D/new\n", uncompress("f `x` $y.bz2", "D/new"));
    (void)told([&] { /* by the decompressor */
                     EXPECT_EQ("-1 Uncompress couldn't close input file M/plain\n",
                               uncompress("plain", "D/x"));
    });
}

/* In a process of its own each: the program is chosen once. */
TEST_F(Uncompress, RunsTheProgramThatIsNamedOrTheOneForAllProcessors)
{
    const auto expectOutput = [this](const char *pVariable, const std::string &value,
                                     const char *pProgram) {
        inChild([&] {
            load("");
            put("M/f", "f");
            put(pProgram, "#!/bin/sh\n/bin/echo \"$0 $1\"\n");
            fs::permissions(full(pProgram), fs::perms::owner_all);
            setenv(pVariable, full(value).c_str(), 1);
            (void)OV_instUncompress("f", full("D/f").c_str(), 0640, 9, m_pipe.pStream, 0);
            EXPECT_EQ(std::string(pProgram) + " -c\n", got("D/f"));
        });
    };
    unsetenv("OVINST_BUNZIP2");
    expectOutput("OVINST_BUNZIP2", "@/an other's", "@/an other's");
    expectOutput("PATH", "/nowhere:@/bin", "@/bin/lbunzip2");
}
