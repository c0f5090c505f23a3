#include "engine/driver.h"

#include <cstring>

#include "description/configParts.h"
#include "engine/archive.h"
#include "engine/configWalk.h"
#include "engine/customFunc.h"
#include "engine/fileOps.h"
#include "engine/history.h"
#include "engine/links.h"
#include "engine/records.h"
#include "engine/registry.h"
#include "engine/runFile.h"
#include "engine/runReport.h"
#include "engine/setupState.h"
#include "engine/uncompress.h"
#include "ut/OVinstFileUtils.h"
#include "ut/frontEnd.h"
#include "ut/guard.h"
#include "ut/owned.h"

/* One call of OV_instInstallPackList. */
struct PackListRun {
    const char *pFrom;
    const char *pDest;
    FILE *pStream;
    OV_CustomPass ovPass;
    OV_InstMode iMode;
    const char *pSuiteName;
    const char *pPackageName;
    const char *apDirs[OV_MAX_REMOVED_DIRS]; /* to be removed, in order of collection */
    int iDirs;
};

/* An operation's two halves return 0 or a failure. */
using OperRoutine = int (*)(PackListRun *pRun, _OV_InstOper *pOper);

enum { EVERY_PASS = -1, NO_PASS = -2 };

/* What an operation kind does, in which pass, and whether its failure counts. A null routine does
 * nothing; a kind that is not known is no operation at all. */
struct OperRow {
    OV_InstOperType iKind;
    bool bKnown;
    int iPass;
    OperRoutine install;
    bool bInstallCounts;
    OperRoutine remove;
    bool bRemoveCounts;
};

static const OV_Rehearsal *s_pRehearsal; /* null: what comes up is carried out */

void OV_instRehearse(const OV_Rehearsal *pRehearsal)
{
    s_pRehearsal = pRehearsal;
}

/* ---- the routines behind the rows ---- */

static char *below(const char *pDest, const char *pName)
{
    return OV_instBuildPath(pDest, pName ? pName : "", nullptr);
}

/* The directory that an archive goes to. */
static const char *baseOf(const _OV_InstOper *pOper, const char *pDest)
{
    const char *pRoot = pOper->body.tar.pDestRoot;

    if (pOper->iType != OV_OPER_UNTAR2 && pOper->iType != OV_OPER_UNTARZ2)
        return pDest;
    if (pRoot && strcmp(pRoot, "<RootDest>") == 0)
        return OV_instGetRootDestinationDirectory();
    if (pRoot && strcmp(pRoot, "<CommonDest>") == 0)
        return OV_instGetCommonDestinationDirectory();
    return pRoot;
}

char *OV_instPlaceOf(const _OV_InstOper *pOper, const char *pDest)
{
    const _OV_InstCopy *pCopy = &pOper->body.copy;

    switch (pOper->iType) {
    case OV_OPER_COPY:
        return below(pDest, pCopy->pDest ? pCopy->pDest : pCopy->pSource);
    case OV_OPER_COPYZ:
        return below(pDest, pCopy->pSource);
    case OV_OPER_UNTAR:
    case OV_OPER_UNTARZ:
    case OV_OPER_UNTAR2:
    case OV_OPER_UNTARZ2: {
        const char *pBase = baseOf(pOper, pDest);
        return pBase ? strdup(pBase) : nullptr;
    }
    case OV_OPER_MKDIR:
        return below(pDest, pOper->body.mkdir.pPath);
    case OV_OPER_HARDLINK:
    case OV_OPER_SOFTLINK:
        return below(pDest, pOper->body.link.pLink);
    default:
        return nullptr;
    }
}

static int copyFile(PackListRun *pRun, _OV_InstOper *pOper)
{
    const _OV_InstCopy *pCopy = &pOper->body.copy;
    OwnedText target(OV_instPlaceOf(pOper, pRun->pDest));

    return OV_instCopyFile(pCopy->pSource, target.get(), pCopy->iMode, pOper->lUnits, pRun->pStream,
                           pRun->iMode);
}

/* A compressed file is installed as it is, under its source's name; only its removal goes through
 * the decompression. Products of media written for earlier versions look for it so. */
static int copyCompressed(PackListRun *pRun, _OV_InstOper *pOper)
{
    const _OV_InstCopy *pCopy = &pOper->body.copy;
    OwnedText target(OV_instPlaceOf(pOper, pRun->pDest));

    return OV_instCopyFile(pCopy->pSource, target.get(), pCopy->iMode, pOper->lUnits, pRun->pStream,
                           0);
}

