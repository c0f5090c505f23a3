#include <gtest/gtest.h>

#include <iterator>
#include <unistd.h>

#include "runs/run.h"

TEST(Install, PrintsSpinnerAndStatusInEveryLocale)
{
    Medium medium;
    std::string locales = medium.scratch / "locales";

    fs::create_directories(locales);
    if (system(("localedef -i de_DE -f UTF-8 " + locales + "/de_DE.UTF-8").c_str()) == 0)
        medium.environment.insert(medium.environment.begin(), /* numbers keep their point */
                                  {"LOCPATH=" + locales, "LC_ALL=de_DE.UTF-8"});
    medium.file("a", std::string(200000, 'a'));
    medium.describe(onePackage("Copy \"a\" \"\" 200000 0644\n"),
                    usualHeader("InstallDirectory /nowhere/at/all\nNoChestRC\n"));
    RunResult result = medium.install();
    size_t status = result.out.find("\nStatus:");

    /* Seven lines behind the header. */
    EXPECT_EQ(result.out.substr(0, status), "Parsing config file [|]\rParsing config file [/]\r"
                                            "Parsing config file [-]\rParsing config file [\\]\r"
                                            "Parsing config file [|]\rParsing config file [/]\r"
                                            "Parsing config file [-]\r");
    EXPECT_NE(result.out.find("Status:100.00%\r\n"), std::string::npos) << result.out;
    EXPECT_EQ(result.out.find('\n', status + 1), result.out.size() - 1);
    EXPECT_FALSE(fs::exists(medium.scratch / "home/.auxchestrc"));
    EXPECT_TRUE(medium.has("a")) << "the option wins over the description";
}

TEST(Install, SecondRunDoesNothingAndRecordsAgain)
{
    Medium medium;

    medium.file("a", "first");
    medium.describe(onePackage("Copy \"a\" \"\" 5 0644\n"));
    medium.environment.push_back("OVINST_DEBUG_MODE=0"); /* its presence counts */
    std::string size = std::to_string(readFile(medium.place + "/cdinst.dat").size() + 5);
    ASSERT_EQ(medium.install().err, "Total size=5\nTotal size +  cdinst=" + size + "\n");
    const std::string history = "HistoryFileVersion 2\nTest Product\n3.5\n" +
                                fs::canonical(medium.place).string() +
                                "\nPackage \"all\" Installed\nPackage \"all\" Installed\n";
    EXPECT_EQ(medium.history(), history);
    EXPECT_EQ(medium.installed("cdinst.dat"), readFile(medium.place + "/cdinst.dat"));
    EXPECT_NE(medium.log().find("\nStarting Installation\nInstallation Completed\n"),
              std::string::npos);
    EXPECT_EQ(readFile(medium.scratch / "home/.auxchestrc"),
              "\nsinclude " + medium.dest + "/.title\n");
    medium.file("a", "other");
    RunResult second = medium.install();

    EXPECT_EQ(second.iStatus, 0);
    EXPECT_EQ(medium.installed("a"), "first");
    EXPECT_EQ(medium.history(), history);
    EXPECT_EQ(medium.log().find(">>>>>>> SETUP"), 1u);
    EXPECT_NE(medium.log().find(">>>>>>> SETUP", 10), std::string::npos);
}

TEST(Install, FailsBeforeAnythingIsTouched)
{
    static const char *const aaRows[][2] = {
        {"Package \"p\" \"\"\nSuite \"S\" p\n",
         "Invalid arguments to CommandLineInstall\nError: during installation\n"},
        {"ConfigBegin\n3 CusDlg \"\" \"\" \"\" 0\nConfigEnd\n",
         "Error: during setting installation size\n"},
        {"Suite \"S\" nobody\n",
         "Error: there is no package named 'nobody'\nError: reading ./cdinst.dat\n"},
    };

    for (const auto &[pBody, pError] : aaRows) {
        Medium medium;
        medium.describe(pBody);
        RunResult result =
            medium.run({"-cmdline", "-noroot", "-from", "./cdinst.dat", "-dest", medium.dest});

        EXPECT_EQ(result.iStatus, 1);
        EXPECT_NE(result.err.find(pError), std::string::npos) << result.err;
        EXPECT_FALSE(fs::exists(medium.dest));
    }
}

