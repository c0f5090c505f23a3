#include <gtest/gtest.h>

#include <sys/resource.h>

#include "engine/customFunc.h"
#include "engine/engineTest.h"
#include "engine/fileOps.h"
#include "engine/mediaPrompt.h"
#include "ut/OVinstFileUtils.h"

struct FileOps : EngineTest {
    void SetUp() override
    {
        EngineTest::SetUp();
        put("M/sub/f", "content");
        put("M/big", std::string(2 * OV_COPY_BLOCK + 1, 'b'));
        put("M/empty", "");
        put("D/file", "kept");
        put("D/dir/x", "");
        fs::create_symlink("nowhere", m_dest + "dangling");
    }
    int copy(const char *pName, const char *pTarget = "D/x")
    {
        return OV_instCopyFile(pName, full(pTarget).c_str(), 0644, 1, m_pipe.pStream, 0);
    }
};

TEST_F(FileOps, CopyReportsEveryBlockOrWhatFailed)
{
    const auto row = [this](const std::string &line) { return runLines(line); };
    expectRows(R"(
        Copy 'big' 'new/deep/big' 9 0640 => 0 +10240 M/big D/new/deep/big\n
                                            +10240 M/big D/new/deep/big\n+1 M/big D/new/deep/big\n
        Copy 'sub/f' 'dir/x' 9 04751     => 0 +7 M/sub/f D/dir/x\n
        Copy 'empty' '' 9                => 0
        Copy '' 'x' 9                    => 1 -1 Copyfile invalid parameters\n
        Copy 'no' 'x' 9                  => 1 Copyfile can't open file: noReturning Continue\n
        Copy 'sub' 'x' 9                 => 1 -1 Copyfile failed reading file M/sub\n
        Copy 'sub/f' 'file/x' 9          => 1 -1 Copyfile can't create destination directory for:\n
                                            D/file/x\n
        Copy 'sub/f' 'dir' 9             => 1 -1 Copyfile can't create file D/dir\n)",
               row);
    EXPECT_EQ(got("M/big"), got("D/new/deep/big"));
    EXPECT_EQ(0640u, modeOf("D/new/deep/big"));
    EXPECT_EQ(0755u, modeOf("D/new/deep"));
    EXPECT_EQ(04751u, modeOf("D/dir/x"));
    EXPECT_EQ("content", got("D/dir/x"));
    EXPECT_TRUE(exists("D/empty"));
    EXPECT_EQ(1, copy("sub/f", ""));
    inChild([this] { /* a full disk, as far as this process is concerned */
                     const struct rlimit limit = {OV_COPY_BLOCK, OV_COPY_BLOCK};
                     signal(SIGXFSZ, SIG_IGN);
                     ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &limit));
                     (void)records();
                     EXPECT_EQ(1, copy("big"));
                     EXPECT_EQ("+10240 M/big D/x\n-1 Copyfile writing file D/x\n", records());
    });
}

TEST_F(FileOps, SourceIsLookedUpAfresh)
{
    put("@/other/g", "");
    load("");
    EXPECT_EQ(0, copy("big"));
    (void)OV_instSetSourceDirectory(full("@/other").c_str());
    EXPECT_EQ(0, copy("g"));
    fs::create_symlink(m_medium, full("@/link"));
    (void)OV_instSetSourceDirectory(full("@/link").c_str());
    EXPECT_EQ(0, copy("big"));
    fs::remove(full("@/link")); /* another disc in the same drive */
    fs::create_symlink(full("@/other"), full("@/link"));
    EXPECT_EQ(0, copy("g"));

    (void)records();
    EXPECT_EQ("a: bReturning Continue\nNULL pSource passed to OV_instAbortRetryMessageBox\n",
              printed([this] {
                  EXPECT_EQ(0, OV_instQueryForSource(m_pipe.pStream, "a", "b"));
                  EXPECT_EQ(0, OV_instAbortRetryMessageBox(m_pipe.pStream, "a", "b", nullptr));
              }));
    EXPECT_EQ("", records()) << "to continue is no error";
}

