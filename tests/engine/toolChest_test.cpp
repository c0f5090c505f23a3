#include <gtest/gtest.h>

#include "engine/engineTest.h"
#include "engine/toolChest.h"

struct ToolChest : EngineTest {
}; /* the scratch directory is the home */

TEST_F(ToolChest, LineIsAddedOnce)
{
    const std::string line = "\nsinclude /title dir/.title\n";
    EXPECT_EQ(0, OV_instAddSinclude(nullptr, "/title dir/"));
    EXPECT_EQ(0, OV_instAddSinclude(m_scratch.path.c_str(), "/title dir//"));
    EXPECT_EQ(line, got("@/.auxchestrc"));
    setenv("OV_LOCATION", "/title dir", 1);
    for (const std::string before : {"no newline", "# sinclude /title dir/.titles"}) {
        put("@/.auxchestrc", before);
        EXPECT_EQ(0, OV_instAddSinclude(nullptr, nullptr));
        EXPECT_EQ(before[0] == '#' ? before : before + line, got("@/.auxchestrc"));
    }
}

TEST_F(ToolChest, FailuresAreTold)
{
    fs::create_directories(full("@/.auxchestrc"));
    EXPECT_EQ("Unable to get OV_LOCATION env var for sinclude\n"
              "Unable to open shortcut file: @/.auxchestrc\n"
              "Unable to get Home env var for sinclude\n",
              shortened(told([] {
                  EXPECT_EQ(1, OV_instAddSinclude(nullptr, nullptr));
                  EXPECT_EQ(1, OV_instAddSinclude(nullptr, "/t"));
                  unsetenv("HOME");
                  EXPECT_EQ(1, OV_instAddSinclude(nullptr, "/t"));
              })));
}