static int removeCompressed(PackListRun *pRun, _OV_InstOper *pOper)
{
    const _OV_InstCopy *pCopy = &pOper->body.copy;
    OwnedText target(OV_instPlaceOf(pOper, pRun->pDest));

    return OV_instUncompress(pCopy->pSource, target.get(), pCopy->iMode, pOper->lUnits,
                             pRun->pStream, pRun->iMode);
}

static int unpack(PackListRun *pRun, _OV_InstOper *pOper)
{
    int iCompressed = pOper->iType == OV_OPER_UNTARZ || pOper->iType == OV_OPER_UNTARZ2;
    OwnedText base(OV_instPlaceOf(pOper, pRun->pDest));

    return OV_instUntar(&pOper->body.tar, pRun->pFrom, base ? base.get() : "", pOper->lUnits,
                        iCompressed, pRun->pStream, pRun->iMode);
}

static int removeUnpacked(PackListRun *pRun, _OV_InstOper *pOper)
{
    OwnedText base(OV_instPlaceOf(pOper, pRun->pDest));

    return base ? DeleteUntar(&pOper->body.tar, base.get(), pRun->pStream) : 0;
}

static int makeDirectory(PackListRun *pRun, _OV_InstOper *pOper)
{
    OwnedText path(OV_instPlaceOf(pOper, pRun->pDest));

    return OV_instMkdir(path.get(), pOper->body.mkdir.iMode, pRun->pStream);
}

/* Remembers the directory: it is removed when its files are gone. */
static int rememberDirectory(PackListRun *pRun, _OV_InstOper *pOper)
{
    if (pRun->iDirs < OV_MAX_REMOVED_DIRS)
        pRun->apDirs[pRun->iDirs++] = pOper->body.mkdir.pPath;
    else
        puts("Can't remove all dirs, list too large");
    return 0;
}

static int makeLink(PackListRun *pRun, _OV_InstOper *pOper)
{
    const _OV_InstLink *pLink = &pOper->body.link;
    OwnedText directory(OV_instPlaceOf(pOper, pRun->pDest));

    return (pLink->iHard ? OV_instHardlink : OV_instSoftlink)(
        directory.get(), pLink->pTarget, pLink->pThird, pOper->lUnits, pRun->pStream, pRun->iMode);
}

static int callFunction(PackListRun *pRun, _OV_InstOper *pOper)
{
    OwnedText root(
        strdup(OV_instGetRootDestinationDirectory() ? OV_instGetRootDestinationDirectory() : ""));
    OwnedText common(strdup(
        OV_instGetCommonDestinationDirectory() ? OV_instGetCommonDestinationDirectory() : ""));
    _OV_CustomData data = {};

    data.pTls = OV_instFrontEnd()->fpModuleShell();
    data.fpUpdate = pRun->pStream;
    data.pRootDest = root.get();
    data.pCommonDest = common.get();
    data.pDest = pRun->pDest;
    data.pFrom = pRun->pFrom;
    data.pData = pOper->body.function.pData;
    data.pPackageName = pRun->pPackageName;
    data.pSuiteName = pRun->pSuiteName;
    data.iDelete = pRun->iMode;
    data.ovPass = pRun->ovPass;
    return OV_instCustomFunction(pOper, &data, pRun->pStream) ? 1 : 0;
}

static int addRegData(PackListRun *pRun, _OV_InstOper *pOper)
{
    const _OV_InstRegData *pData = &pOper->body.regData;

    return OV_instRegData(pRun->pDest, pData->pRootKey, pData->pKeyName, pData->pKeyValue,
                          pData->pValue, pRun->pStream);
}

static int registerModule(PackListRun *pRun, _OV_InstOper *pOper)
{
    return OV_instSelfReg(OV_instGetCommonDestinationDirectory(), pRun->pDest,
                          pOper->body.selfReg.pModule, pRun->pStream, pRun->ovPass);
}

