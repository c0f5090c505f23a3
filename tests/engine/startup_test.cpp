#include <gtest/gtest.h>

#include "engine/setupState.h"
#include "engine/startup.h"
#include "ut/owned.h"

/* The options of an unattended run are tried in whole runs; here is what goes to the dialogs. */
TEST(Startup, LeavesDescriptionAndDestinationToTheDialogs)
{
    char *pDescription = nullptr;
    char *pDestination = nullptr;
    const char *apPlain[] = {"/usr//bin/setup", "-noroot"};
    OV_instProcessArgs(2, const_cast<char **>(apPlain), &pDescription, &pDestination);
    EXPECT_STREQ("/usr/bin/cdinst.dat", OwnedText(pDescription).get());
    EXPECT_STREQ("/usr/Orvane/", OwnedText(pDestination).get());

    const char *apGiven[] = {"/usr/bin/setup", "-from", "med/d.dat", "-noroot",
                             "-dest",          "x",     "-dest",     "y"};
    OV_instProcessArgs(8, const_cast<char **>(apGiven), &pDescription, &pDestination);
    EXPECT_STREQ("med/d.dat", OwnedText(pDescription).get());
    EXPECT_STREQ("y", OwnedText(pDestination).get());
    EXPECT_STREQ("med/", OV_instGetCdinstDirectory());
    EXPECT_STREQ("/usr/bin/", OV_instGetRunningDirectory());
}
