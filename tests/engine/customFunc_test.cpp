#include <gtest/gtest.h>

#include "engine/customFunc.h"
#include "engine/engineTest.h"

struct CustomFunc : EngineTest {
    _OV_CustomData m_data = {};

    void SetUp() override
    {
        EngineTest::SetUp();
        load("Package 'p' ''\nFunction 'tellAll' 'engineModule.so' ''\n"
             "Function 'tellAll' 'engineModule.so' ''\n");
        m_data.pFrom = m_medium.c_str();
        m_data.fpUpdate = m_pipe.pStream;
        m_data.ovPass = OV_CUSTOM_PRE;
    }
    int call(_OV_InstOper *pOper) { return OV_instCustomFunction(pOper, &m_data, m_pipe.pStream); }
};

TEST_F(CustomFunc, FailuresAreTold)
{
    const auto run = [this](std::string names) {
        const size_t bar = names.find('|');
        _OV_InstOper oper = {};
        names[bar] = '\0';
        oper.body.function.pFunction = &names[0];
        oper.body.function.pModule = &names[bar + 1];
        EXPECT_EQ(OV_INST_EXIT_SETUP, call(&oper));
        EXPECT_FALSE(oper.body.function.hModule || oper.body.function.pAddress);
        return records();
    };
    expectRows(run, R"(
        |engineModule.so      => -1 Custom Function invalid parameters\n
        tellAll|              => -1 Custom Function invalid parameters\n
        tellAll|no.so         => -1 Error: loading module no.so\n
        tellAll|bareModule.so => -1 Error: function initModule not found in Module bareModule.so\n
        no|engineModule.so    => init 1 model\n
                                 -1 Error: function no not found in Module engineModule.so\n)");
}

TEST_F(CustomFunc, ModuleIsLoadedOnceAndInitialisedBeforeEveryCall)
{
    _OV_InstOper *pOper = package("p")->pOperHead;
    const std::string call1 = "pass 2 mode 0: null|null|null|M/|null|null|null|0|no shell\n";
    ASSERT_EQ(0, OV_instInitLogfile(full("@/log").c_str()));
    EXPECT_EQ(0, call(pOper->pNext));
    EXPECT_EQ(0, call(pOper));
    fs::remove(m_medium + "SetupFiles");
    EXPECT_EQ(0, call(pOper)) << "loaded already";
    EXPECT_EQ("init 1 model\n" + call1 + "init 2 model\n" + call1 + "init 3 model\n" + call1,
              records());
    m_data.pData = "fail";
    EXPECT_EQ(7, call(pOper)) << "the function's own result";
    EXPECT_EQ("told in pass 2\ntold in pass 2\ntold in pass 2\ntold in pass 2\n", got("@/log"));
    EXPECT_EQ(nullptr, m_data.fpLog) << "closed";
    EXPECT_TRUE(InModuleList(full("M/SetupFiles/engineModule.so").c_str()));
}
