#include "medium/installation.h"

#include <unistd.h>

struct Update : testing::Test {
    Medium medium;

    void SetUp() override
    {
        medium.file("a", "1234567890");
        medium.file("empty", "");
        medium.file("in/d/f", "four");
        medium.file("in/d/g", "");
        medium.file("in/qu\"ote", "x");
        must("cd '" + medium.place + "/in' && tar --sort=name -cf ../t.tar d && " +
             "tar --sort=name -cjf ../u.tar.bz2 d && tar --sort=name -cf ../q.tar d 'qu\"ote'");
    }
    RunResult run(const std::vector<std::string> &words)
    {
        std::vector<std::string> all = {OVMEDIUM_PROGRAM, "update"};
        all.insert(all.end(), words.begin(), words.end());
        return medium.start(all);
    }
};

TEST_F(Update, MakesTheLinesTrueAndLeavesTheRest)
{
    static const char s_caList[] = " \\\n    \"d/\" 0 \\\n    \"d/f\" 4 \\\n    \"d/g\" 0\n";
    struct Row {
        const char *pBefore;
        std::string after; /* empty: as before */
        int iStatus;
    };
    const Row aRows[] = {
        {"Copy \"a\" \"\" 10 0644 # so\n", "", 0},
        {"  Copy \"empty\" \"x\" 0 0644\n", "", 0},
        {"Copy \"a\" \"b\" 9 0755 1 2\n", "Copy \"a\" \"b\" 10 0755 1 2\n", 0},
        {"CopyZ \"a\",\"b\" = 0x1F 0755\n", "CopyZ \"a\",\"b\" = 10 0755\n", 0},
        {"Copy \"a\" \\\n  \"b\" \\\n 017 0755\n", "Copy \"a\" \\\n  \"b\" \\\n 10 0755\n", 0},
        {"Copy \"a\" \"b\" \t\n", "Copy \"a\" \"b\" 10 \t\n", 0},
        {"Copy \"a\"\n", "Copy \"a\" 10\n", 0},
        {"Copy \"none\" \"\" 9 0644\n", "", 1},
        {"Untar \"t.tar\" 77 \"d\" 0 \"./d/f\" 4, \"d/g\" 0\n", "", 0},
        {"Untar \"t.tar\" 77 \"d/f\" 4\n", std::string("Untar \"t.tar\" 77") + s_caList, 0},
        {"Untar \"t.tar\"\n", std::string("Untar \"t.tar\" 0") + s_caList, 0},
        {"Untar \"t.tar\" 5 \"d/\" 0 \"d/f\" 4 \"d/g\" 0 \n",
         std::string("Untar \"t.tar\" 5") + s_caList, 0},
        {"UntarZ2 \"<RootDest>\" \"u.tar.bz2\" 1 \\\n \"d/g\" \\\n 0\n",
         std::string("UntarZ2 \"<RootDest>\" \"u.tar.bz2\" 1") + s_caList, 0},
        {"Untar \"q.tar\" 1 \"qu\" 1\n", std::string("Untar \"q.tar\" 1") + s_caList, 1},
        {"Untar \"a\" 1 \"x\" 1\n", "", 1},
        {"Mkdir \"a\" 1\n", "", 0},
    };

    for (const Row &row : aRows) {
        SCOPED_TRACE(row.pBefore);
        const std::string around = "\n# a comment\\\n goes on\nPackage \"all\" \"\"\n";
        const std::string rest = "Suite \"Base\" all\n\n  # end";
        const std::string before = usualHeader() + around + row.pBefore + rest;
        const std::string after =
            usualHeader() + around + (row.after.empty() ? row.pBefore : row.after) + rest;
        medium.file("cdinst.dat", before);
        must("chmod 640 '" + medium.place + "/cdinst.dat'");
        const RunResult told = run({medium.place});
        EXPECT_EQ(after, told.out) << told.err;
        EXPECT_EQ(row.iStatus, told.iStatus) << told.err;
        EXPECT_EQ(before, readFile(medium.place + "/cdinst.dat"));
        EXPECT_EQ(row.iStatus, run({"--write", medium.place}).iStatus);
        EXPECT_EQ(after, readFile(medium.place + "/cdinst.dat"));
        EXPECT_EQ(0640u, modeOf(medium.place + "/cdinst.dat"));
        EXPECT_EQ(after, run({medium.place}).out) << "once is enough";
        const std::string found = medium.start({OVMEDIUM_PROGRAM, "check", medium.place}).out;
        for (const char *pCode : {"member-missing", "size-differs", "member-unlisted"})
            EXPECT_TRUE(row.iStatus || found.find(pCode) == std::string::npos) << found;
    }
    EXPECT_EQ(2, run({medium.scratch / "nowhere"}).iStatus);
}

TEST(New, MakesAMediumThatInstalls)
{
    Medium medium;
    const std::string made = medium.scratch / "made";
    auto companion = [&](std::vector<std::string> words) {
        words.insert(words.begin(), OVMEDIUM_PROGRAM);
        return medium.start(words);
    };

    ASSERT_EQ(0, companion({"new", made}).iStatus);
    EXPECT_EQ("0 errors, 0 warnings, 0 notes\n", companion({"check", "--strict", made}).out);
    EXPECT_EQ(2, companion({"new", made}).iStatus) << "there is something";
    EXPECT_EQ(readFile(made + "/cdinst.dat"), companion({"update", made}).out);
    fs::remove_all(medium.place);
    fs::rename(made, medium.place);
    ASSERT_EQ(0, medium.install().iStatus);
    EXPECT_EQ("8 checked, 0 different\n", companion({"verify", medium.dest}).out);
    EXPECT_EQ(0, system((medium.dest + "/example/bin/hello >/dev/null").c_str()));

    /* half of one is none */
    fs::create_directories(made);
    EXPECT_EQ(2, medium
                     .start({"/bin/sh", "-c",
                             "ulimit -f 100; trap '' XFSZ; exec " OVMEDIUM_PROGRAM " new " + made})
                     .iStatus);
    EXPECT_TRUE(fs::is_empty(made));
}
