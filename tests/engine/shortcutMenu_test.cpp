#include <gtest/gtest.h>

#include "engine/shortcutMenu.h"
#include "engine/toolChest.h"

#include <csignal>
#include <sys/resource.h>

#include "engine/engineTest.h"

struct ShortcutMenu : EngineTest {
    std::string m_told;

    /* Installs a shortcut in the scratch directory: the menu file behind it. */
    std::string install(const std::string &path, const std::string &label = "View",
                        const std::string &command = "view", int iExpected = 0)
    {
        m_told = told([&] {
            EXPECT_EQ(iExpected, install_shortcut(path.c_str(), label.c_str(), command.c_str(),
                                                  m_scratch.path.c_str()));
        });
        EXPECT_FALSE(exists("@/ORVARC"));
        return got("@/.shortcuts");
    }
    std::string installInto(const std::string &menus, const std::string &path,
                            const std::string &label = "View", const std::string &command = "view")
    {
        put("@/.shortcuts", menus);
        return install(path, label, command);
    }
    /* A menu with these entries. */
    static std::string menu(const std::string &name, const std::string &entries)
    {
        return "Menu " + name + "\n{\n" + entries + "}\n";
    }
};

static const char s_caView[] = "\t\"View\"\tf.checkexec \"view\"\n";
static const char s_caOther[] = "\t\"Other\"\tf.exec \"other\"\n";
static const char s_caToApps[] = "\t\"Apps\"\tf.menu Apps\n";

TEST_F(ShortcutMenu, MissingMenusAreMade)
{
    const std::string made = "\n" + menu("ToolChest", s_caToApps) + "\n" +
                             menu("Apps", "\t\"3D\"\tf.menu 3D\n") + "\n" + menu("3D", s_caView);
    EXPECT_EQ(made, install("ToolChest/Apps/3D"));
    EXPECT_EQ(0644U, modeOf("@/.shortcuts"));
    EXPECT_EQ(made, install("ToolChest/Apps/3D")); /* twice the same */
    EXPECT_EQ(replaced(made, "\"view\"", "\"view -2\""),
              install("ToolChest/Apps/3D", "View", "view -2"));
    EXPECT_EQ("! none\n\n" + menu("ToolChest", s_caView),
              installInto("! none\n", "/ToolChest/")); /* without the top menu */
}

TEST_F(ShortcutMenu, WhatIsThereIsLedOnFrom)
{
    const std::string toApps = replaced(s_caToApps, " Apps", " \"Apps\""),
                      apps = menu("Apps", std::string(s_caOther) + "\t\"3D\"\tf.menu 3D\n"),
                      top = menu("ToolChest", s_caToApps);
    const struct {
        const char *pWhat;
        std::string before, after;
    } rows[] = {
        {"a top menu that leads elsewhere", menu("ToolChest", s_caOther),
         menu("ToolChest", s_caOther + toApps) + "\n" + menu("Apps", "\t\"3D\"\tf.menu 3D\n") +
             "\n" + menu("3D", s_caView)},
        {"all but the last menu", top + apps, top + apps + "\n" + menu("3D", s_caView)},
        {"the entry with other blanks and another function",
         top + apps + menu("3D", "  \"View\" _V f.exec \"old\"\n" + std::string(s_caOther)),
         top + apps + menu("3D", std::string(s_caView) + s_caOther)},
        {"a menu without the entry is made once more", top + apps + menu("3D", s_caOther),
         top + apps + menu("3D", s_caOther) + "\n" + menu("3D", s_caView)},
        {"half a label, words that only begin alike",
         "Menus ToolChest\n{\n\t\"Apps\n}\n" + top + apps,
         "Menus ToolChest\n{\n\t\"Apps\n}\n" + top + apps + "\n" + menu("3D", s_caView)},
    };
    for (const auto &row : rows)
        EXPECT_EQ(row.after, installInto(row.before, "ToolChest/Apps/3D")) << row.pWhat;
    EXPECT_EQ(menu("ToolChest", std::string(s_caOther) + s_caView),
              installInto(menu("ToolChest", s_caOther), "ToolChest"));
    EXPECT_EQ(menu("ToolChest", s_caView),
              installInto(menu("ToolChest", "\"View\" f.quit\n"), "ToolChest"));
}

TEST_F(ShortcutMenu, QuotesStayWithinTheirText)
{
    const std::string made = install("ToolChest", "The \"3D\" one", "sh -c \"view 100%% %s\" %d");
    EXPECT_EQ("\n" + menu("ToolChest", "\t\"The \\\"3D\\\" one\"\tf.checkexec "
                                       "\"sh -c \\\"view 100% @\\\" %d\"\n"),
              made);
    EXPECT_EQ(replaced(made, "sh -c \\\"view 100% @\\\" %d", "x"),
              install("ToolChest", "The \"3D\" one", "x"));
}

TEST_F(ShortcutMenu, LimitsOfThePath)
{
    const std::string nineteen(19, 'n');
    std::string twenty = "ToolChest";
    for (int i = 1; i < 20; i++)
        twenty += "/m" + std::to_string(i);

    EXPECT_NE(std::string::npos, install(twenty).find("Menu m19\n{\n" + std::string(s_caView)));
    EXPECT_NE(std::string::npos, install("ToolChest/" + nineteen).find("Menu " + nineteen + "\n"));
    const std::string before = got("@/.shortcuts");
    for (const std::string &path : {twenty + "/m20", "ToolChest/" + nineteen + "n"}) {
        EXPECT_EQ(before, install(path, "View", "view", 1));
        EXPECT_EQ("Overload in Shortcut menu parser\n", m_told);
    }
}

