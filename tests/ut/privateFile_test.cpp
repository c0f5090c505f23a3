#include <gtest/gtest.h>

#include "ut/privateFile.h"

#include <csignal>
#include <functional>
#include <set>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support.h"
#include "ut/owned.h"

enum { STRANGER = 12345 };

struct PrivateFile : testing::Test {
    Scratch m_scratch;
    const std::string m_path = m_scratch / "shared/.file", m_other = m_scratch / "other";

    void SetUp() override
    {
        fs::create_directory(m_scratch / "shared");
        OV_instSetPrivateDirectory((m_scratch / "shared").c_str());
        writeFile(m_other, "secret\n");
    }
    void TearDown() override { OV_instSetPrivateDirectory(nullptr); }

    std::string content() const
    {
        OwnedFile file(OV_instOpenPrivate(m_path.c_str()));
        char caText[64] = "";
        return file ? std::string(caText, fread(caText, 1, sizeof caText, file.get())) : "none";
    }
    std::set<std::string> names() const
    {
        std::set<std::string> found;
        for (const auto &entry : fs::directory_iterator(m_scratch / "shared"))
            found.insert(entry.path().filename());
        return found;
    }
};

TEST_F(PrivateFile, ReplacesItsOwn)
{
    const OwnedText path(OV_instPrivatePath(".file"));
    struct stat status = {};

    EXPECT_EQ(m_path, path.get());
    EXPECT_EQ("none", content());
    const mode_t before = umask(0); /* others may not write even so */
    EXPECT_EQ(0, OV_instWritePrivate(m_path.c_str(), "100%s\n"));
    (void)umask(before);
    ASSERT_EQ(0, lstat(m_path.c_str(), &status));
    EXPECT_EQ(0600u, status.st_mode & 07777);
    EXPECT_EQ("100%s\n", content());
    EXPECT_EQ(std::set<std::string>{".file"}, names());
}

TEST_F(PrivateFile, TouchesNothingThatIsNotItsOwn)
{
    const auto plantFile = [&](mode_t mode, uid_t owner) {
        writeFile(m_path, "secret\n");
        return chmod(m_path.c_str(), mode) == 0 && lchown(m_path.c_str(), owner, owner) == 0;
    };
    const struct {
        const char *pTrap;
        std::function<bool()> plant;
    } aTraps[] = {
        {"symbolic link", [&] { return symlink(m_other.c_str(), m_path.c_str()) == 0; }},
        {"hard link", [&] { return link(m_other.c_str(), m_path.c_str()) == 0; }},
        {"a stranger's file", [&] { return plantFile(0644, STRANGER); }},
        {"writable to others", [&] { return plantFile(0646, geteuid()); }},
        {"fifo", [&] { return mkfifo(m_path.c_str(), 0600) == 0; }},
    };

    for (const auto &trap : aTraps) {
        SCOPED_TRACE(trap.pTrap);
        if (!trap.plant())
            continue; /* an ordinary user cannot give a file away */
        struct stat before = {}, after = {};
        ASSERT_EQ(0, lstat(m_path.c_str(), &before));
        EXPECT_EQ("none", content());
        EXPECT_EQ(-1, OV_instWritePrivate(m_path.c_str(), "mine\n"));
        EXPECT_EQ(nullptr, OwnedFile(OV_instCreatePrivate(m_path.c_str())));
        EXPECT_EQ("secret\n", readFile(m_other));
        EXPECT_EQ(std::set<std::string>{".file"}, names());
        ASSERT_EQ(0, lstat(m_path.c_str(), &after));
        EXPECT_TRUE(before.st_ino == after.st_ino && before.st_size == after.st_size);
        fs::remove(m_path);
    }
}

TEST_F(PrivateFile, FailuresLeaveWhatWasThere)
{
    const std::string missing = m_scratch / "missing/.file";

    EXPECT_EQ(-1, OV_instWritePrivate(missing.c_str(), "text"));
    ASSERT_EQ(0, OV_instWritePrivate(m_path.c_str(), "kept"));
    const auto writeOnFullDisk = [&] {
        struct rlimit none = {};
        (void)setrlimit(RLIMIT_FSIZE, &none);
        (void)signal(SIGXFSZ, SIG_IGN);
        _exit(OV_instWritePrivate(m_path.c_str(), "lost") == -1 ? 3 : 4);
    };
    EXPECT_EXIT(writeOnFullDisk(), testing::ExitedWithCode(3), "");
    EXPECT_EQ("kept", content());
    EXPECT_EQ(std::set<std::string>{".file"}, names());
}
