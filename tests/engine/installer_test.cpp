#include <gtest/gtest.h>

#include <regex>

#include "engine/engineTest.h"
#include "engine/installer.h"

struct Installer : EngineTest {
};

TEST_F(Installer, RunsItsPassesInOrder)
{
    /* The records, each custom function's shortened to its pass and mode, and the result. */
    const auto run = [this](bool bRemoveAll) {
        FILE *pStream = fopen(full("@/pipe").c_str(), "w");
        int iMask = 0;
        (void)printed([&] { /* what is missing is asked for */
                            iMask =
                                OV_instRunInstallation(CDInstPtr, config(3), bRemoveAll, pStream);
        });
        return std::regex_replace(got("@/pipe"), std::regex("init .*\n|: .*null.*|: @.*"), "") +
               (iMask ? "failed" : "");
    };
    load("HistoryFile h\nPackage 'p' ''\nMkdir 'p' 0755\nFunction 'tellAll' 'engineModule.so' ''\n"
         "Suite 'S' p\nConfigBegin\n3 Suite 'S' '' '' 1\nConfigEnd\n");
    const std::string copied = "+" + std::to_string(readFile(full("M/cdinst.dat")).size());
    EXPECT_EQ("# Start installation\n# Removing files\n# Installing files\npass 2 mode 0\n"
              "+1 mkdir D/p\npass 3 mode 0\n" +
                  copied +
                  " M/cdinst.dat D/cdinst.dat\n# Pass Installation completed\n"
                  "# Updating the registry\npass 4 mode 0\n# Done updating the registry\n"
                  "pass 5 mode 0\n# Installation completed\n",
              run(false));
    setStates("3:10 +p");
    suite("S")->iState = 1;
    package("p")->iPassDone = package("p")->iInUse = 0;
    fs::remove(m_medium + "cdinst.dat"); /* which counts like any copy */
    EXPECT_EQ("# Start installation\n# Removing files\npass 2 mode 1\npass 3 mode 1\n+1 D/p\n"
              "pass 5 mode 1\n# Installing files\n# Pass Installation completed\n"
              "# Updating the registry\n# Done updating the registry\n"
              "# Error during installation\n# Installation completed\nfailed",
              run(false));
}
