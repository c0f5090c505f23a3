#include "dialogs/Migration.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include <Xm/List.h>
#include <Xm/TextF.h>
#include <Xm/ToggleB.h>

#include "Dialogs/ExitConfirmation.h"
#include "dialogs/directoryBrowser.h"
#include "Dialogs/windowTitle.h"
#include "engine/userHome.h"
#include "dialogs/moveFiles.h"
#include "engine/setupState.h"
#include "ut/OVinstFileUtils.h"
#include "ut/toolkit/bxutils.h"
#include "ut/owned.h"
#include "ut/shellWord.h"
#include "ut/strprint.h"
#include "ut/toolkit/messageBox.h"
#include "ut/toolkit/modal.h"
#include "ut/toolkit/widgetTree.h"

enum { WORKING_SIZE = 256 };

static const char s_caPreferences[] = "Data/Preferences/cpm.cpm";

/* A list and the one made before it. */
struct HeldList {
    OV_StringList head;
    HeldList *pOlder;
};

int g_iDoMigrate;
char *g_pPrefPath;

static int s_iBrowseDone;                /* ends the browser's loop */
static HeldList *s_pLists;               /* all that were made */
static std::vector<std::string> s_paths; /* what the dialog's list shows, in its order */

/* ---- lists ---- */

OV_StringList *CreateStringList()
{
    auto *pHeld = static_cast<HeldList *>(calloc(1, sizeof(HeldList)));

    if (!pHeld)
        return nullptr;
    pHeld->pOlder = s_pLists;
    s_pLists = pHeld;
    return &pHeld->head;
}

void InsertStringList(OV_StringList *pList, const char *pText)
{
    OwnedText text(pText ? strdup(pText) : nullptr);

    while (pList && pList->pNext)
        pList = pList->pNext;
    if (!pList || !text)
        return;
    pList->pNext = static_cast<OV_StringList *>(calloc(1, sizeof(OV_StringList)));
    if (pList->pNext)
        pList->pText = text.release();
}

void FreeStringList(OV_StringList *) {}

/* ---- looking for preferences ---- */

bool GetNodeMode(const char *pPath, mode_t *pMode)
{
    struct stat status;

    if (!pPath || stat(pPath, &status) < 0)
        return false;
    if (pMode)
        *pMode = status.st_mode;
    return true;
}

bool IsFileExist(const char *pPath)
{
    mode_t iMode;

    return GetNodeMode(pPath, &iMode) && S_ISREG(iMode);
}

bool IsDirExist(const char *pPath)
{
    mode_t iMode;

    return GetNodeMode(pPath, &iMode) && S_ISDIR(iMode);
}

char *GetHomeDirectory()
{
    const char *pHome = getenv("HOME");

    return pHome ? strdup(pHome) : nullptr;
}

static bool isOrdinaryName(const char *pName)
{
    return strcmp(pName, ".") != 0 && strcmp(pName, "..") != 0;
}

OV_StringList *FindAllDirs(const char *pDirectory)
{
    OV_StringList *pFound = CreateStringList();
    struct dirent **ppEntries = nullptr;
    int iCount = pDirectory ? scandir(pDirectory, &ppEntries, nullptr, alphasort) : 0;

    while (iCount-- > 0) {
        const std::string path = std::string(pDirectory) + "/" + ppEntries[iCount]->d_name;
        if (isOrdinaryName(ppEntries[iCount]->d_name) && IsDirExist(path.c_str()))
            InsertStringList(pFound, path.c_str());
        free(ppEntries[iCount]);
    }
    free(ppEntries);
    return pFound;
}

OV_StringList *FindPreferencesDirs(const OV_StringList *pDirectories)
{
    OV_StringList *pFound = CreateStringList();

    for (; pDirectories && pDirectories->pText; pDirectories = pDirectories->pNext) {
        const std::string path = std::string(pDirectories->pText) + "/" + s_caPreferences;
        if (IsFileExist(path.c_str()))
            InsertStringList(pFound, pDirectories->pText);
    }
    return pFound;
}

/* Takes over a copy of the path without its trailing slash; null for none. */
static void setPrefPath(const char *pPath)
{
    char *pCopy = pPath ? strdup(pPath) : nullptr;
    const size_t iLength = pCopy ? strlen(pCopy) : 0;

    if (iLength > 1 && pCopy[iLength - 1] == '/')
        pCopy[iLength - 1] = '\0';
    free(g_pPrefPath);
    g_pPrefPath = pCopy;
}

