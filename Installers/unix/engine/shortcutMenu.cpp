#include "engine/shortcutMenu.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

#include "ut/OVinstFileUtils.h"
#include "ut/guard.h"
#include "ut/owned.h"
#include "ut/replaceFile.h"
#include "ut/wholeFile.h"

enum { MOST_NAMES = 20, LONGEST_NAME = 19, NO_LEVEL = -1 };

static const char s_caTopMenu[] = "ToolChest";
static const char s_caBlanks[] = " \t\n";

/* Where a pass over a menu file is. Levels are positions in the shortcut's path. */
struct MenuPass {
    const OV_Shortcut *pShortcut;
    int iLevel;   /* of the menu that the lines belong to; NO_LEVEL outside the path */
    int iMatched; /* so many levels are there */
    bool abMatched[MOST_NAMES]; /* whether the level's menu leads to the next one */
    bool bTopExtended;          /* the entry was put into the top menu */
    std::string text;
};

/* ---- lines ---- */

/* The n-th word of a line, or nothing. */
static std::string wordOf(const std::string &line, int iWord)
{
    size_t iStart = line.find_first_not_of(s_caBlanks);

    for (; iWord > 0 && iStart != std::string::npos; iWord--) {
        iStart = line.find_first_of(s_caBlanks, iStart);
        iStart = line.find_first_not_of(s_caBlanks, iStart);
    }
    if (iStart == std::string::npos)
        return "";
    return line.substr(iStart, line.find_first_of(s_caBlanks, iStart) - iStart);
}

/* A text between the quotes of a menu file. */
static std::string quoted(const std::string &text)
{
    std::string result;

    for (size_t i = 0; i < text.size(); i++) {
        if (text[i] == '"' && (i == 0 || text[i - 1] != '\\'))
            result += '\\';
        result += text[i];
    }
    return result;
}

/* The label that an entry begins with, as it stands between its quotes. */
static bool readLabel(const std::string &line, std::string *pLabel)
{
    size_t iStart = line.find_first_not_of(s_caBlanks);

    if (iStart == std::string::npos || line[iStart] != '"')
        return false;
    size_t iEnd = iStart + 1;
    while (iEnd < line.size() && line[iEnd] != '"')
        iEnd += line[iEnd] == '\\' ? 2 : 1;
    if (iEnd >= line.size())
        return false;
    *pLabel = line.substr(iStart + 1, iEnd - iStart - 1);
    return true;
}

static std::string entryOf(const OV_Shortcut *pShortcut)
{
    return "\t\"" + quoted(pShortcut->label) + "\"\tf.checkexec \"" + quoted(pShortcut->command) +
           "\"\n";
}

/* ---- a pass over the file ---- */

static int lastLevel(const MenuPass *pPass)
{
    return static_cast<int>(pPass->pShortcut->path.size()) - 1;
}

static void startMenu(MenuPass *pPass, const std::string &name)
{
    const std::vector<std::string> &path = pPass->pShortcut->path;

    pPass->iLevel = name == s_caTopMenu ? 0 : NO_LEVEL;
    for (int i = pPass->iMatched; pPass->iLevel == NO_LEVEL && i <= lastLevel(pPass); i++)
        if (path[static_cast<size_t>(i)] == name)
            pPass->iLevel = i;
}

/* The top menu ends without leading to the path. */
static void extendTopMenu(MenuPass *pPass)
{
    const OV_Shortcut *pShortcut = pPass->pShortcut;

    pPass->bTopExtended = true;
    if (lastLevel(pPass) == 0)
        pPass->text += entryOf(pShortcut);
    else
        pPass->text += "\t\"" + pShortcut->path[1] + "\"\tf.menu \"" + pShortcut->path[1] + "\"\n";
}

static void copyEntry(MenuPass *pPass, const std::string &line)
{
    const OV_Shortcut *pShortcut = pPass->pShortcut;
    std::string label;

    if (pPass->iLevel == NO_LEVEL || !readLabel(line, &label)) {
        pPass->text += line;
        return;
    }
    const size_t iLevel = static_cast<size_t>(pPass->iLevel);
    if (pPass->iLevel < lastLevel(pPass)) {
        if (label == quoted(pShortcut->path[iLevel + 1]) && !pPass->abMatched[iLevel]) {
            pPass->abMatched[iLevel] = true;
            pPass->iMatched++;
        }
        pPass->text += line;
    } else if (label == quoted(pShortcut->label)) {
        pPass->iMatched = lastLevel(pPass) + 1; /* the whole path is there */
        pPass->text += entryOf(pShortcut);
    } else {
        pPass->text += line;
    }
}

static void copyLine(MenuPass *pPass, const std::string &line)
{
    const std::string word = wordOf(line, 0);

    if (word == "}") {
        bool bExtend = pPass->iLevel == 0 && pPass->iMatched == 0 && !pPass->bTopExtended;
        if (bExtend)
            extendTopMenu(pPass);
        pPass->text += bExtend ? "}\n" : line;
        pPass->iLevel = NO_LEVEL;
    } else {
        if (word == "Menu")
            startMenu(pPass, wordOf(line, 1));
        copyEntry(pPass, line);
    }
}

/* The menus that are missing. One that is there without the entry is defined once more: the lines
 * that the user has stay his. */
