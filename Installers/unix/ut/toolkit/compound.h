/* The notation that dialog texts are written in, taken apart; what is drawn from the pieces is
 * made by bxutils. A text that starts with none of #, " and : is one piece, taken literally. Any
 * other text is a row of segments, each of them, in this order and all but the last optional,
 *
 *   #tag           the rendition to draw it with
 *   :t :f          a line break follows it, or none; also written :T :1 and :F :0
 *   :r :l          it runs from right to left, or left to right; also behind :t or :f
 *   "text"         with \" for a quote, \\ for a backslash, and \n \t \r \f \v
 *
 * so that :::t"First line""and more" gives two lines. No routine here needs a display. */
#ifndef OVINST_TOOLKIT_COMPOUND_H
#define OVINST_TOOLKIT_COMPOUND_H

#include <cwchar>

/* One segment. Its texts live until the next call of extractSegment. */
struct OV_TextSegment {
    const wchar_t *pTag;  /* as written, escapes included; empty for none */
    const wchar_t *pText; /* escapes resolved */
    bool bSeparator;      /* a line break follows */
    bool bRightToLeft;
};

/* Whether the text is written in segments at all. Null is not. */
bool OV_instIsCompoundText(const char *pText);

/* The text in wide characters, and back. A byte that begins no character of the locale survives
 * the way there and back. The caller frees with XtFree; null for null. */
wchar_t *OV_instWidenText(const char *pText);
char *OV_instNarrowText(const wchar_t *pText);

/* Reads the segment at *ppNext and moves *ppNext behind it. Returns 1, or 0 at the text's end. */
int extractSegment(const wchar_t **ppNext, OV_TextSegment *pSegment);

/* The next #, " or : that no backslash makes ordinary, or the text's end. */
const wchar_t *getNextSeparator(const wchar_t *pText);

/* Lists of texts: the number of items, 0 for a null or empty list. Items are separated by commas
 * and newlines outside double quotes that no backslash makes ordinary. */
int getCStrCount(const char *pText);

/* The delimiter that ends the item at pText, or the text's end. */
const char *getNextCStrDelim(const char *pText);

#endif
