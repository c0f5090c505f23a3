#include <gtest/gtest.h>

#include <cstddef>
#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include "ut/guardTest.h"

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
        EXPECT_EQ(tried(OV_instGuardedOpenTarget(pPath, nullptr)), ELOOP);
    }
    EXPECT_EQ(tried(OV_instGuardedOpenDir("root/dir/")), ELOOP);
    EXPECT_EQ(tried(OV_instGuardedOpenParent("root/dir/victim", &pName)), ELOOP);
    EXPECT_EQ(tried(OV_instGuardedRemove("root/dir/victim")), ELOOP);
    EXPECT_FALSE(fs::exists("outside/victim2"));
    EXPECT_EQ(readFile("outside/victim"), "kept");
    EXPECT_EQ(modeOf("outside/victim"), 0640U);
}

/* What strangers own or can change leads as far as the root goes, and nothing behind it further. */
TEST_F(Guard, KeepsStrangersLinksBelowTheRoot)
{
    if (!isRoot())
        GTEST_SKIP() << "only root can plant another user's links";
    writeFile(scratch / "root/sub/f", "");
    fs::create_directory("alike");
    fs::create_symlink("root", "real");
    for (const char *pPlace : {"his", "his/own", "open", "open/own", "group", "sticky"})
        fs::create_directory(std::string("root/") + pPlace);
    ASSERT_EQ(0, chown("root/his", STRANGER, 0) | chown("root/group", 0, STRANGER) |
                     chmod("root/open", 0777) | chmod("root/group", 0775) |
                     chmod("root/sticky", 01777));
    plant("root/in", "sub", true);
    plant("root/up", "../root/sub", true);
    plant("root/absolute", base + "/real/sub", true);
    plant("root/textual", base + "//root/./sub/.", true);
    plant("root/chain", "in", true);
    plant("root/out", "../outside", false);
    plant("root/toOut", "out", true);
    plant("root/his/own/in", "../../sub", false);
    for (const char *pPlace : {"his/own", "open/own", "group", "sticky"})
        plant((std::string("root/") + pPlace + "/out").c_str(), base + "/outside", false);
    fs::create_directory("root/sticky/own");
    ASSERT_EQ(0, link("root/group/out", "root/sticky/linked"));

    for (const auto &[pPath, iError] : {std::pair("in/f", 0),
                                        {"textual/f", 0},
                                        {"chain/f", 0},
                                        {"chain/../sub/./f", 0},
                                        {"his/own/in/f", 0},
                                        {"sticky/out/victim", 0},
                                        {"out/victim", 0},
                                        {"up/f", ELOOP},
                                        {"toOut/victim", ELOOP},
                                        {"his/own/out/victim", ELOOP},
                                        {"open/own/out/victim", ELOOP},
                                        {"group/out/victim", ELOOP},
                                        {"sticky/linked/victim", ELOOP},
                                        {"absolute/f", ELOOP}})
        EXPECT_EQ(tryRead(std::string("root/") + pPath), iError) << pPath;
    OV_instSetGuardedRoot((base + "/real").c_str()); /* whose own real path counts as well */
    EXPECT_EQ(tryRead(base + "/real/absolute/f"), 0);
    EXPECT_EQ(tryRead(base + "/real/textual/f"), 0);
    EXPECT_EQ(tryRead(base + "/real/open/own/out/victim"), ELOOP);
}

/* The owner of the destination is trusted, yet his links only lead where he is at home. A group
 * that only he is in is as good as he. */
