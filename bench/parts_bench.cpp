/* Parts of a run by themselves: where the time of a large description or of many records goes. */
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "description/reader.h"
#include "description/scanner.h"
#include "engine/records.h"
#include "ut/OVinstFileUtils.h"
#include "ut/owned.h"
#include "ut/strprint.h"

static void quotedStrings(benchmark::State &state)
{
    const char *pLine = "Copy \"bin/some/file/of/the/medium\" \"share/where/it/goes\" 12345 0644";

    for (auto _ : state) {
        const char *pCursor = pLine;
        OwnedText first(getQuotedString(pCursor, &pCursor));
        OwnedText second(getQuotedString(pCursor, &pCursor));
        benchmark::DoNotOptimize(getInteger(pCursor, &pCursor));
        benchmark::DoNotOptimize(second.get());
    }
}
BENCHMARK(quotedStrings);

static void formatter(benchmark::State &state)
{
    for (auto _ : state) {
        OwnedText text(OV_instStrPrint("%s/%s/%s", "/usr/Orvane/product", "SetupFiles", ".x.his"));
        benchmark::DoNotOptimize(text.get());
    }
}
BENCHMARK(formatter);

static void joinedPath(benchmark::State &state)
{
    for (auto _ : state) {
        OwnedText path(OV_instBuildPath("/usr/Orvane/product/", "share/a/file.txt", nullptr));
        benchmark::DoNotOptimize(path.get());
    }
}
BENCHMARK(joinedPath);

static void countLine(const char *pLine, void *pSum)
{
    const char *pText = nullptr;

    *static_cast<int64_t *>(pSum) += OV_instRecordCount(pLine, &pText);
}

static void splitRecords(benchmark::State &state)
{
    std::string bytes;
    int64_t lSum = 0;
    OV_RecordSplitter splitter = OV_instNewSplitter(4095);

    for (int i = 0; i < 1000; i++)
        bytes += "+10240 /media/medium/share/file /usr/Orvane/product/share/file\n";
    for (auto _ : state)
        OV_instSplitRecords(&splitter, bytes.data(), bytes.size(), countLine, &lSum);
    OV_instFreeSplitter(&splitter);
    state.SetItemsProcessed(state.iterations() * 1000);
    benchmark::DoNotOptimize(lSum);
}
BENCHMARK(splitRecords);

static void readDescription(benchmark::State &state)
{
    char caPath[] = "/tmp/ovbenchXXXXXX";
    FILE *pFile = fdopen(mkstemp(caPath), "w");

    fputs("SetupVersion 1\nProductName B\nProductVersion 1\nProductDirectory p\nLogFile l\n",
          pFile);
    for (int64_t i = 0; i < state.range(0); i++)
        fprintf(pFile, "Package \"p%d\" \"P\"\nCopy \"a/b%d\" \"\" 10 0644\n", static_cast<int>(i),
                static_cast<int>(i));
    (void)fclose(pFile);
    for (auto _ : state)
        OV_instFreeCDinst(OV_instReadCDinst(caPath, nullptr));
    state.SetComplexityN(state.range(0));
    (void)remove(caPath);
}
BENCHMARK(readDescription)->RangeMultiplier(10)->Range(100, 100000)->Complexity();

BENCHMARK_MAIN();
