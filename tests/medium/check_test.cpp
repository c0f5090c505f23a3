#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <random>
#include <set>

#include "description/configLines.h"
#include "description/model.h"
#include "description/reader.h"
#include "medium/commands.h"
#include "medium/findings.h"
#include "medium/sample.h"

using Json = nlohmann::json;

/* What check prints of the sample, and its status. */
struct Checked {
    int iStatus;
    std::string text;
};

static Checked check(const Sample &sample, OV_MediumFormat format, bool bStrict = false)
{
    OV_MediumOptions options;
    Checked checked = {};

    options.place = sample.scratch.path;
    options.format = format;
    options.bStrict = bStrict;
    (void)told(
        [&] { checked.text = printed([&] { checked.iStatus = OV_mediumCheck(&options); }); });
    return checked;
}

static Json answer(const Sample &sample)
{
    return Json::parse(check(sample, OV_MEDIUM_JSON).text);
}

/* The findings in their order, "LINE:COLUMN SEVERITY CODE", with "!" for one that rejects, a line
 * each; and behind all "refused" where setup does. */
static std::string found(const Sample &sample)
{
    const Json all = answer(sample);
    std::string text;

    for (const Json &one : all["findings"])
        text += std::to_string(one["line"].get<int>()) + ":" +
                std::to_string(one["column"].get<int>()) + " " +
                one["severity"].get<std::string>() + " " + one["code"].get<std::string>() +
                (one["rejects"] ? "!" : "") + "\n";
    return text + (all["accepted"] ? "" : "refused\n");
}

/* Whether setup's own reader takes the description. */
static bool isTaken(const Sample &sample)
{
    _OV_instCDinst *pRoot = nullptr;

    (void)told([&] {
        (void)printed([&] { pRoot = OV_instReadCDinst(sample.at("cdinst.dat").c_str(), nullptr); });
    });
    OV_instParsingConfiguration = 0; /* the reader leaves it as it is */
    const bool bTaken = pRoot != nullptr;
    OV_instFreeCDinst(pRoot);
    return bTaken;
}

static void expect(const Sample &sample, const std::string &expected, const std::string &what)
{
    EXPECT_EQ(expected, found(sample)) << what;
    EXPECT_EQ(expected.find("refused") == std::string::npos, isTaken(sample)) << what;
}

TEST(Check, HasNothingToSayOfAGoodMedium)
{
    const Sample sample;
    const Checked checked = check(sample, OV_MEDIUM_TEXT, true);

    EXPECT_EQ("0 errors, 0 warnings, 0 notes\n", checked.text);
    EXPECT_EQ(OV_MEDIUM_CLEAN, checked.iStatus);
    EXPECT_TRUE(isTaken(sample));
    OV_MediumOptions options;
    options.place = SETUP_BUILD_DIR "/medium"; /* the one that the demonstration installs */
    EXPECT_EQ(checked.text, printed([&] { (void)OV_mediumCheck(&options); }));
}

/* One line in place of another, and all that is said of it. */
struct LineRow {
    int iLine;
    const char *pLine;
    const char *pFound;
};

#define TEN_TIMES(TEXT) TEXT TEXT TEXT TEXT TEXT TEXT TEXT TEXT TEXT TEXT
#define LONG_NAME TEN_TIMES("twenty-six-letters-of-them") /* longer than a file's may be */

