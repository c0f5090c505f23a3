/* What a run has to say beside its records: the lines of the log that explain what was passed over,
 * and whether anything was. Parent and child share it, so that the parent knows what the child
 * noted. A line end within a line becomes "?". */
#ifndef OVINST_ENGINE_RUNREPORT_H
#define OVINST_ENGINE_RUNREPORT_H

/* Forgets what an earlier run noted, but not what was warned of before the first: what the start
 * would not believe, every run is made without. Called before the fork; without it, or where no
 * memory can be shared, each process has a report of its own. */
void OV_instBeginReport();

/* Writes a line into the log, "Warning: " and the text, and notes that there was one. */
void OV_instWarn(const char *pFormat, ...) __attribute__((format(printf, 1, 2)));

/* From now on what is refused for want of trust (ut/trust.h) is such a warning, or, where no log is
 * open yet, a line on standard error. */
void OV_instWarnOfRefusals();

/* Writes a line into the log for a file of the medium that is left out: the prompt's text and the
 * file. The step that needed it fails, and notes that itself. */
void OV_instLogSkipped(const char *pPrompt, const char *pFile);

/* Notes that a step failed, whether or not it counts for the run's status. What was being done
 * belongs to the package whose operation is under way. */
void OV_instNoteFailedStep();

/* Notes that the run's last record was read, after which it leaves the rest alone, and whether its
 * passes had failed. */
void OV_instNoteRunEnd(bool bFailed);

/* How many steps failed so far, and whether there was a warning. */
unsigned OV_instFailedSteps();
bool OV_instWasWarned();

/* Whether the run came to its end without a failure and without a warning. */
bool OV_instRunEndedWell();

#endif
