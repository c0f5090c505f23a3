/* The process-wide debug level: 0, or 1 when OVINST_DEBUG_MODE was set at start-up. */
#ifndef OVINST_UT_DEBUGLEVEL_H
#define OVINST_UT_DEBUGLEVEL_H

int OV_instGetDebugLevel();
void OV_instSetDebugLevel(int iLevel);

#endif