static const LineRow s_aLines[] = {
    {1, "SetupVersion 2", "1:14 error header-key!\nrefused\n"},
    {2, nullptr, "2:1 error header-key!\nrefused\n"},
    {2, "#\nProductName Orvane", "2:1 error header-key!\nrefused\n"},
    {2, "Productname Orvane", "2:1 error header-key!\nrefused\n"},
    {2, "ProductVersion 3\nProductName Orvane",
     "2:1 error header-key!\n4:1 error header-key!\nrefused\n"},
    {6, "NoChestRC\nHistoryFile h\nPackage \"core\"", "7:1 error header-key!\nrefused\n"},
    {7, "MkDir \"Application\" 0755", "7:1 error unknown-keyword!\nrefused\n"},
    {6, "  package \"core\"", "6:3 error unknown-keyword!\nrefused\n"},
    {7, "Env \"Application\" \\\n 0755",
     "7:1 error unknown-keyword!\n9:19 note directory-stays\nrefused\n"},
    {6, "Mkdir \"a\" 0755\nPackage \"core\"", "6:1 error outside-package!\nrefused\n"},
    {8, "Copy \"Files/kivo", "8:6 error unterminated-text!\nrefused\n"},
    {13, "Package \"more", "13:9 error unterminated-text!\nrefused\n"},
    {12, "Shortcut \"a\" \"b\" \"c\" \"d",
     "12:1 note shortcut-unused\n12:22 error unterminated-text\n"},
    {9, "Untar \"Archives/a.tar\" 9 \\\n\"share/ 0", "10:1 error unterminated-text!\nrefused\n"},
    {8, "Copy \"\" \"Application/kivo\" 5 0755", "8:6 error missing-field\n"},
    {8, "Copy \"Files/kivo\" \"Application/kivo\"",
     "8:1 error missing-field\n8:1 error missing-field\n"},
    {12, "Function \"tellAll\"", "12:1 error missing-field!\nrefused\n"},
    {9, "Untar \"Archives/a.tar\" 9 \"share/\" 0 \"share/one\" 4 \"share/two\" 5 ",
     "9:64 error missing-field\n"},
    {9, "Untar \"Archives/a.tar\" 9 \"share/\" 0 \"share/one\" 4 \\\n \"share/two\"",
     "9:7 warning size-differs\n10:2 error missing-field\n"},
    {8, "Copy \"Files/kivo\" \"Application/kivo\" 99999999999999999999 0755",
     "8:38 error bad-number!\nrefused\n"},
    {7, "Mkdir \"Application\" 0755 99999999999 0x1",
     "7:26 error bad-number\n7:38 error bad-number\n"},
    {15, "Suite \"Program\" core, cores", "15:23 error unknown-package!\nrefused\n"},
    {21, "21 Suite \"Programs\" \"\" \"\" 1", "21:10 error unknown-suite!\nrefused\n"},
    {21, "21 Suite \"Program\" \"\" \"pictures\" 1", "21:23 error bad-icon!\nrefused\n"},
    {21, "21 Choice \"Program\"", "21:4 error configuration-line!\nrefused\n"},
    {21, "0 Suite \"Program\" \"\" \"\" 1", "21:1 error configuration-line!\nrefused\n"},
    {21, "Mkdir \"m\" 0755\n21 Suite \"Program\" \"\" \"\" 1",
     "21:1 error configuration-line!\nrefused\n"},
    {17, nullptr, "17:1 error section-missing!\nrefused\n"},
    {25, nullptr, "1:1 error section-missing\n"},
    {12, "Function \"tellAll\" \"none.so\" \"x\"", "12:20 error module-missing!\nrefused\n"},
    {12, "Function \"initModule\" \"oldModule.so\"", "12:23 error symbol-missing!\nrefused\n"},
    {12, "Function \"lost\" \"engineModule.so\" \"x\"", "12:10 error symbol-missing!\nrefused\n"},
    {12, "Function \"strlen\" \"engineModule.so\" \"\"", ""},
    {19, "10 Suite \"Program\" \"\" \"none.so,a\" 1", "19:23 error module-missing\n"},
    {19, "10 Suite \"Program\" \"\" \"engineModule.so,a\" 1", "19:23 error symbol-missing\n"},
    {8, "Copy \"Files/Kivo\" \"Application/kivo\" 5 0755", "8:6 error source-missing\n"},
    {8, "Copy \"Files\" \"Application/kivo\" 5 0755", "8:6 error source-unreadable\n"},
    {14, "Untar \"Archives/b.tar.bz2\" 3 \"extra/\" 0 \"extra/three\" 3",
     "14:7 error archive-kind\n"},
    {9, "UntarZ \"Archives/a.tar\" 9 \"share/\" 0 \"share/one\" 4 \"share/two\" 5",
     "9:8 error archive-kind\n"},
    {9, "Untar \"Archives/a.tar\" 9 \"share/\" 0 \"share/one\" 4 \"share/two\" 5 \"share/x\" 1",
     "9:65 error member-missing\n"},
    {9, "Untar \"Archives/a.tar\" 9 \"share\" 0 \"./share//one\" 4",
     "9:7 warning member-unlisted\n"},
    {9, "Untar \"Archives/a.tar\" 9 \"share/\" 5 \"share/one\" 3 \"share/two\" 5",
     "9:7 warning size-differs\n"},
    {8, "Copy \"Files/kivo\" \"Application/kivo\" 0 0755", "8:38 warning size-differs\n"},
    {7, "Mkdir \"Application\" 755", "7:21 warning mode-odd\n"},
    {8, "Copy \"Files/kivo\" \"Application/kivo\" 5 0311", "8:40 warning mode-odd\n"},
    {7, "Mkdir \"../Application\" 0755",
     "7:7 warning outside-destination\n8:19 note directory-stays\n"},
    {12, "Copy \"Files/kivo\" \"" LONG_NAME "\" 5 0755", "12:19 error name-long\n"},
    {14,
     "Untar2 \"<CommonDest>\" \"Archives/a.tar\" 3 \"share/\" 0 \"share/one\" 4 \"share/two\" 5",
     ""},
    {14, "Untar2 \"/usr\" \"Archives/a.tar\" 3 \"share/\" 0 \"share/one\" 4 \"share/two\" 5",
     "14:8 warning outside-destination\n"},
    {14, "Copy \"Files/kivo\" \"share/./one\" 5 0644", "14:19 warning shared-target\n"},
    {14, "Copy \"Files/kivo\" \"a/b/one\" 5 0644",
     "14:19 note directory-stays\n14:19 note directory-stays\n"},
    {10, "SoftLink \"Application\" \"../share/three\" \"soft\"",
     "10:24 warning link-target-missing\n"},
    {11, "HardLink \"Application\" \"kiva\" \"hard\"", "11:24 error link-target-missing\n"},
    {12, "Shortcut \"a\" \"b\" \"c\" \"d\"", "12:1 note shortcut-unused\n"},
    {13, "Package \"core\" \"More\"",
     "13:9 error duplicate-package\n16:14 error unknown-package!\nrefused\n"},
    {16, "Suite \"More\" more\nSuite \"More\" more", "17:7 error duplicate-suite\n"},
    {22, "22 Suite \"More\" \"\" \"\" 0\n22 Suite \"More\" \"\" \"\" 0",
     "23:1 error duplicate-configuration\n"},
    {20, "20 CusDlg \"Custom\" \"Choose\" \"\" 0 21 20 22", "20:37 error child-order\n"},
    {20, "20 CusDlg \"Custom\" \"Choose\" \"\" 0 21 22 23", "20:40 error unknown-child\n"},
    {23, "4 CusDlg \"Maintain\" \"Choose\" \"\" 0 21 22",
     "1:1 warning configuration-missing\n23:1 warning unreachable-configuration\n"},
    {24, nullptr, "1:1 error configuration-missing\n"},
    {23, "2 MainDlg \"Maintain\" \"Choose\" \"\" 21", "23:3 error configuration-kind\n"},
    {22, "22 MainDlg \"More\" \"More of it\" \"\"",
     "16:7 warning unused-suite\n20:37 error configuration-kind\n"
     "23:38 error configuration-kind\n24:30 error configuration-kind\n"},
    {18, "1 MainDlg \"Orvane\" \"Choose\" \"\" 10 20 21 21 22", "18:44 warning too-many-members\n"},
    {20, "20 CusDlg \"Custom\" \"Choose\" \"\" 1 21 22", "20:32 warning list-flag\n"},
    {19, "10 Suite \"Program\" \"The program\" \"\" 0", "19:37 warning button-unchosen\n"},
    {16, "Suite \"More\" core", "13:9 warning unused-package\n"},
    {16, "Suite \"More\" more\nSuite \"Rest\" more", "17:7 warning unused-suite\n"},
    {22, "22 Suite \"More\" \"\" \"\" 0\n23 Suite \"More\" \"\" \"\" 0",
     "23:1 warning unreachable-configuration\n"},
    {3, "ProductVersion beta 3", "3:16 warning version-not-number\n"},
    {7, "Mkdir \"Application\" 0755 \\ ", "7:26 warning blank-behind-backslash\n"},
    {8, "Copy 'Files/x' \"Files/kivo\" \"Application/kivo\" 5 0755", "8:6 warning quote-in-word\n"},
    {21, "21 Suite \"Program\" \"\xe4\" \"\" 1", "21:20 warning not-utf8\n"},
};

