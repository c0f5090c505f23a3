#include "engine/runReport.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/mman.h>

#include "ut/OVinstLogfile.h"
#include "ut/owned.h"
#include "ut/trust.h"

struct Report {
    unsigned iFailedSteps;
    bool bWarned;
    bool bEnded; /* the last record was read, and no pass had failed */
};

static Report s_own; /* where no memory can be shared */
static Report *s_pReport = &s_own;
static bool s_bWarnedBefore; /* of what the start would not believe */

void OV_instBeginReport()
{
    if (s_pReport == &s_own) {
        s_bWarnedBefore = s_own.bWarned;
        void *pShared = mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE,
                             MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (pShared != MAP_FAILED)
            s_pReport = static_cast<Report *>(pShared);
    }
    *s_pReport = {0, s_bWarnedBefore, false};
}

/* A line end in a name would begin a line of its own. */
static char *onOneLine(char *pText)
{
    for (char *pEnd = pText; (pEnd = strchr(pEnd, '\n'));)
        *pEnd = '?';
    return pText;
}

void OV_instWarn(const char *pFormat, ...)
{
    va_list args;
    char *pText = nullptr;

    s_pReport->bWarned = true;
    va_start(args, pFormat);
    if (vasprintf(&pText, pFormat, args) < 0)
        pText = nullptr; /* it is noted all the same */
    va_end(args);
    OwnedText text(pText);
    if (text)
        (void)OV_instUpdateLogfile("Warning: %s\n", onOneLine(text.get())); /* it is optional */
}

static void warnOfRefusal(const char *pText)
{
    if (!g_caLogName[0])
        fprintf(stderr, "Warning: %s\n", pText);
    OV_instWarn("%s", pText);
}

void OV_instWarnOfRefusals()
{
    OV_instSetRefusalHandler(warnOfRefusal);
}

void OV_instLogSkipped(const char *pPrompt, const char *pFile)
{
    OwnedText file(strdup(pFile));

    if (file)
        (void)OV_instUpdateLogfile("%s: %s\n", pPrompt, onOneLine(file.get())); /* likewise */
}

void OV_instNoteFailedStep()
{
    s_pReport->iFailedSteps++;
}

unsigned OV_instFailedSteps()
{
    return s_pReport->iFailedSteps;
}

bool OV_instWasWarned()
{
    return s_pReport->bWarned;
}

void OV_instNoteRunEnd(bool bFailed)
{
    s_pReport->bEnded = !bFailed;
}

bool OV_instRunEndedWell()
{
    return s_pReport->bEnded && !s_pReport->iFailedSteps && !s_pReport->bWarned;
}
