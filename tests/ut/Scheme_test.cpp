#include <gtest/gtest.h>

#include <cstdlib>

#include "ut/Scheme.h"

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
