#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <malloc.h>
#include <string>

#include "support.h"
#include "ut/owned.h"
#include "ut/strprint.h"

/* The compiler checks formats; these are wrong on purpose. */
static char *(*const s_fpUnchecked)(const char *pFormat, ...) = OV_instStrPrint;

/* Both passes by hand: the text, "#" and what the counting pass made of it. */
static std::string print(const char *pFormat, ...)
{
    DynString result = {77, nullptr};
    va_list args;
    int iFailed = 0;

    for (StrOper oper : {LENGTH, ALLOC}) {
        va_start(args, pFormat);
        iFailed |= get_len_or_allocate(args, pFormat, &result, oper);
        va_end(args);
    }
    OwnedPrint text(result.str);
    return iFailed || !text ? "(failed)" : text.get() + ("#" + std::to_string(result.len));
}

TEST(StrPrint, RendersAndCountsEveryConversion)
{
    const std::pair<std::string, std::string> aRows[] = {
        {print("a%db", -42), "a-42b#5"},
        {print("%o%x%X", 8, 255, 255), "10ffFF#6"},
        {print("%-#8x|%+d|% d", 255, 1, 2), "0xff    |+1| 2#14"},
        {print("%08.3d", 5), "     005#8"},
        {print("%--------------------5d|", 7), "7    |#6"},
        {print("%d", 0x1234567800000007), "7#1"},
        {print("%5.2f MB", 3.14159), " 3.14 MB#8"},
        {print("%e %G", 1.0, 1e-10), "1.000000e+00 1E-10#18"},
        {print("<%c%3c%-3c>", 0, 0, 0), "<  >#9"},
        {print("%-1.1s|", "abc"), "abc|#5"},
        {print("%9s%s", nullptr, nullptr), "(null)(null)#12"},
        {print("100%% sure%%"), "100% sure%#6"},
        {print("abc%5"), "abc#1"},
        {print("%-5.2%|%%%%"), "%|%%#4294967294"},
        {print("%ld|%d", 3), "d|3#3"},
        {print("%hd%p%n%a%.%*d", 3), "dd#2"},
        {print("%\n%d", 9), "9#1"},
        {print("%3000d|", 1), std::string(2999, ' ') + "1|#3001"},
        /* what counts to nothing is written as nothing */
        {print("ab%"), "#0"},
        {print("%l%h"), "#0"},
        {print(""), "#0"},
    };

    for (const auto &[got, expected] : aRows)
        EXPECT_EQ(got, expected);
}

TEST(StrPrint, NeverSizesTheBufferByItsCount)
{
    std::string wrapped, percents(1000, '%');
    for (int i = 0; i < 500; i++)
        wrapped += "%%";
    OwnedPrint text(OV_instStrPrint("%5s|%s", "ab", "c")); /* padding is zero bytes, and kept */
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(memcmp(text.get(), "ab\0\0\0|c", 8), 0);
    text.reset(s_fpUnchecked(wrapped.c_str()));
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(text.get(), percents.substr(500));
    EXPECT_LT(malloc_usable_size(text.get()), 1U << 20);
    text.reset(s_fpUnchecked((wrapped + "%502s").c_str(), "x")); /* counts 503 of 1002 bytes */
    EXPECT_EQ(text.get(), percents.substr(500) + "x");
}

TEST(StrPrint, ReportsWhatTheUsualBufferCouldNotHold)
{
    const std::string twice = "Possible memory corruption\nPossible memory corruption\n";
    const auto reported = [](const char *pFormat, auto number) {
        return told([&] { OwnedPrint text(s_fpUnchecked(pFormat, number)); });
    };
    for (const char *pFormat : {"%.21d", "%25.26d", "%9c"})
        EXPECT_EQ(reported(pFormat, 1), "") << pFormat;
    EXPECT_EQ(reported("%.22d", 1), twice); /* once in each pass */
    EXPECT_EQ(reported("%.13f", 1e16), ""); /* 31 characters */
    EXPECT_EQ(reported("%.14f", 1e16), twice);
}

TEST(StrPrint, FailsOnWhatCannotBeRendered)
{
    for (const char *pFormat :
         {"%99999999999d", "%.99999999999f", "%99999999999s",
          "%1000000000000000000000000000000000000000000000c", "%.1111111111111111111111111d"})
        EXPECT_EQ(s_fpUnchecked(pFormat, 1.0, "x"), nullptr) << pFormat;
    EXPECT_EQ(OV_instStrPrint(nullptr), nullptr);
}
