#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <string>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include "support.h"
#include "ut/guard.h"
#include "ut/owned.h"

/* In the working directory, a scratch one, root is guarded; outside/victim (mode 0640) is what a
 * planted link leads to. */
struct Guard : testing::Test {
    void SetUp() override
    {
        fs::current_path(scratch.path);
        fs::create_directories("root/sub");
        fs::create_directory("outside");
        writeFile(scratch / "outside/victim", "kept");
        ASSERT_EQ(chmod("outside/victim", 0640), 0);
        OV_instSetGuardedRoot("root");
    }
    void TearDown() override
    {
        OV_instSetGuardedRoot(nullptr);
        fs::current_path(before);
    }
    Scratch scratch;
    const fs::path before = fs::current_path();
    const std::string base = scratch.path;
};

static bool isRoot()
{
    return geteuid() == 0;
}

/* Only root can make a stranger's link; other users get one of their own. */
static void plant(const char *pName, const std::string &target, bool bStranger)
{
    ASSERT_EQ(symlink(target.c_str(), pName), 0);
    ASSERT_EQ(bStranger && isRoot() ? lchown(pName, 65534, 65534) : 0, 0);
}

/* 0, or the error of an attempt; closes what it opened. */
static int tried(int iResult)
{
    OwnedFd opened(iResult > 2 ? iResult : -1);
    return iResult < 0 ? errno : 0;
}

static int tryRead(const std::string &path)
{
    return tried(OV_instGuardedOpen(path.c_str(), O_RDONLY, 0));
}

static int tryWrite(const std::string &path, int iFlags = O_TRUNC, mode_t iMode = 0600)
{
    return tried(OV_instGuardedOpen(path.c_str(), O_WRONLY | O_CREAT | iFlags, iMode));
}

TEST_F(Guard, RefusesStrangersLinks)
{
    if (!isRoot())
        GTEST_SKIP() << "only root can plant another user's links";
    const char *pName = nullptr;
    plant("root/dir", "../outside", true);
    plant("root/absolute", base + "/outside", true);
    plant("root/file", "../outside/victim", true);
    plant("root/dangling", base + "/outside/victim2", true);
    plant("root/mine", "file", false); /* a trusted link that leads to a stranger's */
    plant("outside/onward", "victim", true);
    plant("root/out", base + "/outside/onward", false); /* outside, yet on a guarded path */

    for (const char *pPath :
         {"root/dir/victim", "root/absolute/victim", "root//sub/../dir/victim", "root/dir/victim2",
          "root/file", "root/mine", "root/out", "root/dangling"}) {
        SCOPED_TRACE(pPath);
        EXPECT_EQ(tryRead(pPath), ELOOP);
        EXPECT_EQ(tryWrite(pPath), ELOOP);
        EXPECT_EQ(tried(OV_instGuardedChmod(pPath, 0777)), ELOOP);
        EXPECT_EQ(OV_instGuardedFopen(pPath, "a"), nullptr);
    }
    EXPECT_EQ(tried(OV_instGuardedOpenDir("root/dir/")), ELOOP);
    EXPECT_EQ(tried(OV_instGuardedOpenParent("root/dir/victim", &pName)), ELOOP);
    EXPECT_EQ(tried(OV_instGuardedRemove("root/dir/victim")), ELOOP);
    EXPECT_FALSE(fs::exists("outside/victim2"));
    EXPECT_EQ(readFile("outside/victim"), "kept");
    EXPECT_EQ(modeOf("outside/victim"), 0640U);
}

TEST_F(Guard, FollowsTrustedLinks)
{
    plant("root/dir", "../outside", false);
    plant("root/absolute", base + "/outside/", false);
    plant("root/file", "sub/../dir//victim", false);
    plant("root/dangling", base + "/outside/new", false);
    plant("root/looping", "looping", false);
    plant("root/sub/alike", "root/f", false); /* reads like a path below the root, but is none */
    fs::create_directory("root/sub/root");

    EXPECT_EQ(tried(OV_instGuardedOpenDir("root/absolute/")), 0);
    EXPECT_EQ(tried(OV_instGuardedOpenDir("root/file")), ENOTDIR);
    for (const auto &[pPath, iError] : {std::pair("root/file", 0),
                                        {"root/file/", ENOTDIR},
                                        {"root/dir/none", ENOENT},
                                        {"root/looping", ELOOP}})
        EXPECT_EQ(tryRead(pPath), iError) << pPath;
    EXPECT_EQ(tryWrite("root/dir/"), EISDIR);
    EXPECT_EQ(tryWrite("root/dangling", O_EXCL), EEXIST);
    EXPECT_EQ(tryWrite("root/file", O_NOFOLLOW), ELOOP);
    EXPECT_EQ(tryWrite("root/sub/alike"), 0);
    EXPECT_TRUE(fs::exists("root/sub/root/f"));
    EXPECT_EQ(OV_instGuardedChmod("root/file", 0604), 0);
    EXPECT_EQ(modeOf("outside/victim"), 0604U);
    EXPECT_EQ(tryWrite("root/dangling", 0, 0600), 0);
    EXPECT_EQ(modeOf("outside/new"), 0600U);
    EXPECT_EQ(OV_instGuardedRemove("root/dir/victim"), 0);
    EXPECT_FALSE(fs::exists("outside/victim"));
}

