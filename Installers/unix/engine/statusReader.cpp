#include "engine/statusReader.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <sys/select.h>
#include <unistd.h>

#include "engine/records.h"
#include "ut/OVinstLogfile.h"

enum {
    RECORD_LIMIT = 4095, /* the longest piece of a record that is handled at once */
    READ_SIZE = 65536,
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

static void onRecord(const char *pLine, void *pTotal)
{
    OV_instProcessUpdate(pLine, *static_cast<uint64_t *>(pTotal));
}

/* Waits up to a second for the pipe. 1 when it can be read, 0 when not yet, -1 for a failure. */
static int waitForRecords(int iFd)
{
    struct timeval timeout = {1, 0};
    fd_set readable;
    int iReady;

    FD_ZERO(&readable);
    FD_SET(iFd, &readable);
    iReady = select(iFd + 1, &readable, nullptr, nullptr, &timeout);
    if (iReady < 0)
        return errno == EINTR ? 0 : -1;
    return iReady > 0 ? 1 : 0;
}

static void letRecordsGather()
{
    const struct timespec pause = {0, GATHER_NSEC};

    (void)nanosleep(&pause, nullptr); /* a signal only makes it shorter */
}

void OV_instReadRecords(int iFd, uint64_t ulTotal)
{
    OV_RecordSplitter splitter = OV_instNewSplitter(RECORD_LIMIT);
    char caBytes[READ_SIZE];
    int iReady;

    OV_instProcessUpdate(nullptr, 0);
    while (splitter.pBuffer && (iReady = waitForRecords(iFd)) >= 0) {
        ssize_t iRead = iReady ? read(iFd, caBytes, sizeof(caBytes)) : -1;

        if (iRead == 0 || (iReady && iRead < 0 && errno != EINTR))
            break;
        if (iRead < 0)
            continue;
        OV_instSplitRecords(&splitter, caBytes, static_cast<size_t>(iRead), onRecord, &ulTotal);
        (void)fflush(stdout);
        letRecordsGather();
    }
    OV_instSplitRest(&splitter, onRecord, &ulTotal);
    OV_instFreeSplitter(&splitter);
}
