#include "description/reader.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <memory>

#include "description/configLines.h"
#include "description/faults.h"
#include "description/modules.h"
#include "description/packageLines.h"
#include "description/scanner.h"
#include "OVinstModule.h"
#include "ut/OVinstFileUtils.h"
#include "ut/debugLevel.h"
#include "ut/owned.h"

struct ModelFreed {
    void operator()(_OV_instCDinst *pRoot) const { OV_instFreeCDinst(pRoot); }
};
using OwnedModel = std::unique_ptr<_OV_instCDinst, ModelFreed>;

/* Where a header value goes: a text, or a flag that the key clears whatever its value is. The row
 * with neither is the format's version. */
struct HeaderRow {
    const char *pKey;
    bool bRequired;
    char *_OV_instCDinst::*pText;
    uint8_t _OV_instCDinst::*pFlag;
};

/* The keys in the only order that is accepted. */
static const HeaderRow s_aHeader[] = {
    {"SetupVersion",     true,  nullptr,                            nullptr                     },
    {"ProductName",      true,  &_OV_instCDinst::pProductName,      nullptr                     },
    {"ProductVersion",   true,  &_OV_instCDinst::pProductVersion,   nullptr                     },
    {"ProductDirectory", true,  &_OV_instCDinst::pProductDirectory, nullptr                     },
    {"LogFile",          true,  &_OV_instCDinst::pLogFile,          nullptr                     },
    {"HistoryFile",      false, &_OV_instCDinst::pHistoryFile,      nullptr                     },
    {"InstallDirectory", false, &_OV_instCDinst::pInstallDir,       nullptr                     },
    {"NoChestRC",        false, nullptr,                            &_OV_instCDinst::bChestRC   },
    {"NoUserOrgRes",     false, nullptr,                            &_OV_instCDinst::bUserOrgRes},
    {"NoDisplayLog",     false, nullptr,                            &_OV_instCDinst::bDisplayLog},
    {nullptr,            false, nullptr,                            nullptr                     },
};

static int storeHeader(const HeaderRow *pRow, const char *pValue, _OV_instCDinst *pRoot)
{
    if (pRow->pFlag) {
        pRoot->*pRow->pFlag = 0;
        return 0;
    }
    if (!pRow->pText)
        return strcmp(pValue, "1") == 0 ? 0 : -1;
    if (pRow->pText == &_OV_instCDinst::pInstallDir && !*pValue)
        return 0; /* it names no destination, so the one of the options counts */
    pRoot->*pRow->pText = strdup(pValue);
    OV_instNoteAgain(pRoot->*pRow->pText);
    return pRoot->*pRow->pText ? 0 : -1;
}

/* The log lies below the product's "Setup" directory; no name means no log. */
static int placeLog(_OV_instCDinst *pRoot)
{
    if (!*pRoot->pLogFile)
        return 0;
    OwnedText name(pRoot->pLogFile);
    pRoot->pLogFile = OV_instBuildPath("Setup", name.get(), nullptr);
    return pRoot->pLogFile ? 0 : -1;
}

/* ---- a header that is wrong, where all faults are collected ---- */

const char *OV_instHeaderKey(int iRow)
{
    return s_aHeader[iRow].pKey;
}

static const HeaderRow *findHeader(const char *pWord)
{
    for (const HeaderRow *pRow = s_aHeader; pRow->pKey; pRow++)
        if (strcmp(pRow->pKey, pWord) == 0)
            return pRow;
    return nullptr;
}

/* How the header's lines are gone through. */
struct HeaderRun {
    FILE *pFile;
    _OV_instCDinst *pRoot;
    int *piLine;
    unsigned iRead; /* a bit for every row that was read */
    char caWord[OV_HEADER_SIZE];
    char caValue[OV_HEADER_SIZE];
};

/* False at the end of the file. */
static bool passLine(HeaderRun *pRun)
{
    return OwnedText(OV_instReadLine(pRun->pFile, pRun->piLine)) != nullptr;
}

