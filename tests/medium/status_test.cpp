#include "medium/installation.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

using Status = Installation;

static const char s_caHead[] = "\n>>>>>>> SETUP Log File created on 2026-01-01-00h00 <<<<<<<\n"
                               "Starting Installation\n";

TEST_F(Status, TellsHowTheLastRunEnded)
{
    struct Row {
        const char *pLog; /* behind the header of a second run; null for no log */
        const char *pRun; /* packages of the run file; null for none */
        bool bRunLast;    /* the run file is younger than log and history */
        const char *pVerdict;
    };
    static const char s_caPending[] = "Package \"files\" Installing\n";
    static const Row s_aRows[] = {
        {"Installation Completed\n", nullptr, false, "complete"},
        {nullptr, nullptr, false, "complete"},
        {"KIVO: said Warning: nothing\nInstallation Completed\n", nullptr, false, "complete"},
        {"Warning: unpacking\nInstallation Completed\n", nullptr, false, "failed"},
        {"Error during the installation\n", nullptr, false, "failed"},
        {"Installation Completed\n", s_caPending, false, "failed"},
        {"Copyfile can't open file: a\nError during the installation\n", s_caPending, false,
         "failed"},
        {"", s_caPending, false, "unfinished"},
        {"Setup did not complete successfully\n", s_caPending, false, "unfinished"},
        {"Installation Completed\nRunning\n", nullptr, false, "unfinished"},
        {nullptr, s_caPending, true, "failed"},
        {nullptr, s_caPending, false, "unfinished"},
        {"Installation Completed\n", s_caPending, true, "failed"},
    };
    const std::string log = medium.tree + "Setup/setup.log", first = readFile(log);

    for (const Row &row : s_aRows) {
        SCOPED_TRACE(std::string(row.pLog ? row.pLog : "no log") + (row.pRun ? row.pRun : ""));
        fs::remove(m_runFile);
        fs::remove(log);
        if (row.pRun)
            writeFile(m_runFile, m_runHeader + row.pRun);
        if (row.pLog)
            writeFile(log, first + s_caHead + row.pLog);
        must("touch -d '1 hour ago' '" + medium.tree + "SetupFiles/.h.his'");
        if (row.pRun && !row.bRunLast)
            must("touch -d '2 hours ago' '" + m_runFile + "'");
        const RunResult told = run({"status", medium.dest});
        EXPECT_NE(std::string::npos, told.out.find(std::string("verdict ") + row.pVerdict + "\n"))
            << told.out << told.err;
        EXPECT_EQ(strcmp(row.pVerdict, "complete") == 0 ? 0 : 1, told.iStatus);
    }
}

TEST_F(Status, TellsWhatIsInstalled)
{
    const std::string source = "source " + medium.place + "\n";
    const RunResult told = run({"status", medium.tree});

    EXPECT_EQ("product Test Product\nversion 3.5\n" + source +
                  "package files\npackage archives\npackage other\nverdict complete\n"
                  "log Starting Installation\nlog Installation Completed\n",
              told.out);
    EXPECT_NE(
        std::string::npos,
        run({"status", "--format", "json", medium.dest}).out.find("\"verdict\": \"complete\""));
    EXPECT_EQ(2, run({"status", medium.place}).iStatus);

    /* a run file is an installation, also without the history */
    fs::remove(medium.tree + "SetupFiles/.h.his");
    writeFile(m_runFile, m_runHeader + "Package \"files\" Installed\nPackage \"other\" Installing\n"
                                       "Package \"archives\" Removing\n");
    const RunResult pending = run({"status", medium.dest});
    EXPECT_NE(
        std::string::npos,
        pending.out.find("package files\npackage archives\npending other\npending archives\n"));
    EXPECT_EQ(1, pending.iStatus);

    const int iFolder = open((medium.tree + "SetupFiles").c_str(), O_RDONLY | O_DIRECTORY);
    ASSERT_EQ(0, flock(iFolder, LOCK_EX));
    EXPECT_NE(std::string::npos, run({"status", medium.dest}).out.find("verdict running\n"));
    close(iFolder);
}

