#include "dialogs/dialogFrontEnd.h"

#include <fcntl.h>
#include <unistd.h>

#include <X11/Intrinsic.h>

#include "dialogs/SourcePrompt.h"
#include "dialogs/progressReader.h"
#include "ut/frontEnd.h"
#include "ut/owned.h"
#include "ut/toolkit/appResources.h"
#include "ut/toolkit/messageBox.h"
#include "ut/toolkit/uiut.h"

/* In the installing child, until it has a display of its own. */
static bool s_bDisplayLater;

static void openOwnDisplay()
{
    static char s_caName[] = "ovint Installer thread";
    char *apNames[] = {s_caName, nullptr};

    (void)OV_instCreateMainTopLevelShell(OV_instOpenApplicationAs(1, apNames));
}

/* The shell that windows of this process open below. The child gets a connection of its own for the
 * media prompt and modules, but few runs need it, and opening it takes longer than many files. Null
 * where there cannot be one: the child then asks nobody. */
static Widget provideShell()
{
    if (s_bDisplayLater) {
        s_bDisplayLater = false;
        openOwnDisplay();
    }
    return OV_instGetMainTopLevelShell();
}

static void tell(const char *pText, const char *pButton)
{
    if (Widget parent = provideShell())
        (void)OV_instOkCancelMessageBox(parent, pText, pButton, nullptr, nullptr);
    else
        OV_instPrinting.fpTell(pText, pButton);
}

static int ask(const char *pText, const char *pFirst, const char *pSecond, const char *pThird)
{
    return OV_instOkCancelMessageBox(provideShell(), pText, pFirst, pSecond, pThird);
}

static int askForMedium(const char *pText, const char *pFile, const char *pSource, char **ppPicked)
{
    int iAnswer = ask(pText, "Continue", "Browse...", "Abort");

    if (iAnswer == 1)
        OV_instBrowseForSource(pFile, ppPicked, pSource);
    return iAnswer;
}

static void followRun(int iFd, pid_t iChild)
{
    OV_instCreateProgressBar(OV_instGetMainTopLevelShell(), iFd, iChild);
}

/* The parent's connection is left alone, and not even closed by the protocol: the server would
 * think that the parent has gone. */
static void enterChild()
{
    Widget inherited = OV_instGetMainTopLevelShell();
    /* The toolkit's font cache still speaks to the parent's connection now and then. */
    OwnedFd nowhere(open("/dev/null", O_RDWR | O_CLOEXEC));

    if (!inherited)
        return;
    (void)dup3(nowhere.iFd, ConnectionNumber(XtDisplay(inherited)), O_CLOEXEC);
    (void)OV_instCreateMainTopLevelShell(nullptr);
    s_bDisplayLater = true;
}

static const OV_FrontEnd s_dialogs = {
    true, tell, ask, askForMedium, followRun, enterChild, OV_instDispatchPending, provideShell,
};

void OV_instUseDialogs()
{
    OV_instUseFrontEnd(&s_dialogs);
}
