/* Commands of a run end with it, however it ends. */
#include <gtest/gtest.h>

#include <csignal>
#include <thread>

#include "runs/run.h"

static void makeProgram(const std::string &path, const std::string &script)
{
    writeFile(path, "#!/bin/sh\n" + script + "\n");
    fs::permissions(path, fs::perms::owner_all);
}

/* Runs it until the command has begun, which creates the file "begun", kills one of the run's
 * processes (0 is the one that was started, 1 the installing one) and expects all to be gone. */
static void expectAllEnd(Medium &medium, size_t iKilled)
{
    const std::string begun = medium.scratch / "begun", place = medium.scratch.path.string();
    std::thread run([&] { (void)medium.install(); });

    EXPECT_TRUE(soon([&] { return fs::exists(begun); }));
    std::vector<pid_t> setups = processesNaming(medium.place + "/setup");
    std::sort(setups.begin(), setups.end());
    if (setups.size() > iKilled)
        kill(setups[iKilled], SIGKILL);
    EXPECT_TRUE(soon([&] { return processesNaming(place).empty(); }, 2));
    for (pid_t iLeft : processesNaming(place))
        kill(iLeft, SIGKILL);
    run.join();
    fs::remove(begun);
    fs::remove_all(medium.dest);
}

TEST(Commands, OfTheRegistryEndWithTheRun)
{
    static const char *const s_apScripts[] = {
        "$0.busy", "$0.busy | $0.busy", "($0.busy &) ; $0.busy", "setsid $0.busy & $0.busy & wait",
        "trap '' TERM HUP INT; (setsid $0.busy &); sleep 30"};
    Medium medium;
    const std::string tool = "Application/mainwin/mw/bin-amd64_linux/mwperl";

    medium.environment.push_back("DISPLAY=:7");
    medium.describe(onePackage("Copy \"tool\" \"" + tool + "\" 1 0755\nCopy \"busy\" \"" + tool +
                               ".busy\" 1 0755\nRegData \"K\" \"n\" \"k\" \"v\"\n"));
    makeProgram(medium.place + "/busy", "touch " + (medium.scratch / "begun") +
                                            "\nexec tail -f /dev/null " +
                                            (medium.scratch / "begun"));
    for (const char *pScript : s_apScripts)
        for (size_t iKilled : {0, 1}) {
            SCOPED_TRACE(std::string(pScript) + ", killed " + std::to_string(iKilled));
            makeProgram(medium.place + "/tool", pScript);
            expectAllEnd(medium, iKilled);
        }
    /* What an unhurt run leaves running goes on, as services do. */
    makeProgram(medium.place + "/tool", "$0.busy & exit 0");
    EXPECT_EQ(medium.install().err, "");
    EXPECT_TRUE(soon([&] { return fs::exists(medium.scratch / "begun"); }));
    EXPECT_EQ(processesNaming(medium.scratch / "begun").size(), 1u);
    for (pid_t iLeft : processesNaming(medium.scratch / "begun"))
        kill(iLeft, SIGKILL);
}

TEST(Commands, OfAnArchiveEndWithTheRun)
{
    Medium medium;

    medium.file("packed", "");
    medium.describe(onePackage("UntarZ \"packed\" 1 \"x\" 1\n"));
    makeProgram(medium.scratch / "decompress",
                "touch " + (medium.scratch / "begun") + "\nexec tail -f /dev/null");
    medium.environment.push_back("OVINST_BUNZIP2=" + (medium.scratch / "decompress"));
    for (size_t iKilled : {0, 1})
        expectAllEnd(medium, iKilled);
}
