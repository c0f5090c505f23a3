/* Writes that nobody takes: the signals that they raise. */
#ifndef OVINST_UT_BROKENPIPES_H
#define OVINST_UT_BROKENPIPES_H

/* From now on a write into a pipe that nobody reads, or past the limit of a file's size, fails
 * instead of ending the process. Commands that are started afterwards have the default actions
 * back. */
void OV_instCatchBrokenPipes();

#endif