TEST(Check, PointsAtEveryMistakeInALine)
{
    const Sample sample;

    for (const LineRow &row : s_aLines) {
        sample.write("cdinst.dat", sampleWith(row.iLine, row.pLine));
        expect(sample, row.pFound, std::to_string(row.iLine) + ": " + (row.pLine ? row.pLine : ""));
    }
}

/* A change of the medium beside its description, with a line of that, and all that is said. */
struct FileRow {
    std::function<void(const Sample &sample)> spoil;
    int iLine;
    std::string line;
    const char *pFound;
};

static void spoilArchive(const Sample &sample, const SampleMember &member)
{
    std::vector<SampleMember> members = s_sampleMembers;

    members.push_back(member);
    sample.write("Archives/a.tar", tarOf(members));
}

static void linkAway(const Sample &sample)
{
    sample.write(
        "Archives/a.tar",
        tarOf(
            {{"out", '2', "/tmp"}, {"out/x", '0', "1"}, {"one", '0', "1"}, {"same", '1', "one"}}));
}

static const FileRow s_aFiles[] = {
    {[](const Sample &s) { fs::remove(s.at("SetupFiles/eula.txt")); }, 0, "",
     "1:1 error eula-missing\n"},
    {[](const Sample &s) { fs::remove_all(s.at("Setup")); }, 0, "", "1:1 note help-missing\n"},
    {[](const Sample &s) { fs::remove(s.at("Archives/a.tar")); }, 0, "",
     "9:7 error source-missing\n"},
    {[](const Sample &s) { /* the last block of a member is not there */
                           fs::resize_file(s.at("Archives/a.tar"), 4 * 512 + 3);
     },
     0, "", "9:7 error source-unreadable\n"},
    {[](const Sample &s) { /* nor what tells that nothing is missing */
                           fs::resize_file(s.at("Archives/b.tar.bz2"),
                                           fs::file_size(s.at("Archives/b.tar.bz2")) - 1);
     },
     0, "", "14:8 error source-unreadable\n"},
    {[](const Sample &s) { /* nobody waits for a writer, nor is a device opened */
                           fs::remove(s.at("Files/kivo"));
                           ASSERT_EQ(0, mkfifo(s.at("fifo").c_str(), 0600));
                           fs::create_symlink(s.at("fifo"), s.at("Files/kivo"));
                           fs::remove(s.at("Archives/a.tar"));
                           fs::create_symlink("/dev/zero", s.at("Archives/a.tar"));
     },
     0, "", "8:6 error source-unreadable\n9:7 error source-unreadable\n"},
    {[](const Sample &s) { /* nor for one of a module */
                           fs::remove(s.at("SetupFiles/engineModule.so"));
                           s.write("SetupFiles/engineModule.so", std::string("\177ELF\2\1\1", 7));
     },
     0, "", "12:20 error module-missing!\n19:34 error module-missing\nrefused\n"},
    {[](const Sample &s) {
         spoilArchive(s, {"/abs", '0', "x"});
     },
     0, "", "9:7 error archive-unsafe\n9:7 warning member-unlisted\n"},
    {[](const Sample &s) {
         spoilArchive(s, {"a/../b", '0', "x"});
     },
     0, "", "9:7 error archive-unsafe\n9:7 warning member-unlisted\n"},
    {[](const Sample &s) {
         spoilArchive(s, {"null", '3', ""});
     },
     0, "", "9:7 error archive-unsafe\n9:7 warning member-unlisted\n"},
    {linkAway, /* through a link; the other name of a member is none */
     9, "Untar \"Archives/a.tar\" 9 \"out\" 0 \"out/x\" 1 \"one\" 1 \"same\" 1",
     "9:7 error archive-unsafe\n"},
    {[](const Sample &s) { /* an unlisted member is what a link leads to */
                           spoilArchive(s, {"share/three", '0', "x"});
     },
     10, "SoftLink \"Application\" \"../share/three\" \"soft\"", "9:7 warning member-unlisted\n"},
};

