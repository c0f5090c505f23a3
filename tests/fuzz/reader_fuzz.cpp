/* The whole reader on any bytes, for setup and once more collecting all faults: of these one is
 * refused exactly when setup refuses the description. The description lies in memory and its
 * directory below /proc, so a module that it names cannot exist and nothing is ever loaded.
 *
 *   reader_fuzz -dict=reader.dict -max_total_time=180 NEW_CORPUS reader_corpus */
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

#include "../description/describe.h"
#include "description/faults.h"
#include "description/reader.h"
#include "ut/owned.h"

extern "C" int LLVMFuzzerInitialize(int *piArgc, char ***papArgv);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *pData, size_t iSize);

/* The reader's own messages would drown the fuzzer's, which keeps the stream it started with. */
extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    FILE *pNowhere = fopen("/dev/null", "w");

    if (!pNowhere)
        abort();
    stdout = stderr = pNowhere;
    return 0;
}

/* Counts what rejects, and looks at every place that it is given. */
static void countFault(void *pContext, const OV_Fault *pFault)
{
    if (pFault->iLine < 1 || pFault->iColumn < 1)
        abort();
    *static_cast<int *>(pContext) += pFault->bRejects ? 1 : 0;
}

static void takeNote(void *, const void *, const char *, int iLine, int iColumn)
{
    if (iLine < 1 || iColumn < 1)
        abort();
}

/* Anything is a keyword that was meant: so that every reader is reached in every state. */
static int guessKeyword(void *, const char *pWord, const char *const *apKeywords)
{
    int iCount = 0;

    while (apKeywords[iCount])
        iCount++;
    return static_cast<int>(strlen(pWord)) % (iCount + 1) - 1;
}

static void endLine(void *, const char *, int, _OV_instCDinst *) {}

static bool namesModule(const _OV_instCDinst *pRoot)
{
    for (auto *pNode = pRoot->pPackageHead; pNode; pNode = pNode->pNext)
        for (auto *pOper = pNode->pPackage->pOperHead; pOper; pOper = pOper->pNext)
            if (pOper->iType == OV_OPER_FUNCTION)
                return true;
    return false;
}

/* Whether setup would refuse it: for a fault, or for a module, which cannot be there. */
static bool isRefused(const char *pPath)
{
    int iRejecting = 0;
    const OV_ReadingSink sink = {countFault, takeNote, guessKeyword, endLine, &iRejecting};

    OV_instParsingConfiguration = 0;
    OV_instSetReadingSink(&sink);
    _OV_instCDinst *pRoot = OV_instReadCDinst(pPath, nullptr);
    OV_instSetReadingSink(nullptr);
    const bool bRefused = iRejecting > 0 || !pRoot || namesModule(pRoot);
    OV_instFreeCDinst(pRoot);
    return bRefused;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *pData, size_t iSize)
{
    OwnedFd memory(memfd_create("cdinst.dat", MFD_CLOEXEC));

    if (memory.iFd < 0 || write(memory.iFd, pData, iSize) != static_cast<ssize_t>(iSize))
        abort();
    OV_instParsingConfiguration = 0;
    const std::string path = "/proc/self/fd/" + std::to_string(memory.iFd);
    _OV_instCDinst *pRoot = OV_instReadCDinst(path.c_str(), nullptr);
    if (pRoot && !findFault(pRoot).empty())
        abort();
    const bool bTaken = pRoot != nullptr;
    OV_instFreeCDinst(pRoot);
    if (bTaken == isRefused(path.c_str()))
        abort();
    return 0;
}