/* In the order of OV_InstOperType. */
static constexpr OperRow s_aRows[] = {
    {OV_OPER_SUITE,       false, NO_PASS,            nullptr,        false, nullptr,           false},
    {OV_OPER_PACKAGE,     false, NO_PASS,            nullptr,        false, nullptr,           false},
    {OV_OPER_COPY,        true,  OV_CUSTOM_INIT,     copyFile,       true,  copyFile,          true },
    {OV_OPER_COPYZ,       true,  OV_CUSTOM_INIT,     copyCompressed, false, removeCompressed,  true },
    {OV_OPER_UNTAR,       true,  OV_CUSTOM_INIT,     unpack,         true,  removeUnpacked,    false},
    {OV_OPER_UNTARZ,      true,  OV_CUSTOM_INIT,     unpack,         true,  removeUnpacked,    false},
    {OV_OPER_UNTAR2,      true,  OV_CUSTOM_INIT,     unpack,         true,  removeUnpacked,    false},
    {OV_OPER_UNTARZ2,     true,  OV_CUSTOM_INIT,     unpack,         true,  removeUnpacked,    false},
    {OV_OPER_MKDIR,       true,  OV_CUSTOM_INIT,     makeDirectory,  true,  rememberDirectory, false},
    {OV_OPER_HARDLINK,    true,  OV_CUSTOM_INIT,     makeLink,       true,  makeLink,          true },
    {OV_OPER_SOFTLINK,    true,  OV_CUSTOM_INIT,     makeLink,       true,  makeLink,          true },
    {OV_OPER_PREFIX,      false, NO_PASS,            nullptr,        false, nullptr,           false},
    {OV_OPER_ENV,         false, NO_PASS,            nullptr,        false, nullptr,           false},
    {OV_OPER_ALIAS,       false, NO_PASS,            nullptr,        false, nullptr,           false},
    {OV_OPER_CONFIGBEGIN, false, NO_PASS,            nullptr,        false, nullptr,           false},
    {OV_OPER_CONFIGEND,   false, NO_PASS,            nullptr,        false, nullptr,           false},
    {OV_OPER_FUNCTION,    true,  EVERY_PASS,         callFunction,   true,  callFunction,      true },
    {OV_OPER_SHORTCUT,    true,  NO_PASS,            nullptr,        false, nullptr,           false},
    {OV_OPER_REGDATA,     true,  OV_CUSTOM_REGISTRY, addRegData,     false, nullptr,           false},
    {OV_OPER_SELFREG,     true,  EVERY_PASS,         registerModule, false, nullptr,           false},
};
static_assert(sizeof(s_aRows) / sizeof(s_aRows[0]) == OV_OPER_COUNT, "a row for every kind");

static constexpr bool isInOrder()
{
    for (int i = 0; i < OV_OPER_COUNT; i++)
        if (s_aRows[i].iKind != i)
            return false;
    return true;
}
static_assert(isInOrder(), "every kind finds its own row");

/* ---- the driver ---- */

static const OperRow *rowOf(const _OV_InstOper *pOper)
{
    if (pOper->iType < 0 || pOper->iType >= OV_OPER_COUNT || !s_aRows[pOper->iType].bKnown)
        return nullptr;
    return &s_aRows[pOper->iType];
}

static int runOper(PackListRun *pRun, _OV_InstOper *pOper, const OperRow *pRow)
{
    OperRoutine routine = pRun->iMode == OV_INST_INSTALL_MODE ? pRow->install : pRow->remove;
    const bool bCounts =
        pRun->iMode == OV_INST_INSTALL_MODE ? pRow->bInstallCounts : pRow->bRemoveCounts;

    if (!routine || (pRow->iPass != EVERY_PASS && pRow->iPass != pRun->ovPass))
        return 0;
    if (s_pRehearsal) {
        const OV_RunStep step = {pOper, pRun->pDest, pRun->ovPass, pRun->iMode};
        s_pRehearsal->fpStep(s_pRehearsal->pContext, &step);
        /* Its own part: the directory is among those told of at the end. */
        return routine == rememberDirectory ? routine(pRun, pOper) : 0;
    }
    int iResult = routine(pRun, pOper);
    if (iResult)
        OV_instNoteFailedStep();
    if (iResult && !bCounts)
        OV_instWarn("%s of package '%s' failed", OVInstOperTkList[pOper->iType],
                    pRun->pPackageName);
    return bCounts ? iResult : 0;
}

bool OV_instIsLeftAlone(const _OV_InstPackage *pPackage, OV_InstMode iMode)
{
    if (iMode == OV_INST_INSTALL_MODE)
        return pPackage->iInstalled == 1;
    return iMode == OV_INST_DELETE_MODE && pPackage->iInUse != 0; /* another still needs it */
}

static void removeDirectories(PackListRun *pRun)
{
    while (pRun->iDirs > 0) {
        OwnedText path(below(pRun->pDest, pRun->apDirs[--pRun->iDirs]));
        /* The slash makes it rmdir: a file of that name stays. */
        OwnedText slashed(path ? OV_instBuildPath(path.get(), "", nullptr) : nullptr);

        if (slashed && s_pRehearsal) {
            s_pRehearsal->fpRemoveDirectory(s_pRehearsal->pContext, path.get());
            continue;
        }
        if (!slashed) {
            OV_instSendUpdate(pRun->pStream, "-1 Internal error while deleting directories\n");
            continue;
        }
        (void)OV_instGuardedRemove(slashed.get()); /* it may hold other files */
        OV_instSendUpdate(pRun->pStream, "+1 %s\n", path.get());
    }
}

