#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "engine/fileOps.h"
#include "medium/commands.h"
#include "medium/examine.h"
#include "medium/output.h"
#include "ut/owned.h"

enum { COPY_SIZE = 256 * 1024 };

/* Sizes stand for themselves: "@PATH@" is that of the medium's file. */
static const char s_caDescription[] =
    R"(SetupVersion 1
ProductName Example
ProductVersion 1.0
ProductDirectory example
LogFile setup.log
HistoryFile example

# What stands above is the header: these keys in this order, and nothing between them.
# "ovmedium check" tells what is wrong with a description, "ovmedium update --write" brings the
# sizes and the members of archives up to date.

# A package is what is installed and removed together. Copy takes the medium's file, its place in
# the product's directory ("" for the same), its size and its mode. A directory that Mkdir names is
# removed with the package, when it is empty by then.
Package "program" "Program"
Mkdir "bin" 0755
Copy "Files/hello" "bin/hello" @Files/hello@ 0755
Mkdir "SetupFiles" 0755
Copy "setup" "" @setup@ 0755
Copy "SetupFiles/eula.txt" "" @SetupFiles/eula.txt@ 0644

Package "manual" "Manual"
Mkdir "Setup/Help" 0755
Copy "Setup/Help/index.html" "" @Setup/Help/index.html@ 0644

# A suite is what a person chooses. The program is needed by everything else, so it is vital.
Suite "Program" program Vital
Suite "Manual" manual

# Pages, lists and options of the dialogs, by numbers: a member's is greater than that of its list.
# The last number of an option says whether it is chosen from the start.
ConfigBegin
# 1 is the first page of a new installation.
1 MainDlg "Example" "The ways to install Example" "" 10
10 CusDlg "Custom installation" "Choose each component." "" 0 11 12
11 Suite "Program" "The program." "" 1
12 Suite "Manual" "The manual." "" 1
# 2 is what is offered where the product is installed.
2 CusDlg "Add or remove" "The components of this installation." "" 0 21 22
21 Suite "Program" "The program." "" 0
22 Suite "Manual" "The manual." "" 0
# 3 is what "setup -cmdline" installs.
3 CusDlg "Complete installation" "Everything." "" 1 31 32
31 Suite "Program" "The program." "" 1
32 Suite "Manual" "The manual." "" 1
ConfigEnd
)";

static const char s_caLicence[] =
    R"(Put the terms of your product here. Setup's dialogs show them before anything
is installed, and go on only when they are accepted.
)";

static const char s_caHelp[] = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<title>Example</title>
</head>
<body>
<h1>Example</h1>
<p>Start it with <code>bin/hello</code>. To change or remove it, run <code>./setup</code>.</p>
</body>
</html>
)";

static const char s_caHello[] = R"(#!/bin/sh
echo "Hello from Example."
)";

/* What is made, in this order; a text of null is a directory. */
struct Part {
    const char *pName;
    const char *pText;
    mode_t iMode;
};

static const Part s_aParts[] = {
    {"Files",                 nullptr,     0755},
    {"Files/hello",           s_caHello,   0755},
    {"SetupFiles",            nullptr,     0755},
    {"SetupFiles/eula.txt",   s_caLicence, 0644},
    {"Setup",                 nullptr,     0755},
    {"Setup/Help",            nullptr,     0755},
    {"Setup/Help/index.html", s_caHelp,    0644},
    {nullptr,                 nullptr,     0   },
};

/* A medium that is being made, and what there is of it to be taken away if it fails. */
struct NewMedium {
    std::string place; /* with a slash at its end */
    std::vector<std::string> made;
};

static bool fail(const std::string &path)
{
    OV_mediumTell("%s: %s", path.c_str(), strerror(errno));
    return false;
}

static void takeAway(const NewMedium *pMedium)
{
    for (auto at = pMedium->made.rbegin(); at != pMedium->made.rend(); ++at)
        if (unlink(at->c_str()) < 0 && rmdir(at->c_str()) < 0)
            (void)fail(*at);
}

static bool makeDirectory(NewMedium *pMedium, const std::string &path, mode_t iMode)
{
    if (mkdir(path.c_str(), iMode) < 0)
        return fail(path);
    pMedium->made.push_back(path);
    return true;
}

/* A new file, empty and with its mode. -1 (told). */
static int makeFile(NewMedium *pMedium, const std::string &path, mode_t iMode)
{
    const int iFd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);

    if (iFd >= 0)
        pMedium->made.push_back(path);
    if (iFd < 0 || fchmod(iFd, iMode) < 0)
        (void)fail(path);
    return iFd;
}

