/* The application's environment file in a user's home. No button reaches it today: only the dialog
 * of the user's account calls it. */
#ifndef OVINST_ENGINE_ENVIRONMENTFILE_H
#define OVINST_ENGINE_ENVIRONMENTFILE_H

#include <sys/types.h>

/* Copies the environment file of the installation directory into a home. What is planted there is
 * not followed; a file of the name keeps its owner and mode. */
void copy_orvane_file(const char *pHome, const char *pDestination, uid_t uid, gid_t gid);

/* Makes a new environment file for that user in the home. */
void create_orvane_file(const char *pHome, const char *pDestination, uid_t uid, gid_t gid);

#endif
