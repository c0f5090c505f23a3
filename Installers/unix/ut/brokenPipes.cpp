#include "ut/brokenPipes.h"

#include <csignal>
#include <initializer_list>

/* A handler, unlike "ignore", does not survive exec. */
static void failedWrite(int) {}

void OV_instCatchBrokenPipes()
{
    struct sigaction action = {};

    action.sa_handler = failedWrite;
    action.sa_flags = SA_RESTART;
    for (int iSignal : {SIGPIPE, SIGXFSZ})
        (void)sigaction(iSignal, &action, nullptr); /* fails for bad arguments only */
}
