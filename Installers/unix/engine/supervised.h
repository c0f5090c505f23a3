/* Commands that may start any number of processes, which are to end with the run. */
#ifndef OVINST_ENGINE_SUPERVISED_H
#define OVINST_ENGINE_SUPERVISED_H

/* system(): the same shell, signals and status. But when the calling process dies, whatever the
 * command has started dies too, also what has left the shell or the process group behind. What a
 * command leaves running when it ends is let alone. */
int OV_instRunSupervised(const char *pCommand);

#endif
