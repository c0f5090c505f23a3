/* Pages, lists and options: whether they are there, lead to each other, and do what they seem. */
#include <unordered_set>
#include <vector>

#include "medium/checkParts.h"

using ConfigSet = std::unordered_set<const _OV_InstConfigList *>;

static _OV_InstConfigList *find(const OV_Check *pCheck, int32_t iId)
{
    return OV_instGetConfigFromId(pCheck->reading.model.get(), iId);
}

/* Whether a line that was refused may have had the number. */
static bool isLost(const OV_Check *pCheck, int32_t iId)
{
    return pCheck->reading.bNumberLost || pCheck->reading.lostNumbers.count(iId) > 0;
}

static OV_Finding *tell(OV_Check *pCheck, const char *pCode, const void *pWhat,
                        const _OV_InstConfigList *pConfig, const std::string &message)
{
    return OV_checkTell(pCheck, pCode, OV_checkSpot(pCheck, pWhat, &pConfig->iId), message,
                        std::to_string(pConfig->iId));
}

/* The configurations that those of the ids lead to, with them. */
static ConfigSet reachedFrom(const OV_Check *pCheck, const std::vector<int32_t> &ids)
{
    std::vector<const _OV_InstConfigList *> waiting;
    ConfigSet reached;

    auto reach = [&](int32_t iId) {
        const _OV_InstConfigList *pConfig = find(pCheck, iId);
        if (pConfig && reached.insert(pConfig).second)
            waiting.push_back(pConfig);
    };
    for (int32_t iId : ids)
        reach(iId);
    while (!waiting.empty()) {
        int iMost = 0;
        const int32_t *aChildren = OV_instGetConfigChildren(waiting.back(), &iMost);
        waiting.pop_back();
        for (int i = 0; i < iMost && aChildren[i] > 0; i++)
            reach(aChildren[i]);
    }
    return reached;
}

/* ---- those that setup begins with ---- */

static const struct {
    int32_t iId;
    const char *pFor;
    OV_Severity severity;
} s_aEntries[] = {
    {OV_FIRST_CONFIG,       "the dialogs",              OV_ERROR  },
    {OV_MAINTENANCE_CONFIG, "maintenance",              OV_WARNING},
    {OV_UNATTENDED_CONFIG,  "unattended installations", OV_ERROR  },
};

static void checkKind(OV_Check *pCheck, const _OV_InstConfigList *pConfig)
{
    const char *pText = nullptr;

    if (pConfig->iId == OV_FIRST_CONFIG && pConfig->iType != OV_CONFIG_MAINDLG)
        pText = "configuration 1, where the dialogs begin, has to be a MainDlg";
    else if (pConfig->iId == OV_MAINTENANCE_CONFIG && pConfig->iType != OV_CONFIG_CUSDLG)
        pText = "configuration 2, which maintenance shows, has to be a CusDlg";
    else if (pConfig->iId == OV_UNATTENDED_CONFIG && pConfig->iType == OV_CONFIG_MAINDLG)
        pText = "configuration 3, which is installed unattended, cannot be a MainDlg";
    if (pText)
        tell(pCheck, "configuration-kind", &pConfig->iType, pConfig, pText);
}

static void checkEntries(OV_Check *pCheck)
{
    for (const auto &entry : s_aEntries) {
        const _OV_InstConfigList *pConfig = find(pCheck, entry.iId);
        if (pConfig) {
            checkKind(pCheck, pConfig);
        } else if (pCheck->reading.bSections && !isLost(pCheck, entry.iId)) {
            const std::string number = std::to_string(entry.iId);
            OV_checkTell(pCheck, "configuration-missing", {},
                         "there is no configuration " + number + ", for " + entry.pFor, number)
                ->severity = entry.severity;
        }
    }
}

/* ---- members ---- */

