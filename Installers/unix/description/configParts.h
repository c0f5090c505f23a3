/* What a configuration has of each kind, in the same words whatever its kind is: its name and its
 * text, and the suite that it stands for. */
#ifndef OVINST_DESCRIPTION_CONFIGPARTS_H
#define OVINST_DESCRIPTION_CONFIGPARTS_H

#include "description/model.h"

/* The title of a page or a list, the name of a suite configuration's suite; and the text that
 * describes it. Empty where there is none. */
const char *OV_instGetConfigName(const _OV_InstConfigList *pConfig);
const char *OV_instGetConfigText(const _OV_InstConfigList *pConfig);

/* The suite that a suite configuration stands for, and its packages; null for any other one, and
 * where there is none. They stand here because a walk asks it of many million configurations. */
inline _OV_InstSuiteList *OV_instGetConfigSuite(const _OV_InstConfigList *pConfig)
{
    if (pConfig->iType != OV_CONFIG_SUITE || !pConfig->pData)
        return nullptr;
    return static_cast<const _OV_InstSuiteChoice *>(pConfig->pData)->pSuite;
}

inline _OV_InstPackageNode *OV_instGetConfigPackages(const _OV_InstConfigList *pConfig)
{
    const _OV_InstSuiteList *pSuite = OV_instGetConfigSuite(pConfig);

    return pSuite ? pSuite->pPackHead : nullptr;
}

#endif
