/* Kills at random moments: at a random call of the parent, of the process that installs, or of one
 * of its commands (tar, the decompressor, the registry's tool). SETUP_KILLS asks for more of them,
 * SETUP_KILLS_SEED for the same ones again; a single one is repeated by tools/faults. */
#include <gtest/gtest.h>

#include <random>

#include "faults/cases.h"

TEST(Kills, TheNextRunCompletes)
{
    const char *pCount = getenv("SETUP_KILLS"), *pSeed = getenv("SETUP_KILLS_SEED");
    const unsigned iSeed = pSeed ? static_cast<unsigned>(atoi(pSeed)) : std::random_device()();
    std::mt19937 random(iSeed);
    std::vector<Case> cases;

    if (!canWatch())
        GTEST_SKIP() << "the kernel or this build does not let runs be watched";
    const Counts counts = countCalls();
    while (cases.size() < static_cast<size_t>(pCount ? atoi(pCount) : 120)) {
        Case test;
        test.scenario = static_cast<Scenario>(random() % SCENARIOS);
        test.fault.role = static_cast<Role>(random() % ROLES);
        test.fault.iKind = callKinds().size() - 1;
        test.fault.iAction = random() % 4 ? KILL_CALLER : KILL_PARENT;
        const auto found = counts.calls[test.scenario].find({test.fault.role, test.fault.iKind});
        if (found == counts.calls[test.scenario].end())
            continue;
        test.fault.iNth = 1 + static_cast<unsigned>(random() % found->second);
        cases.push_back(test);
    }
    EXPECT_EQ("", badOnes(cases)) << "SETUP_KILLS_SEED=" << iSeed;
}
