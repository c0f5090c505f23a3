/* The names of packages and suites, and the texts that people see. */
#include <algorithm>
#include <cstdlib>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "description/configParts.h"
#include "engine/driver.h"
#include "engine/history.h"
#include "medium/checkParts.h"
#include "medium/nearWord.h"
#include "ut/text.h"

enum { NEAR_WORDS = 50 }; /* so many misspelt names are compared */

/* ---- texts that are shown ---- */

/* How many bytes the character at pText has; 0 where there is none in UTF-8. */
static size_t characterAt(const unsigned char *pText)
{
    static const unsigned long s_aLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    const unsigned iFirst = *pText;
    size_t iBytes = 1;

    if (iFirst < 0x80)
        return 1;
    if (iFirst >= 0xc2 && iFirst < 0xe0)
        iBytes = 2;
    else if (iFirst >= 0xe0 && iFirst < 0xf0)
        iBytes = 3;
    else if (iFirst >= 0xf0 && iFirst < 0xf5)
        iBytes = 4;
    else
        return 0;
    unsigned long ulCode = iFirst & (0xffU >> (iBytes + 1));
    for (size_t i = 1; i < iBytes; i++) {
        if ((pText[i] & 0xc0) != 0x80)
            return 0; /* the terminator is none either */
        ulCode = (ulCode << 6) | (pText[i] & 0x3fU);
    }
    const bool bSurrogate = ulCode >= 0xd800 && ulCode < 0xe000;
    return ulCode >= s_aLeast[iBytes] && ulCode < 0x110000 && !bSurrogate ? iBytes : 0;
}

static void checkShown(OV_Check *pCheck, const char *pText)
{
    if (!pText)
        return;
    const unsigned char *pAt = reinterpret_cast<const unsigned char *>(pText);
    for (size_t iBytes; *pAt; pAt += iBytes) {
        iBytes = characterAt(pAt);
        if (iBytes > 0)
            continue;
        OV_checkTell(pCheck, "not-utf8", OV_checkSpot(pCheck, pText),
                     "the dialogs cannot show a text that is not UTF-8", pText);
        return;
    }
}

static void checkConfigTexts(OV_Check *pCheck)
{
    for (auto *pConfig = pCheck->reading.model->pConfigHead; pConfig; pConfig = pConfig->pNext) {
        if (pConfig->iType != OV_CONFIG_SUITE)
            checkShown(pCheck, OV_instGetConfigName(pConfig));
        checkShown(pCheck, OV_instGetConfigText(pConfig));
    }
}

/* ---- what the history holds ---- */

static void checkHeader(OV_Check *pCheck)
{
    const _OV_instCDinst *pRoot = pCheck->reading.model.get();
    const char *pVersion = pRoot->pProductVersion;
    char *pEnd = nullptr;

    checkShown(pCheck, pRoot->pProductName);
    checkShown(pCheck, pVersion);
    for (const char *pText : {pRoot->pProductName, pRoot->pProductVersion})
        if (OV_instHistoryTextSize(pText) >= OV_HISTORY_LINE)
            OV_checkTell(pCheck, "name-long", OV_checkSpot(pCheck, pText),
                         "the installation is never found again: the history's lines end before",
                         pText);
    (void)strtol(pVersion, &pEnd, 10); /* as the history's is compared */
    if (pEnd == pVersion && OV_mediumPlaceOf(&pCheck->reading, pVersion))
        OV_checkTell(pCheck, "version-not-number", OV_checkSpot(pCheck, pVersion),
                     "the version does not begin with a number: an earlier one is not told apart",
                     pVersion);
}

static void checkPackageName(OV_Check *pCheck, const _OV_InstPackage *pPackage)
{
    if (OV_instHistoryPackageSize(pPackage->pName) >= OV_HISTORY_LINE)
        OV_checkTell(pCheck, "name-long", OV_checkSpot(pCheck, pPackage->pName),
                     "the package is never found again: the history's lines end before",
                     pPackage->pName);
}

/* ---- which names are used ---- */

/* The names that the reader did not know. */
static std::vector<std::string> unknownNames(const OV_Check *pCheck, OV_FaultCode code)
{
    std::vector<std::string> names;

    for (const OV_ReadFault &fault : pCheck->reading.faults)
        if (fault.code == code && names.size() < NEAR_WORDS)
            names.push_back(fault.subject);
    return names;
}

/* Whether a name was meant by one that is not known, or by a line that was refused. */
static bool isMeant(const OV_Check *pCheck, const char *pName,
                    const std::vector<std::string> &unknown)
{
    const char *const apNames[] = {pName, nullptr};

    if (pCheck->reading.lostWords.count(pName) || pCheck->reading.lostNames.count(pName))
        return true;
    return std::any_of(unknown.begin(), unknown.end(), [&apNames](const std::string &name) {
        return OV_mediumNearWord(name.c_str(), apNames) == 0;
    });
}

