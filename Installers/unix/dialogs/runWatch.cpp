#include "dialogs/runWatch.h"

#include <csignal>
#include <poll.h>
#include <sys/wait.h>

enum { WATCH_MSEC = 1000 };

static struct {
    XtAppContext app;
    int iFd;
    pid_t iChild;
    XtInputCallbackProc fpRead;
    void (*fpDied)();
    XtInputId input;    /* 0 while the pipe is not read */
    XtIntervalId timer; /* looks after the child while the pipe is read */
} s_watch;

/* A process that the child left behind may keep the pipe open for ever. */
static void lookAfterChild(XtPointer, XtIntervalId *)
{
    siginfo_t info = {};
    struct pollfd pipeEnd = {s_watch.iFd, POLLIN, 0};

    if (waitid(P_PID, static_cast<id_t>(s_watch.iChild), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
        info.si_pid && poll(&pipeEnd, 1, 0) == 0)
        s_watch.fpDied();
    s_watch.timer = XtAppAddTimeOut(s_watch.app, WATCH_MSEC, lookAfterChild, nullptr);
}

static void listen()
{
    if (s_watch.input)
        return;
    s_watch.input =
        XtAppAddInput(s_watch.app, s_watch.iFd, reinterpret_cast<XtPointer>(XtInputReadMask),
                      s_watch.fpRead, nullptr);
    s_watch.timer = XtAppAddTimeOut(s_watch.app, WATCH_MSEC, lookAfterChild, nullptr);
}

void OV_instWatchRun(Widget shell, int iFd, pid_t iChild, XtInputCallbackProc fpRead,
                     void (*fpDied)())
{
    s_watch = {XtWidgetToApplicationContext(shell), iFd, iChild, fpRead, fpDied, 0, 0};
    listen();
}

void OV_instUnwatchRun()
{
    if (!s_watch.input)
        return;
    XtRemoveInput(s_watch.input);
    XtRemoveTimeOut(s_watch.timer);
    s_watch.input = 0;
}

static void signalRun(pid_t iChild, int iSignal)
{
    if (iChild > 0 && kill(-iChild, iSignal) < 0)
        (void)kill(iChild, iSignal); /* it leads no group (yet), or is gone */
}

void OV_instPauseRun(pid_t iChild)
{
    OV_instUnwatchRun();
    signalRun(iChild, SIGSTOP);
}

void OV_instResumeRun(pid_t iChild)
{
    signalRun(iChild, SIGCONT);
    if (s_watch.app) /* somebody reads the run */
        listen();
}

void OV_instKillRun(pid_t iChild)
{
    signalRun(iChild, SIGKILL);
}
