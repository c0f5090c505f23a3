/* The whole reader on any bytes. The description lies in memory and its directory below /proc, so
 * a module that it names cannot exist and nothing is ever loaded.
 *
 *   reader_fuzz -dict=reader.dict -max_total_time=180 NEW_CORPUS reader_corpus */
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

#include "../description/describe.h"
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
    OV_instFreeCDinst(pRoot);
    return 0;
}
