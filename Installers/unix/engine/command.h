/* One program with its arguments, run through the shell, that ends with the run: the kernel kills
 * it when the process that started it dies, also while that one is stopped. */
#ifndef OVINST_ENGINE_COMMAND_H
#define OVINST_ENGINE_COMMAND_H

#include <sys/types.h>

struct OV_Confinement;

struct OV_Command {
    const char *pText; /* a program, its arguments and where its output goes; no list or pipe */
    int iInput;        /* becomes the standard input; -1 keeps the starter's */
    int iOutput;       /* likewise the standard output */
    const OV_Confinement *pConfinement; /* where it works and may write, or null */
};

/* Starts it. The descriptors stay the caller's and had better be close-on-exec. The process, or -1
 * with errno set. */
pid_t OV_instStartCommand(const OV_Command *pCommand);

/* Waits for its end: 0 or the exit status, 128 and the signal for one that was killed; -1 when it
 * cannot be waited for. */
int OV_instEndOfCommand(pid_t iCommand);

#endif
