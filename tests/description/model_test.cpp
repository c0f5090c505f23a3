#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <dlfcn.h>

#include "description/describe.h"

TEST(LookUp, GivesTheFirstInFileOrderAndFollowsTheList)
{
    Model model(newCDinst());
    EXPECT_EQ(nullptr, OV_instGetPackageFromName(model.get(), "late"));
    _OV_InstPackage *pUnnamed = newPackage(model.get());
    EXPECT_EQ(nullptr, OV_instGetPackageFromName(model.get(), "late"));
    ASSERT_EQ(0, addLines(model, {"Package \"late\" \"\"", "Suite \"Base\"", "Suite \"Base\""}));
    pUnnamed->pName = strdup("late"); /* named last, yet first in the file */
    EXPECT_EQ(pUnnamed, OV_instGetPackageFromName(model.get(), "late"));
    EXPECT_EQ(model->pSuiteHead, OV_instGetSuiteFromName(model.get(), "Base"));
    EXPECT_EQ(nullptr, OV_instGetSuiteFromName(model.get(), "base"));
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

TEST(Free, ClosesTheModuleOfAFunction)
{
    const char caModule[] = TEST_MODULE_DIR "/engineModule.so";
    Model model(newCDinst());
    ASSERT_EQ(0, addLines(model, {"Package \"p\"", "Function \"f\" \"engineModule.so\""}));
    void *hModule = dlopen(caModule, RTLD_LAZY);
    ASSERT_NE(nullptr, hModule);
    model->pPackageHead->pPackage->pOperHead->body.function.hModule = hModule;
    model.reset();
    EXPECT_EQ(nullptr, dlopen(caModule, RTLD_LAZY | RTLD_NOLOAD));
}