TEST_F(ShortcutMenu, RefusesWhatIsNoShortcut)
{
    const struct {
        const char *pPath, *pLabel, *pCommand;
    } rows[] = {
        {"", "l", "c"},     {"ToolChest", "", "c"}, {"ToolChest", "l", ""},
        {"Apps", "l", "c"}, {"//", "l", "c"},       {"ToolChest", "l\nMenu x", "c"},
    };
    for (const auto &row : rows) {
        EXPECT_EQ("", install(row.pPath, row.pLabel, row.pCommand, 1));
        EXPECT_EQ("Shortcut invalid parameters\n", m_told) << row.pPath;
    }
    EXPECT_EQ("Unable to open Shortcut file\n", told([&] {
                  EXPECT_EQ(1, install_shortcut("ToolChest", "l", "c", full("@/none").c_str()));
              }));
}

TEST_F(ShortcutMenu, FullDiskLeavesTheOldFile)
{
    const std::string old = menu("ToolChest", s_caToApps) + std::string(3000, '!') + "\n";
    put("@/.shortcuts", old);
    const auto installInRoom = [this](rlim_t lRoom) {
        const struct rlimit room = {lRoom, lRoom};
        signal(SIGXFSZ, SIG_IGN);
        setrlimit(RLIMIT_FSIZE, &room);
        _exit(install_shortcut("ToolChest/Apps", "View", "view", m_scratch.path.c_str()));
    };
    EXPECT_EXIT(installInRoom(1000), testing::ExitedWithCode(1),
                "^fputs failed writing shortcut\n$");
    EXPECT_EXIT(installInRoom(old.size() + 10), testing::ExitedWithCode(1),
                "^fputs failed writin shortcut\n$"); /* spelt so */
    EXPECT_EQ(old, got("@/.shortcuts"));
    EXPECT_FALSE(exists("@/ORVARC"));
}

TEST_F(ShortcutMenu, PlantedLinksAreNotFollowed)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can plant what is somebody else's";
    struct stat info = {};
    put("@/victim", "precious\n");
    ASSERT_EQ(0, chown(m_scratch.path.c_str(), 4242, 4242));
    fs::create_symlink(full("@/victim"), full("@/ORVARC")); /* at the new file's name: replaced */
    EXPECT_NE("", install("ToolChest"));
    ASSERT_EQ(0, lstat(full("@/.shortcuts").c_str(), &info));
    EXPECT_TRUE(S_ISREG(info.st_mode) && info.st_uid == 4242) << "the directory's owner";
    ASSERT_EQ(0, chown(full("@/.shortcuts").c_str(), 4343, 4344));
    ASSERT_EQ(0, chmod(full("@/.shortcuts").c_str(), 0640));
    EXPECT_NE("", install("ToolChest", "More"));
    ASSERT_EQ(0, stat(full("@/.shortcuts").c_str(), &info));
    EXPECT_TRUE(info.st_uid == 4343 && info.st_gid == 4344 && (info.st_mode & 07777) == 0640);
    fs::remove(full("@/.shortcuts")); /* in the old file's place: not read */
    fs::create_symlink(full("@/victim"), full("@/.shortcuts"));
    ASSERT_EQ(0, lchown(full("@/.shortcuts").c_str(), 4242, 4242));
    EXPECT_EQ("precious\n", install("ToolChest", "View", "view", 1));
    EXPECT_EQ("Unable to open Shortcut file\n", m_told);
}

TEST_F(ShortcutMenu, SincludeLineIsAddedOnce)
{
    const std::string home = m_scratch.path.string();
    const auto add = [&](const char *pHome, const char *pTitle) {
        int iResult = 0;
        m_told = told([&] { iResult = OV_instAddSinclude(pHome, pTitle); });
        return iResult;
    };
    put("@/.auxchestrc", "sinclude /else/.title");
    EXPECT_EQ(0, add(nullptr, "/opt//o/"));
    EXPECT_EQ(0, add(home.c_str(), "/opt/o"));
    EXPECT_EQ("sinclude /else/.title\nsinclude /opt/o/.title\n", got("@/.auxchestrc"));
    /* What has another name elsewhere. */
    fs::create_hard_link(full("@/.auxchestrc"), full("@/victim"));
    EXPECT_EQ(1, add(home.c_str(), "/opt/p"));
    EXPECT_EQ("Unable to open shortcut file: " + home + "/.auxchestrc\n", m_told);
    EXPECT_EQ("sinclude /else/.title\nsinclude /opt/o/.title\n", got("@/victim"));
    EXPECT_EQ(1, add(home.c_str(), nullptr));
    EXPECT_EQ("Unable to get OV_LOCATION env var for sinclude\n", m_told);
    unsetenv("HOME");
    EXPECT_EQ(1, add(nullptr, "/opt"));
    EXPECT_EQ("Unable to get Home env var for sinclude\n", m_told);
}
