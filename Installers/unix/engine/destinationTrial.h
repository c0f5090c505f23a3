/* Changing the destination while setup runs. The check for an earlier installation marks what it
 * finds and may even lead to another tree; what the user then declines must leave no trace, or a
 * later installation elsewhere would pass over what counts as installed. */
#ifndef OVINST_ENGINE_DESTINATIONTRIAL_H
#define OVINST_ENGINE_DESTINATIONTRIAL_H

#include <memory>

struct OV_DestinationTrial;

/* Makes pPath the root destination and checks what is there. Null without a description or memory;
 * nothing has changed then. */
OV_DestinationTrial *OV_instTryDestination(const char *pPath);

/* Whether there is an installation to maintain; its marks are then set. */
bool OV_instFoundInstallation(const OV_DestinationTrial *pTrial);

/* Puts everything back to what it was before the trial. */
void OV_instUndoTrial(const OV_DestinationTrial *pTrial);

void OV_instFreeTrial(OV_DestinationTrial *pTrial);

struct TrialFreed {
    void operator()(OV_DestinationTrial *pTrial) const { OV_instFreeTrial(pTrial); }
};

using OwnedTrial = std::unique_ptr<OV_DestinationTrial, TrialFreed>;

#endif
