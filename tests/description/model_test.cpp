#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

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
    pPackage->pName = pName ? strdup(pName) : nullptr;
    return pPackage;
}

TEST(Keywords, AreExactAndStandAtTheirKindsPosition)
{
    EXPECT_EQ(OV_OPER_UNTARZ2, getOperType("UntarZ2"));
    EXPECT_EQ(OV_OPER_SELFREG, getOperType("SelfReg"));
    EXPECT_EQ(nullptr, OVInstOperTkList[OV_OPER_COUNT]);
    EXPECT_EQ(OV_CONFIG_SUITE, getConfigType("Suite"));
    for (const char *pWord : {"copy", "Copy2", "", static_cast<const char *>(nullptr)}) {
        EXPECT_EQ(-1, getOperType(pWord)) << shown(pWord);
        EXPECT_EQ(-1, getConfigType(pWord)) << shown(pWord);
    }
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
    _OV_InstPackage *pUnnamed = addPackage(model, nullptr);
    _OV_InstPackage *pLate = addPackage(model, "late");
    EXPECT_EQ(pLate, OV_instGetPackageFromName(model.get(), "late"));
    pUnnamed->pName = strdup("late"); /* named later, yet first in the file */
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
                                     addPackage(model, "a"), addPackage(model, nullptr),
                                     addPackage(model, "a")};
    OV_instMarkPackageInstalled(model.get(), "unknown");
    OV_instMarkPackageInstalled(model.get(), "a");
    std::string marks;
    for (const _OV_InstPackage *pPackage : apPackages)
        marks += std::to_string(pPackage->iInstalled);
    EXPECT_EQ("10101", marks);
}

/* The rule as it is told, walked from the head for every configuration. */
static _OV_InstConfigList *parentByWalking(_OV_InstConfigList *pHead)
{
    _OV_InstConfigList *pParent = pHead;
    for (_OV_InstConfigList *pConfig = pHead; pConfig && pConfig->pNext; pConfig = pConfig->pNext) {
        if (pConfig->iType == OV_CONFIG_CUSDLG)
            pParent = pConfig;
    }
    return pParent;
}

TEST(NewConfig, FindsTheParentThatTheWalkFinds)
{
    for (unsigned int iPattern = 0; iPattern < 6561; iPattern++) { /* 8 configurations, 3 kinds */
        Model model(newCDinst());
        unsigned int iLeft = iPattern;
        for (int iId = 1; iId <= 8; iId++, iLeft /= 3) {
            _OV_InstConfigList *pExpected = parentByWalking(model->pConfigHead);
            _OV_InstConfigList *pConfig = newConfig(model.get(), iId, static_cast<int>(iLeft % 3));
            ASSERT_EQ(pExpected, pConfig->pParent) << iPattern << " at " << iId;
        }
    }
}

TEST(NewOper, BelongsToTheLastPackage)
{
    Model model(newCDinst());
    EXPECT_EQ(nullptr, newOper(model.get()));
    _OV_InstPackage *pFirst = addPackage(model, "a");
    _OV_InstPackage *pLast = addPackage(model, "b");
    _OV_InstOper *pOper = newOper(model.get());
    EXPECT_EQ(pOper, pLast->pOperHead);
    EXPECT_EQ(newOper(model.get()), pOper->pNext);
    EXPECT_EQ(nullptr, pFirst->pOperHead);
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
    for (int iType = 0; iType < OV_CONFIG_COUNT; iType++)
        newConfig(model.get(), iType + 1, iType);
    model->pHistoryFile = strdup("history");
    int iMost = -1;
    EXPECT_EQ(nullptr, OV_instGetConfigChildren(model->pConfigHead, &iMost));
    EXPECT_EQ(0, iMost);
}
