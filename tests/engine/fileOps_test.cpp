#include <gtest/gtest.h>

#include <sched.h>
#include <sys/mount.h>

#include "engine/customFunc.h"
#include "engine/engineTest.h"
#include "engine/fileOps.h"
#include "engine/links.h"
#include "engine/mediaPrompt.h"
#include "ut/OVinstFileUtils.h"

struct FileOps : EngineTest {
    void SetUp() override
    {
        EngineTest::SetUp();
        put("M/sub/f", "content");
        put("M/big", std::string(2 * OV_COPY_BLOCK + 1, 'b'));
        put("M/whole", std::string(12 * OV_COPY_BLOCK, 'w'));
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
    const auto run = [this](const std::string &line) { return runLines(line); };
    expectRows(run, R"(
        Copy 'big' 'new/deep/big' 9 0640 => 0 +10240 M/big D/new/deep/big\n
                                            +10240 M/big D/new/deep/big\n+1 M/big D/new/deep/big\n
        Copy 'sub/f' 'dir/x' 9 04751     => 0 +7 M/sub/f D/dir/x\n
        Copy 'empty' '' 9                => 0
        Copy '' 'x' 9                    => 1 -1 Copyfile invalid parameters\n
        Copy 'no' 'x' 9                  => 1 Copyfile can't open file: noReturning Continue\n
        Copy 'sub' 'x' 9                 => 1 -1 Copyfile failed reading file M/sub\n
        Copy 'sub/f' 'file/x' 9          => 1 -1 Copyfile can't create destination directory for:\n
                                            D/file/x\n
        Copy 'sub/f' 'dir' 9             => 1 -1 Copyfile can't create file D/dir\n)");
    EXPECT_EQ(got("M/big"), got("D/new/deep/big"));
    EXPECT_EQ(0, copy("whole", "D/y"));
    const std::string text = records(), line = "+10240 M/whole D/y\n";
    EXPECT_TRUE(got("M/whole") == got("D/y"));
    EXPECT_EQ("", replaced(text, line, ""));
    EXPECT_EQ(12 * line.size(), text.size());
    fs::create_symlink("/proc/self/status", m_medium + "unknown"); /* its size is said to be 0 */
    EXPECT_EQ(0, copy("unknown", "D/z"));
    EXPECT_NE(got("D/z").find("VmRSS"), std::string::npos);
    EXPECT_EQ(04751u, modeOf("D/dir/x"));
    EXPECT_EQ(1, copy("sub/f", ""));
}

TEST_F(FileOps, SourceIsLookedUpAfresh)
{
    put("@/other/g", "");
    load("");
    fs::create_symlink(m_medium, full("@/link"));
    (void)OV_instSetSourceDirectory(full("@/link").c_str());
    EXPECT_EQ(0, copy("big"));
    fs::remove(full("@/link")); /* another disc in the same drive */
    fs::create_symlink(full("@/other"), full("@/link"));
    EXPECT_EQ(0, copy("g"));
}

TEST_F(FileOps, DeletingIsReportedFirstAndNeverFails)
{
    EXPECT_EQ(
        "0 +9 D/file\n+9 D/file\n+8 D/dangling\n+9 D/dir\n",
        runLines("Copy 'file' '' 9\nCopy 'x' 'file' 9\nCopyZ 'dangling' '' 8\nCopy 'dir' '' 9",
                 OV_INST_DELETE_MODE));
    const auto spare = [this] {
        load("");
        UpdateModuleList(full("D/module.so").c_str());
        EXPECT_EQ(1, OVinstDeleteFile(full("D/module.so").c_str(), m_pipe.pStream, 5));
        EXPECT_EQ(1, OVinstDeleteFile(full("D/setup").c_str(), m_pipe.pStream, 5));
        (void)OV_instSetRootDestination("/elsewhere");
        EXPECT_TRUE(IsSetupExe(full("D/setup").c_str()));
        EXPECT_FALSE(IsSetupExe(full("D/setup2").c_str()) || IsSetupExe(nullptr));
        EXPECT_EQ("", records());
    };
    inChild(spare, true); /* both are remembered for good */
}

TEST_F(FileOps, MkdirWorksPrefixByPrefix)
{
    const std::string fits(OV_INST_PATH_SIZE, 'x');
    const auto make = [this](const std::string &path) {
        const int iResult = OV_instMkdir(full(path).c_str(), 03770, m_pipe.pStream);
        return trimmed(std::to_string(iResult) + " " + records());
    };
    fs::current_path(m_dest);
    expectRows(make, R"(
        D/a/b/c      => 0 +1 mkdir D/a\n+1 mkdir D/a/b\n+1 mkdir D/a/b/c\n
        D/a/b/c      => 0
        D/a//x/      => 0 +1 mkdir D/a//x\n
        relative/x   => 0 +1 mkdir relative\n+1 mkdir relative/x\n
        D/file       => -1 -1 Mkdir file already exists D/file\n
        D/file/x/y   => -1 -1 Mkdir file already exists D/file\n
        D/dangling/x => -1 -1 Mkdir could not create D/dangling\n
                     => -1 -1 Mkdir invalid parameter\n)");
    EXPECT_EQ("-1 -1 Mkdir could not create " + fits + "\n", make(fits));
    EXPECT_EQ("-1 -1 Mkdir invalid parameter\n", make(fits + "x"));
    EXPECT_EQ(-1, OV_instMkdir(nullptr, 0755, nullptr));
    EXPECT_EQ(03770u, modeOf("D/a"));
}

/* With what a system of another day, or a bare place to live in, does not have. */
TEST_F(FileOps, HardLinksWorkWithoutProc)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can hide /proc";
    load("");
    for (const uid_t user : {0U, 12345U}) { /* root, and who has to link by name */
        ASSERT_EQ(0, chown(m_dest.c_str(), user, 0) | chown(full("D/file").c_str(), user, 0) |
                         chmod(m_scratch.path.c_str(), 0755));
        const auto link = [&] {
            if (unshare(CLONE_NEWNS) != 0 ||
                mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
                umount2("/proc", MNT_DETACH) != 0)
                _exit(0); /* it cannot be hidden here */
            ASSERT_EQ(0, setuid(user));
            EXPECT_EQ(0, OV_instHardlink(m_dest.c_str(), "file", "hard", 1, m_pipe.pStream, 0));
            EXPECT_EQ("+1 Hardlink hard\n", records());
            EXPECT_TRUE(fs::equivalent(m_dest + "hard", m_dest + "file"));
        };
        inChild(link);
        fs::remove(m_dest + "hard");
    }
}
