#include <gtest/gtest.h>

#include <fcntl.h>
#include <functional>
#include <sys/sysmacros.h>

#include "ut/guardTest.h"

/* What is there before a file is written, and what is there afterwards. Each case has a directory
 * of its own, in which the file is f. */
struct GuardedFile : Guard {
    void SetUp() override
    {
        Guard::SetUp();
        if (!isRoot())
            GTEST_SKIP() << "only root can make what is somebody else's";
    }
    std::string in(const std::string &name) const { return dir + "/" + name; }
    void begin(const char *pCase)
    {
        dir = std::string("root/") + pCase;
        fs::create_directory(dir);
    }
    void make(const std::string &text, uid_t owner, mode_t iMode = 0640)
    {
        writeFile(in("f"), text);
        ASSERT_EQ(0, chown(in("f").c_str(), owner, 5) | chmod(in("f").c_str(), iMode));
    }
    static std::string ownerOf(const std::string &path)
    {
        struct stat status = {};
        EXPECT_EQ(0, lstat(path.c_str(), &status)) << path;
        return std::to_string(status.st_uid) + ":" + std::to_string(status.st_gid);
    }
    /* Writes "new" and gives what the file then is. */
    std::string written(const char *pMode) const
    {
        OwnedFile file(pMode ? OV_instGuardedFopen(in("f").c_str(), pMode)
                             : OV_instGuardedFopenTarget(in("f").c_str()));
        if (!file)
            return std::to_string(errno);
        fputs("new", file.get());
        (void)fflush(file.get());
        return readFile(in("f")) + " " + ownerOf(in("f"));
    }
    std::string dir;
};

TEST_F(GuardedFile, OwnFilesAreFilled)
{
    for (const char *pMode : {static_cast<const char *>(nullptr), "w", "a"}) {
        begin(pMode ? pMode : "target");
        EXPECT_EQ(written(pMode), "new 0:0");
        EXPECT_EQ(written(pMode), pMode && *pMode == 'a' ? "newnew 0:0" : "new 0:0");
        make("old", 0);
        EXPECT_EQ(written(pMode), pMode && *pMode == 'a' ? "oldnew 0:5" : "new 0:5");
        EXPECT_EQ(modeOf(in("f")), 0640U);
        fs::remove(in("f"));
        fs::create_symlink(base + "/outside/" + dir.substr(5), in("f")); /* not there yet */
        (void)written(pMode);
        EXPECT_EQ(readFile("outside/" + dir.substr(5)), "new");
        EXPECT_EQ(tried(chown(("outside/" + dir.substr(5)).c_str(), STRANGER, 5)), 0);
        (void)written(pMode); /* whoever owns it */
        EXPECT_EQ(ownerOf("outside/" + dir.substr(5)), "12345:5");
        EXPECT_TRUE(fs::is_symlink(in("f")));
    }
    const mode_t mask = umask(077);
    for (const char *pPath : {"root/log", "outside/log"}) {
        OwnedFile file(OV_instGuardedFopen(pPath, "a"));
        EXPECT_EQ(modeOf(pPath), 0644U);
    }
    umask(mask);
    EXPECT_EQ(OV_instGuardedFopen("root/log", "rw"), nullptr);
}

TEST_F(GuardedFile, OthersFilesAreReplaced)
{
    static const struct {
        const char *pMode;
        uid_t owner;
        const char *pResult;
    } s_aRows[] = {{nullptr, STRANGER, "new 12345:5"}, /* it stays whose it was */
                   {"w", STRANGER, "new 0:0"},         /* it is going to be believed */
                   {"a", STRANGER, "new 0:0"},
                   {nullptr, 1, "new 1:5"},
                   {"w", 1, "new 1:5"},
                   {"a", 1, "oldnew 1:5"}};

    ASSERT_EQ(0, chown("root", 1, 0));
    OV_instSetGuardedRoot("root");
    begin("d");
    for (const auto &row : s_aRows) {
        make("old", row.owner);
        fs::create_hard_link(in("f"), "outside/second");
        ASSERT_EQ(0, chmod(dir.c_str(), 0775)); /* a backup of a tree that a group writes to */
        EXPECT_EQ(written(row.pMode), replaced(row.pResult, "old", "")) << row.pResult;
        EXPECT_EQ(readFile("outside/second"), "old");
        ASSERT_EQ(0, chmod(dir.c_str(), 0755));
        fs::remove("outside/second");
        make("old", row.owner);
        const auto inode = [&] {
            struct stat status = {};
            return stat(in("f").c_str(), &status) == 0 ? status.st_ino : 0;
        };
        OwnedFd old(open(in("f").c_str(), O_RDONLY)); /* or the number could be used again */
        const ino_t iBefore = inode();
        EXPECT_EQ(written(row.pMode), row.pResult);
        EXPECT_EQ(inode() == iBefore, row.owner == 1 && row.pMode) << row.pResult;
    }
}

TEST_F(GuardedFile, RootsFilesInAUsersDirectoryAreReplacedByHim)
{
    begin("d");
    ASSERT_EQ(0, chown(dir.c_str(), 1, 1) | chmod(scratch.path.c_str(), 0755));
    for (const char *pMode : {"a", "w", static_cast<const char *>(nullptr)}) {
        make("old", 0, 0644);
        ASSERT_EQ(0, seteuid(1));
        const std::string result = written(pMode);
        ASSERT_EQ(0, seteuid(0));
        EXPECT_EQ(pMode && *pMode == 'a' ? std::to_string(EACCES) : "new 1:0", result);
    }
}

