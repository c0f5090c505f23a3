#include "dialogs/Agreement.h"

#include <climits>
#include <cstdlib>
#include <string>

#include <Xm/MessageB.h>
#include <Xm/Text.h>

#include "dialogs/ChangeDestination.h"
#include "dialogs/NameOrg.h"
#include "dialogs/firstPages.h"
#include "engine/setupState.h"
#include "ut/OVinstFileUtils.h"
#include "ut/toolkit/messageBox.h"
#include "ut/owned.h"
#include "ut/toolkit/uiut.h"
#include "ut/toolkit/widgetTree.h"

/* The text as the field can show it: without carriage returns and, where it is not in the user's
 * characters, byte by byte as Latin-1, since the field would show none of it. */
static std::string readable(const char *pText)
{
    const bool bValid = mbstowcs(nullptr, pText, 0) != static_cast<size_t>(-1);
    std::string shown;
    char caBytes[MB_LEN_MAX];

    for (; *pText; pText++) {
        const unsigned char c = static_cast<unsigned char>(*pText);
        if (c == '\r')
            continue;
        if (bValid || c < 0x80) {
            shown += *pText;
            continue;
        }
        const int iBytes = wctomb(caBytes, static_cast<wchar_t>(c));
        shown += iBytes > 0 ? std::string(caBytes, static_cast<size_t>(iBytes)) : "?";
    }
    return shown;
}

void OV_instEULAMapCB(Widget widget, XtPointer, XtPointer)
{
    OwnedText path(
        OV_instBuildPath(OV_instGetCdinstDirectory(), "SetupFiles", "eula.txt", nullptr));
    OwnedText content(OV_instReadFileContent(path.get()));
    Widget text = OV_instFindWidget(widget, "txEULA");

    if (!content) {
        (void)OV_instDisplayMessage(OV_instGetMainTopLevelShell(), "Exit setup", nullptr, nullptr,
                                    "Error: could not read <%s>", path ? path.get() : "");
        exit(1);
    }
    OV_instDropHelp(widget, true);
    XmTextSetString(text, &readable(content.get())[0]);
    (void)XmProcessTraversal(text, XmTRAVERSE_CURRENT); /* the keys scroll at once */
}

void OV_instEULAAcceptCB(Widget widget, XtPointer, XtPointer)
{
    const bool bAskUser = CDInstPtr && CDInstPtr->bUserOrgRes;

    OV_instFollowWith(OV_instGetShell(widget),
                      bAskUser ? CreatembNameOrg : CreatembChangeDestination);
}

void OV_instEULADeclineCB(Widget, XtPointer, XtPointer)
{
    exit(0);
}
