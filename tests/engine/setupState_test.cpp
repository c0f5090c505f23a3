#include <gtest/gtest.h>

#include "engine/engineTest.h"
#include "ut/OVinstFileUtils.h"

struct SetupState : EngineTest {
};

/* Root destination and product directory; root, product's and common destination, which needs a
 * product directory although it does not use it. "-" is none. */
TEST_F(SetupState, DestinationsNeedARootAndMostlyAProduct)
{
    const auto places = [](const std::string &words) {
        const size_t blank = words.find(' ');
        const std::string product = words.substr(blank + 1);
        std::string all;
        free(CDInstPtr->pInstallDir);
        free(CDInstPtr->pProductDirectory);
        CDInstPtr->pInstallDir = strdup(words[0] == '-' ? "" : words.substr(0, blank).c_str());
        CDInstPtr->pProductDirectory = product == "-" ? nullptr : strdup(product.c_str());
        for (auto *get : {OV_instGetRootDestinationDirectory, OV_instGetDestinationDirectory,
                          OV_instGetCommonDestinationDirectory})
            all += std::string(get() ? get() : "-") + " ";
        return trimmed(all);
    };
    load("");
    expectRows(places, "//a///b p//q => /a/b/ /a/b/p/q/ /a/b/Orvane/\n/a - => /a/ - -\n"
                       "- p => - - -\n" +
                           std::string(OV_INST_PATH_SIZE - 1, 'x') + " p => - - -");
}

TEST_F(SetupState, NamesAreNeverNull)
{
    load("HistoryFile his tory\n");
    EXPECT_STREQ(".his tory.his", OV_instGetHistoryFile());
    load("");
    EXPECT_STREQ(".Product.his", OV_instGetHistoryFile());
    free(CDInstPtr->pProductName);
    CDInstPtr->pProductName = nullptr;
    EXPECT_STREQ("..his", OV_instGetHistoryFile());
    EXPECT_STREQ("", OV_instGetProductName());
}

TEST_F(SetupState, SourceIsResolvedOrTheRunningDirectory)
{
    EXPECT_EQ(nullptr, OV_instGetSourceDirectory());
    load("");
    fs::create_symlink(m_medium, full("@/link"));
    EXPECT_EQ(full("@/link"), OV_instSetSourceDirectory(full("@/link").c_str()));
    EXPECT_EQ(full("@/medium"), OV_instGetSourceDirectory());
    fs::current_path(m_scratch.path);
    EXPECT_EQ(full("@/medium"), OV_instSetSourceDirectory("./link")) << "relative: resolved";
    EXPECT_EQ(-1, OV_instSetRunningDirectory(std::string(OV_INST_PATH_SIZE, 'x').c_str()));
    EXPECT_EQ(0, OV_instSetRunningDirectory("/running/"));
    (void)OV_instSetSourceDirectory("/nowhere//at/all");
    EXPECT_STREQ("/running/", OV_instGetSourceDirectory());
    EXPECT_EXIT((void)OV_instSetSourceDirectory("nowhere"), testing::ExitedWithCode(1),
                "^Internal error \\(realpath\\) while setting source directory\n$");
    EXPECT_EXIT((void)OV_instSetSourceDirectory(""), testing::ExitedWithCode(1),
                "^Internal error \\(input\\) while setting source directory\n$");
}
