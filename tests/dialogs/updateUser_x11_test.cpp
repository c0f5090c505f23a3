#include <gtest/gtest.h>

#include "Dialogs/UpdateUser.h"
#include "engine/environmentFile.h"

#include <algorithm>

#include <Xm/List.h>

#include "dialogTest.h"
#include "ut/owned.h"

struct UpdateUser : DialogTest {
    void prepare() override
    {
        fs::create_directories(full("@/tmp"));
        fs::create_directories(full("@/home"));
        OV_instSetPrivateDirectory(full("@/tmp").c_str());
    }
    static Widget dialog() { return openBox("mbUpdateUser"); }
    static Widget name() { return OV_instFindWidget(dialog(), "txUpdateUserUsername"); }
    static Widget userList() { return openBox("*listUpdateUserUsernames"); }
    /* Shows the dialog, uses it and continues. */
    void use(const std::function<void()> &steps)
    {
        (void)whileUsed({{"mbUpdateUser:Cancel", [&](Widget) { steps(); }}},
                        [&] { OV_instUpdateUser(main(), full("D/").c_str()); });
        EXPECT_EQ(nullptr, dialog());
    }
    void copy(const char *pWhat)
    {
        SCOPED_TRACE(pWhat);
        copy_orvane_file(full("@/home").c_str(), full("D/").c_str(), 4242, 4243);
        EXPECT_FALSE(exists("@/home/.kivo_install_tmp_file"));
    }
    struct stat statusOf(const std::string &path)
    {
        struct stat info = {};
        EXPECT_EQ(0, lstat(full(path).c_str(), &info)) << path;
        return info;
    }
};

TEST_F(UpdateUser, ListsTheUsersAndTakesTheOneChosen)
{
    use([&] {
        EXPECT_TRUE(press(dialog(), "pbUpdateUserSelectUser"));
        Widget list = userList();
        ASSERT_NE(nullptr, list);
        EXPECT_STREQ("User List", resourceOf<String>(OV_instGetShell(list), XmNtitle));
        EXPECT_EQ(200, OV_instGetShell(list)->core.width);
        EXPECT_EQ(600, OV_instGetShell(list)->core.height);
        EXPECT_TRUE(fs::is_empty(full("@/tmp")));

        std::vector<std::string> names;
        XmStringTable items = resourceOf<XmStringTable>(list, XmNitems);
        for (int i = 0; i < resourceOf<int>(list, XmNitemCount); i++)
            names.push_back(components(items[i]));
        EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
        const auto root = std::find(names.begin(), names.end(), "L 'root'");
        ASSERT_NE(names.end(), root);
        EXPECT_TRUE(press(dialog(), "pbUpdateUserSelectUser")); /* no second window */
        XmListSelectPos(list, (int)(root - names.begin()) + 1, True);
        settle();
        EXPECT_EQ("root", textIn(name()));
        EXPECT_EQ(nullptr, userList());

        EXPECT_TRUE(press(dialog(), "pbUpdateUserSelectUser")); /* left open */
        EXPECT_NE(nullptr, userList());
    });
    EXPECT_EQ(0, check_if_yp());
    EXPECT_EQ(0, check_if_file_exist("/"));
    EXPECT_EQ(1, check_if_file_exist(full("@/none").c_str()));
    OV_instUpdateUser(nullptr, "/");
}

TEST_F(UpdateUser, PlacesOfTemporaryFilesThatCannotBeTrusted)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe"); /* with a connection of its own */
    static std::string s_scratch; /* in the process that ends: it has one of its own */
    s_scratch = m_scratch.path.string();
    const auto choose = [&] {
        atexit([] {
            const std::string kept = readFile(s_scratch + "/victim");
            fs::remove_all(s_scratch);
            _exit(kept == "precious\n" ? 5 : 6);
        });
        use([&] {
            (void)press(dialog(), "pbUpdateUserSelectUser");
            _exit(7);
        });
    };
    put("@/victim", "precious\n");
    for (const char *pPlanted : {".kivo_install_tmp_names1", ".kivo_install_tmp_names"}) {
        const fs::path path = full(std::string("@/tmp/") + pPlanted);
        fs::create_symlink(full("@/victim"), path);
        EXPECT_EXIT(choose(), testing::ExitedWithCode(5), "") << pPlanted; /* by exit */
        fs::remove(path);
    }
    fs::remove_all(full("@/tmp")); /* the host has no such directory */
    EXPECT_EXIT(choose(), testing::ExitedWithCode(5), "");
    GTEST_FLAG_SET(death_test_style, "fast");
}

