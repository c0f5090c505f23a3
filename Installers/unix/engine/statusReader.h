/* The reading side of an unattended run: a status line, and errors as they come. */
#ifndef OVINST_ENGINE_STATUSREADER_H
#define OVINST_ENGINE_STATUSREADER_H

#include <cstdint>
#include <sys/types.h>

/* Handles one record: adds its count to the status and prints that, or tells the error on standard
 * error; both also log what belongs in the log. The status is printed but not flushed. A null line
 * with a total of 0 starts anew. */
void OV_instProcessUpdate(const char *pLine, uint64_t ulTotal);

/* Handles records until the pipe's end. Everything that has arrived is handled before waiting
 * again, so that the status is never late. A child that ends before its completion marker is told
 * on standard error and in the log. Whether the child has already been waited for. */
bool OV_instReadRecords(int iFd, uint64_t ulTotal, pid_t iChild);

#endif
