/* The start-up of a run: the environment and the options. */
#ifndef OVINST_ENGINE_STARTUP_H
#define OVINST_ENGINE_STARTUP_H

/* Gives every command that is started a fixed search path, no library path and none of the
 * variables that would mislead it, sees to it that the standard streams are open, and reads the
 * debugging variables. */
void OV_instPrepareEnvironment();

/* Processes the options. Returns for the graphical mode only, with the description's path and the
 * default destination as new strings; an unattended run is carried out from here. Ends the process
 * with status 1 for a wrong option, with the run's status for an unattended run. */
void OV_instProcessArgs(int argc, char **argv, char **ppDescription, char **ppDestination);

#endif