TEST(Check, LooksAtWhatLiesOnTheMedium)
{
    for (const FileRow &row : s_aFiles) {
        const Sample sample;
        row.spoil(sample);
        if (row.iLine > 0)
            sample.write("cdinst.dat", sampleWith(row.iLine, row.line.c_str()));
        expect(sample, row.pFound, std::to_string(&row - s_aFiles));
    }
}

/* What is said of a whole text. */
TEST(Check, LooksAtTheFileAsAWhole)
{
    const Sample sample;
    const std::string text = s_caSample;

    sample.write("cdinst.dat", "\xef\xbb\xbf" + text);
    expect(sample, "1:1 error byte-order-mark!\nrefused\n", "mark");
    sample.write("cdinst.dat", replaced(text, "\n", "\r\n"));
    expect(sample, "1:15 error line-ends\n", "carriage returns");
    sample.write("cdinst.dat", replaced(text, "Orvane\n", std::string(255, 'o') + "\n"));
    expect(sample, "2:13 error name-long\n", "product");
    sample.write("cdinst.dat", replaced(text, "Orvane\n", std::string(512, 'o') + "\n"));
    expect(sample, "2:13 error header-value-long!\nrefused\n", "value");
    const std::string name(235, 'p'); /* with the words around it 256 bytes */
    sample.write("cdinst.dat", replaced(replaced(text, "\"more\"", "\"" + name + "\""), " more\n",
                                        " " + name + "\n"));
    expect(sample, "13:9 error name-long\n", "package");
    std::string many;
    for (int i = 0; i <= 1000; i++)
        many += "Mkdir \"d" + std::to_string(i) + "\" 0755\n";
    sample.write("cdinst.dat", sampleWith(7, (many + "Mkdir \"Application\" 0755").c_str()));
    expect(sample, "1016:7 warning too-many-directories\n", "directories");
    sample.write("cdinst.dat", "");
    EXPECT_NE(std::string::npos, found(sample).find("1:1 error header-key!")) << "empty";
    EXPECT_FALSE(isTaken(sample));
}

