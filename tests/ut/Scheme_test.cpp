#include <gtest/gtest.h>

#include "ut/Scheme.h"

#include <cstdlib>

/* Null but in a program built with the address sanitizer, whichever compiler built it. */
extern "C" __attribute__((weak)) void __asan_init();

TEST(NewArgv, CopiesAndAppends)
{
    char caProgram[] = "setup", caOption[] = "-cmdline";
    char *apArgv[] = {caProgram, caOption, nullptr};
    const char *const apExpected[] = {"setup",           "-cmdline", "-xrm",
                                      "*sgiMode: false", "-xrm",     "*useSchemes: all"};
    int iArgc = 2;

    char **apNew = OV_instNewArgv(&iArgc, apArgv);
    ASSERT_EQ(iArgc, 6);
    caProgram[0] = 'X'; /* the new vector is a copy */
    for (int i = 0; i < iArgc; i++)
        EXPECT_STREQ(apNew[i], apExpected[i]);
    EXPECT_EQ(apNew[iArgc], nullptr);

    free(apNew[2]);
    apNew[2] = nullptr; /* the toolkit takes out what it has used */
    OV_instFreeArgv(iArgc, apNew);
    OV_instFreeArgv(3, nullptr);
}

TEST(NewArgv, EndsTheProcessWithoutMemory)
{
    if (__asan_init)
        GTEST_SKIP() << "the sanitizer ends the process before malloc can fail";
    int iArgc = -1000; /* more than any machine has */
    EXPECT_EXIT((void)OV_instNewArgv(&iArgc, nullptr), testing::ExitedWithCode(1),
                "^Error: memory allocation\n$");
}