TEST_F(Guard, GuardsNothingOutsideTheRoot)
{
    plant("rootlike", "outside", true);
    plant("way", "root", true);
    plant("root/dir", "../outside", true);
    plant("root/back", base + "/way/sub", false);
    EXPECT_EQ(tryRead("rootlike/victim"), 0);

    /* Links that lead to the root are the administrator's choice, also when a trusted link below
     * leads through them. */
    for (std::string way : {base + "/way", base + "//way//"}) {
        OV_instSetGuardedRoot(way.c_str());
        EXPECT_EQ(tryRead(base + "/way"), 0);
        EXPECT_EQ(tryWrite(base + "/way/f"), 0);
        EXPECT_EQ(tryRead(base + "/way/back"), 0);
        EXPECT_EQ(tryRead(base + "///way/dir/victim"), isRoot() ? ELOOP : 0);
    }
    OV_instSetGuardedRoot("//");
    EXPECT_EQ(tryRead(base + "/root/dir/victim"), isRoot() ? ELOOP : 0);
    EXPECT_EQ(tryRead(base + "/root/back"), isRoot() ? ELOOP : 0) << "through a stranger's way";
    EXPECT_EQ(tryRead("/"), 0);
    for (const char *pNone : {"", "/none", static_cast<const char *>(nullptr)}) {
        OV_instSetGuardedRoot(pNone);
        EXPECT_EQ(tryRead(base + "/root/dir/victim"), 0);
    }
}

TEST_F(Guard, RemovesTheObjectItself)
{
    fs::create_directories("root/full/empty");
    plant("root/link", "../outside/victim", true);
    plant("root/dirlink", "full", false);
    writeFile(scratch / "root/f", "");

    EXPECT_EQ(tried(OV_instGuardedRemove("root/dirlink/")), ENOTDIR);
    EXPECT_EQ(tried(OV_instGuardedRemove("root/full")), ENOTEMPTY);
    for (const char *pPath :
         {"root/link", "root/dirlink", "root/f", "root/full/empty/", "root/full"}) {
        EXPECT_EQ(tried(OV_instGuardedRemove(pPath)), 0) << pPath;
        EXPECT_FALSE(fs::exists(fs::symlink_status(pPath))) << pPath;
    }
    EXPECT_EQ(tried(OV_instGuardedRemove("root/none")), ENOENT);
    EXPECT_EQ(readFile("outside/victim"), "kept");
}

TEST_F(Guard, OpensParentsAndStreams)
{
    const char *pName = nullptr;
    for (const char *pPath : {"root/sub/name", "name", "/name"}) {
        EXPECT_EQ(tried(OV_instGuardedOpenParent(pPath, &pName)), 0);
        EXPECT_STREQ(pName, "name");
    }
    EXPECT_EQ(tried(OV_instGuardedOpenParent("root/sub/name/", &pName)), EINVAL);
    OwnedFile file(OV_instGuardedFopen("root/f", "a"));
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(fcntl(fileno(file.get()), F_GETFD) & FD_CLOEXEC);
    EXPECT_EQ(OV_instGuardedFopen("root/f", "rw"), nullptr);
}

TEST_F(Guard, NeverWaitsForAFifoAndUsesTheUmask)
{
    plant("root/link", "fifo", false);
    for (const char *pFifo : {"root/fifo", "outside/fifo"}) {
        ASSERT_EQ(mkfifo(pFifo, 0600), 0);
        EXPECT_EQ(tryWrite(pFifo), ENXIO);
        EXPECT_EQ(tryRead(pFifo), 0);
        EXPECT_EQ(OV_instGuardedChmod(pFifo, 0620), 0);
    }
    EXPECT_EQ(tryWrite("root/link"), ENXIO);
    mode_t mask = umask(027);
    EXPECT_EQ(tryWrite("root/f", 0, 0666), 0);
    EXPECT_EQ(modeOf("root/f"), 0640U);
    umask(mask);
}

/* From here on openat2 fails as on an older kernel (ENOSYS) or in a strict container (EPERM). */
static bool denyOpenat2(unsigned iError)
{
    struct sock_filter aRules[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(struct seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_openat2, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | iError),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    struct sock_fprog program = {sizeof aRules / sizeof aRules[0], aRules};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

TEST_F(Guard, WorksWithoutOpenat2)
{
    plant("root/dir", "../outside", true);
    plant("root/link", "sub", false);
    for (unsigned iError : {ENOSYS, EPERM}) {
        auto run = [&] {
            int iFailed = !denyOpenat2(iError);
            iFailed |= tryWrite("root/link/f") != 0 || tryWrite("root/sub/f") != 0;
            iFailed |= tryRead("root/sub/f/") != ENOTDIR || tryWrite("root/none/f") != ENOENT;
            iFailed |= tryRead("root") != 0 || OV_instGuardedChmod("root/sub/f", 0640) != 0;
            iFailed |= tryRead("root/dir/victim") != (isRoot() ? ELOOP : 0);
            iFailed |= OV_instGuardedRemove("root/sub/f") != 0;
            _exit(iFailed);
        };
        EXPECT_EXIT(run(), testing::ExitedWithCode(0), "") << iError;
    }
}
