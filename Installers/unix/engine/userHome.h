/* Where the users' own directories lie: the home directory, or another place that was chosen. No
 * button reaches it today: only carrying over preferences and the account's dialog ask for it. */
#ifndef OVINST_ENGINE_USERHOME_H
#define OVINST_ENGINE_USERHOME_H

/* Remembers a copy of pPath (null: forgets) as the place below which users have their directories.
 */
void SetDefaultUserHome(const char *pPath);

/* The user's own directory: $HOME, or PLACE/$USER when another place was chosen. From then on $HOME
 * counts as chosen. The result is not the caller's and lasts until the next call or choice; null
 * without $HOME and a choice. */
const char *GetDefaultUserHome();

/* The same with its last variable unexpanded, for files that a shell reads later: "$HOME" or
 * "PLACE/$USER". A static buffer of its own. */
const char *GetDefaultUserHomeWithEnvVar();

#endif
