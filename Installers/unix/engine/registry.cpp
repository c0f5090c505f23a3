#include "engine/registry.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <vector>

#include "engine/records.h"
#include "engine/runReport.h"
#include "engine/setupState.h"
#include "engine/supervised.h"
#include "ut/OVinstExpand.h"
#include "ut/frontEnd.h"
#include "ut/guard.h"
#include "ut/guardedFile.h"
#include "ut/owned.h"
#include "ut/shellWord.h"
#include "ut/strprint.h"

#define REGISTRY_TOOL "${MWHOME}/bin-amd64_linux/mwperl ${MWHOME}/scripts/mwgeneric.pl"
#define REGISTRY_TOOL_QUOTED                                                                       \
    "\"${MWHOME}/bin-amd64_linux/mwperl\" \"${MWHOME}/scripts/mwgeneric.pl\""
#define REGISTRY_PLACE                                                                             \
    "(cd %s;OV_HOME=%s;export OV_HOME;MWHOME=%sApplication/mainwin/mw;export MWHOME;"              \
    "MWREGISTRY=%sApplication/registry;export MWREGISTRY;"

#define KEY_TOOL "Application/mainwin/mw/bin-linux_optimized/regkey"
#define MODULE_TOOL "Application/bin/cmdreg"

static const char s_caLocation[] = "OV_LOCATION";

/* What each of the commands runs and writes, below the destination. */
static const char *const s_apParts[] = {"Application/mainwin/mw/bin-amd64_linux/mwperl",
                                        "Application/mainwin/mw/scripts/mwgeneric.pl",
                                        "Application/registry"};

/* Registrations gathered so far, and whether they were carried out. */
static struct {
    char *pCommand;
    std::vector<std::string> modules; /* their paths */
    bool bDone;
} s_selfReg;

static int regDataFailure(FILE *pStream, int iPlace)
{
    OV_instSendUpdate(pStream, "-1 Error: internal error in OV_instAddRegData (%d)\n", iPlace);
    return OV_INST_ERROR;
}

static int selfRegFailure(FILE *pStream, int iPlace)
{
    OV_instSendUpdate(pStream, "-1 Error: internal error in OV_instRegisterModule (%d)\n", iPlace);
    return OV_INST_ERROR;
}

bool OV_instHasRegistryDisplay()
{
    return getenv("DISPLAY") || OV_instHasDialogs();
}

/* Whether only trusted users can have made what is at a path; of what does not exist, the directory
 * that it would be in. What is at fault is told by the guard. */
static bool isTrusted(std::string path)
{
    for (;;) {
        OwnedFd found(OV_instGuardedOpen(path.c_str(), O_PATH, 0));
        const size_t iSlash = path.rfind('/');

        if (found.iFd >= 0 || errno != ENOENT || iSlash == std::string::npos || iSlash == 0)
            return OV_instIsTrusted(path.c_str());
        path.resize(iSlash);
    }
}

/* Whether a command that runs pTool may be run: whoever can change one of its files would decide
 * what we do. */
static bool mayRun(const char *pDest, const char *pTool, const std::vector<std::string> &others)
{
    std::vector<std::string> paths = others;

    paths.push_back(std::string(pDest) + pTool);
    for (const char *pPart : s_apParts)
        paths.push_back(std::string(pDest) + pPart);
    for (const std::string &path : paths)
        if (!isTrusted(path)) {
            OV_instWarn("%s%s was not run: others can change %s", pDest, pTool, path.c_str());
            return false;
        }
    return true;
}

static char *expandDestination(const char *pText, const char *pDest)
{
    const _OV_InstExpansion aTable[] = {
        {'d', pDest  },
        {0,   nullptr}
    };

    return OV_instExpandString(pText, aTable);
}

/* The value as it stands between the command's quotes: what the description wrote for the shell
 * stays, the destination is taken literally. All other "%" escapes vanish before anything is
 * quoted, or they would take a quoting backslash with them. */
static char *quotedValue(const char *pValue, const char *pDest)
{
    OwnedText plain(expandDestination(pValue, "%d"));
    OwnedText text(OV_instShellQuotedText(plain.get()));
    OwnedText dest(OV_instShellQuotedPath(pDest));

    return text && dest ? expandDestination(text.get(), dest.get()) : nullptr;
}

/* The shell splits the tool's path where the destination has blanks, unless it is quoted. */
static const char *toolFor(const char *pDest, const char *pDestWord)
{
    return strcmp(pDest, pDestWord) == 0 ? REGISTRY_TOOL : REGISTRY_TOOL_QUOTED;
}

static char *regDataCommand(const char *pDest, const char *pRootKey, const char *pKeyName,
                            const char *pKeyValue, const char *pValue)
{
    OwnedText dest(OV_instShellWord(pDest));
    OwnedText root(OV_instShellWord(pRootKey));
    OwnedText name(OV_instShellQuotedText(pKeyName));
    OwnedText key(OV_instShellQuotedText(pKeyValue));
    OwnedText value(quotedValue(pValue, pDest));

    if (!dest || !root || !name || !key || !value)
        return nullptr;
    return OV_instStrPrint(REGISTRY_PLACE "%s " KEY_TOOL " -r %s \"%s\" \"%s\" \"%s\") %s",
                           dest.get(), dest.get(), dest.get(), dest.get(),
                           toolFor(pDest, dest.get()), root.get(), name.get(), key.get(),
                           value.get(), OV_instGetRedirect());
}

