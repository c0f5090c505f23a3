#include "ut/text.h"

#include <cctype>

std::string OV_instTrimmed(const std::string &text)
{
    const auto isBlank = [&](size_t i) { return isspace(static_cast<unsigned char>(text[i])); };
    size_t iStart = 0;
    size_t iEnd = text.size();

    while (iStart < iEnd && isBlank(iStart))
        iStart++;
    while (iEnd > iStart && isBlank(iEnd - 1))
        iEnd--;
    return text.substr(iStart, iEnd - iStart);
}