TEST_F(Guard, TrustsTheOwnerOfTheRootInIt)
{
    const struct passwd *pUser = getpwnam("daemon");
    if (!isRoot() || !pUser)
        GTEST_SKIP() << "needs root, and another user";
    const uid_t owner = pUser->pw_uid;
    const gid_t group = pUser->pw_gid;
    for (const char *pPath : {"root", "root/sub"})
        ASSERT_EQ(0, chown(pPath, owner, group) | chmod(pPath, 0775));
    plant("root/sub/out", "../../outside", false);
    plant("root/sub/owners", "../../outside", false);
    plant("root/sub/in", "../sub", false);
    ASSERT_EQ(0, lchown("root/sub/owners", owner, group) | lchown("root/sub/in", owner, group));
    writeFile(scratch / "root/sub/f", "");
    ASSERT_EQ(0, chown("root/sub/f", owner, group) | chmod("root/sub/f", 0664));
    OV_instSetGuardedRoot((base + "/root").c_str());

    EXPECT_EQ(tryRead(base + "/root/sub/out/victim"), 0);
    EXPECT_EQ(tryRead(base + "/root/sub/owners/victim"), ELOOP);
    EXPECT_EQ(tryRead(base + "/root/sub/in/f"), 0);
    EXPECT_TRUE(OV_instIsTrusted((base + "/root/sub/in/f").c_str()));
    EXPECT_FALSE(OV_instIsTrusted((base + "/root/sub/none").c_str()));
    ASSERT_EQ(0, chown("root/sub", owner, STRANGER)); /* a group that nobody knows */
    EXPECT_EQ(tryRead(base + "/root/sub/out/victim"), ELOOP);
    EXPECT_FALSE(OV_instIsTrusted((base + "/root/sub/f").c_str()));
    const std::string root = base + "/root", sub = root + "/sub";
    EXPECT_EQ(heard(), sub + "/owners is a link of daemon, leads out of " + root +
                           " and was not followed\n" + sub + "/out is a link of root below " + sub +
                           " of daemon, which others can write to, leads out of " + root +
                           " and was not followed\n" + sub + "/f is below " + sub +
                           " of daemon, which others can write to and was not used\n");
}

TEST_F(Guard, TellsEachRefusalOnce)
{
    if (!isRoot())
        GTEST_SKIP() << "only root can plant another user's links";
    plant("root/dir", base + "/outside", true);
    plant("root/out", "../outside", false);
    plant("outside/onward", "victim", true);
    for (int i = 0; i < 3; i++) {
        EXPECT_EQ(tryRead("root/dir/victim"), ELOOP);
        EXPECT_EQ(tryRead("root/out/onward"), ELOOP);
        if (i == 1) /* for the next run */
            OV_instReopenGuardedRoot();
    }
    const std::string once =
        "root/dir is a link of nobody, leads out of root and was not followed\n"
        "root/../outside/onward is a link of nobody, outside of root, and was "
        "not followed\n";
    EXPECT_EQ(heard(), once + once);
}

TEST_F(Guard, StaysInTheRootThatWasOpened)
{
    fs::create_directory(scratch / "late");
    fs::rename("root", "moved");
    fs::create_symlink("outside", "root");
    EXPECT_EQ(tryWrite("root/f"), 0);
    EXPECT_EQ(OV_instGuardedMkdir("root/dir", 0755), 0);
    EXPECT_EQ(tryWrite("root/sub/../dir/f"), 0);
    EXPECT_TRUE(fs::exists("moved/f") && fs::exists("moved/dir/f"));
    EXPECT_EQ(std::distance(fs::directory_iterator("outside"), {}), 1);
    EXPECT_FALSE(OV_instIsTrusted("root/f")); /* a command would find another */
    EXPECT_STREQ(OV_instBelowGuardedRoot("root//f"), "f");
    OV_instReopenGuardedRoot(); /* the next run goes where it is told to */
    EXPECT_EQ(tryRead("root/victim"), 0);

    OV_instSetGuardedRoot("late/root"); /* made later, removed, and made again */
    for (int i = 0; i < 2; i++) {
        EXPECT_EQ(tryWrite("late/root/f"), ENOENT);
        EXPECT_EQ(OV_instBelowGuardedRoot("late/root/f"), nullptr);
        EXPECT_EQ(OV_instGuardedMkdir("late/root", 0755), 0);
        EXPECT_EQ(tryWrite("late/root/f"), 0);
        EXPECT_EQ(OV_instGuardedRemove("late/root/f") | OV_instGuardedRemove("late/root"), 0);
    }
}

