#include "engine/mediaPrompt.h"

#include <cstdlib>

#include "engine/records.h"
#include "engine/runReport.h"
#include "engine/setupState.h"
#include "ut/frontEnd.h"
#include "ut/owned.h"
#include "ut/strprint.h"

enum { ANSWER_CONTINUE = 0, ANSWER_BROWSE = 1, ANSWER_ABORT = 2 };

int OV_instAbortRetryMessageBox(FILE *, const char *pLabel, const char *pFile, char **ppSource)
{
    if (!ppSource) {
        puts("NULL pSource passed to OV_instAbortRetryMessageBox");
        return ANSWER_CONTINUE;
    }
    OwnedText message(OV_instStrPrint("%s: %s", pLabel, pFile));
    return OV_instFrontEnd()->fpAskForMedium(message.get(), pFile, OV_instGetSourceDirectory(),
                                             ppSource);
}

int OV_instQueryForSource(FILE *pStream, const char *pLabel, const char *pFile)
{
    char *pPicked = nullptr;
    int iAnswer;

    do {
        iAnswer = OV_instAbortRetryMessageBox(pStream, pLabel, pFile, &pPicked);
    } while (iAnswer == ANSWER_BROWSE && !pPicked);
    OwnedText picked(pPicked);
    if (iAnswer == ANSWER_BROWSE) {
        (void)OV_instSetSourceDirectory(picked.get()); /* ends the process when it fails */
        return 1;
    }
    if (iAnswer == ANSWER_ABORT)
        OV_instSendUpdate(pStream, "-1 abort\n");
    else if (iAnswer == ANSWER_CONTINUE)
        OV_instLogSkipped(pLabel, pFile);
    else
        puts("OV_instQueryForSource received a bogus value");
    return 0;
}