/* Carries out one package's operations. False for an operation of no known kind. */
static bool runPackage(PackListRun *pRun, _OV_InstPackage *pPackage, int *piMask)
{
    pRun->pPackageName = pPackage->pName;
    for (_OV_InstOper *pOper = pPackage->pOperHead; pOper; pOper = pOper->pNext) {
        const OperRow *pRow = rowOf(pOper);
        const unsigned iFailedBefore = OV_instFailedSteps();

        OV_instFrontEnd()->fpDispatchPending();
        if (!pRow) {
            fprintf(stderr, "Error:Undefined operation %d\n", pOper->iType);
            return false;
        }
        *piMask |= runOper(pRun, pOper, pRow);
        if (OV_instFailedSteps() == iFailedBefore)
            continue;
        OV_instKeepPending(pPackage);
        if (pOper->iType == OV_OPER_SELFREG) /* one command registers the modules of all */
            OV_instKeepPendingWith(OV_OPER_SELFREG);
    }
    return true;
}

int OV_instInstallPackList(_OV_InstPackageNode *pPackages, const char *pFrom, const char *pDest,
                           FILE *pStream, OV_CustomPass ovPass, OV_InstMode iMode,
                           const char *pSuiteName)
{
    PackListRun run = {pFrom, pDest, pStream, ovPass, iMode, pSuiteName, nullptr, {}, 0};
    int iMask = 0;

    if (!pPackages || !pDest || !pDest[0])
        return -1;
    for (; pPackages; pPackages = pPackages->pNext) {
        _OV_InstPackage *pPackage = pPackages->pPackage;

        if (OV_instIsLeftAlone(pPackage, iMode))
            continue;
        if (pPackage->iPassDone < ovPass && !runPackage(&run, pPackage, &iMask))
            return 1;
        pPackage->iPassDone = ovPass;
    }
    if (ovPass == OV_CUSTOM_INIT && iMode == OV_INST_DELETE_MODE)
        removeDirectories(&run);
    return iMask;
}

bool OV_instIsHandedOver(const _OV_InstConfigList *pConfig, const _OV_InstSuiteList *pSuite,
                         OV_InstMode iMode)
{
    if (iMode == OV_INST_INSTALL_MODE)
        return !pSuite->iState && pConfig->iSelected;
    return iMode == OV_INST_DELETE_MODE && pSuite->iState && !pConfig->iSelected;
}

static int runSuite(const _OV_InstConfigList *pConfig, const char *pFrom, const char *pDest,
                    FILE *pStream, OV_CustomPass ovPass, OV_InstMode iMode)
{
    const _OV_InstSuiteList *pSuite = OV_instGetConfigSuite(pConfig);
    int iResult = 0;

    if (!pSuite)
        return 0;
    if (OV_instIsHandedOver(pConfig, pSuite, iMode))
        iResult = OV_instInstallPackList(pSuite->pPackHead, pFrom, pDest, pStream, ovPass, iMode,
                                         pSuite->pName);
    /* The removing passes write the history too, so a run records a suite twice. Who reads the
     * history takes a package that is named twice for one. */
    if (pConfig->iSelected && ovPass == OV_CUSTOM_INIT && !s_pRehearsal)
        OV_UpdateHistoryFile(pDest, pSuite);
    return iResult;
}

static int tellInvalidInput()
{
    fputs("Error: invalid input to function OV_instInstallConfig\n", stderr);
    return 1;
}

int OV_instInstallConfig(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig, const char *pDest,
                         FILE *pStream, OV_CustomPass ovPass, OV_InstMode iMode)
{
    OwnedText from(strdup(GetSourceDirectory(pRoot) ? GetSourceDirectory(pRoot) : ""));
    int iMask = 0;

    if (!pConfig || !pDest)
        return tellInvalidInput();
    OwnedWalk walk(OV_instStartWalk(pRoot, pConfig));
    while (OV_ConfigVisit *pVisit = OV_instNextEntry(walk.get())) {
        if (pVisit->pConfig->iType == OV_CONFIG_SUITE) {
            iMask |= runSuite(pVisit->pConfig, from.get(), pDest, pStream, ovPass, iMode);
        } else if (pVisit->pConfig->iType == OV_CONFIG_CUSDLG) {
            for (int i = OV_instCountMissingMembers(pRoot, pVisit->pConfig); i > 0; i--)
                iMask |= tellInvalidInput();
        } else {
            fputs("Error: can only install a suite or a custom list of suites\n", stderr);
            iMask |= 1;
        }
    }
    return iMask;
}
