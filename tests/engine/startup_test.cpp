#include <gtest/gtest.h>

#include <cstdlib>

#include "engine/setupState.h"
#include "engine/startup.h"
#include "ut/owned.h"

/* The options of an unattended run are tried in whole runs; here is what goes to the dialogs. */
TEST(Startup, LeavesDescriptionAndDestinationToTheDialogs)
{
    struct Case {
        std::vector<const char *> arguments;
        const char *pDescription;
        const char *pDestination;
        const char *pDirectory;
    };
    const std::vector<Case> cases = {
        {{"/usr/bin/setup", "-noroot"}, "/usr/bin/cdinst.dat", "/usr/Orvane/", "/usr/bin/"},
        {{"/usr//bin/setup", "-noroot", "-dest", "x", "-dest", "y"},
         "/usr/bin/cdinst.dat",
         "y",
         "/usr/bin/"},
        {{"/usr/bin/setup", "-from", "med/d.dat", "-noroot"}, "med/d.dat", "/usr/Orvane/", "med/"},
    };

    for (const Case &test : cases) {
        char *pDescription = nullptr;
        char *pDestination = nullptr;
        OV_instProcessArgs(static_cast<int>(test.arguments.size()),
                           const_cast<char **>(test.arguments.data()), &pDescription,
                           &pDestination);
        OwnedText description(pDescription);
        OwnedText destination(pDestination);
        EXPECT_STREQ(pDescription, test.pDescription);
        EXPECT_STREQ(pDestination, test.pDestination);
        EXPECT_STREQ(OV_instGetCdinstDirectory(), test.pDirectory);
        EXPECT_STREQ(OV_instGetRunningDirectory(), "/usr/bin/");
    }
}