/* Each fault is told in its place, and what follows from one is not told again. */
TEST(Check, GoesOnBehindEachFault)
{
    const Sample sample;

    sample.write("cdinst.dat", "SetupVersion 1\nProductName x\nProductVersion 1\n"
                               "ProductDirectory d\nLogFile\n"
                               "Package \"core\nMkdir \"a\" 0755\n"
                               "Packages \"more\" \"\"\n"
                               "Suite \"One\" core more none Vital\nSuite \"Two\n"
                               "begin\n"
                               "ConfigBegin\n"
                               "1 MainDlg \"a\" \"b 10\n"
                               "10 Suite \"One\" \"\" \"\" 1\n11 Suite \"Two\" \"\" \"x\" 1\n"
                               "2 CusDlgs \"\" \"\" \"\" 0 10 11\n"
                               "3 CusDlg \"\" \"\" \"\" 0 11 12\n"
                               "12 Suite \"Three\" \"\" \"\" 0\n");
    expect(sample,
           "1:1 error section-missing\n6:9 error unterminated-text!\n"
           "8:1 error unknown-keyword!\n9:23 error unknown-package!\n"
           "10:7 error unterminated-text!\n11:1 error unknown-keyword!\n"
           "13:15 error unterminated-text!\n15:19 error bad-icon!\n"
           "16:3 error configuration-line!\n"
           "18:10 error unknown-suite!\nrefused\n",
           "all together");
}

/* The findings of a line for each kind, in its own file, are the keys of the answers. */
TEST(Check, AnswersPrograms)
{
    const Sample sample;

    sample.write("cdinst.dat",
                 sampleWith(8, "Copy \"Files/Kivo\\x1b\xff\" \"Application/kivo\" 5 0755"));
    const Json all = answer(sample);
    EXPECT_EQ("ovmedium", all["tool"]);
    EXPECT_EQ("check", all["command"]);
    EXPECT_EQ(sample.at("cdinst.dat"), all["description"]);
    EXPECT_EQ(true, all["accepted"]);
    EXPECT_EQ(1, all["errors"]);
    EXPECT_EQ(0, all["warnings"]);
    EXPECT_EQ(0, all["notes"]);
    EXPECT_EQ("Files/Kivo\\x1b\uFFFD", all["findings"][0]["subject"]);

    sample.write("cdinst.dat", sampleWith(8, "Copy \"Files/Kivo\" \"Application/kivo\" 5 0755"));
    const Checked text = check(sample, OV_MEDIUM_TEXT);
    EXPECT_EQ(OV_MEDIUM_FINDINGS, text.iStatus);
    EXPECT_EQ(0u, text.text.find(sample.at("cdinst.dat") +
                                 ":8:6: error: the medium has no file 'Files/Kivo' (there is "
                                 "'Files/kivo') [source-missing]\n"))
        << text.text;
    const Json log = Json::parse(check(sample, OV_MEDIUM_SARIF).text);
    EXPECT_EQ("2.1.0", log["version"]);
    const Json &run = log["runs"][0];
    const Json &result = run["results"][0];
    const Json &rules = run["tool"]["driver"]["rules"];
    EXPECT_EQ("source-missing", result["ruleId"]);
    EXPECT_EQ("source-missing", rules[result["ruleIndex"].get<size_t>()]["id"]);
    EXPECT_EQ("error", result["level"]);
    EXPECT_EQ(8, result["locations"][0]["physicalLocation"]["region"]["startLine"]);
    EXPECT_EQ(6, result["locations"][0]["physicalLocation"]["region"]["startColumn"]);
}