static std::string missingMenus(const MenuPass *pPass)
{
    const std::vector<std::string> &path = pPass->pShortcut->path;
    std::string text;

    for (int i = pPass->iMatched; i <= lastLevel(pPass); i++) {
        const size_t iLevel = static_cast<size_t>(i);
        if (i == 0 && pPass->bTopExtended)
            continue;
        text += "\nMenu " + path[iLevel] + "\n{\n";
        text += i == lastLevel(pPass)
                    ? entryOf(pPass->pShortcut)
                    : "\t\"" + path[iLevel + 1] + "\"\tf.menu " + path[iLevel + 1] + "\n";
        text += "}\n";
    }
    return text;
}

std::string OV_instChangeMenus(const std::string &menus, const OV_Shortcut *pShortcut,
                               std::string *pAppended)
{
    MenuPass pass = {pShortcut, NO_LEVEL, 0, {}, false, ""};

    for (size_t iStart = 0; iStart < menus.size();) {
        size_t iEnd = menus.find('\n', iStart);
        iEnd = iEnd == std::string::npos ? menus.size() : iEnd + 1;
        copyLine(&pass, menus.substr(iStart, iEnd - iStart));
        iStart = iEnd;
    }
    *pAppended = missingMenus(&pass);
    return pass.text;
}

int OV_instSplitMenuPath(const char *pMenuPath, std::vector<std::string> *pPath)
{
    pPath->clear();
    for (const char *pName = pMenuPath + strspn(pMenuPath, "/"); *pName;) {
        const size_t iLength = strcspn(pName, "/");
        if (iLength > LONGEST_NAME || pPath->size() == MOST_NAMES)
            return -1;
        pPath->emplace_back(pName, iLength);
        pName += iLength;
        pName += strspn(pName, "/");
    }
    return 0;
}

/* ---- the file ---- */

/* The command with its directory. The format comes from outside and is no format of printf's. */
static std::string formatCommand(const char *pFormat, const char *pDirectory)
{
    std::string command;

    for (; *pFormat; pFormat++) {
        if (pFormat[0] == '%' && (pFormat[1] == 's' || pFormat[1] == '%'))
            command += *++pFormat == 's' ? pDirectory : "%";
        else
            command += *pFormat;
    }
    return command;
}

/* A text with a line end would add lines of its own to the file. */
static bool isGiven(const char *pText)
{
    return pText && *pText && !strchr(pText, '\n');
}

/* 0 with the menus, none where there is no file, or -1. Strangers' links and what is no regular
 * file are refused. */
static int readMenus(const char *pDirectory, std::string *pMenus)
{
    OwnedText path(OV_instBuildPath(pDirectory, ".shortcuts", nullptr));
    struct stat status;

    if (!path)
        return -1;
    OwnedFd file(OV_instGuardedOpenIn(pDirectory, path.get(), O_RDONLY, 0));
    if (file.iFd < 0)
        return errno == ENOENT ? 0 : -1;
    if (fstat(file.iFd, &status) < 0 || !S_ISREG(status.st_mode))
        return -1;
    OwnedFile menus(fdopen(file.iFd, "r"));
    if (!menus)
        return -1;
    (void)file.release(); /* the stream closes it now */
    return OV_instReadWhole(menus.get(), pMenus);
}

/* What a menu file that was not there before gets: it is its directory's owner's. */
static struct stat ownerOfNew(const char *pDirectory)
{
    struct stat status;

    if (stat(pDirectory, &status) < 0)
        status = {};
    status.st_mode = S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH;
    return status;
}

static bool put(const std::string &text, FILE *pStream)
{
    return fwrite(text.data(), 1, text.size(), pStream) == text.size() && fflush(pStream) == 0;
}

static int writeMenus(const char *pDirectory, const std::string &copied,
                      const std::string &appended)
{
    const struct stat asNew = ownerOfNew(pDirectory);
    OV_Replacement file;
    const char *pReason = nullptr;

    if (OV_instBeginReplacement(&file, pDirectory, "ORVARC", ".shortcuts", &asNew) < 0) {
        fputs("Unable to open Shortcut file\n", stderr);
        return 1;
    }
    if (!put(copied, file.pStream))
        pReason = "fputs failed writing shortcut\n";
    else if (!put(appended, file.pStream))
        pReason = "fputs failed writin shortcut\n"; /* who looks for it knows it so */
    if (OV_instEndReplacement(&file, !pReason) == 0)
        return 0;
    fputs(pReason ? pReason : "fputs failed writing shortcut\n", stderr);
    return 1;
}

int install_shortcut(const char *pMenuPath, const char *pLabel, const char *pCommandFormat,
                     const char *pDirectory)
{
    OV_Shortcut shortcut;
    std::string menus;
    std::string appended;

    if (!isGiven(pMenuPath) || !isGiven(pLabel) || !isGiven(pCommandFormat) || !pDirectory) {
        fputs("Shortcut invalid parameters\n", stderr);
        return 1;
    }
    if (OV_instSplitMenuPath(pMenuPath, &shortcut.path) < 0) {
        fputs("Overload in Shortcut menu parser\n", stderr);
        return 1;
    }
    shortcut.label = pLabel;
    shortcut.command = formatCommand(pCommandFormat, pDirectory);
    if (shortcut.path.empty() || shortcut.path[0] != s_caTopMenu ||
        !isGiven(shortcut.command.c_str())) {
        fputs("Shortcut invalid parameters\n", stderr);
        return 1;
    }
    if (readMenus(pDirectory, &menus) < 0) {
        fputs("Unable to open Shortcut file\n", stderr);
        return 1;
    }
    const std::string copied = OV_instChangeMenus(menus, &shortcut, &appended);
    return writeMenus(pDirectory, copied, appended);
}