/* Reads the line as that of pRow. False when it is another's. */
static bool takeHeader(HeaderRun *pRun, const HeaderRow *pRow)
{
    const unsigned iBit = 1U << (pRow - s_aHeader);

    if (OV_ReadHeaderLine(pRow->pKey, pRun->caWord, pRun->caValue, pRun->pFile, pRun->piLine, 0)) {
        if (storeHeader(pRow, pRun->caValue, pRun->pRoot) < 0)
            (void)OV_instFault(OV_FAULT_HEADER_VERSION, nullptr, pRun->caValue); /* read on */
    } else if (strcmp(pRun->caWord, pRow->pKey) == 0) {
        (void)OV_instFault(OV_FAULT_HEADER_LONG, nullptr, pRow->pKey); /* likewise */
        (void)passLine(pRun);                                          /* it is there */
    } else {
        return false;
    }
    pRun->iRead |= iBit;
    return true;
}

/* Looks for the line of a required key among those that stand in its place. What is no line of the
 * header at all, a keyword of the body for instance, ends the search; a word that nobody knows is
 * taken for the key. */
static void seekHeader(HeaderRun *pRun, const HeaderRow *pRow)
{
    bool bTold = false;

    while (!takeHeader(pRun, pRow)) {
        const HeaderRow *pOther = findHeader(pRun->caWord);

        if (!bTold)
            (void)OV_instFault(OV_FAULT_HEADER_KEY, nullptr, pRow->pKey); /* read on */
        bTold = true;
        if (pOther && !(pRun->iRead & (1U << (pOther - s_aHeader)))) {
            (void)takeHeader(pRun, pOther); /* it is its line */
        } else if (pOther || isWhiteOrCommentLine(pRun->caWord)) {
            if (!passLine(pRun))
                return;
        } else {
            if (getOperType(pRun->caWord) < 0)
                (void)passLine(pRun); /* likewise */
            return;
        }
    }
}

/* What a header that was refused has not given is empty. */
static int completeHeader(_OV_instCDinst *pRoot)
{
    for (const HeaderRow *pRow = s_aHeader; pRow->pKey; pRow++) {
        if (!pRow->bRequired || !pRow->pText || pRoot->*pRow->pText)
            continue;
        pRoot->*pRow->pText = strdup("");
        if (!(pRoot->*pRow->pText))
            return -1;
    }
    return placeLog(pRoot);
}

static int collectHeader(FILE *pFile, _OV_instCDinst *pRoot, int *piLine)
{
    static const char s_caMark[] = "\xef\xbb\xbf";
    HeaderRun run = {};
    char caStart[sizeof(s_caMark)] = "";

    if (fread(caStart, 1, sizeof(s_caMark) - 1, pFile) == sizeof(s_caMark) - 1 &&
        strcmp(caStart, s_caMark) == 0) {
        (void)OV_instFault(OV_FAULT_MARK, nullptr, ""); /* read on */
        OV_instPassMark(sizeof(s_caMark) - 1);
    } else {
        rewind(pFile);
    }
    run.pFile = pFile;
    run.pRoot = pRoot;
    run.piLine = piLine;
    for (const HeaderRow *pRow = s_aHeader; pRow->pKey; pRow++) {
        if (run.iRead & (1U << (pRow - s_aHeader)))
            continue;
        if (pRow->bRequired)
            seekHeader(&run, pRow);
        else
            (void)takeHeader(&run, pRow); /* it need not be there */
    }
    return completeHeader(pRoot);
}

static int readHeader(FILE *pFile, _OV_instCDinst *pRoot, int *piLine)
{
    char caWord[OV_HEADER_SIZE];
    char caValue[OV_HEADER_SIZE];

    if (OV_instReadingSink)
        return collectHeader(pFile, pRoot, piLine);
    for (const HeaderRow *pRow = s_aHeader; pRow->pKey; pRow++) {
        if (OV_ReadHeaderLine(pRow->pKey, caWord, caValue, pFile, piLine, pRow->bRequired)) {
            if (storeHeader(pRow, caValue, pRoot) < 0)
                return -1;
        } else if (pRow->bRequired || strcmp(caWord, pRow->pKey) == 0) {
            return -1; /* missing, or an optional key whose value does not fit */
        }
    }
    return placeLog(pRoot);
}

