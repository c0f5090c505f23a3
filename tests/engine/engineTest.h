/* What the tests of the engine share: a medium and a destination in a scratch directory, models of
 * description texts, and everything process-wide put back afterwards. In texts "M/" stands for the
 * medium, "D/" for the destination and "@" for the scratch directory; descriptions are written with
 * single quotes. */
#ifndef OVINST_TESTS_ENGINE_ENGINETEST_H
#define OVINST_TESTS_ENGINE_ENGINETEST_H

#include <csignal>
#include <cstring>
#include <unistd.h>
#include <vector>

#include "description/configLines.h"
#include "description/reader.h"
#include "engine/driver.h"
#include "engine/setupState.h"
#include "support.h"
#include "ut/OVinstLogfile.h"
#include "ut/debugLevel.h"
#include "ut/guard.h"

inline std::string trimmed(const std::string &text)
{
    const size_t first = text.find_first_not_of(' '), last = text.find_last_not_of(' ');

    return first == text.npos ? "" : text.substr(first, last - first + 1);
}

/* A table as text, one row a line: what goes into work, "=>", and what has to come out, all with
 * newlines escaped. A line without "=>" continues the one above. */
template <typename Work> void expectRows(Work work, const std::string &table)
{
    const auto side = [](const std::string &text) {
        return replaced(replaced(trimmed(text), "\\n", "\n"), "\\r", "\r");
    };
    std::istringstream in(table);
    std::vector<std::string> rows;
    for (std::string line; std::getline(in, line);)
        if (line.find("=>") != line.npos)
            rows.push_back(line);
        else if (!rows.empty())
            rows.back() += trimmed(line);
    for (const std::string &row : rows) {
        const size_t arrow = row.find("=>");
        EXPECT_EQ(side(row.substr(arrow + 2)), work(side(row.substr(0, arrow)))) << row;
    }
}

struct EngineTest : testing::Test {
    Scratch m_scratch;
    const std::string m_medium = m_scratch / "medium/", m_root = m_scratch / "root/",
                      m_dest = m_root + "the.product/";
    Records m_pipe;
    const std::string m_home = getenv("HOME") ? getenv("HOME") : "/";
    const fs::path m_before = fs::current_path();

    void SetUp() override
    {
        fs::create_directories(m_medium);
        setenv("HOME", m_scratch.path.c_str(), 1);
        unsetenv("DISPLAY");
        unsetenv("OV_LOCATION");
    }
    void TearDown() override
    {
        OV_instFreeCDinst(CDInstPtr);
        CDInstPtr = nullptr;
        OV_instParsingConfiguration = 0;
        OV_instSetGuardedRoot(nullptr);
        OV_instSetDebugLevel(0);
        OV_instSetRedirect("> /dev/null");
        (void)OV_instSetRunningDirectory("");
        SetProgressBarTotalSize(0);
        g_caLogName[0] = '\0';
        signal(SIGPIPE, SIG_DFL);
        signal(SIGCHLD, SIG_DFL);
        setenv("HOME", m_home.c_str(), 1);
        unsetenv("DISPLAY");
        unsetenv("OV_LOCATION");
        fs::current_path(m_before);
    }

    std::string shortened(const std::string &text) const
    {
        return replaced(replaced(replaced(text, m_scratch.path, "@"), "@/medium/", "M/"),
                        "@/root/the.product/", "D/");
    }
    std::string full(const std::string &text) const /* never twice */
    {
        return replaced(replaced(replaced(text, "M/", "@/medium/"), "D/", "@/root/the.product/"),
                        "@", m_scratch.path);
    }
    std::string records() { return shortened(m_pipe.take()); }
    void put(const std::string &path, const std::string &text) { writeFile(full(path), text); }
    std::string got(const std::string &path) const { return shortened(readFile(full(path))); }
    bool exists(const std::string &path) const { return access(full(path).c_str(), F_OK) == 0; }
    unsigned modeOf(const std::string &path) const { return ::modeOf(full(path)); }

