#include "description/reader.h"

#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <memory>

#include "description/configLines.h"
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

static int readHeader(FILE *pFile, _OV_instCDinst *pRoot, int *piLine)
{
    char caWord[OV_HEADER_SIZE];
    char caValue[OV_HEADER_SIZE];

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

static int readBodyLine(const char *pLine, _OV_instCDinst *pRoot)
{
    bool bConfig = OV_instParsingConfiguration != 0;
    int iResult = bConfig ? AddLineToConfig(pLine, pRoot) : AddLineToCDinst(pLine, pRoot);

    if (iResult != 0 && OV_instGetDebugLevel() > 0)
        fprintf(stderr,
                bConfig ? "Error: AddLineToConfig\nLine=%s\n" : "Error: AddLineToCDinst\nLine=%s\n",
                pLine);
    return iResult;
}

int readCdinst(FILE *pFile, _OV_instCDinst *pRoot, void (*progress)(), int *piLine)
{
    while (char *pRead = OV_instGetline(pFile, piLine)) {
        OwnedText line(pRead);
        if (progress)
            progress();
        if (isWhiteOrCommentLine(line.get()))
            continue;
        if (readBodyLine(line.get(), pRoot) == -1) {
            if (getenv("OVINST_DEBUG"))
                fprintf(stderr, "Error at line %d\n", *piLine);
            return -1;
        }
    }
    if (!feof(pFile)) /* unreadable from here on, or no memory: that is not a shorter description */
        return -1;
    return validateModule(pRoot) == OV_INST_NO_ERROR ? 0 : -1;
}

/* Only what can be read to its end without waiting for somebody: no pipe, and no device that a
 * person or nobody ends. */
static FILE *openDescription(const char *pPath)
{
    OwnedFd file(open(pPath, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat info;

    if (file.iFd < 0 || fstat(file.iFd, &info) < 0 ||
        !(S_ISREG(info.st_mode) || S_ISBLK(info.st_mode)))
        return nullptr;
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
    if (!file || !root->pSourceDir || readHeader(file.get(), root.get(), &iLine) < 0) {
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
