/* The lines that the installing child writes into the pipe, and the reading side's routines:
 * splitting bytes into lines, and reading a line's count. What is done with a line is decided by
 * who reads. */
#ifndef OVINST_ENGINE_RECORDS_H
#define OVINST_ENGINE_RECORDS_H

#include <cstddef>
#include <cstdint>
#include <cstdio>

/* The marker lines, in the order of a run. */
#define OV_RECORD_START "# Start installation"
#define OV_RECORD_REMOVING "# Removing files"
#define OV_RECORD_INSTALLING "# Installing files"
#define OV_RECORD_PASS_COMPLETED "# Pass Installation completed"
#define OV_RECORD_REGISTRY "# Updating the registry"
#define OV_RECORD_REGISTRY_DONE "# Done updating the registry"
#define OV_RECORD_ERROR "# Error during installation"
#define OV_RECORD_COMPLETED "# Installation completed"
#define OV_RECORD_LOG "#Log:" /* a prefix; the rest of the line goes into the setup log */

/* Formats into the pipe stream and flushes it, so that the reader sees every record at once and
 * in order. The directives are %s (null gives "(null)"), %d, %ld, %lld, %zd and %zu; a line end
 * within a text becomes "?", since nothing of the medium's or the user's may look like a record.
 * Nothing for a null stream or format. */
void OV_instSendUpdate(FILE *pStream, const char *pFormat, ...)
    __attribute__((format(printf, 2, 3)));

/* The same without the flush, for one of many records that belong together; the caller flushes. */
void OV_instGatherUpdate(FILE *pStream, const char *pFormat, ...)
    __attribute__((format(printf, 2, 3)));

/* Sends "+COUNT FROM TO" for each block of iBlock bytes in iCount, and what is left behind them, at
 * one go. */
void OV_instSendBlocks(FILE *pStream, size_t iCount, size_t iBlock, const char *pFrom,
                       const char *pTo);

/* Bytes on their way to becoming lines. Of a line longer than iLimit the beginning is handed out
 * and the rest passed over. */
struct OV_RecordSplitter {
    char *pBuffer; /* room for iLimit + 1 bytes */
    size_t iLimit;
    size_t iUsed;
};

/* A splitter, or one with a null buffer without memory. Free it with OV_instFreeSplitter. */
OV_RecordSplitter OV_instNewSplitter(size_t iLimit);
void OV_instFreeSplitter(OV_RecordSplitter *pSplitter);

/* Takes iCount bytes and hands every line that is complete to onLine, without its newline; zero
 * bytes cut a line short, as they would in a text. What follows the last newline is kept. */
void OV_instSplitRecords(OV_RecordSplitter *pSplitter, const char *pBytes, size_t iCount,
                         void (*onLine)(const char *pLine, void *pContext), void *pContext);

/* Hands out what is kept, if anything: the last line of a stream that ended without a newline. */
void OV_instSplitRest(OV_RecordSplitter *pSplitter,
                      void (*onLine)(const char *pLine, void *pContext), void *pContext);

/* The number that a line begins with, and in *ppText what follows it, leading blanks skipped. A
 * line that begins with no number counts 0. */
int64_t OV_instRecordCount(const char *pLine, const char **ppText);

#endif
