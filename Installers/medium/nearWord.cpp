#include "medium/nearWord.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <strings.h>
#include <vector>

enum { MOST_CHANGES = 2, LONGEST = 24 };

/* How many letters have to be changed, added, left out or exchanged with their neighbour, case not
 * counting. */
static size_t changesBetween(const std::string &one, const std::string &other)
{
    std::vector<std::vector<size_t>> aaCost(one.size() + 1,
                                            std::vector<size_t>(other.size() + 1, 0));

    for (size_t i = 0; i <= one.size(); i++)
        for (size_t j = 0; j <= other.size(); j++) {
            if (i == 0 || j == 0) {
                aaCost[i][j] = i + j;
                continue;
            }
            const size_t iChange = one[i - 1] == other[j - 1] ? 0 : 1;
            aaCost[i][j] = std::min(
                {aaCost[i - 1][j] + 1, aaCost[i][j - 1] + 1, aaCost[i - 1][j - 1] + iChange});
            if (i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1])
                aaCost[i][j] = std::min(aaCost[i][j], aaCost[i - 2][j - 2] + 1);
        }
    return aaCost[one.size()][other.size()];
}

static std::string lowered(const char *pWord)
{
    std::string word(pWord);

    for (char &c : word)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return word;
}

int OV_mediumNearWord(const char *pWord, const char *const *apKeywords)
{
    size_t iLeast = MOST_CHANGES + 1;
    int iBest = -1;

    if (strlen(pWord) > LONGEST)
        return -1;
    for (int i = 0; apKeywords[i]; i++)
        if (strcasecmp(pWord, apKeywords[i]) == 0)
            return i;
    for (int i = 0; apKeywords[i]; i++) {
        const size_t iChanges = changesBetween(lowered(pWord), lowered(apKeywords[i]));
        /* Short words are near to everything. */
        if (iChanges * 3 > strlen(apKeywords[i]) || iChanges > iLeast)
            continue;
        iBest = iChanges < iLeast ? i : -1;
        iLeast = iChanges;
    }
    return iBest;
}
