#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "engine/supervised.h"
#include "support.h"

TEST(Supervised, IsSystemToItsCaller)
{
    for (const char *pCommand : {"exit 3", "kill -9 $$", "no-such-command 2> /dev/null", "true",
                                 "trap 'exit 5' INT; kill -INT $$", "(sleep 0.2; exit 1) & exit 0"})
        EXPECT_EQ(system(pCommand), OV_instRunSupervised(pCommand)) << pCommand;
    struct sigaction before = {}, after = {};
    sigset_t mask;
    sigaction(SIGINT, nullptr, &before);
    (void)OV_instRunSupervised("kill -INT $PPID; kill -QUIT $PPID"); /* the supervisor */
    sigaction(SIGINT, nullptr, &after);
    sigprocmask(SIG_SETMASK, nullptr, &mask);
    EXPECT_EQ(before.sa_handler, after.sa_handler);
    EXPECT_EQ(0, sigismember(&mask, SIGCHLD));
    EXPECT_EQ(-1, waitpid(-1, nullptr, WNOHANG)) << "nothing is left to be waited for";
}

/* The states, as letters, of the processes whose working directory it is. */
static std::string statesIn(const std::string &directory)
{
    std::string states;

    for (const auto &entry : fs::directory_iterator("/proc")) {
        std::error_code gone;
        if (fs::read_symlink(entry.path() / "cwd", gone) != directory)
            continue;
        const std::string stat = readFile(entry.path() / "stat");
        const size_t iName = stat.rfind(')');
        if (iName != stat.npos)
            states += stat[iName + 2];
    }
    return states;
}

template <typename Condition> static bool inTwoSeconds(Condition condition)
{
    for (int i = 0; i < 200 && !condition(); i++)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return condition();
}

/* As with dialogs, where the installing process leads a group that is stopped for a question. */
TEST(Supervised, IsStoppedAndEndedWithTheGroup)
{
    Scratch scratch;

    for (const bool bWholeGroup : {true, false}) {
        const std::string begun = scratch / "begun";
        const pid_t iRun = fork();
        if (iRun == 0) {
            setpgid(0, 0);
            if (chdir(scratch.path.c_str()) == 0)
                (void)OV_instRunSupervised(
                    "(sleep 60 &) ; setsid sleep 60 & touch begun; sleep 60");
            _exit(0);
        }
        EXPECT_TRUE(inTwoSeconds([&] { return fs::exists(begun); }));
        EXPECT_TRUE(inTwoSeconds([&] { return statesIn(scratch.path).size() == 6; }));
        kill(-iRun, SIGSTOP); /* all but the supervisor and what left the session */
        EXPECT_TRUE(inTwoSeconds([&] {
            const std::string states = statesIn(scratch.path);
            const auto running = std::count(states.begin(), states.end(), 'S');
            return running == 1 || running == 2; /* setsid may be stopped before its work */
        })) << statesIn(scratch.path);
        kill(bWholeGroup ? -iRun : iRun, SIGKILL);
        waitpid(iRun, nullptr, 0);
        EXPECT_TRUE(inTwoSeconds([&] { return statesIn(scratch.path).empty(); }))
            << statesIn(scratch.path);
        fs::remove(begun);
    }
}