static void checkPackages(OV_Check *pCheck)
{
    const _OV_instCDinst *pRoot = pCheck->reading.model.get();
    const std::vector<std::string> unknown = unknownNames(pCheck, OV_FAULT_PACKAGE);
    std::unordered_set<const _OV_InstPackage *> used;

    for (auto *pSuite = pRoot->pSuiteHead; pSuite; pSuite = pSuite->pNext)
        for (auto *pNode = pSuite->pPackHead; pNode; pNode = pNode->pNext)
            used.insert(pNode->pPackage);
    for (auto *pNode = pRoot->pPackageHead; pNode; pNode = pNode->pNext) {
        _OV_InstPackage *pPackage = pNode->pPackage;
        const char *pName = pPackage->pName;
        if (!OV_instIsText(pName))
            continue; /* which was told */
        checkPackageName(pCheck, pPackage);
        if (OV_instGetPackageFromName(pCheck->reading.model.get(), pName) != pPackage)
            OV_checkTell(pCheck, "duplicate-package", OV_checkSpot(pCheck, pName),
                         std::string("a package '") + pName +
                             "' is above: suites never find this one",
                         pName);
        else if (!used.count(pPackage) && !isMeant(pCheck, pName, unknown))
            OV_checkTell(pCheck, "unused-package", OV_checkSpot(pCheck, pName),
                         std::string("no suite has the package '") + pName + "'", pName);
    }
}

static void checkSuites(OV_Check *pCheck)
{
    const _OV_instCDinst *pRoot = pCheck->reading.model.get();
    const std::vector<std::string> unknown = unknownNames(pCheck, OV_FAULT_SUITE);
    std::unordered_set<const _OV_InstSuiteList *> used;

    for (auto *pConfig = pRoot->pConfigHead; pConfig; pConfig = pConfig->pNext)
        used.insert(OV_instGetConfigSuite(pConfig));
    for (auto *pSuite = pRoot->pSuiteHead; pSuite; pSuite = pSuite->pNext) {
        const char *pName = pSuite->pName;
        if (!OV_instIsText(pName))
            continue;
        checkShown(pCheck, pName);
        if (OV_instGetSuiteFromName(pCheck->reading.model.get(), pName) != pSuite)
            OV_checkTell(pCheck, "duplicate-suite", OV_checkSpot(pCheck, pName),
                         std::string("a suite '") + pName +
                             "' is above: configurations never find this one",
                         pName);
        else if (pCheck->reading.bSections && !used.count(pSuite) &&
                 !isMeant(pCheck, pName, unknown))
            OV_checkTell(pCheck, "unused-suite", OV_checkSpot(pCheck, pName),
                         std::string("no configuration stands for the suite '") + pName + "'",
                         pName);
    }
}

/* ---- directories of a suite ---- */

static size_t countDirectories(const _OV_InstPackage *pPackage)
{
    size_t iCount = 0;

    for (auto *pOper = pPackage->pOperHead; pOper; pOper = pOper->pNext)
        iCount += pOper->iType == OV_OPER_MKDIR ? 1 : 0;
    return iCount;
}

static void checkDirectories(OV_Check *pCheck)
{
    std::unordered_map<const _OV_InstPackage *, size_t> counts;

    for (auto *pNode = pCheck->reading.model->pPackageHead; pNode; pNode = pNode->pNext)
        counts[pNode->pPackage] = countDirectories(pNode->pPackage);
    for (auto *pSuite = pCheck->reading.model->pSuiteHead; pSuite; pSuite = pSuite->pNext) {
        std::unordered_set<const _OV_InstPackage *> seen;
        size_t iCount = 0;
        for (auto *pNode = pSuite->pPackHead; pNode; pNode = pNode->pNext)
            if (seen.insert(pNode->pPackage).second)
                iCount += counts[pNode->pPackage];
        if (iCount > OV_MAX_REMOVED_DIRS)
            OV_checkTell(
                pCheck, "too-many-directories", OV_checkSpot(pCheck, pSuite->pName, pSuite),
                "the suite has " + std::to_string(iCount) +
                    " Mkdir lines: a removal removes only " + std::to_string(OV_MAX_REMOVED_DIRS),
                pSuite->pName ? pSuite->pName : "");
    }
}

void OV_checkNames(OV_Check *pCheck)
{
    checkHeader(pCheck);
    checkPackages(pCheck);
    checkSuites(pCheck);
    checkConfigTexts(pCheck);
    checkDirectories(pCheck);
}
