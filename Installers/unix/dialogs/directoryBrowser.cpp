#include "dialogs/directoryBrowser.h"

#include <climits>
#include <cstring>
#include <string>
#include <unistd.h>

#include <Xm/DialogS.h>
#include <Xm/FileSB.h>
#include <Xm/List.h>
#include <Xm/TextF.h>

#include "Dialogs/windowTitle.h"
#include "engine/fileOps.h"
#include "ut/OVinstFileUtils.h"
#include "ut/toolkit/bxutils.h"
#include "ut/toolkit/dialogShell.h"
#include "ut/toolkit/messageBox.h"
#include "ut/toolkit/widgetTree.h"
#include "ut/toolkit/looks.h"
#include "ut/owned.h"
#include "ut/toolkit/uibuild.h"

enum { FOLDER_MODE = 0755 };

/* Names rather than paths in the lists, or a long path would leave the second list no room. */
static const char s_caLooks[] = UI_SET("width", "500") UI_SET("height", "450")
    UI_SET("pathMode", "PATH_MODE_RELATIVE") UI_SET("fileFilterStyle", "FILTER_HIDDEN_FILES");

static Widget createShell(Widget parent, const OV_DirectoryBrowser *pBrowser)
{
    Widget shell =
        XtVaCreatePopupShell(pBrowser->pShellName, xmDialogShellWidgetClass, parent, nullptr);

    if (pBrowser->pTitle)
        OV_instSetTitle(shell, pBrowser->pTitle);
    else
        OV_instSetWindowTitle(shell);
    return shell;
}

/* A shell named after a file can have characters in its name that mean something to resources. */
static void addLooks(Widget shell, const char *pBoxName)
{
    Widget named = strpbrk(XtName(shell), ".*?") ? XtParent(shell) : shell;

    (void)OV_instAddWidgetLooks(named, pBoxName, xmFileSelectionBoxWidgetClass, s_caLooks);
}

/* The mask for all that is in a directory. */
static XmString maskOf(const char *pStart)
{
    std::string mask = std::string(pStart) + "/*";

    (void)OV_instRemoveExtraSlash(mask.data()); /* fails for null only */
    return OV_instLiteralXmString(mask.c_str());
}

/* A new string. */
static char *textOf(XmString string)
{
    XtPointer pText =
        XmStringUnparse(string, nullptr, XmCHARSET_TEXT, XmCHARSET_TEXT, nullptr, 0, XmOUTPUT_ALL);
    char *pCopy = pText ? strdup(static_cast<char *>(pText)) : nullptr;

    XtFree(static_cast<char *>(pText));
    return pCopy;
}

/* The end of a long path says more than its beginning. */
static void select(Widget box, const char *pSelection)
{
    Widget text = XmFileSelectionBoxGetChild(box, XmDIALOG_TEXT);

    XmTextFieldSetString(text, const_cast<char *>(pSelection));
    XmTextFieldSetInsertionPosition(text, XmTextFieldGetLastPosition(text));
}

/* The directory that is listed; a new string, null without memory. */
static char *listedIn(Widget box)
{
    XmString directory = nullptr;

    XtVaGetValues(box, XmNdirectory, &directory, nullptr);
    char *pListed = textOf(directory);
    XmStringFree(directory);
    return pListed;
}

/* The lists show names only, and the toolkit would select the name alone. */
static void selectEntry(Widget, XtPointer box, XtPointer call)
{
    const auto *pCall = static_cast<const XmListCallbackStruct *>(call);
    OwnedText name(textOf(pCall->item));
    OwnedText listed(listedIn(static_cast<Widget>(box)));

    if (!name || !listed || name.get()[0] == '/')
        return;
    OwnedText path(OV_instBuildPath(listed.get(), name.get(), nullptr));
    if (path)
        select(static_cast<Widget>(box), path.get());
}

