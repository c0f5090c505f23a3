/* What the lines of operations have to give: fields that are left out, and modes. */
#include <cstddef>
#include <sys/stat.h>
#include <unordered_set>

#include "medium/checkParts.h"
#include "ut/text.h"

enum Field { TEXT, MODE, UNITS };

/* A field that may not be left out, by where the record has it. */
struct FieldRow {
    OV_InstOperType kind;
    Field field;
    size_t iOffset;
    const char *pName;
    bool bMayBeEmpty;
};

#define BODY(member) offsetof(_OV_InstOper, body.member)

static const FieldRow s_aFields[] = {
    {OV_OPER_COPY, TEXT,  BODY(copy.pSource),    "source",           false            },
    {OV_OPER_COPY, UNITS, offsetof(_OV_InstOper, lUnits),            "size",            false},
    {OV_OPER_COPY,            MODE,      BODY(copy.iMode),            "mode",         false        },
    {OV_OPER_UNTAR,            TEXT,     BODY(tar.pArchive),           "archive",       false},
    {OV_OPER_UNTAR2,            TEXT,    BODY(tar.pDestRoot),          "directory",      false      },
    {OV_OPER_MKDIR,            TEXT,     BODY(mkdir.pPath),           "directory",        false},
    {OV_OPER_MKDIR,            MODE,     BODY(mkdir.iMode),           "mode",        false           },
    {OV_OPER_HARDLINK,            TEXT,  BODY(link.pLink),        "directory",         true},
    {OV_OPER_HARDLINK,            TEXT,  BODY(link.pTarget),        "target",       false            },
    {OV_OPER_HARDLINK,            TEXT,  BODY(link.pThird),        "name",        false},
    {OV_OPER_FUNCTION,            TEXT,  BODY(function.pFunction),        "function", false },
    {OV_OPER_FUNCTION,            TEXT,  BODY(function.pModule),        "module",   false   },
    {OV_OPER_REGDATA,            TEXT,   BODY(regData.pRootKey),         "root key",   true},
    {OV_OPER_REGDATA,            TEXT,   BODY(regData.pKeyName),         "key",   true        },
    {OV_OPER_REGDATA,            TEXT,   BODY(regData.pKeyValue),         "name",  true},
    {OV_OPER_SELFREG,            TEXT,   BODY(selfReg.pModule),         "module",    false        },
    {OV_OPER_COUNT,            TEXT,     0,           nullptr,                        false               },
};

/* Kinds that have the fields of another. */
static int kindOfFields(int iType)
{
    switch (iType) {
    case OV_OPER_COPYZ:
        return OV_OPER_COPY;
    case OV_OPER_UNTARZ:
        return OV_OPER_UNTAR;
    case OV_OPER_UNTARZ2:
        return OV_OPER_UNTAR2;
    case OV_OPER_SOFTLINK:
        return OV_OPER_HARDLINK;
    default:
        return iType;
    }
}

static bool isField(const FieldRow *pRow, const _OV_InstOper *pOper)
{
    const int iKind = kindOfFields(pOper->iType);

    if (pRow->kind == OV_OPER_UNTAR && iKind == OV_OPER_UNTAR2)
        return true; /* it has an archive, too */
    return pRow->kind == iKind;
}

static const void *fieldOf(const FieldRow *pRow, const _OV_InstOper *pOper)
{
    return reinterpret_cast<const char *>(pOper) + pRow->iOffset;
}

static bool isGiven(const OV_Check *pCheck, const FieldRow *pRow, const _OV_InstOper *pOper)
{
    const void *pField = fieldOf(pRow, pOper);

    if (pRow->field != TEXT)
        return OV_mediumPlaceOf(&pCheck->reading, pField) != nullptr;
    const char *pText = *static_cast<char *const *>(pField);
    if (!pText || !OV_mediumPlaceOf(&pCheck->reading, pText))
        return false;
    return *pText || pRow->bMayBeEmpty;
}

static void checkMode(OV_Check *pCheck, const void *pField)
{
    const OV_ReadPlace *pPlace = OV_mediumPlaceOf(&pCheck->reading, pField);
    const auto iMode = static_cast<unsigned>(*static_cast<const int32_t *>(pField));
    const OV_Spot spot = OV_checkSpot(pCheck, pField);

    if (!pPlace->bOctal && iMode != 0)
        OV_checkTell(pCheck, "mode-odd", spot,
                     "the mode is not octal: it has to begin with 0 and is read as " +
                         std::to_string(iMode),
                     std::to_string(iMode));
    else if (!(iMode & S_IRUSR))
        OV_checkTell(pCheck, "mode-odd", spot, "the mode keeps the owner from reading",
                     std::to_string(iMode));
}

static void checkOper(OV_Check *pCheck, const _OV_InstOper *pOper)
{
    for (const FieldRow *pRow = s_aFields; pRow->pName; pRow++) {
        if (!isField(pRow, pOper))
            continue;
        const void *pField = fieldOf(pRow, pOper);
        if (isGiven(pCheck, pRow, pOper)) {
            if (pRow->field == MODE)
                checkMode(pCheck, pField);
            continue;
        }
        const char *pText = pRow->field == TEXT ? *static_cast<char *const *>(pField) : nullptr;
        OV_Finding *pFinding = OV_checkTell(
            pCheck, "missing-field", OV_checkSpot(pCheck, pText, pOper),
            std::string(OVInstOperTkList[pOper->iType]) + " without a " + pRow->pName, pRow->pName);
        pFinding->bRejects = pOper->iType == OV_OPER_FUNCTION; /* there is no module of no name */
    }
    if (pOper->iType == OV_OPER_SHORTCUT)
        OV_checkTell(pCheck, "shortcut-unused", OV_checkSpot(pCheck, pOper),
                     "an installation does nothing with a Shortcut",
                     OV_instIsText(pOper->body.shortcut.pShort2) ? pOper->body.shortcut.pShort2
                                                                 : "");
}

/* A name that nothing can be called by, unless its line was refused. */
static void checkName(OV_Check *pCheck, const std::unordered_set<int> &refusedLines,
                      const char *pName, const void *pRecord)
{
    const OV_Spot spot = OV_checkSpot(pCheck, pName, pRecord);

    if (!OV_instIsText(pName) && !refusedLines.count(spot.iLine))
        OV_checkTell(pCheck, "missing-field", spot, "the name is left out", "name");
}

static std::unordered_set<int> refusedLinesOf(const OV_Check *pCheck)
{
    std::unordered_set<int> lines;

    for (const OV_ReadFault &fault : pCheck->reading.faults)
        if (fault.bRejects)
            lines.insert(fault.iLine);
    return lines;
}

void OV_checkFields(OV_Check *pCheck)
{
    const _OV_instCDinst *pRoot = pCheck->reading.model.get();
    const std::unordered_set<int> refusedLines = refusedLinesOf(pCheck);

    for (auto *pNode = pRoot->pPackageHead; pNode; pNode = pNode->pNext) {
        checkName(pCheck, refusedLines, pNode->pPackage->pName, pNode->pPackage);
        for (auto *pOper = pNode->pPackage->pOperHead; pOper; pOper = pOper->pNext)
            if (!OV_checkIsRefused(pCheck, pOper))
                checkOper(pCheck, pOper);
    }
    for (auto *pSuite = pRoot->pSuiteHead; pSuite; pSuite = pSuite->pNext)
        checkName(pCheck, refusedLines, pSuite->pName, pSuite);
}
