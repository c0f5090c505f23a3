#include <gtest/gtest.h>

#include "engine/engineTest.h"
#include "ut/OVinstFileUtils.h"

struct SetupState : EngineTest {
};

static void replace(char **ppText, const char *pText)
{
    free(*ppText);
    *ppText = pText ? strdup(pText) : nullptr;
}

/* Root destination and product directory; root, product's and common destination. */
TEST_F(SetupState, DestinationsNeedARootAndMostlyAProduct)
{
    const std::string tooLong(OV_INST_PATH_SIZE - 1, 'x');
    load("");
    const auto row = [](const std::string &words) {
        std::string root, product, all;
        std::istringstream(words) >> root >> product;
        replace(&CDInstPtr->pInstallDir, root == "null" ? "" : root.c_str());
        replace(&CDInstPtr->pProductDirectory, product.c_str());
        for (const char *(*get)() :
             {OV_instGetRootDestinationDirectory, OV_instGetDestinationDirectory,
              OV_instGetCommonDestinationDirectory})
            all += std::string(" ") + (get() ? get() : "null");
        return trimmed(all);
    };
    expectRows("//a///b p//q => /a/b/ /a/b/p/q/ /a/b/Orvane/\n/a/ p/ => /a/ /a/p/ /a/Orvane/\n"
               "null p => null null null\n" +
                   tooLong + " p => null null null",
               row);
    replace(&CDInstPtr->pInstallDir, "/a");
    replace(&CDInstPtr->pProductDirectory, nullptr);
    EXPECT_STREQ("/a/", OV_instGetRootDestinationDirectory());
    EXPECT_EQ(nullptr, OV_instGetDestinationDirectory());
    EXPECT_EQ(nullptr, OV_instGetCommonDestinationDirectory()) << "though not used: meant so";
}

TEST_F(SetupState, NamesAreNeverNull)
{
    load("HistoryFile his tory\n");
    EXPECT_STREQ(".his tory.his", OV_instGetHistoryFile());
    replace(&CDInstPtr->pHistoryFile, nullptr);
    EXPECT_STREQ(".Product.his", OV_instGetHistoryFile());
    replace(&CDInstPtr->pProductName, nullptr);
    EXPECT_STREQ("..his", OV_instGetHistoryFile());
    EXPECT_STREQ("", OV_instGetProductName());
    EXPECT_STREQ("", GetProductVersion(nullptr));
}

TEST_F(SetupState, SourceIsResolvedOrTheRunningDirectory)
{
    EXPECT_EQ(nullptr, OV_instGetSourceDirectory());
    load("");
    fs::create_symlink(m_medium, full("@/link"));
    EXPECT_EQ(m_scratch / "link", OV_instSetSourceDirectory((m_scratch / "link").c_str()));
    EXPECT_EQ(m_scratch / "medium", OV_instGetSourceDirectory());
    fs::current_path(m_scratch.path);
    EXPECT_EQ(m_scratch / "medium", OV_instSetSourceDirectory("./link")) << "relative: resolved";
    EXPECT_EQ(-1, OV_instSetRunningDirectory(std::string(OV_INST_PATH_SIZE, 'x').c_str()));
    EXPECT_EQ(0, OV_instSetRunningDirectory("/running/"));
    (void)OV_instSetSourceDirectory("/nowhere//at/all");
    EXPECT_STREQ("/running/", OV_instGetSourceDirectory());

    EXPECT_EXIT((void)OV_instSetSourceDirectory("nowhere"), testing::ExitedWithCode(1),
                "^Internal error \\(realpath\\) while setting source directory\n$");
    EXPECT_EXIT((void)OV_instSetSourceDirectory(""), testing::ExitedWithCode(1),
                "^Internal error \\(input\\) while setting source directory\n$");
}
