#include <gtest/gtest.h>

#include "engine/engineTest.h"
#include "engine/history.h"

static const char s_caFile[] = "D/SetupFiles/.Product.his";
static const char s_caHeader[] = "HistoryFileVersion 2\nProduct\n3.5\n@/medium\n";

struct History : EngineTest {
    void SetUp() override
    {
        EngineTest::SetUp();
        loadTree();
    }
    /* Two packages have the same name. */
    void loadTree()
    {
        load("Package 'a' ''\nPackage 'b' ''\nPackage 't' ''\nPackage 't' ''\nSuite 'A' a\n"
             "Suite 'AB' a b\nSuite 'Empty'\nSuite 'T' t\nConfigBegin\n2 CusDlg '' '' '' 1 4 5\n"
             "3 CusDlg '' '' '' 1 6\n4 Suite 'A' '' '' 1\n5 Suite 'AB' '' '' 1\n"
             "6 Suite 'Empty' '' '' 1\n7 Suite 'A' '' '' 0\nConfigEnd\n");
    }
    int check(int iConfig = 2)
    {
        return OV_UpdateSuiteHistory(CDInstPtr, config(iConfig), CDInstPtr->pSuiteHead,
                                     m_dest.c_str(), "Product", "3.5");
    }
};

TEST_F(History, OnlyASoundHeaderCounts)
{
    const auto taken = [this](const std::string &content) {
        int iResult = 0;
        loadTree();
        put(s_caFile, replaced(content, "xP", std::string(256, 'x') + "P"));
        const std::string out = printed([&] { iResult = check(); });
        return shortened(std::to_string(iResult) + " " + CDInstPtr->pSourceDir + " " + out) +
               states();
    };
    std::string table = R"(
        HistoryFileVersion  2 x\nThe Product of us\n3.9.1\n/source => 1 /source 3:01 6:01 +
        HistoryFileVersion 1\nProduct\n3.5\n/source\n              => BAD
        HistoryFileVersion 2\nproduct\n3.5\n/source\n              => BAD
        HistoryFileVersion 2\nxProduct\n3.5\n/source\n             => BAD
        HistoryFileVersion 2\nProduct\n3.5\n\nPackage "a" Yes\n    => BAD
        HistoryFileVersion 2\nProduct\n3.5\n                       => BAD
                                                                   => BAD)";
    expectRows(taken, replaced(table, "BAD",
                               "0 M/ History file empty, corrupt, or out-of-date\\n"
                               "2:01 3:01 4:01 5:01 6:01 +"));
}

/* The configuration, then the lines. */
TEST_F(History, MarksPackagesSuitesAndTheGivenConfigurationOnly)
{
    const auto marked = [this](const std::string &text) {
        loadTree();
        put(s_caFile, full(s_caHeader) + text.substr(1));
        EXPECT_EQ("", printed([&] { EXPECT_EQ(1, check(text[0] - '0')); }));
        EXPECT_EQ(package("a")->iInstalled, suite("A")->iState);
        EXPECT_EQ(1, suite("Empty")->iState) << "nothing of it is missing";
        return states();
    };
    expectRows(marked, R"(
        2Package x "a" "b"\n                       => 2:11 3:01 4:11 6:01 +a
        2\n\n Package "a" y                        => 2:11 3:01 4:11 6:01 +a
        2Package "b" x\nPackage "a" y              => 2:11 3:01 4:11 5:11 6:01 +ab
        2Package "t" Installed\n                   => 3:01 6:01 +tt
        2Package "c" x\nPackages "a" x\n"a" "a"    => 3:01 6:01 +
        2Package a\nPackage "a\nPackage\n          => 3:01 6:01 +
        7Package "a" Installed\n                   => 2:01 3:01 4:01 5:01 6:01 7:11 +a)");
    EXPECT_EQ(0, OV_UpdateSuiteHistory(CDInstPtr, config(2), nullptr, m_dest.c_str(), "", ""));
    EXPECT_EQ(0, OV_UpdateSuiteHistory(CDInstPtr, config(2), suite("A"), "", "", ""));
}

/* The product's version and the recorded line; a lone newline is too short to lose it. */
TEST_F(History, OtherVersionsAreWarnedOfAndAccepted)
{
    const auto warning = [](const std::string &versions) {
        const std::string recorded = versions.substr(versions.find('|') + 1);
        return printed([&] {
            EXPECT_EQ(1, CompareProductVersions("%s", versions.c_str(), recorded.c_str()));
        });
    };
    expectRows(warning, R"(
        beta|0 alpha\n =>
        10|9.9\n       => Setup has detected an older version of %s (9.9)\n
                          Before installing, you should select Remove All.Returning OK\n
        3.5|4 100%d\n  => Setup has detected a newer version of %s (4 100%d)\n
                          It is highly recommended that you not continue.Returning OK\n
        1|\n           => Setup has detected an older version of %s (\n)\n
                          Before installing, you should select Remove All.Returning OK\n)");
}

/* Source directory, running directory, history file; result, root destination, running directory
 * (which is cut itself). The directory that holds the source directory counts. */
TEST_F(History, TreesAroundTheMediumAreFound)
{
    const auto found = [this](const std::string &words) {
        std::string source, running, history;
        std::istringstream(
            full(replaced(replaced(words, "/P", "/the.product"), ".H", ".Product.his"))) >>
            source >> running >> history;
        loadTree();
        fs::create_directories(source);
        (void)OV_instSetSourceDirectory(source.c_str());
        (void)OV_instSetRunningDirectory(running.c_str());
        writeFile(history, full(s_caHeader));
        const std::string result = std::to_string(check()) + " ",
                          root = OV_instGetRootDestinationDirectory();
        fs::remove_all(full("@/x"));
        fs::remove_all(full("@/y"));
        return replaced(shortened(result + root + " " + OV_instGetRunningDirectory()),
                        "/the.product", "/P");
    };
    expectRows(found, R"(
        @/x/P/cd/ @/ @/x/P/SetupFiles/.H => 1 @/x/ @/
        @/x/P/cd/ @/ @/x/P/.H            => 1 @/x/ @/
        @/x/P/cd/ @/y/P/ @/y/P/.H        => 0 @/root/ @/y/P/
        @/x/P/ @/ @/x/P/SetupFiles/.H    => 0 @/root/ @/
        @/x/P/ @/x/P/ @/x/P/.H           => 1 @/x/ @/x/
        @/x/ @/y/P/z/ @/y/P/z/.H         => 1 @/y/ @/y/
        @/x/ @/y/P/ @/y/.H               => 0 @/root/ @/y/P/)");
}
