#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <unistd.h>
#include <vector>

#include "description/describe.h"
#include "description/reader.h"
#include "support.h"
#include "ut/debugLevel.h"

static const char s_caHeader[] = "SetupVersion 1\nProductName Orvane\nProductVersion 3.11\n"
                                 "ProductDirectory Orvane\nLogFile setup.log\n";

/* Every kind of line, continued lines and comments. */
static const char s_caBody[] =
    "HistoryFile history\nInstallDirectory /opt/orvane\nNoChestRC\nNoUserOrgRes\nNoDisplayLog x\n"
    "\n# packages\n"
    "Package \"core\", \"Core \\\"files\\\"\\nof it\"\n"
    "  Copy \"bin/a\", \"\" 12 0755 1 2\n  CopyZ \"b.bz2\" \"b\" 0x10\n"
    "  Untar \"x.tar\" 30 \"a\" 10 \\\n    \"b\" 0 20\n  UntarZ \"x.tbz\" 4 \"c\" 4 \n"
    "  Untar2 \"<RootDest>\" \"y.tar\" 5 \"d\" 5\n  UntarZ2 \"<CommonDest>\" \"y.tbz\" 6\n"
    "Package \"more\" \"\"\n"
    "  Mkdir \"doc\" 0755 0 0\n  HardLink \"bin\" \"a\" \"b\"\n  SoftLink \"bin\" \"a\" \"c\"\n"
    "  Function \"tellAll\" \"engineModule.so\" \"data\"\n  Shortcut \"1\" \"2\" \"3\" \"4\"\n"
    "  RegData \"root\" \"key\" \"value\" \"%d/x\"\n  SelfReg \"lib.so\"\n"
    "Suite \"Base\" core more Vital\nSuite \"Extra\" more Hidden\n"
    "ConfigBegin\n"
    "1 MainDlg \"Welcome\" \"Choose\" \"\" 3 4\n"
    "3 CusDlg \"Custom\" \"Tick\" \"a.xpm,b.xpm\" 1 4 5\n"
    "4 Suite \"Base\" \"The base\" \"a.xpm,b.xpm\" 1\n5 Suite \"Extra\" \"More\" \"\" 0\n"
    "ConfigEnd\n# the end\n";

/* A directory with a description and, where it is wanted, the modules of the tests. */
struct Reader : testing::Test {
    void SetUp() override { OV_instParsingConfiguration = 0; }
    void TearDown() override { OV_instParsingConfiguration = 0; }
    void linkModules()
    {
        ASSERT_EQ(0, symlink(TEST_MODULE_DIR, (m_scratch / "SetupFiles").c_str()));
    }
    Model read(const std::string &text, void (*progress)() = nullptr)
    {
        writeFile(m_path, text);
        Model model;
        m_err = told([&] {
            m_out = printed([&] { model.reset(OV_instReadCDinst(m_path.c_str(), progress)); });
        });
        return model;
    }
    Scratch m_scratch;
    const std::string m_directory = m_scratch.path.string();
    const std::string m_path = m_scratch / "cdinst.dat";
    std::string m_out, m_err;
};

static int s_iProgress = 0;

static void countProgress()
{
    s_iProgress++;
}

TEST_F(Reader, TakesEveryKindOfLine)
{
    linkModules();
    s_iProgress = 0;
    Model model = read(std::string(s_caHeader) + s_caBody, countProgress);
    ASSERT_NE(nullptr, model) << m_err;
    EXPECT_EQ("", m_out + m_err);
    EXPECT_EQ(26, s_iProgress) << "logical lines behind the header";
    EXPECT_EQ(m_directory + "/", model->pSourceDir);
    EXPECT_EQ(m_path, model->pCdinstPath);
    EXPECT_STREQ("Setup/setup.log", model->pLogFile);
    EXPECT_STREQ("history", model->pHistoryFile);
    EXPECT_STREQ("/opt/orvane", model->pInstallDir);
    EXPECT_EQ(0, model->bChestRC + model->bUserOrgRes + model->bDisplayLog);
    EXPECT_EQ("Untar|30|(null)|x.tar|a|10|b|1||20|",
              shown(model->pPackageHead->pPackage->pOperHead->pNext->pNext));
    EXPECT_EQ(model->pConfigHead->pNext, OV_instGetConfigFromId(model.get(), 5)->pParent);
    EXPECT_EQ(0, OV_instParsingConfiguration);

    ASSERT_NE(nullptr, model = read("SetupVersion 1\nProductName a \\\nb \t\nProductVersion\n"
                                    "ProductDirectory d\nLogFile\nInstallDirectory \n"));
    EXPECT_EQ(nullptr, model->pInstallDir) << "without a value";
    EXPECT_STREQ("a  b", model->pProductName);
    EXPECT_STREQ("", model->pLogFile);
    EXPECT_EQ(nullptr, model->pHistoryFile);
    EXPECT_TRUE(model->bChestRC == 1 && model->bUserOrgRes == 0 && model->bDisplayLog == 1);
}