/* ---- the body ---- */

static int readBodyLine(const char *pLine, _OV_instCDinst *pRoot)
{
    bool bConfig = OV_instParsingConfiguration != 0;
    int iResult = bConfig ? AddLineToConfig(pLine, pRoot) : AddLineToCDinst(pLine, pRoot);

    if (iResult != 0 && OV_instGetDebugLevel() > 0 && !OV_instReadingSink)
        fprintf(stderr,
                bConfig ? "Error: AddLineToConfig\nLine=%s\n" : "Error: AddLineToCDinst\nLine=%s\n",
                pLine);
    return iResult;
}

/* Whether reading goes on behind the line. */
static bool endLine(const char *pLine, int iResult, _OV_instCDinst *pRoot, const int *piLine)
{
    if (OV_instReadingSink) {
        OV_instReadingSink->line(OV_instReadingSink->pContext, pLine, iResult, pRoot);
        return true;
    }
    if (iResult != -1)
        return true;
    if (getenv("OVINST_DEBUG"))
        fprintf(stderr, "Error at line %d\n", *piLine);
    return false;
}

int readCdinst(FILE *pFile, _OV_instCDinst *pRoot, void (*progress)(), int *piLine)
{
    while (char *pRead = OV_instReadLine(pFile, piLine)) {
        OwnedText line(pRead);
        if (progress)
            progress();
        if (isWhiteOrCommentLine(line.get()))
            continue;
        if (!endLine(line.get(), readBodyLine(line.get(), pRoot), pRoot, piLine))
            return -1;
    }
    if (!feof(pFile)) /* unreadable from here on, or no memory: that is not a shorter description */
        return OV_instFault(OV_FAULT_UNREADABLE, nullptr, strerror(errno));
    if (OV_instReadingSink)
        return 0; /* who collects loads no module */
    return validateModule(pRoot) == OV_INST_NO_ERROR ? 0 : -1;
}

/* Only what can be read to its end without waiting for somebody: no pipe, and no device that a
 * person or nobody ends. */
static FILE *openDescription(const char *pPath)
{
    OwnedFd file(open(pPath, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat info;

    if (file.iFd < 0 || fstat(file.iFd, &info) < 0)
        return nullptr;
    if (!S_ISREG(info.st_mode) && !S_ISBLK(info.st_mode)) {
        errno = S_ISDIR(info.st_mode) ? EISDIR : EINVAL;
        return nullptr;
    }
    FILE *pFile = fdopen(file.iFd, "r");
    if (pFile)
        (void)file.release(); /* the stream closes it */
    return pFile;
}

_OV_instCDinst *OV_instReadCDinst(const char *pPath, void (*progress)())
{
    int iLine = 0;

    if (!pPath || !*pPath)
        return nullptr;
    OwnedModel root(newCDinst());
    if (!root)
        return nullptr;
    root->pCdinstPath = strdup(pPath);
    if (!root->pCdinstPath)
        return nullptr;
    root->pSourceDir = OV_instDirname(pPath);
    OwnedFile file(openDescription(pPath));
    const bool bOpened = file && root->pSourceDir;
    if (!bOpened)
        (void)OV_instFault(OV_FAULT_UNREADABLE, nullptr, strerror(errno)); /* told below, too */
    if (!bOpened || readHeader(file.get(), root.get(), &iLine) < 0) {
        if (!OV_instReadingSink)
            printf("Invalid .dat file %s\n", pPath);
        return nullptr;
    }
    if (readCdinst(file.get(), root.get(), progress, &iLine) < 0)
        return nullptr;
    return root.release();
}

void parseUpdate()
{
    static const char s_caSpinner[] = "|/-\\";
    static uint32_t s_iTurn = 0;

    printf("Parsing config file [%c]\r", s_caSpinner[s_iTurn++ % 4]);
    fflush(stdout);
}