TEST_F(FileOps, DeletingIsReportedFirstAndNeverFails)
{
    EXPECT_EQ(
        "0 +9 D/file\n+9 D/file\n+8 D/dangling\n+9 D/dir\n",
        runLines("Copy 'file' '' 9\nCopy 'x' 'file' 9\nCopyZ 'dangling' '' 8\nCopy 'dir' '' 9",
                 OV_INST_DELETE_MODE));
    EXPECT_FALSE(exists("D/file") || fs::is_symlink(m_dest + "dangling"));
    EXPECT_TRUE(exists("D/dir/x"));
    inChild(
        [this] { /* both are remembered for good */
                 load("");
                 UpdateModuleList(full("D/module.so").c_str());
                 EXPECT_EQ(1, OVinstDeleteFile(full("D/module.so").c_str(), m_pipe.pStream, 5));
                 EXPECT_EQ(1, OVinstDeleteFile(full("D/setup").c_str(), m_pipe.pStream, 5));
                 (void)OV_instSetRootDestination("/elsewhere");
                 EXPECT_TRUE(IsSetupExe(full("D/setup").c_str()));
                 EXPECT_FALSE(IsSetupExe(full("D/setup2").c_str()) || IsSetupExe(nullptr));
                 EXPECT_EQ("", records());
        },
        "threadsafe");
    EXPECT_EQ(7, OVinstGetFileSize(full("M/sub/f").c_str()));
    EXPECT_EQ(0, OVinstGetFileSize("/no/such/file"));
}

TEST_F(FileOps, MkdirWorksPrefixByPrefix)
{
    const std::string fits(OV_INST_PATH_SIZE, 'x');
    fs::current_path(m_dest);
    const auto row = [this](const std::string &path) {
        const int iResult = OV_instMkdir(full(path).c_str(), 03770, m_pipe.pStream);
        return trimmed(std::to_string(iResult) + " " + records());
    };
    expectRows(R"(
        D/a/b/c      => 0 +1 mkdir D/a\n+1 mkdir D/a/b\n+1 mkdir D/a/b/c\n
        D/a/b/c      => 0
        D/a//x/      => 0 +1 mkdir D/a//x\n
        relative/x   => 0 +1 mkdir relative\n+1 mkdir relative/x\n
        D/file       => -1 -1 Mkdir file already exists D/file\n
        D/file/x/y   => -1 -1 Mkdir file already exists D/file\n
        D/dangling/x => -1 -1 Mkdir could not create D/dangling\n
                     => -1 -1 Mkdir invalid parameter\n
        x)" + fits +
                   " => -1 -1 Mkdir invalid parameter\\n\n" + fits +
                   " => -1 -1 Mkdir could not create " + fits + "\\n",
               row);
    EXPECT_EQ(03770u, modeOf("D/a"));
    EXPECT_EQ(-1, OV_instMkdir(nullptr, 0755, nullptr));
}

TEST_F(FileOps, LinksAreMadeFromTheirDirectory)
{
    const std::string common = R"(
        '' 'file' 'l'              => 0 +1 $ l\n
        '' 'file' 'l'              => 0 +1 $ l\n
        'dir' '../file' 'new/x/../l' => 0 +1 $ new/x/../l\n
        '' 'file' 'dir'            => 1 -1 $ linking file dir to file\n+1 $ dir\n
        'no' 'file' 'l'            => 1 -1 $ can't change directory to: D/no:file->l\n
        '' 'file' 'file/l'         => 1 -1 Uncompress can't create destination directory for:\n
                                      file/l\n
        '' '' 'l'                  => 1 -1 $ invalid parameters\n
        'dir' 'file' ''            => 1 -1 $ invalid parameters\n
        '' 'gone' 'k'              => )";
    fs::current_path(m_medium);
    for (bool bHard : {true, false}) {
        const std::string line = bHard ? "HardLink " : "SoftLink ";
        const auto row = [&](const std::string &rest) {
            return replaced(runLines(line + rest), bHard ? "Hardlink" : "Softlink", "$");
        };
        expectRows(common + (bHard ? "1 -1 $ linking file k to gone\\n+1 $ k\\n" : "0 +1 $ k\\n"),
                   row);
        EXPECT_EQ("kept", got("D/l"));
        EXPECT_EQ(0755u, modeOf("D/dir/new"));
        EXPECT_EQ(!bHard, fs::is_symlink(m_dest + "dir/new/l"));
        EXPECT_EQ("0 +1 D//l\n", runLines(line + "'' 'any' 'l'", OV_INST_DELETE_MODE));
        EXPECT_FALSE(exists("D/l"));
        EXPECT_EQ(m_medium, fs::current_path().string() + "/");
        fs::remove_all(m_dest + "dir/new");
    }
    fs::create_directories(full("@/gone"));
    fs::current_path(full("@/gone"));
    fs::remove(full("@/gone"));
    EXPECT_EQ("1 -1 Softlink can't get current working directory\n-1 Can't get current working\n",
              runLines("SoftLink '' 'a' 'b'\nUntar 'empty' 1"));
}
