#include "medium/installation.h"

#include <csignal>
#include <fcntl.h>
#include <random>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

using Repair = Installation;

TEST_F(Repair, BringsBackWhatVerifyTells)
{
    struct Row {
        const char *pDamage; /* by the shell, in the product's directory */
        const char *pLines;
        int iDifferent;
    };
    static const Row s_aRows[] = {
        {"true", "", 0},
        {"chmod 700 bin dir", "", 0},
        {"mv other ../moved && ln -s ../moved other", "", 0},
        {"mv other/c ../c && ln -s ../c other/c", "", 0},
        {"rm other && mv ../moved other && mv ../c other/c", "", 0},
        {"rm other/c", "missing other/c\n", 1},
        {"rm -r other", "missing other/c\n", 1},
        {"rm -r bin", "missing bin\nmissing bin/a\nmissing bin/b\n", 3},
        {"printf 'text of b' >bin/a", "content bin/a\n", 1},
        {"printf x | dd of=other/c bs=1 seek=299999 conv=notrunc", "content other/c\n", 1},
        {"echo x >>z.bz2", "content z.bz2\n", 1},
        {"chmod 640 bin/a", "mode bin/a\n", 1},
        {"rm other/c && mkfifo other/c", "type other/c\n", 1},
        {"ln -sf /etc/passwd other/c", "type other/c\n", 1},
        {"ln -sfn a l", "target l\n", 1},
        {"rm l && echo x >l", "type l\n", 1},
        {"rm bin/b && cp -p bin/a bin/b", "target bin/b\n", 1},
        {"rm bin/b", "missing bin/b\n", 1},
        {"printf 'text of g' >dir/f", "content dir/f\n", 1},
        {"chmod 444 dir/f", "mode dir/f\n", 1},
        {"chmod 640 dir/f", "", 0},
        {"ln -sfn x dir/l", "target dir/l\n", 1},
        {"rm dir/h && echo y >dir/h", "target dir/h\n", 1},
        {"rm dir/we*", "missing dir/we\\nird\n", 1},
        {"echo x >>../Orvane/dir/f; chmod 200 ../Orvane/dir/f",
         "content ../Orvane/dir/f\nmode ../Orvane/dir/f\n", 1},
    };

    for (const Row &row : s_aRows) {
        SCOPED_TRACE(row.pDamage);
        must("cd '" + medium.tree + "' && { " + row.pDamage + "; } 2>/dev/null");
        const auto damaged = picture();
        const RunResult told = verify();
        EXPECT_EQ(differing(row.pLines, row.iDifferent), told.out) << told.err;
        EXPECT_EQ(row.iDifferent ? 1 : 0, told.iStatus);
        EXPECT_EQ(row.iDifferent ? 1 : 0, repair({"--dry-run"}).iStatus);
        EXPECT_EQ(damaged, picture()) << "a dry run changes nothing";
        const RunResult repaired = repair();
        EXPECT_EQ(0, repaired.iStatus) << repaired.out << repaired.err;
        EXPECT_EQ(differing("", 0), verify().out);
        for (const auto &[path, object] : picture()) {
            const bool bTold = repaired.out.find(fs::path(path).filename()) != std::string::npos ||
                               path.find("/bin/") != std::string::npos ||
                               path.find("/dir/") != std::string::npos;
            EXPECT_TRUE(bTold || damaged.at(path) == object) << path << " was right before";
        }
    }
    EXPECT_EQ(0750u, modeOf(medium.tree + "bin"));
    EXPECT_FALSE(medium.has(".ovmedium.new"));
}

TEST_F(Repair, LeavesOthersAlone)
{
    must("cd '" + medium.tree +
         "' && rm other/c l && mkdir other/c l && echo mine >other/c/mine && "
         "rm -r dir && echo mine >dir && echo mine >bin/mine && rm bin/a");
    const RunResult told = repair();
    EXPECT_EQ(1, told.iStatus);
    EXPECT_NE(std::string::npos, told.out.find("created bin/a\n")) << told.out;
    EXPECT_NE(std::string::npos, told.out.find("kept other/c: a directory is in its place\n"));
    EXPECT_NE(std::string::npos, told.out.find("type dir\n"));
    for (const char *pMine : {"other/c/mine", "dir", "bin/mine"})
        EXPECT_EQ("mine\n", medium.installed(pMine));
    EXPECT_TRUE(fs::is_directory(medium.tree + "l"));
}

TEST_F(Repair, KeepsToThePathsThatWereNamed)
{
    must("cd '" + medium.tree + "' && rm z.bz2 other/c && rm -r bin && echo user >user");
    for (const std::string &path : {std::string("user"), std::string("nowhere")}) {
        EXPECT_EQ(2, repair({"other/c", path}).iStatus);
        EXPECT_FALSE(medium.has("other/c"));
    }
    EXPECT_EQ(1, repair({"other/./c", medium.tree + "bin/a"}).iStatus) << "z.bz2 is still missing";
    EXPECT_TRUE(medium.has("other/c") && medium.has("bin/a"));
    EXPECT_FALSE(medium.has("z.bz2") || medium.has("bin/b"));
    EXPECT_EQ(0750u, modeOf(medium.tree + "bin")) << "with the mode of its package";
}

