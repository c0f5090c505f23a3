/* What the tests of the guard share: a guarded directory, links that others own, and what was told.
 */
#ifndef OVINST_TESTS_UT_GUARDTEST_H
#define OVINST_TESTS_UT_GUARDTEST_H

#include <cerrno>
#include <pwd.h>
#include <string>
#include <unistd.h>

#include "support.h"
#include "ut/guard.h"
#include "ut/guardedFile.h"
#include "ut/owned.h"
#include "ut/trust.h"

enum { STRANGER = 12345, NOBODY = 65534 };

/* In the working directory, a scratch one, root is guarded; outside/victim (mode 0640) is what a
 * planted link leads to. */
struct Guard : testing::Test {
    void SetUp() override
    {
        fs::current_path(scratch.path);
        fs::create_directories("root/sub");
        fs::create_directory("outside");
        writeFile(scratch / "outside/victim", "kept");
        ASSERT_EQ(chmod("outside/victim", 0640), 0);
        OV_instSetGuardedRoot("root");
        OV_instSetRefusalHandler([](const char *pText) { told() += std::string(pText) + "\n"; });
    }
    void TearDown() override
    {
        OV_instSetRefusalHandler(nullptr);
        told().clear();
        OV_instSetGuardedRoot(nullptr);
        fs::current_path(before);
    }
    static std::string &told()
    {
        static std::string s_told;
        return s_told;
    }
    static std::string heard() { return told(); }

    Scratch scratch;
    const fs::path before = fs::current_path();
    const std::string base = scratch.path;
};

inline bool isRoot()
{
    return geteuid() == 0;
}

/* Only root can make a stranger's link; other users get one of their own. */
inline void plant(const char *pName, const std::string &target, bool bStranger)
{
    ASSERT_EQ(symlink(target.c_str(), pName), 0);
    ASSERT_EQ(bStranger && isRoot() ? lchown(pName, NOBODY, NOBODY) : 0, 0);
}

/* 0, or the error of an attempt; closes what it opened. */
inline int tried(int iResult)
{
    OwnedFd opened(iResult > 2 ? iResult : -1);
    return iResult < 0 ? errno : 0;
}

#endif
