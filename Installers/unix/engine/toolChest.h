/* The window manager's tool chest: text files that get a line of the product's. */
#ifndef OVINST_ENGINE_TOOLCHEST_H
#define OVINST_ENGINE_TOOLCHEST_H

/* Makes ".auxchestrc" in pHome (null: $HOME) include the ".title" menu of pTitleDirectory (null:
 * $OV_LOCATION), once. 0, or 1 with the reason on standard error. */
int OV_instAddSinclude(const char *pHome, const char *pTitleDirectory);

#endif
