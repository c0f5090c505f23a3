#include "engine/records.h"

#include <cctype>
#include <cstdarg>
#include <cstdlib>
#include <cstring>

void OV_instSendUpdate(FILE *pStream, const char *pFormat, ...)
{
    va_list args;

    if (!pStream || !pFormat)
        return;
    va_start(args, pFormat);
    (void)vfprintf(pStream, pFormat, args); /* a reader that is gone is noticed by its signal */
    va_end(args);
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

void OV_instSplitRecords(OV_RecordSplitter *pSplitter, const char *pBytes, size_t iCount,
                         void (*onLine)(const char *, void *), void *pContext)
{
    const char *pEnd = pBytes + iCount;

    while (pBytes < pEnd) {
        size_t iRoom = pSplitter->iLimit - pSplitter->iUsed;
        size_t iLeft = static_cast<size_t>(pEnd - pBytes);
        size_t iTake = iLeft < iRoom ? iLeft : iRoom;
        const char *pNewline = static_cast<const char *>(memchr(pBytes, '\n', iTake));

        if (pNewline)
            iTake = static_cast<size_t>(pNewline - pBytes);
        memcpy(pSplitter->pBuffer + pSplitter->iUsed, pBytes, iTake);
        pSplitter->iUsed += iTake;
        pBytes += iTake + (pNewline ? 1 : 0);
        if (pNewline || pSplitter->iUsed == pSplitter->iLimit)
            handOut(pSplitter, onLine, pContext);
    }
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
