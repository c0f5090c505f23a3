#include "dialogs/SourcePrompt.h"

#include <cstdio>
#include <cstring>
#include <unistd.h>

#include <Xm/TextF.h>

#include "dialogs/directoryBrowser.h"
#include "ut/OVinstFileUtils.h"
#include "ut/owned.h"
#include "ut/strprint.h"
#include "ut/toolkit/modal.h"
#include "ut/toolkit/messageBox.h"
#include "ut/toolkit/uiut.h"

static int g_iExitBrowseFlag; /* ends the browser's loop */

static void closeBrowser(Widget box)
{
    OV_instTakeDown(box);
    g_iExitBrowseFlag = 1;
}

/* The selection, cut where it is longer than a path can be. */
static char *selectionOf(Widget text)
{
    char *pText = XmTextFieldGetString(text);
    char *pCopy = strndup(pText, OV_INST_PATH_SIZE);

    XtFree(pText);
    return pCopy;
}

/* Nothing selected names no directory, rather than the root. */
static bool holdsFile(const char *pDirectory, const char *pFile)
{
    OwnedText path(OV_instStrPrint("%s/%s", pDirectory, pFile));

    return pDirectory[0] && path && access(path.get(), F_OK) == 0;
}

static const char *missingPart(const OV_SourceBrowse *pBrowse)
{
    if (!pBrowse)
        return "Invalid psbBrowse to OV_BrowseSourceOkCB";
    if (!pBrowse->ppNewSource)
        return "Invalid pNewSource to OV_BrowseSourceOkCB";
    return pBrowse->pFile ? nullptr : "Invalid pFile to OV_BrowseSourceOkCB";
}

void OV_BrowseSourceOkCB(Widget box, XtPointer browse, XtPointer)
{
    const auto *pBrowse = static_cast<const OV_SourceBrowse *>(browse);

    if (const char *pMissing = missingPart(pBrowse)) {
        puts(pMissing);
        return;
    }
    OwnedText directory(selectionOf(pBrowse->text));
    if (!directory)
        return;
    if (!holdsFile(directory.get(), pBrowse->pFile)) {
        OV_instTellOver(box,
                        "File:\n     '%s'\nDoes not exist in directory:\n     "
                        "'%s'.\nTry Again",
                        pBrowse->pFile, directory.get());
        return;
    }
    *pBrowse->ppNewSource = directory.release();
    closeBrowser(box);
}

void OV_BrowseSourceExitCB(Widget box, XtPointer, XtPointer)
{
    closeBrowser(box);
}

/* The source directory with its links resolved; the dot makes it the directory itself and not
 * the one above. */
static char *realSource(const char *pSource)
{
    OwnedText directory(pSource ? OV_instBuildPath(pSource, ".", nullptr) : nullptr);

    return directory ? OV_instGetRealPath(directory.get()) : nullptr;
}

void OV_instBrowseForSource(const char *pFile, char **ppNewSource, const char *pSource)
{
    Widget parent = OV_instGetMainTopLevelShell();
    OV_SourceBrowse browse = {ppNewSource, pFile, nullptr};

    if (!ppNewSource) {
        puts("NULL pNewDir to OV_instBrowseForSource");
        return;
    }
    if (!parent || !pFile)
        return;
    OwnedText real(realSource(pSource));
    OV_instRunDialog(OV_instCreateSourceBrowser(parent, &browse, real ? real.get() : "."),
                     &g_iExitBrowseFlag);
}
