#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "runs/run.h"

/* Three packages of a file each, and what a run that was killed leaves. */
struct Unfinished : testing::Test {
    Medium medium;
    const std::string m_runFile = medium.tree + "SetupFiles/.h.run",
                      m_header = "RunFileVersion 1\nTest Product\n3.5\n" + medium.place + "\n";

    void SetUp() override
    {
        std::string packages, suites;
        for (const char *pName : {"a", "b", "c"}) {
            medium.file(pName, std::string("text of ") + pName);
            packages += std::string("Package \"") + pName + "\" \"\"\nCopy \"" + pName + "\" \"d/" +
                        pName + "\" 9 0644\n";
            suites += std::string("Suite \"S") + pName + "\" " + pName + "\n";
        }
        medium.describe(offering(packages + suites, {"Sa", "Sb", "Sc"}));
        ASSERT_EQ(0, medium.install().iStatus);
    }
    void leave(const std::string &runFile)
    {
        writeFile(m_runFile, runFile);
        for (const char *pHalf : {"d/a", "d/b"})
            writeFile(medium.tree + pHalf, "te");
    }
    std::string packages() /* of the history, each once */
    {
        std::string found;
        for (const char *pName : {"a", "b", "c"})
            if (medium.history().find(std::string("Package \"") + pName + "\" Installed\n") !=
                std::string::npos)
                found += pName;
        return found;
    }
};

TEST_F(Unfinished, IsCompletedByTheNextRun)
{
    for (const bool bHistoryLost : {false, true}) {
        SCOPED_TRACE(bHistoryLost);
        leave(m_header + "Package \"a\" Installing\nPackage \"b\" Removing\n"
                         "Package \"c\" Installed\n");
        if (bHistoryLost)
            fs::remove(medium.tree + "SetupFiles/.h.his");
        fs::remove(medium.tree + "d/c"); /* by the user: not what is to be completed */
        ASSERT_EQ(0, medium.install().iStatus);
        EXPECT_EQ("text of a", medium.installed("d/a"));
        EXPECT_FALSE(medium.has("d/b"));
        EXPECT_FALSE(medium.has("d/c"));
        EXPECT_EQ("ac", packages());
        EXPECT_FALSE(fs::exists(m_runFile));
        const auto before = medium.listing();
        ASSERT_EQ(0, medium.install().iStatus);
        EXPECT_EQ(before, medium.listing());
    }
}

TEST_F(Unfinished, OnlyASoundRunFileCounts)
{
    const std::string last = "Package \"a\" Installing\n";

    for (const std::string &text :
         {std::string(), std::string("RunFileVersion 1\nTest Product\n3.5\n"),
          replaced(m_header, "Version 1", "Version 2") + last,
          replaced(m_header, "Version 1", "Version 1 ") + last,
          replaced(m_header, "Test", "Another") + last}) {
        SCOPED_TRACE(text);
        leave(text);
        ASSERT_EQ(0, medium.install().iStatus);
        EXPECT_EQ("te", medium.installed("d/a")) << "the history says that it is there";
        EXPECT_EQ("abc", packages());
    }
    leave(m_header + "Package \"b\" Installed \nPackages\nPackage \"c\"\n" +
          last.substr(0, last.size() - 1)); /* as it is where nobody else wrote it */
    ASSERT_EQ(0, medium.install().iStatus);
    EXPECT_EQ("a", packages());
}

TEST_F(Unfinished, TellsWhatIsPendingAfterAFailure)
{
    struct {
        const char *pOperation; /* added to package b */
        int iStrict;            /* the status where it is asked for */
        std::string log;
    } aCases[] = {
        {"Mkdir \"x\" 0755\n", 0, "Installation Completed\n"},
        {"Copy \"gone\" \"\" 1 0644\n", 1,
         "Copyfile can't open file: gone\nError during the installation\n"},
        {"CopyZ \"gone\" \"\" 1 0644\n", 1,
         "Copyfile can't open file: gone\nWarning: CopyZ of package 'b' failed\n"
         "Installation Completed\n"},
    };

    for (const auto &test : aCases) {
        SCOPED_TRACE(test.pOperation);
        fs::remove_all(medium.dest);
        std::string body = readFile(medium.place + "/cdinst.dat");
        const size_t at = body.find("Package \"c\"");
        medium.describe(body.substr(0, at) + test.pOperation + body.substr(at), "");
        EXPECT_EQ(0, medium.install().iStatus);
        EXPECT_EQ("\n" + test.log,
                  "\n" + medium.log().substr(medium.log().rfind("Starting Installation\n") +
                                             sizeof "Starting Installation"));
        EXPECT_EQ(test.iStrict ? m_header + "Package \"a\" Installed\nPackage \"b\" Installing\n"
                                            "Package \"c\" Installed\n"
                               : "",
                  readFile(m_runFile));
        medium.environment.push_back("OVINST_STRICT=");
        fs::remove_all(medium.dest);
        EXPECT_EQ(test.iStrict, medium.install().iStatus);
        medium.environment.pop_back();
        medium.describe(body, "");
    }
}

