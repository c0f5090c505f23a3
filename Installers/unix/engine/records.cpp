#include "engine/records.h"

#include <cctype>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <sys/types.h>

/* A text within a record: a line end in it would begin a record of its own. */
static void putText(FILE *pStream, const char *pText)
{
    if (!pText)
        pText = "(null)";
    for (size_t iLength; *pText; pText += iLength) {
        iLength = strcspn(pText, "\n");
        (void)fwrite(pText, 1, iLength, pStream);
        if (!iLength) {
            iLength = 1;
            (void)putc('?', pStream);
        }
    }
}

/* Writes what the directive at pFormat stands for and returns what follows it. */
static const char *putDirective(FILE *pStream, const char *pFormat, va_list *pArgs)
{
    const char *pEnd = pFormat + 1 + strspn(pFormat + 1, "zl");
    const bool bLong = pEnd[-1] == 'l';

    if (*pEnd == 's')
        putText(pStream, va_arg(*pArgs, const char *));
    else if (*pEnd == 'd' && bLong && pEnd[-2] == 'l')
        fprintf(pStream, "%lld", va_arg(*pArgs, long long));
    else if (*pEnd == 'd' && bLong)
        fprintf(pStream, "%ld", va_arg(*pArgs, long));
    else if (*pEnd == 'd' && pEnd[-1] == 'z')
        fprintf(pStream, "%zd", va_arg(*pArgs, ssize_t));
    else if (*pEnd == 'u' && pEnd[-1] == 'z')
        fprintf(pStream, "%zu", va_arg(*pArgs, size_t));
    else
        fprintf(pStream, "%d", va_arg(*pArgs, int));
    return pEnd + 1;
}

static void putRecord(FILE *pStream, const char *pFormat, va_list *pArgs)
{
    while (pStream && pFormat && *pFormat) { /* a reader that is gone is noticed by its signal */
        size_t iPlain = strcspn(pFormat, "%");
        (void)fwrite(pFormat, 1, iPlain, pStream);
        pFormat += iPlain;
        if (*pFormat)
            pFormat = putDirective(pStream, pFormat, pArgs);
    }
}

void OV_instSendUpdate(FILE *pStream, const char *pFormat, ...)
{
    va_list args;

    va_start(args, pFormat);
    putRecord(pStream, pFormat, &args);
    va_end(args);
    if (pStream && pFormat)
        (void)fflush(pStream);
}

void OV_instGatherUpdate(FILE *pStream, const char *pFormat, ...)
{
    va_list args;

    va_start(args, pFormat);
    putRecord(pStream, pFormat, &args);
    va_end(args);
}

void OV_instSendBlocks(FILE *pStream, size_t iCount, size_t iBlock, const char *pFrom,
                       const char *pTo)
{
    while (pStream && iCount) {
        const size_t iNow = iCount < iBlock ? iCount : iBlock;

        fprintf(pStream, "+%zu ", iNow);
        putText(pStream, pFrom);
        (void)putc(' ', pStream);
        putText(pStream, pTo);
        (void)putc('\n', pStream);
        iCount -= iNow;
    }
    if (pStream)
        (void)fflush(pStream);
}

OV_RecordSplitter OV_instNewSplitter(size_t iLimit)
{
    return {static_cast<char *>(malloc(iLimit + 1)), iLimit, 0};
}

void OV_instFreeSplitter(OV_RecordSplitter *pSplitter)
{
    free(pSplitter->pBuffer);
    *pSplitter = {nullptr, 0, 0};
}

static void handOut(OV_RecordSplitter *pSplitter, void (*onLine)(const char *, void *),
                    void *pContext)
{
    pSplitter->pBuffer[pSplitter->iUsed] = '\0';
    pSplitter->iUsed = 0;
    onLine(pSplitter->pBuffer, pContext);
}

/* Copies what still fits of a line; the rest of one that is longer is passed over. */
static void keep(OV_RecordSplitter *pSplitter, const char *pBytes, size_t iCount)
{
    size_t iRoom = pSplitter->iLimit - pSplitter->iUsed;

    if (iCount > iRoom)
        iCount = iRoom;
    memcpy(pSplitter->pBuffer + pSplitter->iUsed, pBytes, iCount);
    pSplitter->iUsed += iCount;
}

void OV_instSplitRecords(OV_RecordSplitter *pSplitter, const char *pBytes, size_t iCount,
                         void (*onLine)(const char *, void *), void *pContext)
{
    const char *pEnd = pBytes + iCount;

    while (const void *pFound = memchr(pBytes, '\n', static_cast<size_t>(pEnd - pBytes))) {
        const char *pNewline = static_cast<const char *>(pFound);

        keep(pSplitter, pBytes, static_cast<size_t>(pNewline - pBytes));
        handOut(pSplitter, onLine, pContext);
        pBytes = pNewline + 1;
    }
    keep(pSplitter, pBytes, static_cast<size_t>(pEnd - pBytes));
}

void OV_instSplitRest(OV_RecordSplitter *pSplitter, void (*onLine)(const char *, void *),
                      void *pContext)
{
    if (pSplitter->iUsed)
        handOut(pSplitter, onLine, pContext);
}

int64_t OV_instRecordCount(const char *pLine, const char **ppText)
{
    char *pEnd = nullptr;
    int64_t lCount = strtoll(pLine, &pEnd, 10);

    while (isspace(static_cast<unsigned char>(*pEnd)))
        pEnd++;
    *ppText = pEnd;
    return lCount;
}