TEST(Check, EndsWithTheStatusOfWhatItFound)
{
    const Sample sample;
    OV_MediumOptions options;

    sample.write("cdinst.dat", sampleWith(7, "Mkdir \"Application\" 755"));
    EXPECT_EQ(OV_MEDIUM_CLEAN, check(sample, OV_MEDIUM_TEXT).iStatus);
    EXPECT_EQ(OV_MEDIUM_FINDINGS, check(sample, OV_MEDIUM_TEXT, true).iStatus);
    for (const std::string &place : {sample.at("none"), sample.at("Files"), sample.at("fifo")}) {
        options.place = place;
        (void)mkfifo(sample.at("fifo").c_str(), 0600);
        EXPECT_NE("", told([&] { EXPECT_EQ(OV_MEDIUM_FAILED, OV_mediumCheck(&options)); }))
            << place;
    }
}

/* Every code has a row in one of the tables above, by which it is known to be told. */
TEST(Check, KnowsWhenToTellEveryCode)
{
    std::string all = "header-value-long byte-order-mark line-ends name-long too-many-directories ";

    for (const LineRow &row : s_aLines)
        all += row.pFound;
    for (const FileRow &row : s_aFiles)
        all += row.pFound;
    for (const OV_FindingKind *pKind = OV_mediumFindingKinds; pKind->pCode; pKind++)
        EXPECT_NE(std::string::npos, all.find(pKind->pCode)) << pKind->pCode;
}

/* ---- against setup's own reader ---- */

static const char *const s_apPieces[] = {
    "\"",
    "\\",
    "\n",
    "#",
    " ",
    "0x1f",
    "99999999999999999999",
    "ConfigBegin\n",
    "ConfigEnd\n",
    "Package \"p\"\n",
    "1 ",
    "Suite",
    "\r\n",
    "\0",
    "Copy \"a",
    "'",
    "\\\n",
    "\xef\xbb\xbf",
    "NoChestRC\n",
    "0",
};

/* The text with one to four changes. */
static std::string mutated(std::string text, std::mt19937 *pRandom)
{
    auto below = [&](size_t iLimit) { return (*pRandom)() % (iLimit + 1); };

    for (size_t i = 0; i <= below(3) && !text.empty(); i++) {
        const size_t iAt = below(text.size() - 1);
        const size_t iEnd = std::min(text.find('\n', iAt), text.size() - 1) + 1;
        switch (below(4)) {
        case 0:
            text[iAt] = static_cast<char>((*pRandom)());
            break;
        case 1:
            text.erase(iAt, below(9));
            break;
        case 2:
            text.erase(iAt, iEnd - iAt);
            break;
        case 3:
            text.insert(iAt, s_apPieces[below(std::size(s_apPieces) - 1)]);
            break;
        default: /* a line in another place */
            text.insert(text.find('\n', below(text.size() - 1)) + 1, text.substr(iAt, iEnd - iAt));
            break;
        }
    }
    return text;
}

/* More of them with OVMEDIUM_MUTATIONS in the environment. */
TEST(Check, AcceptsExactlyWhatSetupAccepts)
{
    const char *pMore = getenv("OVMEDIUM_MUTATIONS");
    const int iMost = pMore ? atoi(pMore) : 200;
    const Sample sample;
    std::vector<std::string> texts = {s_caSample};
    std::mt19937 random(1); /* the same every time */
    int iTaken = 0;

    for (const auto &entry : fs::directory_iterator(SETUP_SOURCE_DIR "/tests/fuzz/reader_corpus"))
        texts.push_back(readFile(entry.path()));
    std::sort(texts.begin(), texts.end());
    for (int i = 0; i < iMost; i++) {
        const std::string text = mutated(texts[random() % texts.size()], &random);
        sample.write("cdinst.dat", text);
        const bool bTaken = isTaken(sample);
        const std::string said = found(sample);
        EXPECT_EQ(bTaken, said.find("refused") == std::string::npos) << text << said;
        EXPECT_EQ(bTaken, said.find('!') == std::string::npos) << text << said;
        iTaken += bTaken ? 1 : 0;
    }
    EXPECT_GT(iTaken, iMost / 20);
    EXPECT_LT(iTaken, iMost - iMost / 20);
}