    /* Makes the description of these lines the current one; the tests' modules are on its medium.
     */
    void load(const std::string &body)
    {
        OV_instFreeCDinst(CDInstPtr);
        put("M/cdinst.dat", "SetupVersion 1\nProductName Product\nProductVersion 3.5\n"
                            "ProductDirectory the.product\nLogFile\n" +
                                replaced(body, "'", "\""));
        if (!exists("M/SetupFiles"))
            fs::create_symlink(TEST_MODULE_DIR, m_medium + "SetupFiles");
        CDInstPtr = OV_instReadCDinst(full("M/cdinst.dat").c_str(), nullptr);
        ASSERT_NE(nullptr, CDInstPtr) << body;
        ASSERT_EQ(0, OV_instSetRootDestination(m_root.c_str()));
    }
    /* A pass over the packages of a suite: its result, what was printed, the records. */
    std::string runSuite(const char *pSuite, OV_InstMode iMode,
                         OV_CustomPass ovPass = OV_CUSTOM_INIT)
    {
        int iResult = 0;
        const std::string out = printed([&] {
            iResult = OV_instInstallPackList(suite(pSuite)->pPackHead, m_medium.c_str(),
                                             m_dest.c_str(), m_pipe.pStream, ovPass, iMode, pSuite);
        });
        return trimmed(std::to_string(iResult) + " " + shortened(out) + records());
    }
    /* The same for a suite S of a package p of these lines. */
    std::string runLines(const std::string &lines, OV_InstMode iMode = OV_INST_INSTALL_MODE,
                         OV_CustomPass ovPass = OV_CUSTOM_INIT)
    {
        load("Package 'p' ''\n" + lines + "\nSuite 'S' p\n");
        return runSuite("S", iMode, ovPass);
    }

    /* Runs work in a process of its own, for state that nothing can put back; a fresh one has run
     * nothing before. What failed there is passed on by way of standard error. */
    template <typename Work> void inChild(Work work, bool bFresh = false)
    {
        GTEST_FLAG_SET(death_test_style, bFresh ? "threadsafe" : "fast");
        EXPECT_EXIT((work(), endChild(bFresh)), testing::ExitedWithCode(0), "");
        GTEST_FLAG_SET(death_test_style, "fast");
    }
    [[noreturn]] void endChild(bool bFresh)
    {
        const auto *pResult = testing::UnitTest::GetInstance()->current_test_info()->result();
        for (int i = 0; i < pResult->total_part_count(); i++)
            fprintf(stderr, "%s\n", pResult->GetTestPartResult(i).message());
        if (bFresh)
            fs::remove_all(m_scratch.path); /* it has made one of its own */
        _exit(HasFailure() ? 1 : 0);
    }

    static _OV_InstConfigList *config(int iId) { return OV_instGetConfigFromId(CDInstPtr, iId); }
    static _OV_InstSuiteList *suite(const char *pName)
    {
        return OV_instGetSuiteFromName(CDInstPtr, pName);
    }
    static _OV_InstPackage *package(const char *pName)
    {
        return OV_instGetPackageFromName(CDInstPtr, pName);
    }
    /* Sets states of configurations, "id:installed selected" words such as "3:01 4:11", and marks
     * packages installed by their one-letter names behind a "+". */
    static void setStates(const std::string &words)
    {
        std::istringstream in(words);
        for (std::string word; in >> word;)
            if (word[0] != '+') {
                const char *pStates = strchr(word.c_str(), ':');
                config(std::stoi(word))->iInstalled = pStates[1] - '0';
                config(std::stoi(word))->iSelected = pStates[2] - '0';
            } else {
                for (size_t i = 1; i < word.size(); i++)
                    package(word.substr(i, 1).c_str())->iInstalled = 1;
            }
    }
    /* The same words, without "00" states, in file order. */
    static std::string states()
    {
        std::ostringstream out;
        for (auto *pConfig = CDInstPtr->pConfigHead; pConfig; pConfig = pConfig->pNext)
            if (pConfig->iInstalled || pConfig->iSelected)
                out << pConfig->iId << ':' << pConfig->iInstalled << pConfig->iSelected << ' ';
        out << '+';
        for (auto *pNode = CDInstPtr->pPackageHead; pNode; pNode = pNode->pNext)
            out << (pNode->pPackage->iInstalled ? pNode->pPackage->pName : "");
        return out.str();
    }
};

#endif
