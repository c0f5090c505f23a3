#include <gtest/gtest.h>

#include "engine/engineTest.h"
#include "engine/registry.h"

/* A stand-in for the registry tool writes down how it was called: where, with what in its
 * environment, and its arguments. */
struct Registry : EngineTest {
    void install(const std::string &dest)
    {
        const std::string tool = dest + "Application/mainwin/mw/bin-amd64_linux/mwperl",
                          script = "#!/bin/sh\n{ printf '<%s>' \"$PWD\" \"$OV_HOME\" \"$MWHOME\""
                                   " \"$MWREGISTRY\" \"$OV_COMMONDIR\" \"$@\"; echo; } >> '";
        put(tool, script + full("@/calls'\n[ ! -e '@/fail' ]\n"));
        fs::permissions(full(tool), fs::perms::owner_all);
        setenv("DISPLAY", "", 1); /* set but empty counts */
        fs::current_path(m_scratch.path);
    }
    /* The one call since the last time, without what belongs to every call. */
    std::string called(const std::string &dest, const std::string &common = "")
    {
        const std::string text = got("@/calls"), home = dest + "Application/mainwin/mw",
                          place = "<" + dest.substr(0, dest.size() - 1) + "><" + dest + "><" +
                                  home + "><" + dest + "Application/registry><" + common + "><" +
                                  home + "/scripts/mwgeneric.pl><Application/";
        fs::remove(full("@/calls"));
        return replaced(text, place, "");
    }
    int regData(const std::string &dest, const char *pValue)
    {
        return OV_instRegData(full(dest).c_str(), "H r", "k $n", "k\"v", pValue, m_pipe.pStream);
    }
    int selfReg(const std::string &dest, const char *pModule, int iPass)
    {
        return OV_instSelfReg("# dest/", full(dest).c_str(), pModule, m_pipe.pStream, iPass);
    }
    void expectNothingWasRun()
    {
        for (const auto &entry : fs::recursive_directory_iterator(m_scratch.path))
            EXPECT_FALSE(entry.path().filename() == "evil") << entry.path();
    }
};

/* Destinations that the shell would take apart, or run. */
static const char *const s_apDests[] = {"@/it's b\\a (;&|)/",
                                        "@/a\"$HOME$(touch evil)`touch evil`/"};

/* Escapes that are meant for the shell reach it; a "%" takes the next character with it. */
TEST_F(Registry, ValueReachesTheToolAsWritten)
{
    for (const std::string dest : s_apDests) {
        const auto value = [&](const std::string &text) {
            const std::string start =
                "mainwin/mw/bin-linux_optimized/regkey><-r><H r><k $n><k\"v><";
            EXPECT_EQ(0, regData(dest, text.c_str()));
            return replaced(replaced(called(dest), start, ""), ">\n", "");
        };
        install(dest);
        expectRows(value, replaced(R"(
            %d/bin:%d        => DEST/bin:DEST
            a\"b \$x         => a"b $x
            a"b $HOME `id`   => a"b $HOME `id`
            $(touch evil)    => $(touch evil)
            c:\dir\          => c:\dir\
            100%% %x-%       => 100 -
            %$(touch evil)   => (touch evil)
            %`touch evil`    => touch evil`
                             =>)",
                                   "DEST", dest));
    }
    EXPECT_EQ("", records());
    expectNothingWasRun();
}

TEST_F(Registry, ModulesAreRegisteredTogetherAndOnce)
{
    for (const std::string dest : s_apDests)
        inChild([&] {
            install(dest);
            put("@/fail", ""); /* the status is not examined */
            for (int iPass : {0, 1, 2, 5, 6})
                EXPECT_EQ(0, selfReg(dest, "never", iPass));
            EXPECT_EQ(0, selfReg(dest, "a.so", OV_CUSTOM_INIT));
            EXPECT_EQ(0, selfReg(dest, "lib/b $c.so", OV_CUSTOM_INIT));
            EXPECT_EQ("", got("@/calls"));
            for (int iPass : {OV_CUSTOM_REGISTRY, OV_CUSTOM_INIT, OV_CUSTOM_REGISTRY})
                EXPECT_EQ(0, selfReg(dest, "lib/b $c.so", iPass));
            EXPECT_EQ("bin/cmdreg><" + dest + "a.so><" + dest + "lib/b $c.so>\n",
                      called(dest, "# dest/") + records());
        });
    expectNothingWasRun();
}
