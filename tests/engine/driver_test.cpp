#include <gtest/gtest.h>

#include "engine/engineTest.h"

static const OV_InstMode INSTALL = OV_INST_INSTALL_MODE, REMOVE = OV_INST_DELETE_MODE;

struct Driver : EngineTest {
    void SetUp() override
    {
        EngineTest::SetUp();
        put("M/f", "file");
        put("M/z", "zipped");
        put("D/file", "");
        put("@/root/Orvane/x", "");
    }
    int runConfig(int iId, OV_CustomPass ovPass, OV_InstMode iMode)
    {
        return OV_instInstallConfig(CDInstPtr, config(iId), m_dest.c_str(), m_pipe.pStream, ovPass,
                                    iMode);
    }
};

static const char s_caEveryKind[] =
    "Copy 'f' 'copied' 4 0644\nCopyZ 'z' 'other' 6 0644\nUntar 't' 1 'f' 4\n"
    "UntarZ 't.bz2' 1 'f' 5\nUntar2 '<RootDest>' 't' 1 'f' 6\n"
    "UntarZ2 '<CommonDest>' 't.bz2' 1 'f' 7\nMkdir 'd' 0755\nMkdir 'd/e' 0755\n"
    "HardLink 'd' '../copied' 'hard'\nSoftLink 'd' '../copied' 'soft'\nShortcut '1' '2' '3'\n"
    "Function 'tellAll' 'engineModule.so' 'data'\nRegData 'r' 'n' 'k' 'v'\nSelfReg 'm.so'";

/* Pass and mode; the records, with those of the custom function as "F". */
TEST_F(Driver, EveryKindActsInItsPassAndMode)
{
    const auto run = [this](const std::string &words) {
        const auto ovPass = static_cast<OV_CustomPass>(words[0] - '0');
        const auto iMode = static_cast<OV_InstMode>(words[2] - '0');
        const std::string text = runLines(s_caEveryKind, iMode, ovPass),
                          called = "init 1 model\npass " + replaced(words, " ", " mode ") +
                                   ": @/root/|@/root/Orvane/|D/|M/|data|p|S|0|no shell\n";
        return replaced(text, called, "F");
    };
    ASSERT_EQ(0, system(("cd " + m_medium + " && tar -cf t f && bzip2 -k t").c_str()));
    /* Modules are registered only once. */
    inChild([&] {
        expectRows(run, R"(
            2 1 => 0 F
            4 1 => 0 F
            2 0 => 0 F
            3 0 => 0 +4 M/f D/copied\n+6 M/z D/z\n+4 M/t D/f\n+5 M/t.bz2 D/f\n+6 M/t @/root/f\n
                   +7 M/t.bz2 @/root/Orvane/f\n+1 mkdir D/d\n+1 mkdir D/d/e\n+1 Hardlink hard\n
                   +1 Softlink soft\nF
            4 0 => 0 FWarning: (no display) can't add data to registry\n
                   Warning: (no display) can't register module m.so\n
            5 0 => 0 F
            3 1 => 0 +4 D/copied\n+6 D/z\n+4 D/f\n+5 D/f\n+6 @/root/f\n+7 @/root/Orvane/f\n
                   +1 D/d/hard\n+1 D/d/soft\nF+1 D/d/e\n+1 D/d\n
            3 2 => 0 +4 D/copied\n+6 D/z\n+4 D/f\n+5 D/f\n+6 @/root/f\n+7 @/root/Orvane/f\n
                   +1 D/d/hard\n+1 D/d/soft\nF)");
    });
}

TEST_F(Driver, SomeFailuresAreNotCounted)
{
    const auto run = [this](OV_InstMode iMode, OV_CustomPass ovPass) {
        return [=](const std::string &lines) { return runLines(lines, iMode, ovPass); };
    };
    expectRows(run(INSTALL, OV_CUSTOM_INIT), R"(
        CopyZ 'no' '' 4                => 0 Copyfile can't open file: noReturning Continue\n
        Untar2 'no' 'f' 1\nMkdir 'x' 0755 => 1 -1 Can't change directory to: no\n+1 mkdir D/x\n)");
    expectRows(run(REMOVE, OV_CUSTOM_INIT), R"(
        Copy '' 'd' 4                          => 1 -1 Copyfile invalid parameters\n
        CopyZ '' 'd' 4                         => 1 -1 Uncompress invalid parameters\n
        SoftLink '' '' 'l'                     => 1 -1 Softlink invalid parameters\n
        Untar 'no' 4 'no' 4\nMkdir 'file' 0755 => 0 +4 D/no\n+1 D/file\n)");
    EXPECT_TRUE(exists("D/file")) << "a file in a directory's place stays";
    setenv("DISPLAY", "", 1); /* so that the registry is tried, and fails */
    inChild([&] {
        expectRows(run(INSTALL, OV_CUSTOM_REGISTRY), R"(
            RegData 'r' 'n' 'k' 'v' => 0 -1 Error: adding rootkey=r keyname=n, keyvalue=k, value=v\n
            SelfReg 'm'             => 0 -1 Error: internal error in OV_instRegisterModule (4)\n)");
    });
    for (OV_InstMode iMode : {INSTALL, REMOVE})
        EXPECT_EQ('1', run(iMode, OV_CUSTOM_PRE)("Function 'tellAll' 'engineModule.so' 'fail'")[0]);
}

TEST_F(Driver, KindsWithoutMeaningEndTheCall)
{
    for (int iType : {0, 11, 15, 20, -1}) {
        load("Package 'p' ''\nShortcut '1' '2' '3'\nMkdir 'd' 0755\nSuite 'S' p\n");
        package("p")->pOperHead->iType = iType;
        EXPECT_EQ("Error:Undefined operation " + std::to_string(iType) + "\n",
                  told([this] { EXPECT_EQ("1", runSuite("S", INSTALL)); }));
        package("p")->pOperHead->iType = OV_OPER_SHORTCUT; /* or its texts would be lost */
    }
}

TEST_F(Driver, WhatCannotBeInstalledIsTold)
{
    load("Package 'p' ''\nMkdir 'p' 0755\nSuite 'None'\nSuite 'S' p\nConfigBegin\n"
         "3 CusDlg '' '' '' 1 4 5 6\n4 MainDlg '' '' ''\n5 Suite 'None' '' '' 0\n"
         "6 Suite 'S' '' '' 1\n8 CusDlg '' '' '' 1 9\nConfigEnd\n");
    EXPECT_EQ("Error: can only install a suite or a custom list of suites\n"
              "Error: invalid input to function OV_instInstallConfig\n"
              "Error: invalid input to function OV_instInstallConfig\n",
              told([this] {
                  (void)printed([this] { EXPECT_EQ(1, runConfig(3, OV_CUSTOM_INIT, INSTALL)); });
                  EXPECT_EQ(1, runConfig(90, OV_CUSTOM_PRE, INSTALL));
                  EXPECT_EQ(1, runConfig(8, OV_CUSTOM_PRE, INSTALL)) << "its member is not there";
              }));
    EXPECT_EQ("+1 mkdir D/p\n", records()) << "the others go on";
    EXPECT_EQ("0", runSuite("S", REMOVE)) << "the pass is over";
    setStates("5:01");
    EXPECT_NE(0, runConfig(5, OV_CUSTOM_PRE, INSTALL)) << "a suite without packages";
}