/* ---- the dialog ---- */

static void setText(Widget widget, const char *pName, const char *pText)
{
    Widget field = OV_instFindWidget(widget, pName);

    if (field)
        XmTextFieldSetString(field, const_cast<char *>(pText ? pText : ""));
}

/* The text of a field, for the caller to free. */
static char *getText(Widget widget, const char *pName)
{
    char *pText = XmTextFieldGetString(OV_instFindWidget(widget, pName));
    char *pCopy = strdup(pText);

    XtFree(pText);
    return pCopy;
}

static void addToList(Widget list, const char *pPath)
{
    XmString item = OV_instLiteralXmString(pPath);

    XmListAddItemUnselected(list, item, 0);
    XmStringFree(item);
    s_paths.push_back(pPath);
}

void OnListCreate(Widget list)
{
    OwnedText home(GetHomeDirectory());
    const std::string root = home ? std::string(home.get()) + "/Orvane" : "";
    OV_StringList *pDirectories = FindAllDirs(home ? root.c_str() : nullptr);
    OV_StringList *pKept = FindPreferencesDirs(pDirectories);

    s_paths.clear();
    for (const OV_StringList *pNode = pKept; pNode && pNode->pText; pNode = pNode->pNext)
        addToList(list, pNode->pText);
    if (!s_paths.empty()) {
        XmListSelectPos(list, 1, False);
        setPrefPath(s_paths[0].c_str());
    }
    FreeStringList(pDirectories);
    FreeStringList(pKept);
}

/* The path at a position of the list, which counts from 1; null for none. */
static const char *pathAt(int iPosition)
{
    const size_t iAt = static_cast<size_t>(iPosition) - 1;

    return iPosition > 0 && iAt < s_paths.size() ? s_paths[iAt].c_str() : nullptr;
}

void OnCreateTextFieldPathCreate(Widget textField)
{
    Widget list = OV_instFindWidget(textField, "migrationList");
    int *piPositions = nullptr;
    int iCount = 0;

    if (!list || !XmListGetSelectedPos(list, &piPositions, &iCount))
        return;
    setText(textField, "textFieldPath", pathAt(piPositions[0]));
    XtFree(reinterpret_cast<char *>(piPositions));
}

void OnListBrowseSelect(Widget list, XtPointer, XtPointer call)
{
    const auto *pCall = static_cast<const XmListCallbackStruct *>(call);

    if (pCall)
        setText(list, "textFieldPath", pathAt(pCall->item_position));
}

static void setSensitive(Widget widget, bool bSensitive)
{
    static const char *const s_apNames[] = {"labelDescription2", "migrationList", "textFieldPath",
                                            "pushButtonBrowse"};

    for (const char *pName : s_apNames)
        XtSetSensitive(OV_instFindWidget(widget, pName), bSensitive);
}

void OnMigrationDlgMap(Widget widget, XtPointer, XtPointer)
{
    setSensitive(widget, false);
    setText(widget, "textFieldPath", g_pPrefPath);
    OV_instSetWindowTitle(widget);
}

void OnToggleMigrateValueChanged(Widget widget, XtPointer, XtPointer)
{
    setSensitive(widget, XmToggleButtonGetState(widget));
}

void OnExitSetupButton(Widget widget, XtPointer, XtPointer)
{
    OV_exitSetupConfirmation(OV_instGetShell(widget), "Setup has not yet modified any files.", "");
}

void OnOkButton(Widget widget, XtPointer, XtPointer)
{
    g_iDoMigrate = XmToggleButtonGetState(OV_instFindWidget(widget, "toggleButtonMigrate")) ? 1 : 0;
    if (g_iDoMigrate) {
        OwnedText path(getText(widget, "textFieldPath"));
        setPrefPath(path.get());
    }
    (void)OV_instMoveFiles(widget, GetConfigToInstall()); /* what fails is shown there */
}

/* ---- the browsers ---- */

/* Lets the user point at a directory; what becomes of it is the callback's. */
static void _BrowseDialog(Widget parent, const char *pStart, XtCallbackProc fpOk)
{
    char caWorking[WORKING_SIZE] = "";

    if (!GetNodeMode(pStart, nullptr))
        pStart = getcwd(caWorking, sizeof caWorking) ? caWorking : "/var/tmp";
    const OV_DirectoryBrowser browser = {"dsChangeDestinationSelection",
                                         nullptr,
                                         "fsbChangeDestinationSelection",
                                         "Destination",
                                         pStart,
                                         nullptr,
                                         fpOk,
                                         _OnBrowseDialogCancel,
                                         nullptr};
    OV_instRunDialog(OV_instCreateDirectoryBrowser(parent, &browser), &s_iBrowseDone);
}

