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

/* Who can change a tool, its script or what it registers would decide what root does. */
TEST(Commands, OfTheRegistryAreRunOnlyWhereNobodyElseCanChangeThem)
{
    Medium medium;
    const std::string bin = "Application/mainwin/mw/bin-amd64_linux",
                      calls = medium.scratch / "calls";

    if (getuid() != 0)
        GTEST_SKIP() << "needs root to make what is somebody else's";
    medium.environment.insert(medium.environment.end(), {"DISPLAY=:7", "OVTEST=" + calls});
    makeProgram(medium.place + "/tool", "echo >> $OVTEST; exit 7");
    medium.describe(onePackage("Copy \"tool\" \"" + bin + "/mwperl\" 1 0755\n" +
                               "RegData \"K\" \"n\" \"k\" \"v\"\nSelfReg \"m.so\"\n"));
    const std::string failed = "Error: Error: adding rootkey=K keyname=n, keyvalue=k, value=v\n";
    EXPECT_EQ(medium.install().err, failed);
    EXPECT_EQ(readFile(calls), "\n\n");
    EXPECT_NE(medium.log().find("Warning: registering modules with " + medium.tree +
                                "Application/bin/cmdreg ended with status 7\n"),
              std::string::npos);
    for (const char *pPlanted :
         {"Application/mainwin/mw/scripts/mwgeneric.pl", "Application/registry", "Application",
          "Application/mainwin/mw/bin-linux_optimized/regkey", "Application/bin/cmdreg", "m.so"}) {
        const std::string name = pPlanted;
        fs::remove_all(medium.dest);
        fs::remove(calls);
        fs::create_directories(fs::path(medium.tree + name).parent_path());
        name == "Application"
            ? must("mkdir -m 777 " + medium.tree + name)
            : must("echo > " + medium.tree + name + " && chown 65534 " + medium.tree + name);
        const bool bKey = name.find("cmdreg") == name.npos && name != "m.so",
                   bModule = name.find("regkey") == name.npos;
        EXPECT_EQ(medium.install().err, failed);
        EXPECT_EQ(readFile(calls).size(), (bKey ? 0u : 1u) + (bModule ? 0u : 1u)) << name;
        EXPECT_EQ(medium.log().find("regkey was not run: others can change ") != std::string::npos,
                  bKey);
        EXPECT_EQ(medium.log().find("cmdreg was not run: others can change ") != std::string::npos,
                  bModule);
    }
}
