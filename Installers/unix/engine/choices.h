/* What the user chooses in the dialogs: which options a list shows, what follows from choosing one,
 * how much a choice adds and removes, and how it is given up again. */
#ifndef OVINST_ENGINE_CHOICES_H
#define OVINST_ENGINE_CHOICES_H

#include "description/model.h"

/* Whether the description keeps a suite from being shown, or has a suite without which the
 * application does not work. False for what is no suite. */
bool OV_instIsHidden(const _OV_InstConfigList *pConfig);
bool OV_instIsVital(const _OV_InstConfigList *pConfig);

/* Whether the only thing that could be added or removed beneath pConfig is everything: a list of
 * just one suite. False for null. */
bool OV_instIsSingleSuite(const _OV_InstConfigList *pConfig);

/* How many suites a choice is about. The names are the wrong way round: what is newly chosen is
 * counted in iRemove, and what is installed and was dropped in iAdd. */
struct OV_ChoiceCounts {
    int iAdd;
    int iRemove;
};

/* Adds the suites at and beneath pConfig to the counts. pChanged is what the user has just changed:
 * where that is a group which was cleared, every installed suite counts as dropped, in the group or
 * not. */
void OV_instCountChoices(_OV_InstConfigList *pConfig, const _OV_InstConfigList *pChanged,
                         OV_ChoiceCounts *pCounts);

/* Give up what was chosen and not carried out: of a list's own members, or of all beneath pConfig
 * (itself left alone). Null is accepted. */
void OV_instResetChoices(const _OV_InstConfigList *pConfig);
void OV_instUndoChoices(_OV_InstConfigList *pConfig);

/* Give pConfig and all beneath it what makes a run treat its suites as wanted or not: the selected
 * flags, where groups count as installed; or the installed flags of the suites' own records. What
 * is missing is told on standard output. */
void SetSelectedFlags(_OV_InstConfigList *pConfig, int iValue);
void SetInstalledFlags(_OV_InstConfigList *pConfig, int iValue);

#endif
