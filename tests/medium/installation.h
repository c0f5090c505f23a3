/* A product of all kinds of objects, installed, and the companion run on it. */
#ifndef OVINST_TESTS_MEDIUM_INSTALLATION_H
#define OVINST_TESTS_MEDIUM_INSTALLATION_H

#include <gtest/gtest.h>

#include <map>

#include "runs/run.h"

struct Installation : testing::Test {
    Medium medium;
    const std::string m_runFile = medium.tree + "SetupFiles/.h.run";
    const std::string m_runHeader = "RunFileVersion 1\nTest Product\n3.5\n" + medium.place + "\n";

    void SetUp() override
    {
        medium.file("a", "text of a");
        medium.file("z.bz2", "as it is");
        medium.file("c", std::string(300000, 'c'));
        medium.file("tar/dir/f", "text of f");
        medium.file("tar/dir/we\nird", "w");
        fs::create_symlink("f", medium.place + "/tar/dir/l");
        fs::create_hard_link(medium.place + "/tar/dir/f", medium.place + "/tar/dir/h");
        must("cd '" + medium.place +
             "/tar' && chmod 644 dir/f && tar --sort=name -cf ../t.tar dir " +
             "&& tar --sort=name -cjf ../u.tar.bz2 dir");
        medium.describe(
            offering("Package \"files\" \"\"\nMkdir \"bin\" 0750\nCopy \"a\" \"bin/a\" 9 0604\n"
                     "CopyZ \"z.bz2\" \"\" 8 0644\nHardLink \"bin\" \"a\" \"b\"\n"
                     "SoftLink \"\" \"bin/a\" \"l\"\n"
                     "Package \"archives\" \"\"\nUntar \"t.tar\" 1 \"dir/\" 0 \"dir/f\" 9\n"
                     "UntarZ2 \"<CommonDest>\" \"u.tar.bz2\" 1 \"dir/f\" 9\n"
                     "Package \"other\" \"\"\nCopy \"c\" \"other/c\" 300000 0600\n"
                     "Suite \"S\" files archives\nSuite \"T\" other\n",
                     {"S", "T"}));
        fs::create_directories(medium.dest + "/Orvane");
        ASSERT_EQ(0, medium.install().iStatus);
    }
    RunResult run(std::vector<std::string> words)
    {
        words.insert(words.begin(), OVMEDIUM_PROGRAM);
        return medium.start(words);
    }
    RunResult verify() { return run({"verify", medium.dest}); }
    RunResult repair(const std::vector<std::string> &more = {})
    {
        std::vector<std::string> words = {"repair", medium.dest};
        words.insert(words.end(), more.begin(), more.end());
        return run(words);
    }
    /* What verify prints of the whole tree with these lines before. */
    static std::string differing(const std::string &lines, int iDifferent)
    {
        return lines + "16 checked, " + std::to_string(iDifferent) + " different\n";
    }
    /* Each path with its kind and mode, inode and time, and what it holds. */
    std::map<std::string, std::string> picture()
    {
        std::map<std::string, std::string> objects;
        for (const auto &entry : fs::recursive_directory_iterator(medium.dest)) {
            struct stat info = {};
            const std::string path = entry.path();
            lstat(path.c_str(), &info);
            if (!S_ISDIR(info.st_mode))
                objects[path] = std::to_string(info.st_mode) + " " + std::to_string(info.st_ino) +
                                " " + std::to_string(info.st_mtim.tv_nsec) +
                                (S_ISREG(info.st_mode) ? readFile(path) : "");
        }
        return objects;
    }
};

#endif
