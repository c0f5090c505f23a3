#include "dialogs/SourcePrompt.h"

#include <Xm/FileSB.h>

#include "dialogs/directoryBrowser.h"
#include "ut/owned.h"
#include "ut/strprint.h"

Widget OV_instCreateSourceBrowser(Widget parent, OV_SourceBrowse *pBrowse, const char *pRealSource)
{
    OwnedText title(OV_instStrPrint("Locate %s", pBrowse->pFile));
    const char *pTitle = title ? title.get() : "Locate";
    const OV_DirectoryBrowser browser = {
        pTitle,      pTitle,      "Browser Install Directory", "Source",
        pRealSource, pRealSource, OV_BrowseSourceOkCB,         OV_BrowseSourceExitCB,
        pBrowse};
    Widget box = OV_instCreateDirectoryBrowser(parent, &browser);

    pBrowse->text = XmFileSelectionBoxGetChild(box, XmDIALOG_TEXT);
    return box;
}
