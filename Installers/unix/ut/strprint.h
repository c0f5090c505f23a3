/* The formatter behind every message, title, path and command that setup composes. It knows a
 * fixed subset of printf's conversions (d i o u x X e E f g G c s %), reads every integer as a
 * 32-bit int, and drops any other directive without taking an argument. */
#ifndef OVINST_UT_STRPRINT_H
#define OVINST_UT_STRPRINT_H

#include <cstdarg>
#include <cstdio>
#include <memory>
#include <regex.h>

/* A result under construction. */
struct DynString {
    unsigned int len; /* what the counting pass counted; see get_len_or_allocate */
    char *str;        /* null until the writing pass; owned by whoever receives it */
};

enum StrOper { LENGTH = 0, ALLOC = 1 };

/* One pass over the format. LENGTH counts into pString->len by uneven rules (a %s counts one more
 * than it writes, a %% or a lone trailing % two less), by which callers notice the formats that
 * come to nothing; ALLOC writes into pString->str, which holds as many bytes as are really written
 * whatever len says. Expects a LENGTH pass before ALLOC; with len 0 ALLOC hands out a static empty
 * string.
 * Returns 0, or 1 for a null string or format, an unknown pass, a directive that cannot be
 * rendered, or no memory. args is consumed. */
int get_len_or_allocate(va_list args, const char *pFormat, DynString *pString, StrOper oper);

/* Copies the text of one sub-match into pDest, which has room for it and a terminating zero; empty
 * when the group took no part. */
void copy_reg_match(char *pDest, const char *pSource, const regmatch_t *pMatch);

/* The text, for the caller to free, or null for a null format or any failure. What counts to
 * nothing (an empty format, but also "%d%%" of a single digit) gives a static empty string that
 * must not be freed; where the format can come to that, OwnedPrint below holds the result. */
char *OV_instVStrprint(const char *pFormat, va_list args) __attribute__((format(printf, 1, 0)));
char *OV_instStrPrint(const char *pFormat, ...) __attribute__((format(printf, 1, 2)));

/* The owner of a result of whatever format: frees it unless it is the static empty string. */
struct PrintedFreed {
    void operator()(char *pText) const;
};
using OwnedPrint = std::unique_ptr<char, PrintedFreed>;

/* Nothing calls OV_instStrConcat and OV_instStrPopen today, OV_instStrSystem only the dialog of the
 * user's account. */

/* Appends the strings up to the terminating null to pBase (heap or null), which is reallocated.
 * Returns the enlarged string for the caller to free, or null when memory is short; pBase is then
 * still the caller's. */
char *OV_instStrConcat(char *pBase, ...);

/* Formats a command and hands it to popen or system. OV_instStrPopen returns the stream, to be
 * closed with pclose, or null; OV_instStrSystem returns system's status, or 1 when the command
 * could not be formatted. */
FILE *OV_instStrPopen(const char *pFormat, const char *pMode, ...)
    __attribute__((format(printf, 1, 3)));
int OV_instStrSystem(const char *pFormat, ...) __attribute__((format(printf, 1, 2)));

#endif