TEST_F(UpdateUser, AnswersForWhoIsNamed)
{
    put("D/KIVO_FILE", "");
    use([&] {
        EXPECT_TRUE(press(dialog(), "OK")); /* nobody: nothing happens */
        EXPECT_EQ(nullptr, openBox());
        XmTextFieldSetString(name(), (char *)"nobody;touch /tmp/100%s");
        EXPECT_EQ("ERROR: User nobody;touch /tmp/100%s doesn't exist.|",
                  whileUsed({"y"}, [] { press(dialog(), "OK"); }));
        EXPECT_EQ("", textIn(name()));
    });
}

TEST_F(UpdateUser, CopyIsNotLedAstray)
{
    put("D/KIVO_FILE", "OV=1\n");
    ASSERT_EQ(0, chmod(full("D/KIVO_FILE").c_str(), 0644));
    put("@/victim", "precious\n");
    copy("a new file");
    EXPECT_EQ("OV=1\n", got("@/home/KIVO_FILE"));

    put("@/home/KIVO_FILE", "old\n");
    ASSERT_EQ(0, chmod(full("@/home/KIVO_FILE").c_str(), 0600));
    put("D/KIVO_FILE", "OV=2\n");
    copy("a file that is there");
    EXPECT_EQ("OV=2\n", got("@/home/KIVO_FILE"));
    EXPECT_EQ(0600U, modeOf("@/home/KIVO_FILE"));

    for (const char *pTrap : {"@/home/KIVO_FILE", "@/home/.kivo_install_tmp_file"}) {
        fs::remove(full(pTrap));
        fs::create_symlink(full("@/victim"), full(pTrap));
        copy(pTrap);
        EXPECT_EQ("precious\n", got("@/victim"));
        EXPECT_TRUE(S_ISREG(statusOf("@/home/KIVO_FILE").st_mode));
        EXPECT_EQ("OV=2\n", got("@/home/KIVO_FILE"));
    }
    fs::remove(full("@/home/KIVO_FILE"));
    fs::create_hard_link(full("@/victim"), full("@/home/KIVO_FILE"));
    copy("another name of a file");
    EXPECT_EQ("precious\n", got("@/victim"));

    if (geteuid() == 0) { /* the source changes hands, the copy does not */
        EXPECT_EQ(4242U, statusOf("D/KIVO_FILE").st_uid);
        EXPECT_EQ(4243U, statusOf("D/KIVO_FILE").st_gid);
        EXPECT_EQ(0U, statusOf("@/home/KIVO_FILE").st_uid);
    }
    fs::remove(full("D/KIVO_FILE"));
    fs::remove(full("@/home/KIVO_FILE"));
    EXPECT_EQ(full("ERROR: Can't find file: D/KIVO_FILE\n"), told([&] { copy("no source"); }));
    EXPECT_FALSE(exists("@/home/KIVO_FILE"));
}

TEST_F(UpdateUser, NewFileSetsTheEnvironment)
{
    const std::string path = full("@/home/.kivo_2.01"), destination = m_root + "it's $1/";
    const auto run = [&](const char *pShow) {
        const std::string command = "HOME=/h USER=u sh -c '. " + path + "; echo \"" + pShow + "\"'";
        char caLine[4096] = "";
        OwnedPipe output(popen(command.c_str(), "r"));
        return std::string(output && fgets(caLine, sizeof caLine, output.get()) ? caLine : "");
    };
    SetDefaultUserHome(nullptr);
    create_orvane_file(full("@/home").c_str(), destination.c_str(), 4242, 4243);
    EXPECT_EQ(m_root + "it's $1|/h\n", run("$OV_HOME|$OV_USER_ROOT"));
    EXPECT_EQ(0U, run("$PATH").find(m_root + "it's $1/Application/bin:"));
    EXPECT_EQ(0644U, modeOf("@/home/.kivo_2.01"));
    if (geteuid() == 0) {
        EXPECT_EQ(4242U, statusOf("@/home/.kivo_2.01").st_uid);
    }
    SetDefaultUserHome("/net/$x\"y");
    create_orvane_file(full("@/home").c_str(), "/opt/o/", 4242, 4243);
    EXPECT_EQ("/opt/o|/net/$x\"y/u\n", run("$OV_HOME|$OV_USER_ROOT"));
    create_orvane_file(full("@/none").c_str(), "/opt/o/", 4242, 4243);
}
