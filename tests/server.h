/* A display of a test's own: a server without a screen of metal, on a number that it chooses. */
#ifndef OVINST_TESTS_SERVER_H
#define OVINST_TESTS_SERVER_H

#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/prctl.h>
#include <unistd.h>

/* Starts it; it ends with this process at the latest. Its display's name goes into *pName. */
inline pid_t startServer(const std::string &screen, const char *pDpi, std::string *pName)
{
    int aEnds[2];
    char caNumber[16] = "";

    if (pipe(aEnds) < 0)
        abort();
    const std::string descriptor = std::to_string(aEnds[1]);
    const pid_t iServer = fork();
    if (iServer == 0) {
        (void)prctl(PR_SET_PDEATHSIG, SIGTERM);
        (void)dup2(open("/dev/null", O_RDWR | O_CLOEXEC), STDERR_FILENO);
        execlp("Xvfb", "Xvfb", "-displayfd", descriptor.c_str(), "-screen", "0", screen.c_str(),
               "-dpi", pDpi, "-nolisten", "tcp", nullptr);
        _exit(127);
    }
    close(aEnds[1]);
    if (read(aEnds[0], caNumber, sizeof caNumber - 1) > 0) /* told on the descriptor */
        *pName = ":" + std::to_string(atoi(caNumber));
    close(aEnds[0]);
    return iServer;
}

#endif
