/* What is wrong with a description, and where its words stand, told while it is read.
 *
 * Whoever reads has a sink for the faults. Setup's own, the default, prints what setup has to say
 * and stops at the first: a routine that has told a fault returns its failure. A sink that collects
 * is told everything, positions too, and reading goes on behind a fault as far as it can. */
#ifndef OVINST_DESCRIPTION_FAULTS_H
#define OVINST_DESCRIPTION_FAULTS_H

#include <cstdint>
#include <cstdio>

#include "description/model.h"
#include "description/scanner.h"

enum OV_FaultCode {
    OV_FAULT_UNREADABLE,     /* the file, to its end; subject: the reason */
    OV_FAULT_MARK,           /* a byte order mark before the first line */
    OV_FAULT_HEADER_KEY,     /* subject: the key that should stand here */
    OV_FAULT_HEADER_VERSION, /* subject: the version that is none */
    OV_FAULT_HEADER_LONG,    /* subject: the key whose value does not fit */
    OV_FAULT_KEYWORD,        /* none, or a reserved one; subject: the word */
    OV_FAULT_NO_SECTION,     /* a configuration outside of a section */
    OV_FAULT_NO_PACKAGE,     /* an operation before the first package; subject: its keyword */
    OV_FAULT_TEXT,           /* no closing quote; subject: what stands behind the opening one */
    OV_FAULT_NUMBER,         /* out of range, or hexadecimal; subject: the number */
    OV_FAULT_MEMBERS,        /* a tar line whose text or number was told is refused for it */
    OV_FAULT_MEMBER_PART,    /* a member without a name, or (subject: its name) without a size */
    OV_FAULT_PACKAGE,        /* subject: the name that no package has */
    OV_FAULT_SUITE,          /* subject: the name that no suite has */
    OV_FAULT_ICON,           /* no comma; subject: the icon's text */
    OV_FAULT_CONFIG_OUTSIDE, /* a keyword that does not belong in a section; subject: it */
    OV_FAULT_CONFIG_NUMBER,  /* a configuration without one */
    OV_FAULT_CONFIG_KIND,    /* of no known kind; subject: the word, or empty */
    OV_FAULT_CHILD_ORDER,    /* a member's number that is not greater than its list's */
    OV_FAULT_MANY_MEMBERS,   /* one more than there is room for */
    OV_FAULT_COUNT
};

struct OV_Fault {
    OV_FaultCode code;
    bool bRejects;        /* setup does not take the line for it */
    const char *pAt;      /* in the logical line, where the word begins; null for the whole line */
    const char *pSubject; /* as long as the fault is told */
    const char *pText;    /* the logical line, where setup prints it */
    int32_t iNumber;      /* of a member, and of its list */
    int32_t iOwnNumber;
    int iLine; /* physical, from 1, and the byte in it; 1 for the whole line */
    int iColumn;
};

/* What a sink that collects is told; the context is its own. */
struct OV_ReadingSink {
    void (*fault)(void *pContext, const OV_Fault *pFault);

    /* Where what was read stands: a text is known by its own address, a number and a reference by
     * the record's member, a package of a suite by its node, and the record itself
     * stands where its line does. pAt is the word in the logical line.
     */
    void (*note)(void *pContext, const void *pWhat, const char *pAt, int iLine, int iColumn);

    /* A word that is no keyword: the position of the one that was meant, or -1. */
    int (*guess)(void *pContext, const char *pWord, const char *const *apKeywords);

    /* A line of the body was handled; iResult is -1 for one that was refused. */
    void (*line)(void *pContext, const char *pLine, int iResult, _OV_instCDinst *pRoot);

    void *pContext;
};

/* The sink of the process; null for setup's own. Setting one begins a new file. */
extern const OV_ReadingSink *OV_instReadingSink;
void OV_instSetReadingSink(const OV_ReadingSink *pSink);

/* ---- for the units that read ---- */

/* OV_instGetline that remembers where the line stands, for a sink that wants to know. The next
 * physical line has to be told when the file is moved back, and a byte order mark when it was
 * passed. */
char *OV_instReadLine(FILE *pFile, int *piLine);
int OV_instNextLine();
void OV_instSetNextLine(int iLine);
void OV_instPassMark(int iBytes);

/* The place of pAt, which is in the line that was read last; of its beginning for null. */
void OV_instLinePlace(const char *pAt, int *piLine, int *piColumn);

/* Tells a fault. The first fills in its place and always gives -1, the second is for what the
 * others need no more than this. */
int OV_instTellFault(OV_Fault fault);
int OV_instFault(OV_FaultCode code, const char *pAt, const char *pSubject);

/* Tells that pWhat stands at pAt (null: at the line's beginning), or where the last one did. These
 * and the next two cost setup, which wants no places, no more than a look at the sink. */
void OV_instTellPlace(const void *pWhat, const char *pAt);
void OV_instTellPlaceAgain(const void *pWhat);

inline void OV_instNoteAt(const void *pWhat, const char *pAt)
{
    if (OV_instReadingSink)
        OV_instTellPlace(pWhat, pAt);
}

inline void OV_instNoteAgain(const void *pWhat)
{
    if (OV_instReadingSink)
        OV_instTellPlaceAgain(pWhat);
}

/* Notes the text that was read from pStart on, unless there was none and the cursor stayed. */
inline void OV_instNoteText(const char *pText, const char *pStart, const char *pCursor)
{
    if (OV_instReadingSink && pCursor != pStart)
        OV_instTellPlace(pText, OV_instFindQuote(pStart));
}

/* Likewise the number that the record has in pWhat (null: not noted); one that is not what was
 * written, being hexadecimal or (bCut) cut to 32 bits, is told. */
void OV_instTellNumber(const void *pWhat, const char *pStart, int64_t lValue, bool bCut);

inline void OV_instNoteNumber(const void *pWhat, const char *pStart, int64_t lValue, bool bCut)
{
    if (OV_instReadingSink)
        OV_instTellNumber(pWhat, pStart, lValue, bCut);
}

/* -1 with the reason told: there is no closing quote behind pStart, or the number is too large. */
int OV_instRefuseText(const char *pStart);
int OV_instRefuseNumber(const char *pStart);

/* What the word may have meant, by the sink; -1 where there is none. */
int OV_instGuess(const char *pWord, const char *const *apKeywords);

#endif