TEST_F(Unfinished, AHistoryThatIsNotBelievedIsAWarning)
{
    medium.environment.push_back("OVINST_STRICT=");
    ASSERT_EQ(0, medium.install().iStatus);
    fs::permissions(medium.tree + "SetupFiles/.h.his", fs::perms(0666));
    const RunResult result = medium.install();
    EXPECT_EQ(1, result.iStatus);
    EXPECT_EQ(0u, result.err.find("Warning: ")) << result.err;
}

/* One command registers the modules of all packages. */
TEST_F(Unfinished, ModulesThatWereNotRegisteredArePendingTogether)
{
    const std::string tool = "Application/mainwin/mw/bin-amd64_linux/mwperl",
                      calls = medium.scratch / "calls";
    std::string body = readFile(medium.place + "/cdinst.dat");

    for (const std::string name : {"b", "c"})
        body = replaced(body, "Package \"" + name + "\" \"\"\n",
                        "Package \"" + name + "\" \"\"\nSelfReg \"" + name + ".so\"\n");
    medium.describe(replaced(body, "\"d/a\" 9 0644", "\"" + tool + "\" 9 0755"), "");
    medium.environment.push_back("DISPLAY=:7");
    medium.file("a", "#!/bin/sh\n[ -e " + calls + " ] && echo \"$@\" >> " + calls + "\n");
    fs::remove_all(medium.dest);
    EXPECT_EQ(0, medium.install().iStatus);
    EXPECT_EQ(m_header + "Package \"a\" Installed\nPackage \"b\" Installing\n"
                         "Package \"c\" Installing\n",
              readFile(m_runFile));
    writeFile(calls, "");
    EXPECT_EQ(0, medium.install().iStatus);
    EXPECT_FALSE(fs::exists(m_runFile));
    EXPECT_NE(std::string::npos,
              readFile(calls).find(medium.tree + "b.so " + medium.tree + "c.so"));
}

/* What can never be removed stands in for a file that cannot be just now. */
TEST_F(Unfinished, WhatCannotBeRemovedStaysPending)
{
    const std::string body = readFile(medium.place + "/cdinst.dat"), up = "../../../../../../../..",
                      kept = m_header + "Package \"b\" Removing\nPackage \"c\" Installed\n";

    leave(m_header + "Package \"a\" Removing\nPackage \"b\" Removing\nPackage \"c\" Installed\n");
    medium.environment.push_back("OVINST_STRICT=");
    medium.describe(replaced(replaced(body, "\"d/b\"", "\"" + up + "/proc/self/status\""),
                             "Suite \"Sb\" b", "Suite \"Sb\" a b"),
                    "");
    for (const bool bPartLeft : {false, true}) { /* of the suite: a goes the first time */
        SCOPED_TRACE(bPartLeft);
        EXPECT_EQ(1, medium.install().iStatus);
        EXPECT_NE(std::string::npos,
                  medium.log().find("\nWarning: " + medium.tree + up +
                                    "/proc/self/status could not be removed: Operation not "
                                    "permitted\nInstallation Completed\n"));
        EXPECT_EQ(kept, readFile(m_runFile));
        fs::remove(medium.tree + "Setup/setup.log");
    }
    medium.describe(replaced(body, "Suite \"Sb\" b", "Suite \"Sb\" a b"), "");
    EXPECT_EQ(0, medium.install().iStatus);
    EXPECT_FALSE(medium.has("d/a") || medium.has("d/b") || fs::exists(m_runFile));
    EXPECT_EQ("c", packages());
}

TEST_F(Unfinished, AnotherRunIsToldAndChangesNothing)
{
    const int iFolder = open((medium.tree + "SetupFiles").c_str(), O_RDONLY | O_DIRECTORY);
    const std::string log = medium.log();
    const auto before = medium.listing();

    ASSERT_EQ(0, flock(iFolder, LOCK_EX));
    RunResult result = medium.install();
    EXPECT_EQ(1, result.iStatus);
    EXPECT_NE(std::string::npos, result.out.find("Another setup is working in:\n" + medium.tree))
        << result.out;
    EXPECT_EQ(log, medium.log());
    EXPECT_EQ(before, medium.listing());
    close(iFolder);
    EXPECT_EQ(0, medium.install().iStatus);
}