TEST_F(Status, VerifyAndRepairKnowWhichProduct)
{
    const std::string other = medium.scratch / "other";

    must("cp -r '" + medium.place + "' '" + other + "'");
    medium.describe("Package \"x\" \"\"\nCopy \"a\" \"\" 9 0644\nSuite \"X\" x\nConfigBegin\n"
                    "3 CusDlg \"\" \"\" \"\" 1 4\n4 Suite \"X\" \"\" \"\" 1\nConfigEnd\n",
                    replaced(replaced(usualHeader(), "prod", "second"), "Test", "Second"));
    ASSERT_EQ(0, medium.install().iStatus);
    EXPECT_EQ(2, run({"verify", medium.dest}).iStatus) << "two of them";
    EXPECT_EQ("1 checked, 0 different\n", run({"verify", medium.dest + "/second"}).out);
    EXPECT_EQ("1 checked, 0 different\n",
              run({"verify", "--medium", medium.place, medium.dest}).out);
    EXPECT_EQ("16 checked, 0 different\n", run({"verify", "--medium", other, medium.dest}).out);
    EXPECT_EQ(2, run({"verify", "--medium", other, medium.dest + "/second"}).iStatus);

    /* what the medium lacks cannot be compared, nor brought back */
    fs::remove(other + "/c");
    fs::remove(other + "/t.tar");
    const RunResult lacking = run({"verify", "--medium", other, medium.dest});
    EXPECT_EQ(2, lacking.iStatus);
    EXPECT_NE(std::string::npos, lacking.err.find(other + "/c: No such file"));
    EXPECT_NE(std::string::npos, lacking.err.find(other + "/t.tar: "));
    fs::remove(medium.tree + "z.bz2");
    EXPECT_EQ(2, run({"repair", "--medium", other, medium.dest}).iStatus);
    EXPECT_TRUE(medium.has("z.bz2"));
}

/* What a script's empty variable or a slip of the fingers makes of a call does nothing. */
TEST_F(Status, RefusesWrongCalls)
{
    struct Row {
        std::vector<std::string> words;
        int iStatus;
        const char *pTold;
    };
    const std::string file = medium.scratch / "file", nowhere = medium.scratch / "nowhere";
    const Row aRows[] = {
        {{}, 2, "a command is needed"},
        {{"aply"}, 2, "aply"},
        {{"plan", "--dest", "", medium.place}, 2, "--dest: an empty name"},
        {{"verify", ""}, 2, "DEST: an empty name"},
        {{"verify", "\x1b[2J"}, 2, "no installation in \\x1b[2J\n"},
        {{"repair", medium.dest, ""}, 2, "PATH: an empty name"},
        {{"status", "--format", "xml", medium.dest}, 2, "'xml' is no format"},
        {{"status", "--format", "1", medium.dest}, 2, "'1' is no format"},
        {{"plan", "--dest", file, medium.place}, 1, "file is a file\n"},
        {{"plan", "--dest", std::string(300, 'x'), medium.place}, 1, ": File name too long\n"},
        {{"plan", "--dest", nowhere, medium.place}, 1, "leads to no directory\n"},
    };

    writeFile(file, "");
    fs::create_symlink("none", nowhere);
    for (const Row &row : aRows) {
        const RunResult told = run(row.words);
        EXPECT_EQ(row.iStatus, told.iStatus) << told.err;
        EXPECT_NE(std::string::npos, (told.out + told.err).find(row.pTold)) << told.out << told.err;
    }
}

/* Who cannot write the history would install it anew instead of changing it. */
TEST_F(Status, OfAnotherIsNotTakenForNothing)
{
    const std::vector<std::vector<std::string>> calls = {
        {"plan", "--dest", medium.dest, medium.place},
        {"apply", "--noroot", "--suite", "T", "--dest", medium.dest, medium.place}};

    must("chmod 444 " + medium.tree + "SetupFiles/.h.his");
    for (std::vector<std::string> words : calls) {
        words.insert(words.begin(), OVMEDIUM_PROGRAM);
        if (getuid() == 0) /* which may write it otherwise */
            words.insert(words.begin(), {"/usr/bin/setpriv", "--bounding-set=-dac_override"});
        const RunResult told = medium.start(words);
        EXPECT_EQ(2, told.iStatus) << told.out;
        EXPECT_NE(std::string::npos, told.err.find("cannot be changed: Permission denied\n"))
            << told.err;
    }
    EXPECT_EQ(differing("", 0), verify().out);
}
