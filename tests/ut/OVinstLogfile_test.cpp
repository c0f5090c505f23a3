#include <gtest/gtest.h>

#include <ctime>
#include <string>

#include "support.h"
#include "ut/OVinstLogfile.h"
#include "ut/owned.h"

struct Logfile : testing::Test {
    void SetUp() override { g_caLogName[0] = '\0'; }
    void TearDown() override { g_caLogName[0] = '\0'; }
    Scratch scratch;
    const std::string log = scratch / "log.txt";
};

/* A run's header at a place that is 13 hours and 7 minutes ahead. */
static std::string headAt(time_t now)
{
    char caHead[200] = "";
    struct tm far = {};

    now += (13 * 60 + 7) * 60;
    gmtime_r(&now, &far);
    (void)strftime(caHead, sizeof caHead,
                   "\n>>>>>>> SETUP Log File created on %Y-%m-%d-%Hh%M <<<<<<<\n"
                   "Starting Installation\n",
                   &far);
    return caHead;
}

TEST_F(Logfile, AppendsAHeaderForEveryRun)
{
    const std::string zone = getenv("TZ") ? getenv("TZ") : "";
    setenv("TZ", "FAR-13:07", 1);
    tzset();
    time_t now = time(nullptr);
    ASSERT_EQ(OV_instInitLogfile(log.c_str()), 0);
    EXPECT_TRUE(fs::is_empty(log));
    ASSERT_EQ(OV_instInitLogfileAndTimeStamp(log.c_str()), 0);
    EXPECT_EQ(OV_instUpdateLogfile("%s\n", "100%s"), 0);
    OwnedFile stream(OV_instOpenLogfile()); /* a module's, which writes after the next record */
    EXPECT_EQ(OV_instUpdateLogfile("no "), 0);
    EXPECT_TRUE(fputs("newline", stream.get()) > 0 && fflush(stream.get()) == 0);
    ASSERT_EQ(OV_instInitLogfileAndTimeStamp(g_caLogName), 0);
    std::string text = readFile(log);
    for (const std::string &head : {headAt(now), headAt(time(nullptr))}) /* the minute may end */
        for (size_t at; (at = text.find(head)) != std::string::npos;)
            text.replace(at, head.size(), "<head>");
    EXPECT_EQ(text, "<head>100%s\nno newline<head>");
    zone.empty() ? unsetenv("TZ") : setenv("TZ", zone.c_str(), 1);
    tzset();
}

TEST_F(Logfile, WritesNothingWithoutALogAndTellsOfOneThatCannotBeOpened)
{
    const std::string path = scratch / "none/%s.txt";

    EXPECT_EQ("", told([] {
                  EXPECT_EQ(OV_instInitLogfile(nullptr), -1);
                  EXPECT_EQ(OV_instInitLogfile(std::string(4097, 'x').c_str()), -1);
                  EXPECT_EQ(OV_instUpdateLogfile("lost\n"), 0);
              }));
    EXPECT_EQ("Error: (OV_instUpdateLogfile) can't open '" + path + "'\n", told([&] {
                  EXPECT_EQ(OV_instInitLogfileAndTimeStamp(path.c_str()), -1); /* silent */
                  EXPECT_EQ(OV_instUpdateLogfile("lost\n"), 0);
              }));
}