/* Where a directory has none in it, the toolkit lists a text in brackets that could be chosen. */
static void dropPlaceholder(Widget box)
{
    Widget list = XmFileSelectionBoxGetChild(box, XmDIALOG_LIST);
    XmStringTable aItems = nullptr;
    XmString none = nullptr;
    int iItems = 0;

    XtVaGetValues(list, XmNitems, &aItems, XmNitemCount, &iItems, nullptr);
    XtVaGetValues(box, XmNnoMatchString, &none, nullptr);
    if (iItems == 1 && XmStringCompare(aItems[0], none))
        XmListDeleteAllItems(list);
    XmStringFree(none);
}

/* Another directory is listed, and the toolkit has emptied the selection. */
static void listChanged(Widget, XtPointer client, XtPointer)
{
    Widget box = static_cast<Widget>(client);
    OwnedText listed(listedIn(box));

    dropPlaceholder(box);
    if (listed)
        select(box, listed.get());
}

Widget OV_instCreateDirectoryBrowser(Widget parent, const OV_DirectoryBrowser *pBrowser)
{
    Widget shell = createShell(parent, pBrowser);
    XmString mask = maskOf(pBrowser->pStart);
    XmString label = OV_instLiteralXmString(pBrowser->pListLabel);

    addLooks(shell, pBrowser->pBoxName);
    Widget box = XtVaCreateWidget(
        pBrowser->pBoxName, xmFileSelectionBoxWidgetClass, shell, XmNautoUnmanage, False,
        XmNdialogStyle, XmDIALOG_FULL_APPLICATION_MODAL, XmNfileTypeMask, XmFILE_DIRECTORY,
        XmNfileListLabelString, label, XmNdirMask, mask, nullptr);
    XmStringFree(label);
    XmStringFree(mask);
    XtUnmanageChild(XmFileSelectionBoxGetChild(box, XmDIALOG_HELP_BUTTON));
    XtAddCallback(box, XmNokCallback, pBrowser->fpOk, pBrowser->pClient);
    XtAddCallback(box, XmNcancelCallback, pBrowser->fpCancel, pBrowser->pClient);
    XtAddCallback(XmFileSelectionBoxGetChild(box, XmDIALOG_LIST), XmNbrowseSelectionCallback,
                  selectEntry, box);
    XtAddCallback(XmFileSelectionBoxGetChild(box, XmDIALOG_DIR_LIST), XmNdefaultActionCallback,
                  listChanged, box);
    XtAddCallback(box, XmNapplyCallback, listChanged, box);
    OV_instCompleteDialog(box);
    dropPlaceholder(box);
    select(box, pBrowser->pSelection ? pBrowser->pSelection : pBrowser->pStart);
    return box;
}

char *OV_instGetBrowsed(Widget box)
{
    char *pText = XmTextFieldGetString(XmFileSelectionBoxGetChild(box, XmDIALOG_TEXT));
    char *pCopy = *pText ? strdup(pText) : nullptr;

    if (!*pText) /* that is no choice of the working directory */
        OV_instTellOver(box, "No directory is selected.");

    XtFree(pText);
    return pCopy;
}

bool OV_instOfferFolder(Widget box, const char *pPath, const char *pQuestion, const char *pFailure)
{
    if (OV_instDisplayMessage(OV_instGetShell(box), "Yes", "No", nullptr, pQuestion, pPath) != 0)
        return false;
    if (OV_instMkdir(pPath, FOLDER_MODE, nullptr) == 0)
        return true;
    OV_instTellOver(box, pFailure, pPath);
    return false;
}

static char *failed(const char **ppReason, const char *pReason)
{
    if (ppReason)
        *ppReason = pReason;
    return nullptr;
}

char *OV_instGetAbsoluteChoice(const char *pPath, const char **ppReason)
{
    char caDirectory[PATH_MAX];

    if (pPath && pPath[0] != '/' && !getcwd(caDirectory, sizeof(caDirectory)))
        return failed(ppReason, "can't get current working directory");
    char *pAbsolute = nullptr;
    if (pPath)
        pAbsolute = pPath[0] == '/' ? strdup(pPath) : OV_instBuildPath(caDirectory, pPath, nullptr);
    return pAbsolute ? pAbsolute : failed(ppReason, "can't build destination path");
}
