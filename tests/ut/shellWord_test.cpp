#include <gtest/gtest.h>

#include <string>

#include "ut/owned.h"
#include "ut/shellWord.h"

/* What the shell makes of the command's output. */
static std::string output(const std::string &command)
{
    OwnedPipe pipe(popen(command.c_str(), "r"));
    std::string text;

    for (int iByte; pipe && (iByte = getc(pipe.get())) != EOF;)
        text += static_cast<char>(iByte);
    return text;
}

static const char *const s_apHostile[] = {
    "a b",     "~",    "~root",   "it's",   "''",       "a\"b", "$HOME",    "`id`",
    "$(id)",   "a;b",  "a&b",     "a\nb",   "\n",       "*",    "?[a]",     "a\\",
    "\\",      "\\\\", "\\$x",    "#a",     "a|b",      "<x",   "!!",       "{a,b}",
    "(x)",     "\t",   "\\\n",    "\\\"",   "\xc3\xa9", "'\"",  "\\`id\\`", "a\\%d",
    "'$(id)'", "%d",   "-n a\\c", "\\\\\"", "",
};

TEST(ShellWord, GivesTheShellOneLiteralWord)
{
    for (const char *pText : s_apHostile) {
        OwnedText word(OV_instShellWord(pText)), path(OV_instShellQuotedPath(pText));
        std::string expected = "<" + std::string(pText) + ">";
        EXPECT_EQ(output(std::string("printf '<%s>' ") + word.get()), expected);
        EXPECT_EQ(output(std::string("printf '<%s>' \"") + path.get() + "\""), expected);
    }
    OwnedText plain(OV_instShellWord("/usr/a-b_c.d:e,f@g+h=i%j"));
    EXPECT_STREQ(plain.get(), "/usr/a-b_c.d:e,f@g+h=i%j") << "an ordinary text stays as it is";
    EXPECT_EQ(OV_instShellWord(nullptr), nullptr);
}

TEST(ShellQuotedText, KeepsItsEscapesAndRunsNothing)
{
    static const struct {
        const char *pText, *pQuoted;
    } aRows[] = {
        {"\\\\ \\\" \\$ \\`", "\\\\ \\\" \\$ \\`"},
        {"\" $ `", "\\\" \\$ \\`"},
        {"end\\", "end\\\\"},
        {"a\\\nb", "a\\\\\nb"},
        {"a\\%d", "a\\\\%d"},
        {"\\\\\"", "\\\\\\\""},
    };
    for (const auto &row : aRows) {
        OwnedText quoted(OV_instShellQuotedText(row.pText));
        EXPECT_STREQ(quoted.get(), row.pQuoted);
    }
    /* Whatever the text, the quotes around it stay the only ones and nothing is substituted. */
    for (const char *pText : s_apHostile) {
        OwnedText quoted(OV_instShellQuotedText(pText));
        std::string got = output("set -- \"" + std::string(quoted.get()) + "\"; echo \"$#|$1\"");
        EXPECT_EQ(got.substr(0, 2), "1|") << pText;
        EXPECT_EQ(got.find("uid="), std::string::npos) << pText;
    }
}
