/* The unattended run: everything of the medium's third configuration, without asking. */
#ifndef OVINST_ENGINE_UNATTENDED_H
#define OVINST_ENGINE_UNATTENDED_H

/* Reads the description and installs what it offers below pDestination. The status that the program
 * is to end with: 0, or 1 with the reason told on standard error. */
int OV_instRunUnattended(const char *pDescription, const char *pDestination);

#endif
