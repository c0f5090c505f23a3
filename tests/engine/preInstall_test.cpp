#include <gtest/gtest.h>

#include "engine/engineTest.h"
#include "engine/preInstall.h"

struct PreInstall : EngineTest {
};

TEST_F(PreInstall, CheckSaysWhyNot)
{
    const auto check = [this] {
        int iResult = 0;
        const std::string out =
            printed([&] { iResult = OV_instPreInstallCheck(CDInstPtr, config(3)); });
        return std::to_string(iResult) + " " + shortened(out);
    };
    load("Package 'p' ''\nSuite 'S' p\nConfigBegin\n3 Suite 'S' '' '' 1\nConfigEnd\n");
    EXPECT_EQ("1 ", check());
    EXPECT_EQ(0755u, modeOf("D/"));
    ASSERT_EQ(0, chmod(m_root.c_str(), 0300)); /* it can be entered all the same */
    EXPECT_EQ("0 Install path does not have read/write permissions:\n@/root/Returning OK\n",
              check());
    ASSERT_EQ(0, chmod(m_root.c_str(), 0700));
    fs::remove_all(m_root);
    put("@/root", "");
    EXPECT_EQ("0 Unable to create install directory:\nD/Returning OK\n", check());
    setStates("3:11");
    EXPECT_EQ("0 Nothing to Install/RemoveReturning OK\n", check());
}