TEST_F(GuardedFile, WhatIsNoFileIsNotTakenForOne)
{
    begin("d");
    const auto fifo = [&](uid_t owner) {
        ASSERT_EQ(0, mkfifo(in("f").c_str(), 0666) | chown(in("f").c_str(), owner, 5));
    };
    const auto null = [&](uid_t owner) {
        ASSERT_EQ(0, mknod(in("f").c_str(), S_IFCHR | 0666, makedev(1, 3)) |
                         chown(in("f").c_str(), owner, 5));
    };
    for (const std::function<void(uid_t)> &what : {std::function<void(uid_t)>(fifo), {null}}) {
        what(0);
        OwnedFd reader(open(in("f").c_str(), O_RDONLY | O_NONBLOCK));
        EXPECT_EQ(written(nullptr), "new 0:0");
        fs::remove(in("f"));
        for (const char *pMode : {"w", "a"}) {
            what(STRANGER);
            EXPECT_EQ(written(pMode), "new 0:0");
            fs::remove(in("f"));
        }
    }
    fifo(0);
    EXPECT_EQ(written("a"), std::to_string(ENXIO)); /* without waiting, and left in its place */
    fs::remove(in("f"));
    fs::create_symlink("/dev/null", in("f"));
    for (const char *pMode : {static_cast<const char *>(nullptr), "w", "a"})
        EXPECT_EQ(written(pMode), " 0:0");
    EXPECT_TRUE(fs::is_symlink(in("f")));
    fs::remove(in("f"));
    fs::create_directory(in("f"));
    EXPECT_EQ(written(nullptr) + written("a"), std::to_string(EISDIR) + std::to_string(EISDIR));
}

TEST_F(GuardedFile, ItsOwnSourceIsLeftAlone)
{
    begin("d");
    make("old", STRANGER);
    struct stat source = {};
    ASSERT_EQ(0, stat(in("f").c_str(), &source));
    EXPECT_EQ(tried(OV_instGuardedOpenTarget(in("f").c_str(), &source)), EALREADY);
    fs::copy_file("/bin/sleep", in("running"));
    const std::string run = base + "/" + in("running") + " 5 & echo $! > pid; sleep 0.2";
    ASSERT_EQ(0, system(run.c_str()));
    ASSERT_EQ(0, stat(in("running").c_str(), &source));
    EXPECT_EQ(tried(OV_instGuardedOpenTarget(in("running").c_str(), &source)), EALREADY);
    EXPECT_EQ(tried(OV_instGuardedOpenTarget(in("running").c_str(), nullptr)), ETXTBSY);
    (void)kill(std::stoi(readFile("pid")), SIGKILL);
    EXPECT_EQ(readFile(in("f")), "old");
}

TEST_F(GuardedFile, OnlyWhatTrustedUsersMadeIsBelieved)
{
    const auto tryBelieve = [&](const char *pRoot = nullptr) {
        OwnedFile file(OV_instGuardedFopenBelieved(pRoot, in("f").c_str(), "r+"));
        return file ? 0 : errno;
    };
    begin("d");
    EXPECT_EQ(tryBelieve(), ENOENT);
    for (const auto &[iOwner, iMode, iDirMode, iError] :
         {std::tuple(0U, 0644U, 0755U, 0),
          {0U, 0664U, 0755U, 0},
          /* the group has nobody in it */ {0U, 0666U, 0755U, EACCES},
          {1U, 0644U, 0755U, EACCES},
          {0U, 0644U, 0777U, EACCES},
          {0U, 0644U, 01777U, 0}}) {
        make("old", iOwner, iMode);
        ASSERT_EQ(0, chmod(dir.c_str(), iDirMode));
        EXPECT_EQ(tryBelieve(), iError) << iOwner << " " << iMode << " " << iDirMode;
        EXPECT_EQ(OV_instIsTrusted(in("f").c_str()), iError == 0);
    }
    fs::create_hard_link(in("f"), "outside/second"); /* which anybody could have done */
    EXPECT_EQ(tryBelieve(), EACCES);
    ASSERT_EQ(0, chmod(dir.c_str(), 0755));
    EXPECT_EQ(tryBelieve(), 0);
    ASSERT_EQ(0, chown(dir.c_str(), 1, 0) | chown(in("f").c_str(), 1, 0));
    EXPECT_EQ(tryBelieve(), EACCES);
    EXPECT_EQ(tryBelieve(dir.c_str()), 0); /* whose owner is trusted there */
    ASSERT_EQ(0, truncate(in("f").c_str(), static_cast<off_t>(1) << 40));
    EXPECT_EQ(tryBelieve(dir.c_str()), EFBIG);
    fs::remove(in("f"));
    ASSERT_EQ(0, mkfifo(in("f").c_str(), 0644));
    EXPECT_EQ(tryBelieve(dir.c_str()), EACCES);
    EXPECT_NE(heard().find("root/d/f belongs to daemon and was not used\n"), std::string::npos);
    EXPECT_NE(heard().find("root/d/f is too large and was not used\n"), std::string::npos);
}
