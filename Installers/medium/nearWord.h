/* Words that were probably meant for others. */
#ifndef OVMEDIUM_NEARWORD_H
#define OVMEDIUM_NEARWORD_H

/* The position of the keyword that pWord is a misspelling of, in a null-terminated list; -1 where
 * none is near, or several are. */
int OV_mediumNearWord(const char *pWord, const char *const *apKeywords);

#endif