TEST_F(Repair, WaitsForNoRun)
{
    const int iFolder = open((medium.tree + "SetupFiles").c_str(), O_RDONLY | O_DIRECTORY);

    ASSERT_EQ(0, flock(iFolder, LOCK_EX));
    fs::remove(medium.tree + "other/c");
    EXPECT_EQ(2, repair().iStatus);
    EXPECT_EQ(2, repair({"--dry-run"}).iStatus);
    EXPECT_FALSE(medium.has("other/c"));
    close(iFolder);
}

TEST_F(Repair, SettlesWhatIsPending)
{
    for (const bool bHistoryLost : {false, true}) {
        SCOPED_TRACE(bHistoryLost);
        writeFile(m_runFile, m_runHeader + "Package \"files\" Installed\nPackage \"archives\" "
                                           "Installing\nPackage \"other\" Removing\n");
        if (bHistoryLost)
            fs::remove(medium.tree + "SetupFiles/.h.his");
        must("cd '" + medium.tree + "' && rm -r dir other && : > cdinst.dat");
        EXPECT_NE(std::string::npos,
                  verify().out.find("pending archives\npending other\n16 checked, 6 different\n"))
            << verify().out;
        const RunResult told = repair();
        EXPECT_EQ(0, told.iStatus) << told.out << told.err;
        EXPECT_FALSE(fs::exists(m_runFile));
        EXPECT_EQ(readFile(medium.place + "/cdinst.dat"), medium.installed("cdinst.dat"));
        for (const char *pName : {"files", "archives", "other"})
            EXPECT_NE(std::string::npos,
                      medium.history().find("Package \"" + std::string(pName) + "\" Installed\n"));
        EXPECT_EQ(0, run({"status", medium.dest}).iStatus);
    }
    const auto before = medium.listing();
    EXPECT_EQ(0, medium.install().iStatus);
    EXPECT_EQ(before, medium.listing()) << "setup has nothing left to do";
}

/* A package that calls modules may lack what they do, however whole its files are. */
TEST_F(Repair, LeavesToSetupWhatOnlySetupCanDo)
{
    const std::string described = readFile(medium.place + "/cdinst.dat");

    medium.file("cdinst.dat", replaced(described, "Package \"other\" \"\"\n",
                                       "Package \"other\" \"\"\nSelfReg \"c\"\n"));
    writeFile(m_runFile,
              m_runHeader + "Package \"files\" Installing\nPackage \"other\" Installing\n");
    EXPECT_EQ(1, repair().iStatus);
    EXPECT_EQ(m_runHeader + "Package \"files\" Installed\nPackage \"other\" Installing\n",
              readFile(m_runFile));
}

TEST_F(Repair, IsOldOrNewWheneverItIsKilled)
{
    const char *pCount = getenv("SETUP_KILLS");
    const std::string old(300000, 'o'), made(300000, 'c');
    std::mt19937 random(4711); // NOLINT: the same kills each time

    writeFile(medium.place + "/tar/dir/f", std::string(200000, 'f'));
    must("cd '" + medium.place + "/tar' && tar --sort=name -cf ../t.tar dir");
    for (int i = pCount ? atoi(pCount) : 30; i > 0; i--) {
        writeFile(medium.tree + "other/c", old);
        const pid_t iChild = fork();
        if (iChild == 0) {
            freopen("/dev/null", "w", stdout);
            execl(OVMEDIUM_PROGRAM, "ovmedium", "repair", medium.dest.c_str(), nullptr);
            _exit(127);
        }
        usleep(random() % 40000);
        kill(iChild, SIGKILL);
        waitpid(iChild, nullptr, 0);
        const std::string now = medium.installed("other/c");
        EXPECT_TRUE(now == old || now == made);
        const std::string member = medium.installed("dir/f");
        EXPECT_TRUE(member == "text of f" || member == std::string(200000, 'f'));
    }
    EXPECT_EQ(0, repair().iStatus);
    for (const std::string &name : medium.listing())
        EXPECT_EQ(std::string::npos, name.find(".ovmedium")) << name;
}

TEST_F(Repair, IsNotLedAstrayByLinksOfStrangers)
{
    const std::string victim = medium.scratch / "victim";

    if (geteuid() != 0)
        GTEST_SKIP() << "only root can make somebody else's links";
    must("mkdir '" + victim + "' && cp '" + medium.tree + "other/c' '" + victim +
         "/c' && chmod 644 '" + victim + "/c' && cd '" + medium.tree +
         "' && rm -r other && ln -s '" + victim + "' other && chown -h nobody other");
    const RunResult told = repair();
    EXPECT_EQ(1, told.iStatus);
    EXPECT_NE(std::string::npos, told.out.find("missing other/c\n")) << told.out;
    EXPECT_EQ(0644u, modeOf(victim + "/c"));

    must("cd '" + medium.tree + "' && rm other bin/a && ln -s '" + victim +
         "/c' bin/a && chown -h nobody bin/a");
    EXPECT_EQ(0, repair().iStatus);
    EXPECT_EQ("text of a", medium.installed("bin/a"));
    EXPECT_EQ(std::string(300000, 'c'), readFile(victim + "/c"));

    must("chown nobody '" + medium.tree + "other/c' && echo x >>'" + medium.tree + "other/c'");
    EXPECT_EQ(0, repair().iStatus);
    struct stat info = {}, nobody = {};
    must("touch '" + (medium.scratch / "n") + "' && chown nobody '" + (medium.scratch / "n") + "'");
    stat((medium.tree + "other/c").c_str(), &info);
    stat((medium.scratch / "n").c_str(), &nobody);
    EXPECT_EQ(nobody.st_uid, info.st_uid) << "it stays its owner's";
}
