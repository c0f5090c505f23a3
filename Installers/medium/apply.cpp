#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

#include "engine/installer.h"
#include "engine/runFile.h"
#include "engine/runReport.h"
#include "engine/selection.h"
#include "engine/setupState.h"
#include "medium/commands.h"
#include "medium/output.h"
#include "medium/planSteps.h"
#include "ut/OVinstLogfile.h"
#include "ut/owned.h"

/* Setup's own line of the terminal has no place elsewhere; its errors go to standard error. */
static void hideStatusLine()
{
    OwnedFd nowhere(isatty(STDERR_FILENO) ? -1 : open("/dev/null", O_WRONLY | O_CLOEXEC));

    if (nowhere.iFd >= 0)
        (void)dup2(nowhere.iFd, STDOUT_FILENO); /* else it is seen, which harms nobody */
}

static bool mayRun(const OV_MediumOptions *pOptions)
{
    if (pOptions->bNoRoot || getenv("OVINST_NOROOT") || getuid() == 0)
        return true;
    OV_mediumTell("you need to be root for this");
    return false;
}

/* Whether everything is as it is to be, so that a run would only write down the same again. */
static bool isDone(const OV_RunChoice *pChoice)
{
    OV_RunFile unfinished;

    if (OV_instReadRunFile(OV_instGetDestinationDirectory(), &unfinished))
        return false;
    if (pChoice->bRemoveAll || !pChoice->bInstalled)
        return pChoice->bRemoveAll && !pChoice->bInstalled;
    return OV_instNumPackagesAffected(CDInstPtr, pChoice->pConfig) == 0;
}

static int carryOut(const OV_RunChoice *pChoice)
{
    const std::string dest = OV_instGetDestinationDirectory();
    OV_RunFile unfinished;

    hideStatusLine();
    if (OV_instCommandLineInstall(CDInstPtr, pChoice->pConfig, pChoice->bRemoveAll) != 0) {
        OV_mediumTell("the run could not be started");
        return OV_MEDIUM_FAILED;
    }
    if (OV_instRunEndedWell() && !OV_instReadRunFile(dest.c_str(), &unfinished))
        return OV_MEDIUM_CLEAN;
    OV_mediumTell("the run did not end well%s%s", g_caLogName[0] ? ", see " : "", g_caLogName);
    return OV_MEDIUM_FINDINGS;
}

int OV_mediumApply(const OV_MediumOptions *pOptions)
{
    OV_RunChoice choice;
    OV_Plan plan;
    int iStatus = OV_MEDIUM_CLEAN;

    if (!mayRun(pOptions) || !OV_mediumChooseRun(pOptions, true, &choice))
        return OV_MEDIUM_FAILED;
    OV_mediumPlanRun(&choice, &plan);
    if (OV_mediumIsBlocked(&plan)) {
        OV_mediumPrintPlan(&plan, true);
        iStatus = OV_MEDIUM_FINDINGS;
    } else if (!isDone(&choice)) {
        iStatus = carryOut(&choice);
    }
    OV_mediumEndRunChoice();
    return iStatus;
}
