#include "description/faults.h"

#include <algorithm>
#include <string>

#include "description/scanner.h"
#include "ut/OVinstFileUtils.h"
#include "ut/owned.h"

const OV_ReadingSink *OV_instReadingSink = nullptr;

/* The line that was read last, for a sink that collects. */
static struct {
    const char *pLine;
    OV_LineParts parts;
    int iMark; /* bytes before the first line */
    int iNotedLine;
    int iNotedColumn;
} s_line;

/* ---- setup's own sink ---- */

/* What is printed besides the text or the numbers of a fault. */
enum Printed { SILENT, PLAIN, SUBJECT, LINE, NUMBERS };

/* In the order of OV_FaultCode. Header keys are told by the routine that reads them. */
static const struct {
    OV_FaultCode code;
    Printed printed;
    const char *pText;
} s_aPrinted[] = {
    {OV_FAULT_UNREADABLE,     SILENT,  ""                                             },
    {OV_FAULT_MARK,           SILENT,  ""                                             },
    {OV_FAULT_HEADER_KEY,     SILENT,  ""                                             },
    {OV_FAULT_HEADER_VERSION, SILENT,  ""                                             },
    {OV_FAULT_HEADER_LONG,    SILENT,  ""                                             },
    {OV_FAULT_KEYWORD,        SILENT,  ""                                             },
    {OV_FAULT_NO_SECTION,     SILENT,  ""                                             },
    {OV_FAULT_NO_PACKAGE,     SILENT,  ""                                             },
    {OV_FAULT_TEXT,           SILENT,  ""                                             },
    {OV_FAULT_NUMBER,         SILENT,  ""                                             },
    {OV_FAULT_MEMBERS,        PLAIN,   "Error: invalid tar line\n"                    },
    {OV_FAULT_MEMBER_PART,    SILENT,  ""                                             },
    {OV_FAULT_PACKAGE,        SUBJECT, "Error: there is no package named '%s'\n"      },
    {OV_FAULT_SUITE,          SUBJECT, "Error: invalid suite name '%s'\n"             },
    {OV_FAULT_ICON,           SILENT,  ""                                             },
    {OV_FAULT_CONFIG_OUTSIDE, LINE,    "Error: invalid configuration line: %s\n"      },
    {OV_FAULT_CONFIG_NUMBER,  SILENT,  ""                                             },
    {OV_FAULT_CONFIG_KIND,    LINE,    "Error: invalid configuration line: %s\n"      },
    {OV_FAULT_CHILD_ORDER,    NUMBERS, "Error: config id %d must be greater than %d\n"},
    {OV_FAULT_MANY_MEMBERS,   SILENT,  ""                                             },
};
static_assert(sizeof(s_aPrinted) / sizeof(*s_aPrinted) == OV_FAULT_COUNT, "a row for every code");

static void printFault(const OV_Fault *pFault)
{
    const char *pText = s_aPrinted[pFault->code].pText;

    switch (s_aPrinted[pFault->code].printed) {
    case SILENT:
        break;
    case PLAIN:
        (void)fputs(pText, stderr); /* nobody could be told */
        break;
    case SUBJECT:
        fprintf(stderr, pText, pFault->pSubject);
        break;
    case LINE:
        fprintf(stderr, pText, pFault->pText);
        break;
    case NUMBERS:
        fprintf(stderr, pText, pFault->iNumber, pFault->iOwnNumber);
        break;
    }
}

/* ---- the line ---- */

void OV_instSetReadingSink(const OV_ReadingSink *pSink)
{
    OV_instReadingSink = pSink;
    s_line = {};
}

char *OV_instReadLine(FILE *pFile, int *piLine)
{
    if (!OV_instReadingSink)
        return OV_instGetline(pFile, piLine);
    char *pLine = OV_instGetlineParts(pFile, piLine, &s_line.parts);
    s_line.pLine = pLine;
    return pLine;
}

int OV_instNextLine()
{
    return s_line.parts.iNextLine;
}

void OV_instSetNextLine(int iLine)
{
    s_line.parts.iNextLine = iLine;
    s_line.parts.iNextColumn = 1;
}

void OV_instPassMark(int iBytes)
{
    s_line.iMark = iBytes;
}

