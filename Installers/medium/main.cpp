#include <clocale>
#include <csignal>
#include <cstdlib>

#include "engine/startup.h"
#include "medium/commandLine.h"
#include "medium/commands.h"
#include "medium/output.h"

struct Command {
    const char *pName;
    int (*run)(const OV_MediumOptions *pOptions);
};

static const Command s_aCommands[] = {
    {"plan",   OV_mediumPlan  },
    {"apply",  OV_mediumApply },
    {"check",  OV_mediumCheck },
    {"verify", OV_mediumVerify},
    {"repair", OV_mediumRepair},
    {"status", OV_mediumStatus},
    {"new",    OV_mediumNew   },
    {"update", OV_mediumUpdate},
    {nullptr,  nullptr        },
};

static int run(const OV_MediumOptions *pOptions)
{
    for (const Command *pCommand = s_aCommands; pCommand->pName; pCommand++)
        if (pOptions->command == pCommand->pName)
            return pCommand->run(pOptions);
    return OV_MEDIUM_FAILED; /* the options know no others */
}

int main(int argc, char **argv)
{
    OV_MediumOptions options;

    (void)setlocale(LC_CTYPE, "");
    OV_instPrepareEnvironment();
    OV_mediumOpenOutput();
    int iStatus = OV_mediumReadOptions(argc, argv, &options);
    if (iStatus < 0)
        iStatus = run(&options);
    return OV_mediumCloseOutput() ? iStatus : OV_MEDIUM_FAILED;
}
