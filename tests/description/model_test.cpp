#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <dlfcn.h>

#include "description/describe.h"

static _OV_InstSuiteList *addSuite(const Model &model, const char *pName)
{
    _OV_InstSuiteList *pSuite = newSuite(model.get());
    pSuite->pName = strdup(pName);
    return pSuite;
}

static _OV_InstPackage *addPackage(const Model &model, const char *pName)
{
    _OV_InstPackage *pPackage = newPackage(model.get());
    pPackage->pName = strdup(pName);
    return pPackage;
}

TEST(LookUp, GivesTheFirstInFileOrderAndNullForTheRest)
{
    Model model(newCDinst());
    _OV_InstSuiteList *pSuite = addSuite(model, "Base");
    _OV_InstPackage *pPackage = addPackage(model, "core");
    _OV_InstConfigList *pConfig = newConfig(model.get(), 3, OV_CONFIG_CUSDLG);
    addSuite(model, "Base");
    addPackage(model, "core");
    newConfig(model.get(), 3, OV_CONFIG_SUITE);

    EXPECT_EQ(pSuite, OV_instGetSuiteFromName(model.get(), "Base"));
    EXPECT_EQ(pPackage, OV_instGetPackageFromName(model.get(), "core"));
    EXPECT_EQ(pConfig, OV_instGetConfigFromId(model.get(), 3));
    EXPECT_EQ(nullptr, OV_instGetSuiteFromName(model.get(), "base"));
    EXPECT_EQ(nullptr, OV_instGetPackageFromName(model.get(), ""));
    EXPECT_EQ(nullptr, OV_instGetConfigFromId(model.get(), 4));
    EXPECT_EQ(nullptr, OV_instGetSuiteFromName(model.get(), nullptr));
    EXPECT_EQ(nullptr, OV_instGetPackageFromName(nullptr, "core"));
    EXPECT_EQ(nullptr, OV_instGetConfigFromId(nullptr, 3));
}

TEST(LookUp, SeesWhatWasAppendedBehindIt)
{
    Model model(newCDinst());
    EXPECT_EQ(nullptr, OV_instGetPackageFromName(model.get(), "late"));
    _OV_InstPackage *pUnnamed = newPackage(model.get());
    EXPECT_EQ(nullptr, OV_instGetPackageFromName(model.get(), "late"));
    addPackage(model, "late");
    pUnnamed->pName = strdup("late"); /* named last, yet first in the file */
    EXPECT_EQ(pUnnamed, OV_instGetPackageFromName(model.get(), "late"));

    newConfig(model.get(), 1, OV_CONFIG_MAINDLG);
    EXPECT_EQ(nullptr, OV_instGetConfigFromId(model.get(), 9));
    auto *pByHand = static_cast<_OV_InstConfigList *>(calloc(1, sizeof(_OV_InstConfigList)));
    pByHand->iId = 9;
    model->pConfigHead->pNext = pByHand;
    EXPECT_EQ(pByHand, OV_instGetConfigFromId(model.get(), 9));
    EXPECT_EQ(newConfig(model.get(), 10, OV_CONFIG_SUITE), pByHand->pNext);
}

TEST(MarkInstalled, ReachesEveryPackageOfTheName)
{
    Model model(newCDinst());
    _OV_InstPackage *apPackages[] = {addPackage(model, "a"), addPackage(model, "b"),
                                     addPackage(model, "a"), addPackage(model, "c"),
                                     addPackage(model, "a")};
    OV_instMarkPackageInstalled(model.get(), "unknown");
    OV_instMarkPackageInstalled(model.get(), "a");
    std::string marks;
    for (const _OV_InstPackage *pPackage : apPackages)
        marks += std::to_string(pPackage->iInstalled);
    EXPECT_EQ("10101", marks);
}

TEST(NewConfig, FindsTheGroupThatGoverns)
{
    /* The kinds in file order (M, C or S), and each one's parent by its position; 0 for none. */
    const char *const aaRows[][2] = {
        {"MSS", "011"},       {"CC", "01"},         {"MCSS", "0112"},
        {"MCCSCS", "011233"}, {"MCMSCC", "011222"}, {"CSSCS", "01111"},
    };
    for (const auto &apRow : aaRows) {
        Model model(newCDinst());
        std::string parents;
        for (int i = 0; apRow[0][i]; i++) {
            const int iType = static_cast<int>(std::string("MCS").find(apRow[0][i]));
            _OV_InstConfigList *pConfig = newConfig(model.get(), i + 1, iType);
            parents += std::to_string(pConfig->pParent ? pConfig->pParent->iId : 0);
        }
        EXPECT_EQ(apRow[1], parents) << apRow[0];
    }
}

TEST(AddPackageToSuite, TellsOfANullSuiteOnly)
{
    Model model(newCDinst());
    testing::internal::CaptureStderr();
    OV_instAddPackage2Suite(addSuite(model, "s"), nullptr);
    EXPECT_EQ(nullptr, model->pSuiteHead->pPackHead);
    OV_instAddPackage2Suite(nullptr, addPackage(model, "p"));
    EXPECT_EQ("Error: adding package to suite\n", testing::internal::GetCapturedStderr());
}

TEST(Free, ClosesTheModuleOfAFunction)
{
    const char caModule[] = TEST_MODULE_DIR "/goodModule.so";
    Model model(newCDinst());
    ASSERT_EQ(0, addLines(model, {"Package \"p\"", "Function \"f\" \"goodModule.so\""}));
    void *hModule = dlopen(caModule, RTLD_LAZY);
    ASSERT_NE(nullptr, hModule);
    model->pPackageHead->pPackage->pOperHead->body.function.hModule = hModule;
    model.reset();
    EXPECT_EQ(nullptr, dlopen(caModule, RTLD_LAZY | RTLD_NOLOAD));
}

/* Mostly for the leak check: bodies that are empty, and kinds that have none. */
TEST(Free, AcceptsNullAndPartlyFilledRecords)
{
    OV_instFreeOper(nullptr);
    OV_instFreePackage(nullptr);
    OV_instFreeSuite(nullptr);
    OV_instFreeConfig(nullptr);
    OV_instFreeCDinst(nullptr);
    char caNotOwned[] = "not on the heap";
    for (int iType = -1; iType <= OV_OPER_COUNT; iType++) {
        auto *pOper = static_cast<_OV_InstOper *>(calloc(1, sizeof(_OV_InstOper)));
        pOper->iType = iType;
        if (iType < 0 || iType == OV_OPER_COUNT)
            pOper->body.copy.pSource = caNotOwned;
        OV_instFreeOper(pOper);
    }
    Model model(newCDinst());
    newConfig(model.get(), 1, OV_CONFIG_MAINDLG);
    for (int iType = 0; iType < OV_CONFIG_COUNT; iType++) {
        _OV_InstConfigList *pConfig = newConfig(model.get(), iType + 2, iType);
        EXPECT_TRUE(newConfigData(pConfig) && newIcon(pConfig));
    }
    model->pHistoryFile = strdup("history");
    int iMost = -1;
    EXPECT_EQ(nullptr, OV_instGetConfigChildren(model->pConfigHead, &iMost));
    EXPECT_EQ(0, iMost);
}
