/* What ovmedium says: results on the standard output that it was started with, everything else,
 * also what the layers below print, on standard error. */
#ifndef OVMEDIUM_OUTPUT_H
#define OVMEDIUM_OUTPUT_H

#include <cstdio>
#include <string>

#include <nlohmann/json_fwd.hpp>

/* Parts the two: to be called before anything is printed. */
void OV_mediumOpenOutput();

/* The stream of the results. */
FILE *OV_mediumOut();

/* A line of the results, in which control characters are shown as escapes ("\n", "\x1b"). */
void OV_mediumPrint(const char *pFormat, ...) __attribute__((format(printf, 1, 2)));

/* A line on standard error, "ovmedium: " before it: why something cannot be done. */
void OV_mediumTell(const char *pFormat, ...) __attribute__((format(printf, 1, 2)));

/* An answer as one object, with its "tool" and "command"; what is no UTF-8 becomes U+FFFD. */
void OV_mediumPrintJson(const char *pCommand, const nlohmann::ordered_json &answer);

/* Shows on a terminal how far long work is: pWhat is null when it is over. Cheap to call often. */
void OV_mediumShowProgress(const char *pWhat, size_t iDone, size_t iTotal);

/* Whether all results were written; closes the stream. What was not is told. */
bool OV_mediumCloseOutput();

/* A text with its control characters as escapes. */
std::string OV_mediumShown(const std::string &text);

#endif