TEST_F(Reader, RejectsAWrongHeader)
{
    const std::string header(s_caHeader);
    const std::string lengthy(512, 'x');
    const std::string noLog = header.substr(0, header.find("LogFile"));
    /* The text, and the key that is missed aloud. */
    const std::string aaRows[][2] = {
        {"", ""},
        {"SetupVersion 1.0\n" + header.substr(15), ""},
        {"\n" + header, "SetupVersion"},
        {header.substr(15), "SetupVersion"},
        {"SetupVersion 1\n#\nProductName x\n", "ProductName"},
        {"SetupVersion 1\nProductName " + lengthy + "\n", "ProductName"},
        {"SetupVersion 1\nProductName=x\n", "ProductName"},
        {"SetupVersion 1\nproductname x\n", "ProductName"},
        {noLog + "Logfile x\n", "LogFile"},
        {header + "HistoryFile " + lengthy + "\n", ""},
        {header + "NoDisplayLog " + lengthy + "\n", ""},
    };
    for (const auto &aRow : aaRows) {
        EXPECT_EQ(nullptr, read(aRow[0])) << aRow[0];
        EXPECT_EQ("Invalid .dat file " + m_path + "\n", m_out) << aRow[0];
        EXPECT_EQ(aRow[1].empty() ? "" : "Invalid header line, expecting: " + aRow[1] + "\n",
                  m_err);
    }
    ASSERT_NE(nullptr, read(header + "InstallDirectory " + lengthy.substr(1) + "\n"));
    /* What is read as a line of the body fails there, silently. */
    for (const std::string &line : {lengthy + lengthy, std::string("NoChestRC\nHistoryFile h")}) {
        EXPECT_EQ(nullptr, read(header + line + "\n"));
        EXPECT_EQ("", m_out + m_err);
    }
}

TEST_F(Reader, TellsOfAFileThatCannotBeOpened)
{
    for (const std::string &path : {m_path, m_directory, std::string(5000, 'd')})
        EXPECT_EQ("Invalid .dat file " + path + "\n",
                  printed([&] { EXPECT_EQ(nullptr, OV_instReadCDinst(path.c_str(), nullptr)); }));
}

TEST_F(Reader, CountsLinesWithTheAbsentKeys)
{
    ASSERT_EQ(0, setenv("OVINST_DEBUG", "", 1));
    OV_instSetDebugLevel(1);
    /* 5 header lines; the 2 of the continued line for each of 5 absent keys and once more; 2 that
     * are skipped; 1 bad */
    EXPECT_EQ(nullptr,
              read(std::string(s_caHeader) + "Package \\\n\"p\"\n \t# \"q\n \t \nNonsense 1\n"));
    EXPECT_EQ("Error: AddLineToCDinst\nLine=Nonsense 1\nError at line 20\n", m_err);
    EXPECT_EQ(nullptr, read(std::string(s_caHeader) + "NoChestRC\nConfigBegin\n\n0 MainDlg"));
    EXPECT_EQ("Error: AddLineToConfig\nLine=0 MainDlg\nError at line 13\n", m_err);
    OV_instSetDebugLevel(0);
    ASSERT_EQ(0, unsetenv("OVINST_DEBUG"));
    EXPECT_EQ(nullptr, read(std::string(s_caHeader) + "Package \"p\"\n"));
    EXPECT_EQ("Error: invalid configuration line: Package \"p\"\n", m_err) << "the flag stays set";
}

TEST_F(Reader, ChecksEveryModule)
{
    linkModules();
    /* What is told, without line ends and with "%" for the directory. */
    const char *const aaRows[][2] = {
        {R"(Function "tellAll" "engineModule.so")", ""},
        {R"(Function "lost" "engineModule.so")",
         "Error: missing function in moduleModule: engineModule.soPackage: pFunction: lost"},
        {"Function \"initModule\" \"oldModule.so\"\nFunction \"tellAll\" \"engineModule.so\"",
         "Error: version number of module is invalidModule: %/SetupFiles/oldModule.soPackage: p"
         "Current version: 1.000000Required version: 1.100000"},
        {"Function \"initModule\" \"unversionedModule.so\"\nFunction \"f\" \"bareModule.so\"",
         "Error: there is no version number in moduleModule: %/SetupFiles/unversionedModule.so"
         "Package: pError: missing function in moduleModule: bareModule.soPackage: pFunction: "
         "initModuleError: missing function in moduleModule: bareModule.soPackage: pFunction: f"},
        {"Function \"f\" \"none.so\"\nFunction \"f\" \"bareModule.so\"",
         "Error: unable to load %/SetupFiles/none.so"},
    };
    for (const auto &apRow : aaRows) {
        const std::string lines = std::string(s_caHeader) + "Package \"p\"\n" + apRow[0] + "\n";
        EXPECT_EQ(!*apRow[1], read(lines) != nullptr) << apRow[0];
        EXPECT_EQ(apRow[1], replaced(replaced(m_err, "\n", ""), m_directory, "%"));
    }
}

/* Every cut and every flipped byte when SETUP_TEST_FULL is set, samples otherwise. */
TEST_F(Reader, SurvivesCutsAndFlippedBytes)
{
    linkModules();
    const std::string whole = std::string(s_caHeader) + s_caBody;
    const bool bFull = getenv("SETUP_TEST_FULL") != nullptr;
    int iTaken = 0;
    auto tryText = [&](const std::string &text) {
        OV_instParsingConfiguration = 0;
        Model model = read(text);
        if (!model)
            return;
        iTaken++;
        EXPECT_EQ("", findFault(model.get())) << text;
    };
    for (size_t i = 0; i <= whole.size(); i += bFull ? 1 : 7)
        tryText(whole.substr(0, i));
    EXPECT_GT(iTaken, 20) << "a description cut behind a line is still one";
    for (size_t i = 0; i < whole.size(); i += bFull ? 1 : 5) {
        for (unsigned int iMask : {0xffu, 0x01u, 0x02u, 0x04u, 0x08u, 0x10u, 0x20u, 0x40u, 0x80u}) {
            if (!bFull && iMask != (i % 2 ? 0x02u : 0xffu))
                continue;
            std::string text = whole;
            text[i] = static_cast<char>(static_cast<unsigned char>(text[i]) ^ iMask);
            tryText(text);
        }
    }
}
