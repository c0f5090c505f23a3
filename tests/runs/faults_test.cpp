#include <gtest/gtest.h>

#include <chrono>
#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "runs/run.h"

static void expectNothingLeft(const Medium &medium)
{
    std::string text = medium.scratch.path.string();

    EXPECT_TRUE(soon([&] { return processesNaming(text).empty(); }));
}

TEST(Faults, DamagedArchives)
{
    static const struct {
        const char *pMake; /* shell commands that damage "packed" or "plain" */
        const char *pOperation;
        bool bTold;
        bool bWarned;
    } s_aCases[] = {
        {"head -c 200000 /dev/urandom > packed", "UntarZ \"packed\"", true, true},
        {"head -c 100000 packed > x; mv x packed", "UntarZ \"packed\"", true, true},
        {"head -c 100000 plain > x; mv x plain", "Untar \"plain\"", true, true},
        {"tar -Pcf plain files ../medium/r", "Untar \"plain\"", false, true}, /* tar will not */
        {"tar -b 256 -cf plain files", "Untar \"plain\"", false, false},  /* sound, but padded, */
        {"tar -b 2560 -cf plain files", "Untar \"plain\"", false, false}, /* beyond the pipe, too */
    };

    for (const auto &test : s_aCases) {
        SCOPED_TRACE(test.pMake);
        Medium medium;
        medium.file("files/one", std::string(300000, '1'));
        medium.file("files/two", std::string(300, '2'));
        medium.file("c", "copied");
        must("cd " + medium.place +
             " && tar -cf plain files && head -c 300000 /dev/urandom > r && "
             "tar -cjf packed files r && " +
             test.pMake);
        medium.describe(onePackage(std::string(test.pOperation) +
                                   " 1 \"files/one\" 300000 \"files/two\" 300\n"
                                   "Copy \"c\" \"\" 6 0644\n"));
        RunResult result = medium.install();

        EXPECT_EQ(result.iStatus, 0);
        EXPECT_EQ(medium.installed("c"), "copied"); /* the run goes on */
        EXPECT_EQ(result.err.find("Error: ") != std::string::npos, test.bTold) << result.err;
        EXPECT_EQ(medium.log().find("\nWarning: unpacking p") != std::string::npos, test.bWarned);
        EXPECT_EQ(medium.log().find("Error during") != std::string::npos, test.bTold);
        expectNothingLeft(medium);
    }
}

/* A file is where a directory should be. */
TEST(Faults, DestinationThatCannotBeMade)
{
    Medium medium;
    auto expectTold = [&](const std::string &text) {
        RunResult result = medium.install();
        EXPECT_EQ(result.iStatus, 1);
        EXPECT_NE(result.out.find(text + "Returning OK\n"), std::string::npos) << result.out;
        EXPECT_EQ(result.err, "Error: during installation\n");
        EXPECT_FALSE(medium.has("a"));
    };

    medium.file("a", "a");
    medium.describe(onePackage("Copy \"a\" \"\" 1 0644\n"));
    writeFile(medium.dest + "/prod", "in the way");
    expectTold("Unable to create install directory");
    EXPECT_EQ(readFile(medium.dest + "/prod"), "in the way");
    fs::remove_all(medium.dest);
    writeFile(medium.tree + "Setup", "in the way"); /* of the log's directory */
    expectTold("Error while setting up logfile");
}

TEST(Faults, UnwritableLogAndHistoryStopNothing)
{
    Medium medium;

    medium.file("a", "a");
    medium.describe(onePackage("Copy \"a\" \"\" 1 0644\n"));
    writeFile(medium.tree + "Setup/setup.log/x", "the log is a directory");
    writeFile(medium.tree + "SetupFiles", "the history's directory is a file");
    RunResult result = medium.install();

    EXPECT_EQ(result.iStatus, 0);
    EXPECT_EQ(medium.installed("a"), "a");
    EXPECT_NE(result.out.find("Unable to open " + medium.tree + "/SetupFiles/.h.his\n"),
              std::string::npos);
    EXPECT_NE(result.err.find("Error: (OV_instUpdateLogfile) can't open '"), std::string::npos);
}

