#include <gtest/gtest.h>

#include <cctype>
#include <unistd.h>
#include <vector>

#include "description/describe.h"
#include "description/reader.h"
#include "support.h"

static const char s_caHeader[] = "SetupVersion 1\nProductName Orvane KIVO\nProductVersion 3.5\n"
                                 "ProductDirectory kivo\nLogFile setup.log\n";

/* What an example may refer to. */
static const char s_caBody[] = "Package \"core\" \"\"\nPackage \"manual\" \"\"\n"
                               "Package \"samples\" \"\"\nPackage \"services\" \"\"\n"
                               "Suite \"Program\" core\nSuite \"Manual\" manual\n"
                               "Suite \"Samples\" samples\nSuite \"Everything\" core manual\n";

/* An example of the reference, and what the reader is said to tell about it. */
struct Example {
    std::string text;
    std::string told;
    bool bRefused;
    int iLine;
};

/* The fences' contents, in the order of the page. */
static std::vector<Example> examples()
{
    std::istringstream page(readFile(SETUP_SOURCE_DIR "/docs/description.md"));
    std::vector<Example> found;
    std::string line, fence;

    for (int iLine = 1; std::getline(page, line); iLine++) {
        const bool bFence = line.compare(0, 3, "```") == 0;
        if (bFence && line.compare(0, 9, "```cdinst") == 0)
            found.push_back({"", "", line == "```cdinst-refused", iLine});
        if (bFence)
            fence = fence.empty() ? line : "";
        else if (fence.compare(0, 9, "```cdinst") == 0)
            found.back().text += line + "\n";
        else if (fence == "```told")
            found.back().told += line;
    }
    return found;
}

/* A whole description around an example that is none itself. */
static std::string described(const std::string &text)
{
    if (text.compare(0, 12, "SetupVersion") == 0)
        return text;
    if (isdigit(static_cast<unsigned char>(text[0])))
        return std::string(s_caHeader) + s_caBody + "ConfigBegin\n" + text + "ConfigEnd\n";
    return std::string(s_caHeader) + s_caBody + text;
}

TEST(Examples, AreReadAsTheReferenceSays)
{
    Scratch scratch;
    const std::string path = scratch / "cdinst.dat";
    ASSERT_EQ(0, symlink(SETUP_BUILD_DIR "/demo", (scratch / "SetupFiles").c_str()));

    for (const Example &example : examples()) {
        OV_instParsingConfiguration = 0;
        writeFile(path, described(example.text));
        std::string out;
        const std::string all =
            told([&] {
                out = printed([&] {
                    EXPECT_EQ(example.bRefused, !Model(OV_instReadCDinst(path.c_str(), nullptr)))
                        << "line " << example.iLine;
                });
            }) +
            out;
        EXPECT_EQ(example.told.empty(), all.empty()) << "line " << example.iLine << "\n" << all;
        EXPECT_NE(std::string::npos, all.find(example.told)) << example.iLine << all;
    }
    OV_instParsingConfiguration = 0;
}
