/* The lexical routines that take a description line apart. Each takes the text at a cursor and
 * hands back where it stopped through ppCursor, which may be the address of the pointer that was
 * passed as text; a cursor that is "not moved" is not written. No routine keeps state. */
#ifndef OVINST_DESCRIPTION_SCANNER_H
#define OVINST_DESCRIPTION_SCANNER_H

#include <cstddef>
#include <cstdint>
#include <cstdio>

enum { OV_HEADER_SIZE = 512 };

/* Tells on standard error that memory is short. */
void tellNoMemory();

/* True for a null, empty or blank line and for one whose first non-blank character is "#". */
bool isWhiteOrCommentLine(const char *pLine);

/* The next quote that no backslash makes literal, or null. */
const char *OV_instFindQuote(const char *pText);

/* The next word, or number; the end of the text where there is none. */
const char *OV_instFindWord(const char *pText);
const char *OV_instFindDigit(const char *pText);

/* True when pWord is in the null-terminated list; false for a null word, true for a null or empty
 * list. Nothing calls it today. */
bool checkToken(const char *pWord, const char *const *apKeywords, int bCaseSensitive);

/* The next run of letters, digits, "-" and "_", whatever stands before it being skipped. Null at
 * the end of the text, for a word that is not in apKeywords (the cursor then stands behind it), or
 * without memory. The caller frees the result. */
char *getToken(const char *pText, const char *const *apKeywords, const char **ppCursor,
               int bCaseSensitive);

/* All tokens up to the first that getToken refuses, in a null-terminated array; null only without
 * memory. Free it with freeTokenList, which accepts null. */
char **getTokenList(const char *pText, const char *const *apKeywords, int bCaseSensitive);
void freeTokenList(char **apTokens);

/* The text of the next quoted string, backslash-n turned into a newline and every other escape
 * kept. A new empty string, the cursor not moved, when no quote opens; null, the cursor not moved,
 * when it is not closed. The caller frees the result. */
char *getQuotedString(const char *pText, const char **ppCursor);

/* The next number (strtol, base 0, from the next digit on); 0 when there is none. The cursor moves
 * past the decimal digits only. scanInteger is the same but returns -1 when the number is out of
 * strtol's range, else 0 with the value in *plValue. Nothing calls the former today. */
int64_t getInteger(const char *pText, const char **ppCursor);
int scanInteger(const char *pText, const char **ppCursor, int64_t *plValue);

/* Reads the next logical line. 1 with its value (blanks around it removed) in pValue when its
 * first word is pKey; else 0 with the file position restored but not the line count, and with
 * bVerbose a message on standard error (not at the end of the file). Both buffers hold
 * OV_HEADER_SIZE bytes. pWord gets the line's first word, cut to fit, or becomes empty when there
 * is none: with result 0 it equals pKey exactly when the value did not fit. */
int OV_ReadHeaderLine(const char *pKey, char *pWord, char *pValue, FILE *pFile, int *piLine,
                      int bVerbose);

#endif
