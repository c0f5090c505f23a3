/* Unpacking stays where it belongs, whatever the kernel can do for it. */
#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "runs/run.h"

enum { STRANGER = 65534 };

/* From now on these system calls do not exist for this process and what it starts. */
static void doWithout(const std::vector<int> &calls)
{
    std::vector<sock_filter> filter = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};

    for (int iCall : calls) {
        filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(iCall), 0, 1));
        filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS));
    }
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    sock_fprog program = {static_cast<unsigned short>(filter.size()), filter.data()};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) < 0 ||
        prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) < 0)
        _exit(2);
}

/* A view of its own and Landlock, one of them, or neither: then the archive is read before. */
static const std::vector<int> s_aMissing[] = {
    {}, {SYS_unshare}, {SYS_landlock_create_ruleset}, {SYS_unshare, SYS_landlock_create_ruleset}};

struct Confined : testing::Test {
    Medium medium;
    const std::string outside = medium.scratch / "outside", mine = medium.scratch / "mine";

    void SetUp() override
    {
        if (getuid() != 0)
            GTEST_SKIP() << "needs root to make somebody else's links";
        fs::create_directories(medium.tree);
    }
    void link(const std::string &name, const std::string &target, uid_t owner)
    {
        fs::create_directories(target);
        fs::remove_all(medium.tree + name);
        fs::create_symlink(target, medium.tree + name);
        ASSERT_EQ(lchown((medium.tree + name).c_str(), owner, owner), 0);
    }
    /* The archive of these names, which a command makes in a directory of their own. One that
     * names the directory where a link stands would replace the link. */
    void pack(const std::string &make, const std::string &names, const std::string &members = "")
    {
        fs::remove_all(medium.place + "/in");
        fs::create_directories(medium.place + "/in");
        must("cd " + medium.place + "/in && umask 022 && " + make +
             " && tar -P --no-recursion -cf ../a.tar " + names);
        medium.describe(onePackage("Untar \"a.tar\" 1 " + members + "\n"));
    }
    /* Installs on a kernel without some calls; what was told. */
    std::string installWithout(const std::vector<int> &calls)
    {
        const pid_t iChild = fork();
        if (iChild == 0) {
            doWithout(calls);
            (void)medium.install();
            _exit(0);
        }
        waitpid(iChild, nullptr, 0);
        return readFile(medium.scratch / "stderr");
    }
};

TEST_F(Confined, StrangersLinksLeadNowhereAndTrustedOnesDo)
{
    for (const auto &missing : s_aMissing) {
        SCOPED_TRACE(missing.size());
        /* Neither a file nor the mode and time of a directory. */
        link("d", outside, STRANGER);
        fs::create_directories(outside + "/sub");
        must("chmod 700 " + outside + "/sub && touch -d 2001-01-01 " + outside + "/sub");
        pack("mkdir -p d/sub && chmod 777 d/sub && echo new > d/file", "d/sub d/file");
        (void)installWithout(missing);
        EXPECT_EQ(std::distance(fs::directory_iterator(outside), {}), 1);
        EXPECT_EQ(modeOf(outside + "/sub"), 0700u);
        must("test ! " + outside + "/sub -nt " + medium.place + "/setup");
        EXPECT_EQ(medium.log().find("Warning: unpacking a.tar") == std::string::npos,
                  medium.log().find("Warning: a.tar is not unpacked: " + medium.tree +
                                    "d leads through a link that is not followed\n") !=
                      std::string::npos);

        link("d", mine, 0);
        pack("mkdir -p d/sub && echo new > d/sub/file", "d/sub d/sub/file");
        EXPECT_EQ(installWithout(missing), "");
        EXPECT_EQ(readFile(mine + "/sub/file"), "new\n");
        fs::remove_all(medium.scratch / "mine");
        fs::remove_all(medium.dest);
        fs::create_directories(medium.tree);
    }
}

TEST_F(Confined, ThereIsNoLimitOfTrustedLinks)
{
    enum { MANY = 600 }; /* twice as many are more than there are descriptors */
    std::string members;

    for (int i = 0; i < MANY; i++) {
        const std::string name = "d" + std::to_string(i);
        link(name, mine + "/" + name, 0);
        members += " \"" + name + "/f\" 1";
    }
    pack("for d in $(seq 0 " + std::to_string(MANY) +
             "); do echo d$d; done | xargs mkdir &&"
             " for d in d*; do echo > $d/f; done",
         "d*/f", members);
    for (const auto &missing : s_aMissing) {
        EXPECT_EQ(installWithout(missing), "");
        for (int i = 0; i < MANY; i++)
            ASSERT_TRUE(fs::remove(mine + "/d" + std::to_string(i) + "/f")) << i << medium.log();
        EXPECT_EQ(medium.log().find("Warning"), std::string::npos) << medium.log();
        fs::remove_all(medium.tree + "SetupFiles");
    }
}

/* What the archive itself would lead out of the destination. */
TEST_F(Confined, ArchivesDoNotLeadOutThemselves)
{
    static const struct {
        const char *pMake;
        const char *pNames;
    } s_aCases[] = {
        {"ln -s ../../outside l && tar -cf ../l.tar l && rm l && mkdir l && echo > l/x &&"
         " tar -rf ../l.tar l/x",
         "l/x && mv ../l.tar ../a.tar"},
        {"mkdir d && echo > ../x", "d/../../x"},
    };

    fs::create_directories(outside);
    for (const auto &test : s_aCases)
        for (const auto &missing : s_aMissing) {
            SCOPED_TRACE(test.pNames + std::to_string(missing.size()));
            pack(test.pMake, test.pNames);
            (void)installWithout(missing);
            EXPECT_TRUE(fs::is_empty(outside));
            EXPECT_FALSE(fs::exists(medium.dest + "/x"));
            EXPECT_NE(medium.log().find(missing.size() == 2 ? "Warning: a.tar is not unpacked: "
                                                            : "Warning: unpacking a.tar ended"),
                      std::string::npos);
            fs::remove_all(medium.dest);
            fs::create_directories(medium.tree);
        }
}

/* Without /proc nothing tells what an opened directory is called. */
TEST_F(Confined, ProcIsNotNeeded)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer needs it";
#endif
    link("d", mine, 0);
    pack("mkdir -p d/sub e && echo new > d/sub/file && echo new > e/file", "d/sub/file e/file",
         "\"d/sub/file\" 4 \"e/file\" 4");
    must("cd " + medium.place + " && HOME=" + (medium.scratch / "home") +
         " unshare -m sh -c 'umount -l /proc && exec ./setup -cmdline -noroot -dest " +
         medium.dest + "' > ../stdout 2> ../stderr");
    EXPECT_EQ(readFile(medium.scratch / "stderr"), "");
    EXPECT_EQ(readFile(mine + "/sub/file") + medium.installed("e/file"), "new\nnew\n");
}
