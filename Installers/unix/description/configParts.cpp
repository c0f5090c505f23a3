#include "description/configParts.h"

/* What both routines below find. */
struct Words {
    const char *pName;
    const char *pText;
};

static Words wordsOf(const _OV_InstConfigList *pConfig)
{
    if (!pConfig->pData)
        return {nullptr, nullptr};
    if (pConfig->iType == OV_CONFIG_MAINDLG) {
        const auto *pData = static_cast<const _OV_InstMainDlg *>(pConfig->pData);
        return {pData->pTitle, pData->pText};
    }
    if (pConfig->iType == OV_CONFIG_CUSDLG) {
        const auto *pData = static_cast<const _OV_InstCusDlg *>(pConfig->pData);
        return {pData->pTitle, pData->pText};
    }
    const auto *pData = static_cast<const _OV_InstSuiteChoice *>(pConfig->pData);
    return {pData->pSuite ? pData->pSuite->pName : nullptr, pData->pText};
}

const char *OV_instGetConfigName(const _OV_InstConfigList *pConfig)
{
    const char *pName = wordsOf(pConfig).pName;

    return pName ? pName : "";
}

const char *OV_instGetConfigText(const _OV_InstConfigList *pConfig)
{
    const char *pText = wordsOf(pConfig).pText;

    return pText ? pText : "";
}