static bool writeText(NewMedium *pMedium, const char *pName, const std::string &text, mode_t iMode)
{
    const std::string path = pMedium->place + pName;
    OwnedFd file(makeFile(pMedium, path, iMode));

    if (file.iFd < 0)
        return false;
    if (OV_instWriteAll(file.iFd, text.data(), text.size()) < 0 || close(file.release()) < 0)
        return fail(path);
    return true;
}

/* ---- the program ---- */

/* Where setup lies: beside this program, or where it is installed. */
static std::string findSetup()
{
    char caSelf[4096];
    const ssize_t iLength = readlink("/proc/self/exe", caSelf, sizeof(caSelf));
    struct stat info;

    if (iLength <= 0 || iLength == sizeof(caSelf))
        return "";
    const std::string self(caSelf, static_cast<size_t>(iLength));
    for (const char *pPlace : {"setup", "../libexec/ovinst/setup"}) {
        const std::string path = self.substr(0, self.rfind('/') + 1) + pPlace;
        if (stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode) &&
            access(path.c_str(), X_OK) == 0)
            return path;
    }
    return "";
}

static bool copySetup(NewMedium *pMedium)
{
    const std::string from = findSetup(), path = pMedium->place + "setup";
    std::vector<char> block(COPY_SIZE);
    struct stat info;
    ssize_t iRead;

    if (from.empty()) {
        OV_mediumTell("setup is neither beside ovmedium nor in ../libexec/ovinst");
        return false;
    }
    OwnedFd source(OV_mediumOpenSource(from, &info));
    OwnedFd file(source.iFd < 0 ? -1 : makeFile(pMedium, path, 0755));
    if (file.iFd < 0)
        return false;
    while ((iRead = OV_mediumReadFull(source.iFd, block.data(), block.size())) > 0)
        if (OV_instWriteAll(file.iFd, block.data(), static_cast<size_t>(iRead)) < 0)
            return fail(path);
    if (iRead < 0)
        return fail(from);
    return close(file.release()) == 0 || fail(path);
}

/* ---- all of it ---- */

/* The description with the sizes of what is there. False with the reason told. */
static bool describe(const NewMedium *pMedium, std::string *pText)
{
    size_t iStart, iEnd = 0;
    struct stat info;

    *pText = s_caDescription;
    while ((iStart = pText->find('@', iEnd)) != pText->npos) {
        iEnd = pText->find('@', iStart + 1);
        const std::string path = pMedium->place + pText->substr(iStart + 1, iEnd - iStart - 1);
        if (stat(path.c_str(), &info) < 0)
            return fail(path);
        const std::string size = std::to_string(info.st_size);
        pText->replace(iStart, iEnd - iStart + 1, size);
        iEnd = iStart + size.size();
    }
    return true;
}

static bool fill(NewMedium *pMedium)
{
    std::string description;

    for (const Part *pPart = s_aParts; pPart->pName; pPart++)
        if (pPart->pText ? !writeText(pMedium, pPart->pName, pPart->pText, pPart->iMode)
                         : !makeDirectory(pMedium, pMedium->place + pPart->pName, pPart->iMode))
            return false;
    return copySetup(pMedium) && describe(pMedium, &description) &&
           writeText(pMedium, "cdinst.dat", description, 0644);
}

/* An empty directory will do. */
static bool begin(NewMedium *pMedium)
{
    const std::string place = pMedium->place;

    if (mkdir(place.c_str(), 0755) == 0) {
        pMedium->made.push_back(place);
        return true;
    }
    if (errno != EEXIST)
        return fail(place);
    std::error_code unreadable;
    if (std::filesystem::is_directory(place, unreadable) &&
        std::filesystem::is_empty(place, unreadable) && !unreadable)
        return true;
    OV_mediumTell("%s is no empty directory", place.c_str());
    return false;
}

int OV_mediumNew(const OV_MediumOptions *pOptions)
{
    const std::string &place = pOptions->tree;
    NewMedium medium = {place.empty() || place.back() != '/' ? place + "/" : place, {}};

    if (!begin(&medium))
        return OV_MEDIUM_FAILED;
    if (!fill(&medium)) {
        takeAway(&medium);
        return OV_MEDIUM_FAILED;
    }
    for (const std::string &path : medium.made)
        OV_mediumPrint("created %s", path.c_str());
    return OV_MEDIUM_CLEAN;
}
