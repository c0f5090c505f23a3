#include "Dialogs/UpdateUser.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <pwd.h>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

#include <X11/Shell.h>
#include <Xm/List.h>
#include <Xm/TextF.h>
#include <Xm/ToggleB.h>

#include "engine/environmentFile.h"
#include "ut/toolkit/bxutils.h"
#include "ut/toolkit/dialogShell.h"
#include "ut/toolkit/looks.h"
#include "ut/owned.h"
#include "ut/privateFile.h"
#include "ut/shellWord.h"
#include "ut/strprint.h"
#include "ut/wholeFile.h"
#include "ut/toolkit/uibuild.h"
#include "ut/toolkit/messageBox.h"
#include "ut/toolkit/modal.h"
#include "ut/toolkit/widgetTree.h"

static const char s_caCut[] = "cut -d# -f1 | cut -d: -f1 | cut -d+ -f1";
static const char s_caYpcat[] = "/usr/bin/ypcat";
static const char s_caYpwhich[] = "/usr/bin/ypwhich";
static const char s_caListLooks[] = UI_SET("width", "200") UI_SET("height", "600");

static int UpdateUserExit;               /* ends the wait for the dialog */
static int GenerateOrvane;               /* 0 copies the environment file, 1 makes a new one */
static std::string destinationDirectory; /* the installation directory given to the dialog */
static Widget ExistingUser;              /* the window with the users; null when there is none */

/* The user's name goes here; null when the dialog is gone. */
static Widget s_dialog;
static std::vector<std::string> s_users; /* what the list shows, in its order */

static void forget(Widget widget, XtPointer, XtPointer)
{
    for (Widget *pWidget : {&ExistingUser, &s_dialog})
        if (*pWidget == widget)
            *pWidget = nullptr;
}

static Widget nameField()
{
    return OV_instFindWidget(s_dialog, "txUpdateUserUsername");
}

static void showName(const char *pName)
{
    if (Widget field = nameField())
        XmTextFieldSetString(field, const_cast<char *>(pName));
}

/* ---- the users ---- */

int check_if_file_exist(const char *pPath)
{
    return access(pPath, F_OK) == 0 ? 0 : 1;
}

/* Makes an empty file of ours for a command to write into. Gives its path as a word for the shell,
 * or null where there can be no such file. */
static char *scratchWord(const char *pName, OwnedText *pPath)
{
    pPath->reset(OV_instPrivatePath(pName));
    OwnedFile made(OV_instCreatePrivate(pPath->get()));

    return made ? OV_instShellWord(pPath->get()) : nullptr;
}

int check_if_yp()
{
    OwnedText path;
    char caWord[sizeof "ypwhich:"] = "";

    if (check_if_file_exist(s_caYpwhich) != 0)
        return 0;
    OwnedText word(scratchWord(".yp", &path));
    if (!word)
        return 0;
    (void)OV_instStrSystem("%s > %s 2>&1", s_caYpwhich, word.get()); /* its reply tells */
    OwnedFile reply(OV_instOpenPrivate(path.get()));
    bool bAnswered = reply && fscanf(reply.get(), "%8s", caWord) == 1;
    (void)unlink(path.get()); /* ours, and of no more use */
    return bAnswered && strcmp(caWord, "ypwhich:") != 0 ? 1 : 0;
}

/* Where there is no room, or no place for the files, there are no users to choose from. */
[[noreturn]] static void endWithoutRoom()
{
    (void)OV_instStrSystem("echo \"\\a\\nFATAL ERROR:  Couldn't write on disk.  "
                           "Please verify available space.\\n\"");
    exit(0);
}

/* The names of all users, sorted, in a file of ours whose path goes into *pSorted. Null when it
 * cannot be had. */
static FILE *listUsers(OwnedText *pSorted)
{
    OwnedText rawPath;
    OwnedText raw(scratchWord(".kivo_install_tmp_names1", &rawPath));
    if (!raw)
        return nullptr;
    OwnedText sorted(scratchWord(".kivo_install_tmp_names", pSorted));
    if (sorted) {
        (void)OV_instStrSystem("/bin/cat /etc/passwd | %s >%s", s_caCut, raw.get());
        if (check_if_yp() && check_if_file_exist(s_caYpcat) == 0)
            (void)OV_instStrSystem("%s passwd | %s >>%s", s_caYpcat, s_caCut, raw.get());
        (void)OV_instStrSystem("/bin/sort -u %s > %s", raw.get(), sorted.get());
    }
    (void)unlink(rawPath.get()); /* ours, and of no more use */
    return sorted ? OV_instOpenPrivate(pSorted->get()) : nullptr;
}

