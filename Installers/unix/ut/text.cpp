#include "ut/text.h"

#include <cctype>
#include <climits>
#include <cwchar>

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

/* The length of the character of UTF-8 that the text goes on with, or 1 where there is none. */
static size_t utf8Length(const std::string &text, size_t iAt)
{
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const size_t iLength = byte(iAt) >= 0xf0   ? 4
                           : byte(iAt) >= 0xe0 ? 3
                           : byte(iAt) >= 0xc2 ? 2
                                               : 1;

    for (size_t i = 1; i < iLength; i++)
        if (iAt + i >= text.size() || (byte(iAt + i) & 0xc0) != 0x80)
            return 1;
    return iLength;
}

std::string OV_instDisplayable(const std::string &text)
{
    std::string shown;
    mbstate_t state = {};

    shown.reserve(text.size());
    for (size_t i = 0; i < text.size();) {
        const size_t iLength = mbrlen(&text[i], text.size() - i, &state);
        if (iLength == 0 || iLength > MB_LEN_MAX) {
            shown += '?';
            state = {};
            i += utf8Length(text, i);
        } else {
            shown.append(text, i, iLength);
            i += iLength;
        }
    }
    return shown;
}
