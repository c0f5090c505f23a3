#include "engine/command.h"

#include <cerrno>
#include <csignal>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "engine/confined.h"
#include "ut/owned.h"
#include "ut/strprint.h"

static bool connect(int iFd, int iStandard)
{
    return iFd < 0 || dup2(iFd, iStandard) >= 0;
}

/* The shell becomes the program, or the signal of its starter's death would end the shell alone. */
[[noreturn]] static void run(const OV_Command *pCommand, const char *pShellText, pid_t iStarter)
{
    (void)prctl(PR_SET_PDEATHSIG, SIGKILL); /* fails for a bad signal only */
    if (getppid() == iStarter && connect(pCommand->iInput, STDIN_FILENO) &&
        connect(pCommand->iOutput, STDOUT_FILENO) &&
        (!pCommand->pConfinement || OV_instEnterConfinement(pCommand->pConfinement)))
        (void)execl("/bin/sh", "sh", "-c", pShellText, static_cast<char *>(nullptr));
    _exit(127);
}

pid_t OV_instStartCommand(const OV_Command *pCommand)
{
    OwnedText shellText(OV_instStrPrint("exec %s", pCommand->pText));
    const pid_t iStarter = getpid();

    if (!shellText) {
        errno = ENOMEM;
        return -1;
    }
    const pid_t iProcess = fork();
    if (iProcess == 0)
        run(pCommand, shellText.get(), iStarter);
    return iProcess;
}

int OV_instEndOfCommand(pid_t iCommand)
{
    int iStatus = 0;
    pid_t iEnded;

    do {
        iEnded = waitpid(iCommand, &iStatus, 0);
    } while (iEnded < 0 && errno == EINTR);
    if (iEnded < 0)
        return -1;
    return WIFSIGNALED(iStatus) ? 128 + WTERMSIG(iStatus) : WEXITSTATUS(iStatus);
}