TEST(Faults, WhatStrangersPlantedIsNotFollowed)
{
    Medium medium;

    if (getuid() != 0)
        GTEST_SKIP() << "needs root to make somebody else's links";
    writeFile(medium.scratch / "victim/file", "untouched");
    auto plant = [&](const std::string &name, const std::string &target) {
        fs::create_directories(fs::path(medium.tree + name).parent_path());
        fs::create_symlink(target, medium.tree + name);
        ASSERT_EQ(lchown((medium.tree + name).c_str(), 65534, 65534), 0);
    };
    medium.file("a", "new");
    medium.file("in/tar", "new");
    must("cd " + medium.place + " && tar -cf a.tar in");
    medium.describe(
        onePackage("Copy \"a\" \"file\" 3 0666\nCopy \"a\" \"dir/sub/copy\" 3 0644\n"
                   "Mkdir \"dir/made\" 0755\nUntar \"a.tar\" 1 \"in/tar\" 3\n"
                   "SoftLink \"dir\" \"x\" \"link\"\nCopy \"a\" \"trusted/own\" 3 0644\n"
                   "Copy \"a\" \"tool\" 3 0755\nCopy \"a\" \"linked\" 3 0644\n"
                   "HardLink \".\" \"dir/file\" \"hard\"\n"));
    writeFile(medium.tree + "tool", "planted");
    fs::create_hard_link(medium.scratch / "victim/file", medium.tree + "linked");
    ASSERT_EQ(chown((medium.tree + "tool").c_str(), 65534, 65534), 0);
    std::string victim = medium.scratch / "victim";
    plant("file", victim + "/file");
    plant("dir", victim);
    plant("in", victim);
    plant("Application/registry", victim + "/file");
    plant("SetupFiles/.h.his", victim + "/file");
    fs::create_directories(medium.scratch / "elsewhere");
    fs::create_symlink(medium.scratch / "elsewhere", medium.tree + "trusted");
    must("chmod 600 " + victim + "/file");
    RunResult result = medium.install();

    EXPECT_EQ(readFile(victim + "/file"), "untouched");
    EXPECT_EQ(modeOf(victim + "/file"), 0600u);
    EXPECT_EQ(std::distance(fs::directory_iterator(victim), {}), 1);
    EXPECT_EQ(readFile(medium.scratch / "elsewhere/own"), "new"); /* root's own link is followed */
    struct stat tool = {};                                        /* replaced, not filled */
    ASSERT_EQ(stat((medium.tree + "tool").c_str(), &tool), 0);
    EXPECT_EQ(tool.st_uid, 65534u); /* it stays whose it was */
    EXPECT_EQ(medium.installed("tool") + medium.installed("linked"), "newnew");
    EXPECT_FALSE(medium.has("hard"));
    EXPECT_EQ(result.err,
              "Warning: " + medium.tree +
                  "SetupFiles/.h.his is a link of nobody, leads "
                  "out of " +
                  medium.dest + " and was not followed\n" + "Error: Copyfile can't create file " +
                  medium.tree + "file\n" +
                  "Error: Copyfile can't create destination directory for:\n" +
                  "Error: Mkdir file already exists " + medium.tree + "dir\n" +
                  "Error: Untar can't run 'tar --no-same-owner -xBof - 2> /dev/null' on file: " +
                  fs::canonical(medium.place).string() + "/a.tar\n" +
                  "Error: Softlink can't change directory to: " + medium.tree + "dir:x->link\n" +
                  "Error: Hardlink linking file hard to dir/file\n");
    EXPECT_NE(medium.log().find("Softlink can't change directory"), std::string::npos);
    const std::string told = "Warning: " + medium.tree + "dir is a link of nobody, leads out of " +
                             medium.dest + " and was not followed\n";
    EXPECT_EQ(medium.log().find(told), medium.log().rfind(told)) << medium.log(); /* once */
    EXPECT_NE(medium.log().find(told), std::string::npos) << medium.log();
}

