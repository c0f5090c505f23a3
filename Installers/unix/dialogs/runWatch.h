/* The run as the toolkit's loop sees it: the pipe that its records come through, and the installing
 * child that may be stopped, continued and ended. */
#ifndef OVINST_DIALOGS_RUNWATCH_H
#define OVINST_DIALOGS_RUNWATCH_H

#include <X11/Intrinsic.h>
#include <sys/types.h>

/* From now on fpRead is called whenever iFd can be read, and fpDied when the child is gone although
 * nothing is left to be read. The pipe's end is not told here: reading finds it. */
void OV_instWatchRun(Widget shell, int iFd, pid_t iChild, XtInputCallbackProc fpRead,
                     void (*fpDied)());

/* No record is read from now on. */
void OV_instUnwatchRun();

/* While the user is asked whether to go on: the child and the commands that it runs stand still,
 * and no record is read, not even one that is in the pipe already. */
void OV_instPauseRun(pid_t iChild);
void OV_instResumeRun(pid_t iChild);

/* Ends the child and the commands that it runs. */
void OV_instKillRun(pid_t iChild);

#endif