/* What a path of the description's says is meant so; what a stranger's link says is not. */
TEST_F(Guard, LeadsUpOnlyWhereItIsMeant)
{
    plant("root/sub/up", "../../outside", false);
    plant("root/sub/strangers", "../../outside", true);
    EXPECT_EQ(tryRead("root/sub/../../outside/victim"), 0);
    EXPECT_EQ(tryRead("root/sub/up/../outside/../root/sub/up/victim"), 0);
    EXPECT_EQ(tryRead("root/sub/strangers/victim"), isRoot() ? ELOOP : 0);
    EXPECT_EQ(tryWrite("root/sub/../f"), 0);
    EXPECT_TRUE(fs::exists("root/f"));
    std::string deep; /* deeper than a walk keeps open */
    for (int i = 0; i < 300; i++)
        deep += "/d";
    plant("root/here", ".", false);
    fs::create_directories("root" + deep);
    EXPECT_EQ(tryWrite("root/here" + deep + "/../../f"), 0);
    EXPECT_EQ(tryWrite("root/here" + deep + replaced(deep, "d", "..") + "/f"), ELOOP);
}

TEST_F(Guard, GivesDirectoriesTheirModes)
{
    const mode_t mask = umask(0777);
    ASSERT_EQ(0, chown("root/sub", geteuid(), getegid()) | chmod("root/sub", 02755));
    EXPECT_EQ(OV_instGuardedMkdir("root/sub/a", 0755), 0);
    EXPECT_EQ(OV_instGuardedMkdir("root/b", 01777), 0);
    umask(mask);
    EXPECT_EQ(modeOf("root/sub/a"), 02755U);
    EXPECT_EQ(modeOf("root/b"), 01777U);
    EXPECT_EQ(tried(OV_instGuardedMkdir("root/b", 0700)), EEXIST);
    EXPECT_EQ(tried(OV_instGuardedMkdir("root/none/b", 0700)), ENOENT);
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

TEST_F(Guard, OpensParents)
{
    const char *pName = nullptr;
    for (const char *pPath : {"root/sub/name", "name", "/name"}) {
        EXPECT_EQ(tried(OV_instGuardedOpenParent(pPath, &pName)), 0);
        EXPECT_STREQ(pName, "name");
    }
    EXPECT_EQ(tried(OV_instGuardedOpenParent("root/sub/name/", &pName)), EINVAL);
    OwnedFd file(OV_instGuardedOpen("root/f", O_WRONLY | O_CREAT, 0600));
    EXPECT_TRUE(fcntl(file.iFd, F_GETFD) & FD_CLOEXEC);
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

/* From here on a call fails as on an older kernel (ENOSYS) or in a strict container (EPERM). */
static bool deny(unsigned iCall, unsigned iError)
{
    struct sock_filter aRules[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(struct seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, iCall, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | iError),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    struct sock_fprog program = {sizeof aRules / sizeof aRules[0], aRules};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

static bool hideProc()
{
    return unshare(CLONE_NEWNS) == 0 &&
           mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           umount2("/proc", MNT_DETACH) == 0;
}

TEST_F(Guard, WorksWithoutProc)
{
    if (!isRoot())
        GTEST_SKIP() << "only root can hide /proc";
    static const unsigned s_iFchmodat2 = 452;
    fs::create_symlink("sub", "root/link");
    for (const bool bOldKernel : {false, true}) {
        writeFile(scratch / "root/f", "");
        ASSERT_EQ(0, chmod("root/f", 0600));
        auto run = [&] {
            if (!hideProc() || fs::exists("/proc/self"))
                _exit(0);
            umask(0777);
            int iFailed = bOldKernel && !deny(s_iFchmodat2, ENOSYS);
            iFailed |= OV_instGuardedChmod("root/f", 0640) != 0;
            iFailed |= OV_instGuardedMkdir("root/link/d", 0711) != 0;
            iFailed |= tryWrite("root/link/d/f") != 0 || !OV_instIsTrusted("root/link/d");
            _exit(iFailed);
        };
        EXPECT_EXIT(run(), testing::ExitedWithCode(0), "") << bOldKernel;
        if (!fs::exists("root/sub/d"))
            GTEST_SKIP() << "/proc cannot be hidden here";
        EXPECT_EQ(modeOf("root/f"), 0640U);
        EXPECT_EQ(modeOf("root/sub/d"), 0711U);
        fs::remove_all("root/sub/d");
    }
}

TEST_F(Guard, WorksWithoutOpenat2)
{
    plant("root/dir", "../outside", true);
    plant("root/link", "sub", false);
    for (unsigned iError : {ENOSYS, EPERM}) {
        auto run = [&] {
            int iFailed = !deny(SYS_openat2, iError);
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