TEST(Faults, AnExchangedDestinationLeadsNowhere)
{
    Medium medium;
    const std::string outside = medium.scratch / "outside", aside = medium.dest + ".aside/prod/";

    fs::create_directories(outside + "/prod");
    fs::create_directories(medium.place + "/SetupFiles");
    fs::copy(TEST_MODULE_DIR "/badManners.so", medium.place + "/SetupFiles/m.so");
    medium.file("a", "new");
    medium.file("in/tar", "new");
    must("cd " + medium.place + " && tar -cf a.tar in && bzip2 -k a");
    medium.describe(
        onePackage("Copy \"a\" \"first\" 3 0644\nFunction \"exchangeRoot\" \"m.so\" \"" + outside +
                   "\"\nCopy \"a\" \"sub/a\" 3 0644\nCopy \"a\" \"first\" 3 0644\n"
                   "CopyZ \"a\" \"\" 3 0644\nMkdir \"made/deep\" 0755\n"
                   "Untar \"a.tar\" 1 \"in/tar\" 3\nSoftLink \"made\" \"x\" \"soft\"\n"
                   "HardLink \".\" \"first\" \"hard\"\n"));
    RunResult result = medium.install();

    EXPECT_EQ(result.err, "");
    EXPECT_TRUE(fs::is_empty(outside + "/prod"));
    EXPECT_EQ(std::distance(fs::directory_iterator(outside), {}), 1);
    for (const char *pName : {"first", "sub/a", "in/tar", "hard"})
        EXPECT_EQ(readFile(aside + pName), "new") << pName;
    EXPECT_TRUE(fs::is_symlink(aside + "made/soft") && fs::exists(aside + "cdinst.dat"));
    EXPECT_NE(readFile(aside + "SetupFiles/.h.his").find("\"all\""), std::string::npos);
    EXPECT_NE(readFile(aside + "Setup/setup.log").find("Installation Completed"),
              std::string::npos);
}

/* A backup made of second names keeps what it had, in a tree that others of a group write to. */
TEST(Faults, ASnapshotKeepsWhatItHas)
{
    Medium medium;
    const std::string snapshot = medium.scratch / "snapshot";

    medium.file("a", "old");
    medium.describe(onePackage("Copy \"a\" \"\" 3 0644\n"));
    EXPECT_EQ(medium.install().iStatus, 0);
    const std::string log = medium.log(), history = medium.history();
    must("chmod -R g+w " + medium.dest + " && cp -al " + medium.dest + " " + snapshot);
    medium.describe(onePackage("Copy \"a\" \"\" 3 0644\n"), usualHeader("# another\n"));
    const std::string description = readFile(snapshot + "/prod/cdinst.dat");
    RunResult result = medium.install();

    EXPECT_EQ(result.iStatus, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(readFile(snapshot + "/prod/Setup/setup.log"), log);
    EXPECT_EQ(readFile(snapshot + "/prod/SetupFiles/.h.his"), history);
    EXPECT_EQ(readFile(snapshot + "/prod/cdinst.dat"), description);
    EXPECT_NE(medium.log().find("Installation Completed"), std::string::npos);
    EXPECT_NE(medium.installed("cdinst.dat"), description);
}

/* The kernel's part of it: tar itself is kept to the destination. */
static bool hasLandlock()
{
    return syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION) >= 2;
}

TEST(Faults, TarIsNotLedAstrayByUnlistedMembers)
{
    Medium medium;
    std::string outside = medium.scratch / "outside", members;

    if (getuid() != 0 || !hasLandlock())
        GTEST_SKIP() << "needs root, and a kernel with Landlock";
    medium.file("in/tar", "new");
    for (int i = 0; i < 100; i++) { /* each is let in by itself */
        std::string name = "/d" + std::to_string(i);
        medium.file("own" + name + "/f", "new");
        members += " \"own" + name + "/f\" 3";
        fs::create_directories(medium.scratch / ("mine" + name));
    }
    must("cd " + medium.place + " && tar -cf a.tar in/tar own/*/f");
    medium.describe(onePackage("Untar \"a.tar\" 1" + members + "\n"));
    fs::create_directories(outside);
    fs::create_directories(medium.tree);
    fs::create_symlink(outside, medium.tree + "in");
    fs::create_symlink(medium.scratch / "mine", medium.tree + "own");
    ASSERT_EQ(lchown((medium.tree + "in").c_str(), 65534, 65534), 0);
    EXPECT_EQ(medium.install().iStatus, 0);

    EXPECT_TRUE(fs::is_empty(outside));
    for (int i = 0; i < 100; i++) /* root's own link is followed */
        EXPECT_EQ(readFile(medium.scratch / ("mine/d" + std::to_string(i) + "/f")), "new");
}

