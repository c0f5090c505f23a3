#include <gtest/gtest.h>

#include <string>

#include "support.h"
#include "ut/OVinstFileUtils.h"
#include "ut/owned.h"
#include "ut/wholeFile.h"

/* The text of a result that the caller owns; "(null)" for none. */
static std::string taken(char *pText)
{
    OwnedText text(pText);
    return text ? text.get() : "(null)";
}

/* Every line that OV_instGetline gives, each followed by "|", and what it counted. */
static std::string linesOf(const std::string &bytes)
{
    OwnedFile file(fmemopen(const_cast<char *>(bytes.data()), bytes.size(), "r"));
    std::string lines;
    int iLine = 100;

    while (char *pLine = OV_instGetline(file.get(), &iLine))
        lines += taken(pLine) + "|";
    return lines + std::to_string(iLine - 100);
}

/* The working directory is a scratch one meanwhile. */
struct InDirectory : testing::Test {
    void SetUp() override
    {
        fs::current_path(scratch.path);
        fs::create_directory("dir");
        fs::create_directory_symlink("dir", "link");
        writeFile(scratch / "file", std::string("a\0b\n", 4));
        writeFile(scratch / "empty", "");
    }
    void TearDown() override { fs::current_path(before); }
    Scratch scratch;
    const fs::path before = fs::current_path();
    const std::string base = scratch.path;
};

TEST(BuildPath, JoinsWithSingleSlashes)
{
    EXPECT_EQ(taken(OV_instBuildPath("", "x", nullptr)), "/x");
    EXPECT_EQ(taken(OV_instBuildPath("a", "", "", nullptr)), "a/");
    EXPECT_EQ(taken(OV_instBuildPath("..", ".", "//", "x/", nullptr)), ".././x/");
}

TEST(PathParts, SplitAtTheLastSlash)
{
    const struct {
        const char *pPath, *pDirectory, *pBase;
    } aRows[] = {
        {"/mnt/cd/cdinst.dat", "/mnt/cd/", "cdinst.dat"},
        {"/x", "/", "x"},
        {"cdinst.dat", "./", "cdinst.dat"},
        {"a//b///", "a/", ""},
        {"/", "./", ""},
        {"", "./", ""},
        {nullptr, "(null)", "(null)"},
    };
    for (const auto &row : aRows) {
        SCOPED_TRACE(row.pPath ? row.pPath : "null");
        EXPECT_EQ(taken(OV_instDirname(row.pPath)), row.pDirectory);
        EXPECT_EQ(taken(OV_instBasename(row.pPath)), row.pBase);
    }
    const std::string longest(4096, 'x');
    EXPECT_EQ(taken(OV_instDirname(longest.c_str())), "./");
    EXPECT_EQ(taken(OV_instBasename(longest.c_str())), longest);
    EXPECT_EQ(OV_instDirname((longest + "x").c_str()), nullptr);
}

TEST_F(InDirectory, ResolvesTheDirectory)
{
    EXPECT_EQ(taken(OV_instGetRealPath("link/none")), base + "/dir/");
    EXPECT_EQ(taken(OV_instGetRealPath("link/")), base + "/"); /* the directory of link itself */
    EXPECT_EQ(taken(OV_instGetRealPath("/none")), "/");
    EXPECT_EQ(told([] { EXPECT_EQ(OV_instGetRealPath("none//x"), nullptr); }),
              "Error: can't obtain realpath of <none/>\n");
}

TEST_F(InDirectory, FindsTheNearestDirectory)
{
    EXPECT_EQ(taken(OV_instGetPartitionDirectory((base + "/dir/a//b/").c_str())), base + "/dir/");
    EXPECT_EQ(taken(OV_instGetPartitionDirectory("link")), "link");
    EXPECT_EQ(taken(OV_instGetPartitionDirectory("/no/such")), "/");
    EXPECT_EQ(taken(OV_instGetPartitionDirectory(nullptr)), base);
    EXPECT_EQ(OV_instGetPartitionDirectory("file"), nullptr);
    EXPECT_EQ(taken(OV_instGetPartitionDirectory("file/")), "./");
    EXPECT_EQ(OV_instGetPartitionDirectory(std::string(4097, 'x').c_str()), nullptr);
}

TEST_F(InDirectory, ReadsAndCopiesStreamsToTheirEnd)
{
    const std::string content = std::string(70000, 'x') + '\0' + "end";
    std::string text = "before ";
    OwnedFile file(fopen("file", "w+"));
    OwnedFile directory(fopen("dir", "r"));
    OwnedFile full(fopen("/dev/full", "w"));

    ASSERT_EQ(content.size(), fwrite(content.data(), 1, content.size(), file.get()));
    rewind(file.get());
    EXPECT_EQ(0, OV_instReadWhole(file.get(), &text));
    EXPECT_EQ("before " + content, text);
    EXPECT_EQ(-1, OV_instReadWhole(directory.get(), &text));
    rewind(file.get());
    EXPECT_EQ(-1, OV_instCopyWhole(file.get(), full.get()));
}

TEST(Getline, JoinsAndCounts)
{
    const struct {
        const char *pBytes, *pExpected;
    } aRows[] = {
        {"abc\\\ndef\n", "abc def|3"}, {"a\n\nb", "a||b|3"},     {"a\\\\\nb\n", "a\\ b|3"},
        {"a\\\n\nb\n", "a |b|4"},      {"\\\n\\\nb\n", "  b|4"}, {"a\\ \nb\\", "a\\ |b\\|2"},
        {"a\nlost\\\n", "a|3"},
    };
    for (const auto &row : aRows)
        EXPECT_EQ(linesOf(row.pBytes), row.pExpected);
    EXPECT_EQ(linesOf(std::string("\0\na\0b\nc", 7)), "|a|c|3"); /* a zero byte hides no newline */
    EXPECT_EQ(linesOf(std::string("a\0\\\nb\n", 6)), "a|b|3");
}

TEST(Getline, ReadsPiecesOf102399Bytes)
{
    const std::string full(102398, 'x');
    EXPECT_TRUE(linesOf(full + "\n") == full + "|2");
    EXPECT_TRUE(linesOf(full + "x\n") == full + "x|3");
    EXPECT_TRUE(linesOf(full + "\\\nb\n") == full + " b|4"); /* the newline is the second piece */
    EXPECT_TRUE(linesOf("a\n" + full + "x") == "a|3");       /* unfinished, and lost */
    EXPECT_TRUE(linesOf(full + full + "\n" + full) == full + full + "|" + full + "|3");
}
