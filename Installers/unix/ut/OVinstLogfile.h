/* The setup log: appended to record by record, opened and closed for each, so that the installing
 * process and the one that shows progress share it without coordination. */
#ifndef OVINST_UT_OVINSTLOGFILE_H
#define OVINST_UT_OVINSTLOGFILE_H

#include <cstdio>

/* The log's path; empty means that there is no log and nothing is written. */
extern char g_caLogName[4097];

/* Remembers the path (even when it cannot be opened) and creates the file if need be.
 * Returns 0, or -1 for a null, empty or overlong path or a file that cannot be opened. */
int OV_instInitLogfile(const char *pPath);

/* The same, and writes the time-stamped header of a run. */
int OV_instInitLogfileAndTimeStamp(const char *pPath);

/* Writes the last line of a run. Whoever reads the run's records does so at the last of them, so
 * that it stands behind whatever they have put into the log. */
void OV_instLogEnd(bool bFailed);

/* The log opened for appending, for the caller to close; null when there is no log or it cannot
 * be opened (told on standard error). */
FILE *OV_instOpenLogfile();

/* Appends one record, written exactly as formatted. Returns 0, also when the log cannot be
 * opened, or -1 for a null format. Text from outside goes through "%s\n". */
int OV_instUpdateLogfile(const char *pFormat, ...) __attribute__((format(printf, 1, 2)));

#endif