static void readUsers()
{
    OwnedText path;
    OwnedFile file(listUsers(&path));
    std::string text;

    if (!file) {
        if (path)
            (void)unlink(path.get()); /* ours, if it is there at all */
        endWithoutRoom();
    }
    (void)OV_instReadWhole(file.get(), &text); /* what could be read is offered */
    std::istringstream words(text);
    s_users.clear();
    for (std::string name; words >> name;)
        s_users.push_back(name);
    (void)unlink(path.get()); /* ours, and of no more use */
}

/* All at once, since a list lays itself out for each call. */
static void fillList(Widget list)
{
    std::vector<XmString> items;

    for (const std::string &name : s_users)
        items.push_back(OV_instLiteralXmString(name.c_str()));
    XmListAddItemsUnselected(list, items.data(), static_cast<int>(items.size()), 0);
    for (XmString item : items)
        XmStringFree(item);
}

static void closeUserList()
{
    if (!ExistingUser)
        return;
    XtPopdown(ExistingUser);
    XtDestroyWidget(ExistingUser);
    ExistingUser = nullptr;
}

void UpdateUserSelectUserCB(Widget widget, XtPointer, XtPointer)
{
    static const char s_caName[] = "tlsUpdateUserExistingUsers";
    Widget parent = OV_instGetShell(widget);

    if (ExistingUser)
        return;
    readUsers();
    (void)OV_instAddWidgetLooks(parent, s_caName, topLevelShellWidgetClass, s_caListLooks);
    ExistingUser = XtVaCreatePopupShell(s_caName, topLevelShellWidgetClass, parent, nullptr);
    OV_instSetTitle(ExistingUser, "User List");
    XtAddCallback(ExistingUser, XmNdestroyCallback, forget, nullptr);
    Widget window = CreateswUpdateUserUserList(ExistingUser);
    fillList(XtNameToWidget(window, "listUpdateUserUsernames"));
    XtManageChild(window);
    XtPopup(ExistingUser, XtGrabExclusive);
}

void user_sel_name_ok(Widget, XtPointer, XtPointer call)
{
    const auto *pCall = static_cast<const XmListCallbackStruct *>(call);
    const size_t iAt = pCall ? static_cast<size_t>(pCall->item_position) - 1 : s_users.size();

    if (iAt < s_users.size())
        showName(s_users[iAt].c_str());
    closeUserList();
}

/* ---- the dialog ---- */

void UpdateUserValueChangeCB(Widget, XtPointer which, XtPointer state)
{
    const auto *pState = static_cast<const XmToggleButtonCallbackStruct *>(state);

    if (pState && pState->set)
        GenerateOrvane = static_cast<int>(reinterpret_cast<intptr_t>(which));
}

/* Shows a message about a user, or what is said when there is no memory for it. */
static void tell(const char *pFormat, const char *pUser, const char *pOtherwise)
{
    OwnedText message(OV_instStrPrint(pFormat, pUser));

    (void)OV_instOkCancelMessageBox(OV_instGetShell(s_dialog), message ? message.get() : pOtherwise,
                                    "OK", nullptr, nullptr);
}

static void updateUser(const char *pUser)
{
    const struct passwd *pEntry = getpwnam(pUser);

    if (!pEntry) {
        tell("ERROR: User %s doesn't exist.", pUser, "Error: internal in UpdateUserUpdateCB");
        return;
    }
    (GenerateOrvane ? create_orvane_file : copy_orvane_file)(
        pEntry->pw_dir, destinationDirectory.c_str(), pEntry->pw_uid, pEntry->pw_gid);
    tell("User %s updated.", pUser, "Error: internal error in UpdateUserUpdateCB");
}

void UpdateUserUpdateCB(Widget, XtPointer, XtPointer)
{
    Widget field = nameField();

    if (!field)
        return;
    char *pUser = XmTextFieldGetString(field);
    if (*pUser)
        updateUser(pUser);
    XtFree(pUser);
    showName("");
}

void UpdateUserContinueCB(Widget, XtPointer, XtPointer)
{
    UpdateUserExit = 1;
}

void OV_instUpdateUser(Widget parent, const char *pDestination)
{
    if (!parent || !pDestination)
        return;
    GenerateOrvane = 0;
    destinationDirectory = pDestination;
    Widget dialog = s_dialog = CreatembUpdateUser(parent);
    XtAddCallback(dialog, XmNdestroyCallback, forget, nullptr);
    OV_instRunDialog(dialog, &UpdateUserExit);
    closeUserList();
    if (s_dialog == dialog) /* not gone yet */
        s_dialog = nullptr;
}
