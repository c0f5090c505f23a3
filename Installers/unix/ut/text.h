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

#endif