TEST(Options, AreReadLeftToRight)
{
    const std::string stamp = "Setup Version=0311-11:57\n";
    const std::pair<std::string, std::string> rows[] = {
        {"-version", stamp},
        {"-noroot -v", stamp},
        {"-bad -v", "Error: invalid option '-bad'\n"},
        {"-destination x", "Error: invalid option '-destination'\n"},
        {"-d x", "Error: invalid option '-d'\n"},
        {"-dest", "Error: option -dest requires an argument\n"},
        {"-cmdline -from", "Error: option -from requires an argument\n"},
        {"-cmdline -noroot", "Error: reading "},
        {"-noroot -dest x",
         "Error: can't open the display, run setup with -cmdline where there is none\n"},
        {"-from " + std::string(5000, 'x') + " -v",
         "Error: OV_instSetCdinstDirectory fatal error\n" + stamp},
    };
    Medium medium; /* without a description */

    for (const auto &[arguments, error] : rows) {
        std::istringstream words(arguments);
        RunResult result = medium.run({std::istream_iterator<std::string>(words), {}});

        EXPECT_EQ(result.iStatus, 1);
        EXPECT_EQ(result.err.substr(0, error.size()), error);
    }
}

TEST(Options, OnlyRootMayInstallUnlessTold)
{
    Medium medium;

    if (getuid() != 0)
        GTEST_SKIP() << "needs root to become somebody else";
    medium.file("a", "a");
    medium.describe(onePackage("Copy \"a\" \"\" 1 0644\n"));
    must("chmod -R a+rwX " + medium.scratch.path.string());
    must("cp " SETUP_PROGRAM " " + medium.place + "/program && chmod 755 " + medium.place +
         "/program");
    const auto run = [&](const std::string &environment, const std::string &option) {
        fs::remove_all(medium.dest);
        const std::string command =
            "cd " + medium.place +
            " && setpriv --reuid 65534 --clear-groups env HOME=" + (medium.scratch / "home") +
            environment + " ./program -cmdline -dest " + medium.dest + option +
            " 2> ../stderr > ../stdout";
        const int iStatus = system(command.c_str());
        return std::to_string(WEXITSTATUS(iStatus)) + medium.installed("a");
    };

    EXPECT_EQ(run("", ""), "1");
    EXPECT_EQ(readFile(medium.scratch / "stderr"),
              "Error: you need to be root to run this program\n");
    EXPECT_EQ(run(" OVINST_NOROOT=", ""), "0a");
    EXPECT_EQ(run("", " -noroot"), "0a");
}

TEST(Install, CommandsRunInAFixedEnvironment)
{
    Medium medium;

    medium.file("tool",
                "#!/bin/sh\necho \"$PATH|$LD_LIBRARY_PATH|$OV_HOME\" >> $OVTEST\necho said\n");
    medium.describe(
        onePackage("Copy \"tool\" \"Application/mainwin/mw/bin-amd64_linux/mwperl\" 1 0755\n"
                   "RegData \"K\" \"n\" \"k\" \"v\"\n"));
    medium.environment.insert(medium.environment.end(),
                              {"DISPLAY=:7", "LD_LIBRARY_PATH=/planted",
                               "OVTEST=" + (medium.scratch / "calls"),
                               "OVINST_REDIRECT=> " + (medium.scratch / "said")});
    EXPECT_EQ(medium.install().err, "");
    EXPECT_EQ(readFile(medium.scratch / "calls"),
              "/usr/local/sbin:/usr/sbin:/sbin:/bin:/sbin:/usr/bin:/usr/sbin:/usr/local/bin:"
              "/usr/local/sbin:/usr/bin/X11:/usr/X11R6/bin:/root/bin||" +
                  medium.tree + "\n");
    EXPECT_EQ(readFile(medium.scratch / "said"), "said\n");
}
