/* One run at a time in a destination: a lock on its "SetupFiles" directory, held by both processes
 * of a run. */
#ifndef OVINST_ENGINE_RUNLOCK_H
#define OVINST_ENGINE_RUNLOCK_H

/* Takes the lock for this process and those that it forks, making the directory with bMake. False
 * when another run holds it. Where it cannot be had for another reason (no such directory, a file
 * system without locks) the run goes on without: true. */
bool OV_instLockRun(const char *pDest, bool bMake);

/* Gives the lock up, also for processes that a module has left behind. */
void OV_instUnlockRun();

/* Whether another run holds the lock at this moment. */
bool OV_instIsRunLocked(const char *pDest);

/* Tells the user that it does. */
void OV_instTellRunLocked(const char *pDest);

#endif
