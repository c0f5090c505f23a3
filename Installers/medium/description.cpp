#include "medium/description.h"

#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

#include "description/configLines.h"
#include "description/packageLines.h"
#include "description/scanner.h"
#include "medium/output.h"
#include "ut/OVinstFileUtils.h"
#include "ut/owned.h"

std::string OV_mediumDescriptionOf(const std::string &place)
{
    struct stat info;

    if (stat(place.c_str(), &info) == 0 && S_ISDIR(info.st_mode))
        return place + (place.back() == '/' ? "" : "/") + "cdinst.dat";
    return place;
}

static bool readHeader(FILE *pFile, _OV_instCDinst *pRoot, int *piLine)
{
    struct Row {
        const char *pKey;
        char **ppText;
    };
    const Row aRows[] = {
        {"SetupVersion",     nullptr                  },
        {"ProductName",      &pRoot->pProductName     },
        {"ProductVersion",   &pRoot->pProductVersion  },
        {"ProductDirectory", &pRoot->pProductDirectory},
        {"LogFile",          &pRoot->pLogFile         },
        {"HistoryFile",      &pRoot->pHistoryFile     },
        {"InstallDirectory", nullptr                  },
        {"NoChestRC",        nullptr                  },
        {"NoUserOrgRes",     nullptr                  },
        {"NoDisplayLog",     nullptr                  },
    };
    char caWord[OV_HEADER_SIZE], caValue[OV_HEADER_SIZE];

    for (const Row &row : aRows)
        if (OV_ReadHeaderLine(row.pKey, caWord, caValue, pFile, piLine, 0) && row.ppText)
            *row.ppText = strdup(caValue);
    if (pRoot->pLogFile && *pRoot->pLogFile) {
        OwnedText name(pRoot->pLogFile);
        pRoot->pLogFile = OV_instBuildPath("Setup", name.get(), nullptr);
    }
    return pRoot->pProductName && pRoot->pProductVersion && pRoot->pProductDirectory &&
           pRoot->pLogFile;
}

_OV_instCDinst *OV_mediumReadDescription(const std::string &place)
{
    const std::string path = OV_mediumDescriptionOf(place);
    OwnedFile file(fopen(path.c_str(), "re"));
    _OV_instCDinst *pRoot = file ? newCDinst() : nullptr;
    int iLine = 0;

    if (!pRoot) {
        OV_mediumTell("%s: %s", path.c_str(), strerror(errno));
        return nullptr;
    }
    pRoot->pCdinstPath = strdup(path.c_str());
    pRoot->pSourceDir = OV_instDirname(path.c_str());
    bool bTaken = readHeader(file.get(), pRoot, &iLine);
    while (char *pRead = bTaken ? OV_instGetline(file.get(), &iLine) : nullptr) {
        OwnedText line(pRead);
        if (!isWhiteOrCommentLine(line.get()))
            bTaken = (OV_instParsingConfiguration ? AddLineToConfig(line.get(), pRoot)
                                                  : AddLineToCDinst(line.get(), pRoot)) == 0;
    }
    OV_instParsingConfiguration = 0;
    if (bTaken)
        return pRoot;
    OV_mediumTell("%s: no description that setup would take", path.c_str());
    OV_instFreeCDinst(pRoot);
    return nullptr;
}
