#include "engine/statusReader.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include "engine/records.h"
#include "engine/runReport.h"
#include "ut/OVinstLogfile.h"

enum {
    RECORD_LIMIT = 4095, /* the longest piece of a record that is handled at once */
    READ_SIZE = 65536,
    WAIT_MSEC = 1000,
    GATHER_NSEC = 2000000 /* waking for every single record would slow the child down */
};

void OV_instProcessUpdate(const char *pLine, uint64_t ulTotal)
{
    static uint64_t s_ulSum = 0;
    const char *pText = nullptr;
    int64_t lCount;

    if (!pLine) {
        if (!ulTotal)
            s_ulSum = 0;
        return;
    }
    if (!pLine[0])
        return;
    lCount = OV_instRecordCount(pLine, &pText);
    if (lCount < 0) {
        fprintf(stderr, "Error: %s\n", pText);
        (void)OV_instUpdateLogfile("%s\n", pText); /* the log is optional */
        return;
    }
    if (strncmp(pLine, OV_RECORD_LOG, strlen(OV_RECORD_LOG)) == 0)
        (void)OV_instUpdateLogfile("%s\n", pLine + strlen(OV_RECORD_LOG));
    s_ulSum += static_cast<uint64_t>(lCount);
    printf("Status:%6.2f%%\r",
           ulTotal ? static_cast<double>(s_ulSum) / static_cast<double>(ulTotal) * 100.0 : 100.0);
}

/* What the records of a run are handled with. */
struct RunStatus {
    uint64_t ulTotal;
    bool bFailed;    /* the run's passes, by their marker */
    bool bCompleted; /* the last marker was seen */
};

static void onRecord(const char *pLine, void *pContext)
{
    RunStatus *pStatus = static_cast<RunStatus *>(pContext);

    OV_instProcessUpdate(pLine, pStatus->ulTotal);
    if (strcmp(pLine, OV_RECORD_ERROR) == 0)
        pStatus->bFailed = true;
    if (strcmp(pLine, OV_RECORD_COMPLETED) != 0)
        return;
    pStatus->bCompleted = true;
    OV_instNoteRunEnd(pStatus->bFailed);
    OV_instLogEnd(pStatus->bFailed);
}

/* Waits up to a second for the pipe. 1 when it can be read, 0 when not yet, -1 for a failure. */
static int waitForRecords(int iFd)
{
    struct pollfd pipeEnd = {iFd, POLLIN, 0}; /* select could not watch a high descriptor */
    int iReady = poll(&pipeEnd, 1, WAIT_MSEC);

    if (iReady < 0)
        return errno == EINTR ? 0 : -1;
    return iReady;
}

static void letRecordsGather()
{
    const struct timespec pause = {0, GATHER_NSEC};

    (void)nanosleep(&pause, nullptr); /* a signal only makes it shorter */
}

/* Whether the child has ended. Its status is not looked at: what failed was told by records. */
static bool isGone(pid_t iChild)
{
    return waitpid(iChild, nullptr, WNOHANG) != 0;
}

/* Reads what has arrived. False at the end. */
static bool readOnce(int iFd, OV_RecordSplitter *pSplitter, RunStatus *pStatus)
{
    char caBytes[READ_SIZE];
    ssize_t iRead = read(iFd, caBytes, sizeof(caBytes));

    if (iRead < 0)
        return errno == EINTR;
    if (iRead == 0)
        return false;
    OV_instSplitRecords(pSplitter, caBytes, static_cast<size_t>(iRead), onRecord, pStatus);
    (void)fflush(stdout);
    letRecordsGather();
    return true;
}

static void tellUnfinished()
{
    static const char s_caText[] = "Setup did not complete successfully\n";

    fputs(s_caText, stderr);
    (void)OV_instUpdateLogfile("%s", s_caText); /* the log is optional */
}

bool OV_instReadRecords(int iFd, uint64_t ulTotal, pid_t iChild)
{
    OV_RecordSplitter splitter = OV_instNewSplitter(RECORD_LIMIT);
    RunStatus status = {ulTotal, false, false};
    bool bGone = false;
    int iReady;

    OV_instProcessUpdate(nullptr, 0);
    while (splitter.pBuffer && (iReady = waitForRecords(iFd)) >= 0) {
        if (iReady && !readOnce(iFd, &splitter, &status))
            break;
        /* A process that the child left behind may keep the pipe open for ever. */
        if (!iReady && bGone)
            break;
        if (!iReady)
            bGone = isGone(iChild);
    }
    OV_instSplitRest(&splitter, onRecord, &status);
    OV_instFreeSplitter(&splitter);
    if (!status.bCompleted)
        tellUnfinished();
    return bGone;
}
