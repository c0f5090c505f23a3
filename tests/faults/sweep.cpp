/* The command behind tools/faults. */
#include "faults/cases.h"

#include <algorithm>
#include <cstdio>
#include <thread>

enum { DISK_SIZES = 60 };

/* The table's rows: what belongs together in the list. */
static std::vector<std::vector<Case>> allRows()
{
    const Counts counts = countCalls();
    std::vector<Case> cases = allFaults(counts);
    std::vector<std::vector<Case>> rows;

    if (canMount())
        for (const Case &disk : fullDisks(counts, DISK_SIZES))
            cases.push_back(disk);
    for (const Case &each : cases) {
        if (rows.empty() || rows.back()[0].kind() != each.kind())
            rows.emplace_back();
        rows.back().push_back(each);
    }
    return rows;
}

static int wholeSweep(const std::vector<std::string> &words)
{
    const unsigned iProcesses = std::max(1U, std::thread::hardware_concurrency());
    bool bGood = true;

    printf("%-22s %6s", "", "cases");
    for (const char *pWrong : g_apWrongs)
        printf("  %s", pWrong);
    printf("\n");
    for (const std::vector<Case> &row : allRows()) {
        if (!std::all_of(words.begin(), words.end(), [&](const std::string &word) {
                return row[0].kind().find(word) != std::string::npos;
            }))
            continue;
        int aiWrong[WRONGS] = {};
        std::string list;
        judgeAll(row, iProcesses, [&](const Case &test, const Verdict &verdict) {
            for (int i = 0; i < WRONGS; i++)
                aiWrong[i] += verdict.abWrong[i];
            if (!verdict.isGood())
                list += "tools/faults " + test.text() + "\n" + verdict.detail;
        });
        printf("%-22s %6zu", row[0].kind().c_str(), row.size());
        for (int i = 0; i < WRONGS; i++)
            printf("  %*d", static_cast<int>(std::string(g_apWrongs[i]).size()), aiWrong[i]);
        printf("\n%s", list.c_str());
        (void)fflush(stdout);
        bGood &= list.empty();
    }
    return bGood ? 0 : 1;
}

int main(int iCount, char **apWords)
{
    const std::vector<std::string> words(apWords + 1, apWords + iCount);
    Case one;
    bool bGood = true;

    if (!canWatch()) {
        fputs("faults: the kernel or this build does not let runs be watched\n", stderr);
        return 77;
    }
    if (words.size() < 4)
        return wholeSweep(words);
    if (words.size() > 4 || !readCase(words, &one)) {
        fputs("Usage: faults [WORD...] for the rows with these words, or SCENARIO KIND N ERROR\n",
              stderr);
        return 2;
    }
    judgeAll(
        {one}, 1,
        [&](const Case &, const Verdict &verdict) {
            bGood =
                std::none_of(verdict.abWrong, verdict.abWrong + WRONGS, [](bool b) { return b; });
            fputs(verdict.detail.c_str(), stdout);
        },
        true);
    return bGood ? 0 : 1;
}
