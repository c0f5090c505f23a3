/* What is asked of many a text. */
#ifndef OVINST_UT_TEXT_H
#define OVINST_UT_TEXT_H

#include <string>

/* Whether there is anything in pText, which may be null. */
inline bool OV_instIsText(const char *pText)
{
    return pText && pText[0];
}

/* The text without the white space around it. */
std::string OV_instTrimmed(const std::string &text);

/* The text with a question mark for each character that is none of the locale's, and for each zero
 * byte: the toolkit refuses a text whole for a single byte of that kind, or ends it there. */
std::string OV_instDisplayable(const std::string &text);

#endif
