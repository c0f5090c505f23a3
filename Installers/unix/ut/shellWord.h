/* Texts that become part of a shell command. What consists of ordinary characters goes into the
 * command as it stands; anything else is passed so that the shell sees one word and runs nothing.
 */
#ifndef OVINST_UT_SHELLWORD_H
#define OVINST_UT_SHELLWORD_H

/* pText as one unquoted word: itself when it is not empty and holds only letters, digits and
 * "@%_+=:,./-" (and does not begin with "~"), else in single quotes. A new string, or null. */
char *OV_instShellWord(const char *pText);

/* pText for use between double quotes that the command already holds. The escapes that the
 * description's texts carry for the shell (\\ \" \$ \`) are left to it; a bare quote, dollar or
 * backquote is escaped, and so is a backslash that could join with what follows the text (at its
 * end, before a newline, before a "%" that is still to be expanded). A new string, or null. */
char *OV_instShellQuotedText(const char *pText);

/* The same for a text to be taken literally, such as a path: every backslash is escaped too. */
char *OV_instShellQuotedPath(const char *pPath);

#endif
