#include <gtest/gtest.h>

#include "engine/shortcutMenu.h"
#include "engine/toolChest.h"

#include "engine/engineTest.h"

struct ShortcutMenu : EngineTest {
    /* Installs a shortcut in the scratch directory: what is told, and the menu file behind it. */
    std::string install(const std::string &path, const std::string &label = "View",
                        const std::string &command = "view")
    {
        const std::string err = told([&] {
            (void)install_shortcut(path.c_str(), label.c_str(), command.c_str(),
                                   m_scratch.path.c_str());
        });
        EXPECT_FALSE(exists("@/ORVARC"));
        return err + got("@/.shortcuts");
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

TEST_F(ShortcutMenu, MissingMenusAreMadeAndThoseThereLedOnFrom)
{
    const std::string to3d = "\t\"3D\"\tf.menu 3D\n",
                      toApps = replaced(s_caToApps, " Apps", " \"Apps\""),
                      apps = menu("Apps", s_caOther + to3d), top = menu("ToolChest", s_caToApps),
                      topApps = top + apps, last = "\n" + menu("3D", s_caView),
                      half = "Menus ToolChest\n{\n\t\"Apps\n}\n";
    const std::pair<std::string, std::string> aRows[] = {
        {"", "\n" + top + "\n" + menu("Apps", to3d) + last},
        {menu("ToolChest", s_caOther) + menu("ToolChest", s_caOther),
         menu("ToolChest", s_caOther + toApps) + menu("ToolChest", s_caOther) + "\n" +
             menu("Apps", to3d) + last},
        {topApps, topApps + last},
        {topApps + menu("3D", "  \"View\" _V f.exec \"old\"\n" + std::string(s_caOther)),
         topApps + menu("3D", std::string(s_caView) + s_caOther)},
        {topApps + menu("3D", s_caOther), topApps + menu("3D", s_caOther) + last}, /* once more */
        {half + top + menu("Apps", to3d + to3d), half + top + menu("Apps", to3d + to3d) + last},
    };
    for (const auto &[before, after] : aRows) {
        put("@/.shortcuts", before);
        EXPECT_EQ(after, install("/ToolChest/Apps//3D/"));
        EXPECT_EQ(replaced(after, "\"view\"", "\"x\""), install("ToolChest/Apps/3D", "View", "x"));
    }
    put("@/.shortcuts", "");
    EXPECT_EQ("\n" + menu("ToolChest", "\t\"The \\\"3D\\\" one\"\tf.checkexec "
                                       "\"sh -c \\\"view 100% @\\\" %d\"\n"),
              install("ToolChest", "The \"3D\" one", "sh -c \"view 100%% %s\" %d"));
}

TEST_F(ShortcutMenu, RefusesWhatIsNoShortcut)
{
    const char *const aaRows[][3] = {{"", "l", "c"},     {"ToolChest", "", "c"},
                                     {"Apps", "l", "c"}, {"ToolChest", "l", ""},
                                     {"//", "l", "c"},   {"ToolChest", "l\nMenu x", "c"}};
    for (const auto &apRow : aaRows)
        EXPECT_EQ("Shortcut invalid parameters\n", install(apRow[0], apRow[1], apRow[2]));
    EXPECT_EQ("Overload in Shortcut menu parser\n", install("ToolChest/" + std::string(20, 'n')));
}

TEST_F(ShortcutMenu, PlantedLinksAreNotFollowed)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can plant what is somebody else's";
    struct stat info = {};
    Scratch outside;
    writeFile(outside / "victim", "precious\n");
    put("@/.shortcuts", "");
    ASSERT_EQ(0, chown(full("@/.shortcuts").c_str(), 4343, 4344));
    fs::create_symlink(outside / "victim", full("@/ORVARC")); /* at the new file's name: replaced */
    EXPECT_NE("", install("ToolChest"));
    ASSERT_EQ(0, stat(full("@/.shortcuts").c_str(), &info));
    EXPECT_TRUE(info.st_uid == 4343 && info.st_gid == 4344);
    fs::remove(full("@/.shortcuts")); /* in the old file's place: not read */
    fs::create_symlink(outside / "victim", full("@/.shortcuts"));
    ASSERT_EQ(0, lchown(full("@/.shortcuts").c_str(), 4242, 4242));
    EXPECT_EQ("Unable to open Shortcut file\nprecious\n", install("ToolChest"));
}

TEST_F(ShortcutMenu, SincludeLineIsAddedOnce)
{
    const auto add = [&](const char *pTitle) {
        return told([&] { (void)OV_instAddSinclude(nullptr, pTitle); });
    };
    put("@/.auxchestrc", "sinclude /else/.title");
    EXPECT_EQ("", add("/opt//o/") + add("/opt/o"));
    EXPECT_EQ("sinclude /else/.title\nsinclude /opt/o/.title\n", got("@/.auxchestrc"));
    fs::create_hard_link(full("@/.auxchestrc"), full("@/victim")); /* has another name elsewhere */
    EXPECT_EQ(full("Unable to open shortcut file: @/.auxchestrc\n"), add("/opt/p"));
    EXPECT_EQ("sinclude /else/.title\nsinclude /opt/o/.title\n", got("@/victim"));
    unsetenv("HOME");
    EXPECT_EQ("Unable to get Home env var for sinclude\n", add("/opt"));
}
