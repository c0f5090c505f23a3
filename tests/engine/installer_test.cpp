#include <gtest/gtest.h>

#include "engine/engineTest.h"
#include "engine/installer.h"

struct Installer : EngineTest {
    void SetUp() override
    {
        EngineTest::SetUp();
        load("HistoryFile h\nPackage 'p' ''\nMkdir 'p' 0755\n"
             "Function 'tellAll' 'engineModule.so' ''\nSuite 'S' p\nConfigBegin\n"
             "3 Suite 'S' '' '' 1\nConfigEnd\n");
    }
    /* The records of a run, each custom function's shortened to its pass and mode. */
    std::string run(int iRemoveAll, bool bFails)
    {
        FILE *pStream = fopen(full("@/pipe").c_str(), "w");
        /* What is missing is asked for. */
        (void)printed([&] {
            EXPECT_EQ(bFails,
                      OV_instRunInstallation(CDInstPtr, config(3), iRemoveAll, pStream) != 0);
        });
        std::istringstream all(got("@/pipe"));
        std::string text;
        for (std::string line; std::getline(all, line);)
            if (line.compare(0, 5, "init ") != 0)
                text += line.substr(0, line.compare(0, 5, "pass ") ? line.npos : 13) + "\n";
        return text;
    }
};

TEST_F(Installer, RunsItsPassesInOrder)
{
    const std::string copied = "+" + std::to_string(readFile(full("M/cdinst.dat")).size());
    EXPECT_EQ("# Start installation\n# Removing files\n# Installing files\npass 2 mode 0\n"
              "+1 mkdir D/p\npass 3 mode 0\n" +
                  copied +
                  " M/cdinst.dat D/cdinst.dat\n"
                  "# Pass Installation completed\n# Updating the registry\npass 4 mode 0\n"
                  "# Done updating the registry\npass 5 mode 0\n# Installation completed\n",
              run(0, false));
    setStates("3:10 +p");
    suite("S")->iState = 1;
    package("p")->iPassDone = package("p")->iInUse = 0;
    fs::remove(m_medium + "cdinst.dat"); /* which counts like any copy */
    EXPECT_EQ("# Start installation\n# Removing files\npass 2 mode 1\npass 3 mode 1\n+1 D/p\n"
              "pass 5 mode 1\n# Installing files\n# Pass Installation completed\n"
              "# Updating the registry\n# Done updating the registry\n"
              "# Error during installation\n# Installation completed\n",
              run(0, true));
}