TEST(Faults, MediumMayBeTheInstalledTree)
{
    Medium medium;

    medium.place = medium.tree;
    medium.file("a", "kept");
    fs::copy_file(SETUP_PROGRAM, medium.place + "setup");
    medium.describe(onePackage("Copy \"a\" \"\" 4 0640\nCopy \"setup\" \"\" 9 0755\n"));
    std::string description = medium.installed("cdinst.dat");
    RunResult result = medium.install();

    EXPECT_EQ(result.err, "");
    EXPECT_EQ(medium.installed("a"), "kept");
    EXPECT_EQ(medium.installed("cdinst.dat"), description);

    medium.dest = medium.scratch / "elsewhere"; /* which counts, not the tree that it lies in */
    result = medium.install();
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(readFile(medium.dest + "/prod/a"), "kept");
}

/* The shell's command lines; "RUN" stands for the usual run. */
TEST(Faults, SurroundingsThatTheShellCanMake)
{
    static const struct {
        const char *pCommand;
        const char *pErrors; /* what must stand in them; null for none at all */
    } s_aCases[] = {
        {"(ulimit -f 100; RUN) 2>../errors >/dev/null", "Error: Copyfile writing file "},
        {"RUN 2>../errors >&-", nullptr},
        {"RUN 2>../errors >/dev/full", nullptr},
        {"RUN 2>../errors | head -c 1 >/dev/null", nullptr},
        {"RUN 2>../errors <&- >/dev/null", nullptr},
        {"(ulimit -Ss 64; RUN) 2>../errors >/dev/null", nullptr},
        {"TAR_OPTIONS=--to-command=false RUN 2>../errors >/dev/null", nullptr},
    };

    for (const auto &test : s_aCases) {
        SCOPED_TRACE(test.pCommand);
        Medium medium;
        medium.file("large", std::string(300000, 'l'));
        medium.file("in/tar", "new");
        must("cd " + medium.place + " && tar -cf a.tar in");
        medium.describe(onePackage("Copy \"large\" \"\" 300000 0644\n"
                                   "Untar \"a.tar\" 1 \"in/tar\" 3\n"));
        std::string command = test.pCommand;
        command.replace(command.find("RUN"), 3,
                        "HOME=" + (medium.scratch / "home") + " ./setup -cmdline -noroot -dest " +
                            medium.dest);
        must("cd " + medium.place + " && " + command);
        EXPECT_TRUE(soon([&] { /* the installing process may end after its parent */
                               return medium.history().find("Package \"all\" Installed\n") !=
                                      std::string::npos;
        }));
        EXPECT_EQ(medium.installed("in/tar"), "new");
        expectNothingLeft(medium);
        std::string errors = readFile(medium.scratch / "errors");
        if (test.pErrors)
            EXPECT_NE(errors.find(test.pErrors), std::string::npos) << errors;
        else
            EXPECT_EQ(errors, "");
    }
}

TEST(Faults, AStackThatIsTooSmallIsTold)
{
    must("cd " SETUP_BUILD_DIR " && (ulimit -s 64; ./setup -version 2>&1 || true) | "
         "grep -q '^Error: the stack is limited to 64 KB'");
}

/* A module that leaves a process behind, which holds the pipe, and one that ends the child. */
TEST(Faults, ModulesThatMisbehave)
{
    Medium medium;

    fs::create_directories(medium.place + "/SetupFiles");
    fs::copy(TEST_MODULE_DIR "/badManners.so", medium.place + "/SetupFiles/m.so");
    medium.describe(onePackage("Function \"leaveProcess\" \"m.so\" \"\"\n"));
    auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(medium.install().iStatus, 0);
    EXPECT_LT(std::chrono::steady_clock::now() - start,
              std::chrono::seconds(20)); /* it sleeps 30 */
    EXPECT_NE(medium.log().find("Installation Completed\n"), std::string::npos);

    fs::remove_all(medium.dest);
    medium.describe(onePackage("Function \"endProcess\" \"m.so\" \"\"\n"));
    RunResult result = medium.install();
    EXPECT_EQ(result.err, "Setup did not complete successfully\n");
    EXPECT_NE(medium.log().find("Setup did not complete successfully\n"), std::string::npos);
    EXPECT_EQ(medium.installed("SetupFiles/.h.run"), "RunFileVersion 1\nTest Product\n3.5\n" +
                                                         medium.place +
                                                         "\nPackage \"all\" Installing\n");
    medium.describe(onePackage("Mkdir \"made\" 0755\n")); /* without the module */
    EXPECT_EQ(medium.install().iStatus, 0);
    EXPECT_TRUE(medium.has("made"));
    EXPECT_FALSE(medium.has("SetupFiles/.h.run"));
}