void OV_instLinePlace(const char *pAt, int *piLine, int *piColumn)
{
    const std::vector<OV_LinePart> &parts = s_line.parts.parts;
    const size_t iOffset = pAt ? static_cast<size_t>(pAt - s_line.pLine) : 0;

    *piLine = s_line.parts.iNextLine; /* where a line would stand that is not there */
    *piColumn = 1;
    if (parts.empty())
        return;
    const auto behind = std::upper_bound(
        parts.begin() + 1, parts.end(), iOffset,
        [](size_t iWanted, const OV_LinePart &part) { return iWanted < part.iOffset; });
    const OV_LinePart &part = *(behind - 1);
    *piLine = part.iLine;
    if (!pAt)
        return;
    *piColumn = part.iColumn + static_cast<int>(iOffset - part.iOffset);
    if (*piLine == 1)
        *piColumn += s_line.iMark;
}

/* ---- faults ---- */

int OV_instTellFault(OV_Fault fault)
{
    if (!OV_instReadingSink) {
        printFault(&fault);
        return -1;
    }
    OV_instLinePlace(fault.pAt, &fault.iLine, &fault.iColumn);
    if (fault.code == OV_FAULT_HEADER_VERSION || fault.code == OV_FAULT_HEADER_LONG)
        fault.iColumn = s_line.iNotedColumn; /* the value's */
    OV_instReadingSink->fault(OV_instReadingSink->pContext, &fault);
    return -1;
}

int OV_instFault(OV_FaultCode code, const char *pAt, const char *pSubject)
{
    OV_Fault fault = {};

    fault.code = code;
    fault.bRejects = true;
    fault.pAt = pAt;
    fault.pSubject = pSubject;
    return OV_instTellFault(fault);
}

int OV_instRefuseText(const char *pStart)
{
    const char *pQuote = OV_instReadingSink ? OV_instFindQuote(pStart) : nullptr;

    return OV_instFault(OV_FAULT_TEXT, pQuote, pQuote ? pQuote + 1 : "");
}

static std::string digitsAt(const char *pNumber)
{
    const char *pEnd = nullptr;
    OwnedText word(getToken(pNumber, nullptr, &pEnd, 1));

    return word ? word.get() : "";
}

int OV_instRefuseNumber(const char *pStart)
{
    if (!OV_instReadingSink)
        return OV_instFault(OV_FAULT_NUMBER, nullptr, "");
    const char *pNumber = OV_instFindDigit(pStart);
    return OV_instFault(OV_FAULT_NUMBER, pNumber, digitsAt(pNumber).c_str());
}

int OV_instGuess(const char *pWord, const char *const *apKeywords)
{
    if (!OV_instReadingSink)
        return -1;
    return OV_instReadingSink->guess(OV_instReadingSink->pContext, pWord, apKeywords);
}

/* ---- places ---- */

void OV_instTellPlace(const void *pWhat, const char *pAt)
{
    OV_instLinePlace(pAt, &s_line.iNotedLine, &s_line.iNotedColumn);
    OV_instReadingSink->note(OV_instReadingSink->pContext, pWhat, pAt ? pAt : "", s_line.iNotedLine,
                             s_line.iNotedColumn);
}

void OV_instTellPlaceAgain(const void *pWhat)
{
    OV_instReadingSink->note(OV_instReadingSink->pContext, pWhat, "", s_line.iNotedLine,
                             s_line.iNotedColumn);
}

void OV_instTellNumber(const void *pWhat, const char *pStart, int64_t lValue, bool bCut)
{
    const char *pNumber = OV_instFindDigit(pStart);

    if (!*pNumber)
        return;
    if (pWhat)
        OV_instTellPlace(pWhat, pNumber);
    const bool bHexadecimal = *pNumber == '0' && (pNumber[1] == 'x' || pNumber[1] == 'X');
    if (!bHexadecimal && !(bCut && lValue > INT32_MAX))
        return;
    OV_Fault fault = {};
    const std::string number = digitsAt(pNumber);
    fault.code = OV_FAULT_NUMBER;
    fault.pAt = pNumber;
    fault.pSubject = number.c_str();
    (void)OV_instTellFault(fault); /* setup takes the line */
}
