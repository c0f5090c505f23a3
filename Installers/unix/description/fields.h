/* The arguments of a description line, read one after the other into a record. Each routine moves
 * the cursor behind what it read and gives 0, or -1 when the line is to be rejected; what it has
 * stored by then belongs to the record. */
#ifndef OVINST_DESCRIPTION_FIELDS_H
#define OVINST_DESCRIPTION_FIELDS_H

#include <cstdint>
#include <initializer_list>

/* Quoted strings; a missing one is empty, an unterminated one an error, which is told. readText
 * gives the string itself, or null. */
char *readText(const char **ppText);
int readTexts(const char **ppText, std::initializer_list<char **> appTargets);

/* Numbers, cut to 32 bits; a missing one is 0, one that strtol finds out of range an error,
 * which is told. */
int readNumbers(const char **ppText, std::initializer_list<int32_t *> apTargets);

/* A weight: nothing counts for less than 1. Its place is noted where the record keeps it. */
int readUnits(const char **ppText, int64_t *plUnits, bool bNoted = false);

#endif