/* A member of a page or a list, unless it is one that is not greater, which was told. */
static void checkMember(OV_Check *pCheck, const _OV_InstConfigList *pConfig,
                        const int32_t *piMember)
{
    const _OV_InstConfigList *pMember = find(pCheck, *piMember);

    if (*piMember <= pConfig->iId)
        return;
    if (!pMember && !isLost(pCheck, *piMember))
        OV_checkTell(pCheck, "unknown-child", OV_checkSpot(pCheck, piMember, &pConfig->iId),
                     "there is no configuration " + std::to_string(*piMember),
                     std::to_string(*piMember));
    if (pMember && pConfig->iType == OV_CONFIG_CUSDLG && pMember->iType == OV_CONFIG_MAINDLG)
        OV_checkTell(pCheck, "configuration-kind", OV_checkSpot(pCheck, piMember, &pConfig->iId),
                     "a MainDlg does not belong in a list", std::to_string(*piMember));
}

static void checkMembers(OV_Check *pCheck, const _OV_InstConfigList *pConfig)
{
    int iMost = 0;
    const int32_t *aChildren = OV_instGetConfigChildren(pConfig, &iMost);

    for (int i = 0; i < iMost && aChildren[i] > 0; i++)
        checkMember(pCheck, pConfig, &aChildren[i]);
}

/* Suites that the buttons of pages install at once. */
static ConfigSet buttonsOf(const OV_Check *pCheck, const ConfigSet &shown)
{
    ConfigSet buttons;

    for (const _OV_InstConfigList *pPage : shown) {
        int iMost = 0;
        const int32_t *aChildren = OV_instGetConfigChildren(pPage, &iMost);
        for (int i = 0; pPage->iType == OV_CONFIG_MAINDLG && i < iMost && aChildren[i] > 0; i++)
            buttons.insert(find(pCheck, aChildren[i]));
    }
    return buttons;
}

/* ---- flags ---- */

static void checkFlags(OV_Check *pCheck)
{
    const ConfigSet shown = reachedFrom(pCheck, {OV_FIRST_CONFIG});
    const ConfigSet listed = reachedFrom(pCheck, {OV_FIRST_CONFIG, OV_MAINTENANCE_CONFIG});
    const ConfigSet buttons = buttonsOf(pCheck, shown);

    for (auto *pConfig = pCheck->reading.model->pConfigHead; pConfig; pConfig = pConfig->pNext) {
        if (pConfig->iType == OV_CONFIG_CUSDLG && pConfig->iSelected == 1 &&
            listed.count(pConfig) && pConfig->iId != OV_MAINTENANCE_CONFIG)
            tell(pCheck, "list-flag", &pConfig->iSelected, pConfig,
                 "a list with flag 1: what is cleared in it is taken off the space required");
        if (pConfig->iType == OV_CONFIG_SUITE && pConfig->pData && !pConfig->iSelected &&
            buttons.count(pConfig))
            tell(pCheck, "button-unchosen", &pConfig->iSelected, pConfig,
                 "the button for this suite answers that there is nothing to install: its flag "
                 "is not 1");
    }
}

void OV_checkConfigurations(OV_Check *pCheck)
{
    const ConfigSet reached =
        reachedFrom(pCheck, {OV_FIRST_CONFIG, OV_MAINTENANCE_CONFIG, OV_UNATTENDED_CONFIG});
    const std::vector<int32_t> lost(pCheck->reading.lostNumbers.begin(),
                                    pCheck->reading.lostNumbers.end());
    const ConfigSet perhaps = reachedFrom(pCheck, lost);

    checkEntries(pCheck);
    for (auto *pConfig = pCheck->reading.model->pConfigHead; pConfig; pConfig = pConfig->pNext) {
        if (find(pCheck, pConfig->iId) != pConfig)
            tell(pCheck, "duplicate-configuration", &pConfig->iId, pConfig,
                 "a configuration " + std::to_string(pConfig->iId) +
                     " is above: this one is never found");
        else if (!reached.count(pConfig) && !perhaps.count(pConfig))
            tell(pCheck, "unreachable-configuration", &pConfig->iId, pConfig,
                 "no page and no list leads to configuration " + std::to_string(pConfig->iId));
        checkMembers(pCheck, pConfig);
    }
    checkFlags(pCheck);
}