int OV_instRegData(const char *pDest, const char *pRootKey, const char *pKeyName,
                   const char *pKeyValue, const char *pValue, FILE *pStream)
{
    if (!pDest || !pRootKey || !pKeyName || !pKeyValue || !pValue)
        return regDataFailure(pStream, 0);
    OwnedText expanded(expandDestination(pValue, pDest));
    if (!expanded)
        return regDataFailure(pStream, 0);
    if (!OV_instHasRegistryDisplay()) {
        OV_instSendUpdate(pStream, "Warning: (no display) can't add data to registry\n");
        return OV_INST_NO_ERROR;
    }
    OwnedText command(regDataCommand(pDest, pRootKey, pKeyName, pKeyValue, pValue));
    if (!command)
        return regDataFailure(pStream, 2);
    if (!mayRun(pDest, KEY_TOOL, {}) || OV_instRunSupervised(command.get()) != 0) {
        OV_instSendUpdate(pStream,
                          "-1 Error: adding rootkey=%s keyname=%s, keyvalue=%s, value=%s\n",
                          pRootKey, pKeyName, pKeyValue, expanded.get());
        return OV_INST_ERROR;
    }
    return OV_INST_NO_ERROR;
}

/* Adds a module to the gathered command. */
static int gatherModule(const char *pDest, const char *pModule, FILE *pStream)
{
    OwnedText path(OV_instStrPrint("%s%s", pDest, pModule));
    OwnedText word(OV_instShellWord(path.get()));
    char *pCommand = nullptr;

    if (word && !s_selfReg.pCommand)
        pCommand = OV_instStrPrint(MODULE_TOOL " %s", word.get());
    else if (word)
        pCommand = OV_instStrPrint("%s %s", s_selfReg.pCommand, word.get());
    if (!pCommand)
        return selfRegFailure(pStream, s_selfReg.pCommand ? 2 : 1);
    free(s_selfReg.pCommand);
    s_selfReg.pCommand = pCommand;
    s_selfReg.modules.push_back(path.get());
    return OV_INST_NO_ERROR;
}

static int runRegistrations(const char *pCommonDest, const char *pDest, const char *pModule,
                            FILE *pStream)
{
    OwnedText gathered(s_selfReg.pCommand);

    s_selfReg.pCommand = nullptr;
    s_selfReg.bDone = true;
    if (!gathered)
        return selfRegFailure(pStream, 4);
    if (!OV_instHasRegistryDisplay()) {
        OV_instSendUpdate(pStream, "Warning: (no display) can't register module %s\n", pModule);
        return OV_INST_NO_ERROR;
    }
    OwnedText dest(OV_instShellWord(pDest));
    OwnedText common(OV_instShellWord(pCommonDest ? pCommonDest : ""));
    OwnedText command(
        dest && common
            ? OV_instStrPrint(REGISTRY_PLACE "OV_COMMONDIR=%s;export OV_COMMONDIR;%s %s) %s",
                              dest.get(), dest.get(), dest.get(), dest.get(), common.get(),
                              toolFor(pDest, dest.get()), gathered.get(), OV_instGetRedirect())
            : nullptr);
    if (!command)
        return selfRegFailure(pStream, 5);
    /* No failure in the result: runs would fail that went well so far. */
    if (!mayRun(pDest, MODULE_TOOL, s_selfReg.modules)) {
        OV_instNoteFailedStep();
        return OV_INST_NO_ERROR;
    }
    const int iStatus = OV_instRunSupervised(command.get());
    if (iStatus != 0) {
        OV_instWarn("registering modules with %s%s ended with status %d", pDest, MODULE_TOOL,
                    WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : 128 + WTERMSIG(iStatus));
        OV_instNoteFailedStep();
    }
    return OV_INST_NO_ERROR;
}

int OV_instSelfReg(const char *pCommonDest, const char *pDest, const char *pModule, FILE *pStream,
                   int iPass)
{
    if (s_selfReg.bDone || (iPass != OV_CUSTOM_INIT && iPass != OV_CUSTOM_REGISTRY))
        return OV_INST_NO_ERROR;
    if (!pDest || !pModule)
        return selfRegFailure(pStream, 0);
    if (iPass == OV_CUSTOM_INIT)
        return gatherModule(pDest, pModule, pStream);
    return runRegistrations(pCommonDest, pDest, pModule, pStream);
}

void OV_instChangeResgitryPermission(const char *pDest)
{
    OwnedText path(pDest ? OV_instStrPrint("%s/Application/registry", pDest) : nullptr);

    if (path)
        (void)OV_instGuardedChmod(path.get(), 0644); /* not every product has a registry */
}

const char *OV_instGetOVLocation()
{
    const char *pLocation = getenv(s_caLocation);

    if (!pLocation) {
        printf("Unable to get %s environment variable\n", s_caLocation);
        return nullptr;
    }
    if (access(pLocation, F_OK) < 0)
        (void)mkdir(pLocation, 0700); /* who uses the directory notices that it is missing */
    return pLocation;
}
