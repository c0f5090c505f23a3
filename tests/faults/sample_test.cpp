/* A sample of what tools/faults does: the same one each time. */
#include <gtest/gtest.h>

#include "faults/cases.h"

TEST(FaultSample, NothingUntrueIsSaid)
{
    if (!canWatch())
        GTEST_SKIP() << "the kernel or this build does not let runs be watched";
    std::vector<Case> all = allFaults(countCalls()), cases;
    const size_t iStep = std::max<size_t>(1, all.size() / 200);

    for (size_t i = iStep / 2; i < all.size(); i += iStep)
        cases.push_back(all[i]);
    EXPECT_EQ("", badOnes(cases)) << "of " << cases.size();
}

TEST(FaultSample, FullDisks)
{
    if (!canWatch() || !canMount())
        GTEST_SKIP() << "needs root, and a kernel that lets runs be watched";
    EXPECT_EQ("", badOnes(fullDisks(countCalls(), 12)));
}