void _OnBrowseDialogCancel(Widget, XtPointer, XtPointer)
{
    s_iBrowseDone = 1;
}

/* What is selected in the box as an absolute path, for the caller to free; null when that cannot be
 * had, which the user is told in the words of another dialog: who drives dialogs by their texts
 * knows those. */
static char *_GetAbsolutPath(Widget box)
{
    OwnedText text(OV_instGetBrowsed(box));
    char *pPath = OV_instGetAbsoluteChoice(text.get(), nullptr);

    if (text && !pPath)
        OV_instTellOver(box, "Internal error:\n(OV_instChangeDestinationBrowseOkCB) %s",
                        "can't build destination path");
    return pPath;
}

void _OnBrowseDialogPrefPathOk(Widget box, XtPointer, XtPointer)
{
    OwnedText path(_GetAbsolutPath(box));

    if (!path)
        return;
    const std::string file = std::string(path.get()) + "/" + s_caPreferences;
    if (!IsFileExist(file.c_str()) || access(file.c_str(), R_OK) != 0) {
        OV_instTellOver(
            box, "%s",
            "The selected directory does not seem to contain any valid preferences.\nPlease, "
            "choose another one.");
        return;
    }
    setPrefPath(path.get());
    s_iBrowseDone = 1;
}

/* Whether the folder is there, created where the user wants it. */
static bool provideFolder(Widget box, const char *pPath)
{
    return IsDirExist(pPath) ||
           OV_instOfferFolder(box, pPath,
                              "The folder:\n'%s'\ndoes not exist. Do you want to create it?",
                              "Unable to create directory:\n%s");
}

void _OnBrowseDialogUserRootOk(Widget box, XtPointer, XtPointer)
{
    OwnedText path(_GetAbsolutPath(box));

    if (!path || !provideFolder(box, path.get()))
        return;
    SetDefaultUserHome(path.get());
    s_iBrowseDone = 1;
}

static bool isListed(const char *pPath)
{
    for (const std::string &path : s_paths)
        if (path == pPath)
            return true;
    return false;
}

void OnBrowseButton(Widget widget, XtPointer, XtPointer)
{
    OwnedText start(getText(widget, "textFieldPath"));

    _BrowseDialog(OV_instGetShell(widget), start.get(), _OnBrowseDialogPrefPathOk);
    if (g_pPrefPath && !isListed(g_pPrefPath)) {
        addToList(OV_instFindWidget(widget, "migrationList"), g_pPrefPath);
        XmListSelectPos(OV_instFindWidget(widget, "migrationList"), 0, False); /* the last */
        setText(widget, "textFieldPath", g_pPrefPath);
    }
    setPrefPath(nullptr);
}

void OnUserRootBrowseButton(Widget widget, XtPointer, XtPointer)
{
    _BrowseDialog(OV_instGetShell(widget), GetDefaultUserHome(), _OnBrowseDialogUserRootOk);
    setText(widget, "textFieldUserRoot", GetDefaultUserHome());
}

/* ---- migrating ---- */

/* The command that migrates, for the caller to free; null when there is nothing to run it in. */
static char *buildCommand()
{
    const char *pDestination = OV_instGetDestinationDirectory();
    OwnedText destination(IsDirExist(pDestination) ? OV_instShellWord(pDestination) : nullptr);
    OwnedText preferences(OV_instShellWord(g_pPrefPath));

    return destination && preferences ? OV_instStrPrint("(cd %s; Application/bin/kivo -migrate %s)",
                                                        destination.get(), preferences.get())
                                      : nullptr;
}

int DoMigrate(Widget widget)
{
    if (!g_iDoMigrate || !g_pPrefPath)
        return 1;
    OwnedText command(buildCommand());

    if (command) {
        printf("%s\n", command.get());
        (void)fflush(stdout); /* the command may print, too */
    }
    if (!command || system(command.get()) != 0) {
        (void)OV_instOkCancelMessageBox(OV_instGetShell(widget), "Unable to migrate preferences.\n",
                                        "OK", nullptr, nullptr);
        return 0;
    }
    (void)OV_instOkCancelMessageBox(OV_instGetShell(widget), "Preferences migrated successfully.\n",
                                    "OK", nullptr, nullptr);
    setPrefPath(nullptr);
    return 1;
}
