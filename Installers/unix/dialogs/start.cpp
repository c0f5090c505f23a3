#include "dialogs/start.h"

#include <cstdio>
#include <cstdlib>

#include "description/reader.h"
#include "dialogs/Maintenance.h"
#include "dialogs/Welcome.h"
#include "dialogs/dialogFrontEnd.h"
#include "engine/history.h"
#include "engine/setupState.h"
#include "engine/sizes.h"
#include "ut/toolkit/HtmlHelp.h"
#include "ut/OVinstFileUtils.h"
#include "ut/toolkit/appResources.h"
#include "ut/toolkit/messageBox.h"
#include "ut/owned.h"
#include "ut/strprint.h"
#include "ut/toolkit/uiut.h"

[[noreturn]] static void stop(const char *pMessage)
{
    (void)OV_instOkCancelMessageBox(OV_instGetMainTopLevelShell(), pMessage, "OK", nullptr,
                                    nullptr);
    exit(1);
}

static void readDescription(const char *pPath)
{
    CDInstPtr = OV_instReadCDinst(pPath, nullptr);
    if (CDInstPtr)
        return;
    OwnedText message(OV_instStrPrint("Error reading setup configuration file\n<%s>\n"
                                      "Please make sure to run the setup directly from the CDROM",
                                      pPath));
    stop(message ? message.get() : "Internal error at startup");
}

static void computeSizes()
{
    if (OV_instSetSizes(CDInstPtr) == -1)
        stop("Error during initialization of size calculation");
}

static void setHelpDirectory()
{
    OwnedText path(OV_instBuildPath(OV_instGetSourceDirectory(), "Setup/Help/", nullptr));

    if (!path)
        stop("Error during help initilization"); /* who drives dialogs knows it so */
    OV_instSetHelpDirectory(path.get());
}

static Widget createFirstDialog()
{
    Widget parent = OV_instGetMainTopLevelShell();
    Widget dialog;

    if (!OV_instFindInstallation(OV_MAINTENANCE_CONFIG))
        return CreatembWelcome(parent);
    OV_instTellUnfinished();
    dialog = CreatembMaintenance(parent);
    OV_DisableAddButtonIfNecessary();
    return dialog;
}

int OV_instStartDialogs(int argc, char **argv, char *pDescription, char *pDestination)
{
    OwnedText description(pDescription);
    OwnedText destination(pDestination);
    Widget shell = OV_instOpenApplicationAs(argc, argv);

    if (!shell) {
        fputs("Error: can't open the display, run setup with -cmdline where there is none\n",
              stderr);
        return 1;
    }
    (void)OV_instCreateMainTopLevelShell(shell);
    OV_instUseDialogs();
    readDescription(description.get());
    /* Only a description that names no destination takes the one of the options. */
    (void)OV_instSetRootDestination(CDInstPtr->pInstallDir ? CDInstPtr->pInstallDir
                                                           : destination.get());
    computeSizes();
    setHelpDirectory();
    XtManageChild(createFirstDialog());
    XtAppMainLoop(XtWidgetToApplicationContext(shell));
    return 0;
}
