/* What the reader has told, and what stands in lines that it reads otherwise than they look. */
#include "medium/checkParts.h"

/* In the order of OV_Oddity. */
static const struct {
    const char *pCode;
    const char *pText;
} s_aOddities[] = {
    {"line-ends",              "lines end in carriage returns, which become part of names"     },
    {"blank-behind-backslash", "the line is not continued: a blank stands behind the backslash"},
    {"quote-in-word",          "only double quotes around the whole of a text make it one: "   },
};

static void tellOddities(OV_Check *pCheck)
{
    for (const OV_ReadOddity &oddity : pCheck->reading.oddities) {
        std::string message = s_aOddities[oddity.kind].pText;
        if (oddity.kind == OV_ODD_QUOTE)
            message += oddity.subject;
        OV_checkTell(pCheck, s_aOddities[oddity.kind].pCode, {oddity.iLine, oddity.iColumn},
                     message, oddity.subject);
    }
}

static std::string subjectOf(const OV_ReadFault *pFault)
{
    if (pFault->code == OV_FAULT_HEADER_VERSION)
        return "SetupVersion";
    if (pFault->code == OV_FAULT_CHILD_ORDER || pFault->code == OV_FAULT_MANY_MEMBERS)
        return std::to_string(pFault->iNumber);
    return pFault->subject;
}

static void tellSections(OV_Check *pCheck)
{
    if (!pCheck->reading.bSections)
        OV_checkTell(pCheck, "section-missing", {},
                     "there are no configurations: no line is ConfigBegin", "ConfigBegin");
    else if (pCheck->reading.bSectionOpen)
        OV_checkTell(pCheck, "section-missing", {}, "no ConfigEnd ends the configurations",
                     "ConfigEnd");
}

void OV_checkReading(OV_Check *pCheck)
{
    for (const OV_ReadFault &fault : pCheck->reading.faults)
        OV_checkTell(pCheck, OV_mediumFaultCode(&fault), {fault.iLine, fault.iColumn},
                     OV_mediumFaultSentence(&fault), subjectOf(&fault))
            ->bRejects = fault.bRejects;
    tellOddities(pCheck);
    tellSections(pCheck);
}
