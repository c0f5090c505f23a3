/* What the tests of the description share: models made from lines, and records as text. */
#ifndef OVINST_TESTS_DESCRIPTION_DESCRIBE_H
#define OVINST_TESTS_DESCRIPTION_DESCRIBE_H

#include <initializer_list>
#include <memory>
#include <sstream>
#include <string>

#include "description/configLines.h"
#include "description/model.h"
#include "description/packageLines.h"

struct ModelFreed {
    void operator()(_OV_instCDinst *pRoot) const { OV_instFreeCDinst(pRoot); }
};
using Model = std::unique_ptr<_OV_instCDinst, ModelFreed>;

/* Adds lines outside a section until one is rejected; that one's result. */
inline int addLines(const Model &model, std::initializer_list<std::string> lines)
{
    for (const std::string &line : lines) {
        if (AddLineToCDinst(line.c_str(), model.get()) != 0)
            return -1;
    }
    return 0;
}

inline std::string shown(const char *pText)
{
    return pText ? pText : "(null)";
}

/* Values with a bar behind each. */
struct Fields {
    std::ostringstream out;
    Fields &operator<<(const char *pText) { return out << shown(pText) << '|', *this; }
    Fields &operator<<(int64_t lValue) { return out << lValue << '|', *this; }
};

/* Kind, units, then the fields of the body in their order, members as name and units. */
inline std::string shown(const _OV_InstOper *pOper)
{
    const auto &body = pOper->body;
    Fields all;
    all << OVInstOperTkList[pOper->iType] << pOper->lUnits;
    if (pOper->iType <= OV_OPER_COPYZ)
        all << body.copy.pSource << body.copy.pDest << body.copy.iMode << body.copy.iValue3
            << body.copy.iValue4;
    else if (pOper->iType <= OV_OPER_UNTARZ2)
        all << body.tar.pDestRoot << body.tar.pArchive;
    else if (pOper->iType == OV_OPER_MKDIR)
        all << body.mkdir.pPath << body.mkdir.iMode << body.mkdir.iValue2 << body.mkdir.iValue3;
    else if (pOper->iType <= OV_OPER_SOFTLINK)
        all << body.link.pLink << body.link.pTarget << body.link.pThird << body.link.iHard;
    else if (pOper->iType == OV_OPER_FUNCTION)
        all << body.function.pFunction << body.function.pModule << body.function.pData;
    else if (pOper->iType == OV_OPER_SHORTCUT)
        all << body.shortcut.pShort1 << body.shortcut.pShort2 << body.shortcut.pShort3
            << body.shortcut.pShort4;
    else if (pOper->iType == OV_OPER_REGDATA)
        all << body.regData.pRootKey << body.regData.pKeyName << body.regData.pKeyValue
            << body.regData.pValue;
    else
        all << body.selfReg.pModule;
    bool bTar = pOper->iType >= OV_OPER_UNTAR && pOper->iType <= OV_OPER_UNTARZ2;
    for (int32_t i = 0; bTar && i < body.tar.iCount; i++)
        all << body.tar.apMembers[i] << body.tar.aUnits[i];
    return all.out.str();
}

/* Kind, id, selection, icon, texts, then the children or the suite. */
inline std::string shown(const _OV_InstConfigList *pConfig)
{
    Fields all;
    all << OVInstConfigTkList[pConfig->iType] << pConfig->iId << pConfig->iSelected
        << (pConfig->pIcon ? pConfig->pIcon->pIcon1 : "")
        << (pConfig->pIcon ? pConfig->pIcon->pIcon2 : "");
    if (pConfig->iType == OV_CONFIG_SUITE) {
        const auto *pChoice = static_cast<const _OV_InstSuiteChoice *>(pConfig->pData);
        all << pChoice->pText << pChoice->pSuite->pName;
    } else if (pConfig->iType == OV_CONFIG_MAINDLG) {
        const auto *pDialog = static_cast<const _OV_InstMainDlg *>(pConfig->pData);
        all << pDialog->pTitle << pDialog->pText;
    } else {
        const auto *pDialog = static_cast<const _OV_InstCusDlg *>(pConfig->pData);
        all << pDialog->pTitle << pDialog->pText;
    }
    int iMost = 0;
    const int32_t *aChildren = OV_instGetConfigChildren(pConfig, &iMost);
    for (int i = 0; i < iMost && aChildren[i] != 0; i++)
        all << aChildren[i];
    return all.out.str();
}

/* Visits all that the reader has handed out and looks for what it promised; "" when it holds. */
inline std::string findFault(_OV_instCDinst *pRoot)
{
    std::string all = pRoot->pLogFile;
    for (_OV_InstPackageNode *pNode = pRoot->pPackageHead; pNode; pNode = pNode->pNext) {
        if (!OV_instGetPackageFromName(pRoot, pNode->pPackage->pName))
            return "a package is not found";
        for (_OV_InstOper *pOper = pNode->pPackage->pOperHead; pOper; pOper = pOper->pNext)
            all += shown(pOper);
    }
    for (_OV_InstSuiteList *pSuite = pRoot->pSuiteHead; pSuite; pSuite = pSuite->pNext) {
        if (!OV_instGetSuiteFromName(pRoot, pSuite->pName))
            return "a suite is not found";
    }
    for (_OV_InstConfigList *pConfig = pRoot->pConfigHead; pConfig; pConfig = pConfig->pNext) {
        all += shown(pConfig);
        if (!OV_instGetConfigFromId(pRoot, pConfig->iId) ||
            (pConfig == pRoot->pConfigHead) != !pConfig->pParent)
            return "a configuration is not found, or has a wrong parent";
    }
    return "";
}

#endif
