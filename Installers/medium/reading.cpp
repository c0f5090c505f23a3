#include "medium/reading.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <functional>

#include "description/configLines.h"
#include "description/reader.h"
#include "description/scanner.h"
#include "medium/nearWord.h"
#include "ut/owned.h"

enum { SUBJECT_SIZE = 60, LOST_WORDS = 16, LOST_STARTS = 2 };

/* The reading under way. */
struct Collecting {
    OV_Reading *pReading;
    size_t iLineFaults;        /* where those of the line begin */
    const _OV_InstOper *pOper; /* the last one of the lines before */
};

/* ---- what refused lines would have told ---- */

/* Numbers of the line from pText on may be configurations that it leads to, or its own. */
static void loseNumbers(OV_Reading *pReading, const char *pText)
{
    while (*(pText = OV_instFindDigit(pText))) {
        int64_t lNumber = 0;
        if (scanInteger(pText, &pText, &lNumber) == 0)
            pReading->lostNumbers.insert(static_cast<int32_t>(lNumber));
    }
}

/* What begins with the line's second or third word, to the end of each of those that follow, may be
 * a name. */
static void loseNames(OV_Reading *pReading, const char *pLine)
{
    for (int iFirst = 1; iFirst <= LOST_STARTS; iFirst++) {
        const char *pFirst = nullptr;
        const char *pCursor = pLine;
        for (int i = 0; i < LOST_WORDS; i++) {
            const char *pWord = OV_instFindWord(pCursor);
            OwnedText word(getToken(pCursor, nullptr, &pCursor, 1));
            if (!word)
                break;
            if (i == iFirst)
                pFirst = pWord;
            if (pFirst)
                pReading->lostNames.insert(std::string(pFirst, pCursor));
        }
    }
}

/* Each word of the line may be a name that is used. */
static void loseWords(OV_Reading *pReading, const char *pLine)
{
    while (char *pWord = getToken(pLine, nullptr, &pLine, 1)) {
        pReading->lostWords.insert(pWord);
        free(pWord);
    }
}

/* ---- faults ---- */

/* Whether the fault before is a member of the same line that has no name either. */
static bool isNamelessTold(const Collecting *pCollecting)
{
    const auto &faults = pCollecting->pReading->faults;

    return faults.size() > pCollecting->iLineFaults && faults.back().code == OV_FAULT_MEMBER_PART &&
           faults.back().subject.empty();
}

static void addFault(void *pContext, const OV_Fault *pFault)
{
    OV_Reading *pReading = static_cast<Collecting *>(pContext)->pReading;
    OV_ReadFault fault = {};

    pReading->bRejected = pReading->bRejected || pFault->bRejects;
    if (pFault->code == OV_FAULT_MEMBERS)
        return; /* why was told */
    if (pFault->code == OV_FAULT_MEMBER_PART && !*pFault->pSubject &&
        isNamelessTold(static_cast<Collecting *>(pContext)))
        return; /* once a line is enough */
    if ((pFault->code == OV_FAULT_PACKAGE || pFault->code == OV_FAULT_SUITE) &&
        pReading->lostNames.count(pFault->pSubject))
        return; /* it was declared by a line that was told */
    fault.code = pFault->code;
    fault.bRejects = pFault->bRejects;
    fault.iLine = pFault->iLine;
    fault.iColumn = pFault->iColumn;
    fault.subject = pFault->pSubject ? pFault->pSubject : "";
    if (fault.code == OV_FAULT_TEXT && fault.subject.size() > SUBJECT_SIZE)
        fault.subject.resize(SUBJECT_SIZE);
    fault.iNumber = pFault->iNumber;
    fault.iOwnNumber = pFault->iOwnNumber;
    if (fault.code == OV_FAULT_CHILD_ORDER || fault.code == OV_FAULT_MANY_MEMBERS)
        loseNumbers(pReading, pFault->pAt);
    for (int i = 0; fault.code == OV_FAULT_KEYWORD && OV_instHeaderKey(i); i++)
        if (fault.subject == OV_instHeaderKey(i)) {
            fault.code = OV_FAULT_HEADER_KEY;
            fault.bBehind = true;
        }
    pReading->bNumberLost = pReading->bNumberLost || fault.code == OV_FAULT_CONFIG_NUMBER;
    if (fault.code == OV_FAULT_NO_SECTION)
        pReading->bSections = true; /* what follows is taken for one */
    pReading->faults.push_back(fault);
}

static int guessWord(void *pContext, const char *pWord, const char *const *apKeywords)
{
    OV_Reading *pReading = static_cast<Collecting *>(pContext)->pReading;
    const int iMeant = OV_mediumNearWord(pWord, apKeywords);

    if (iMeant >= 0 && !pReading->faults.empty())
        pReading->faults.back().meant = apKeywords[iMeant];
    return iMeant;
}

/* ---- places ---- */

static bool isOctal(const char *pNumber)
{
    return *pNumber == '0' && strspn(pNumber, "0123456789") == strspn(pNumber, "01234567");
}

static void addPlace(void *pContext, const void *pWhat, const char *pAt, int iLine, int iColumn)
{
    OV_Reading *pReading = static_cast<Collecting *>(pContext)->pReading;

    pReading->places.push_back({pWhat, iLine, iColumn, isOctal(pAt)});
}

/* Memory that a refused line gave back may have been used again: the last note counts. */
static void sortPlaces(std::vector<OV_ReadPlace> *pPlaces)
{
    std::stable_sort(pPlaces->begin(), pPlaces->end(),
                     [](const OV_ReadPlace &one, const OV_ReadPlace &other) {
                         return std::less<>()(one.pWhat, other.pWhat);
                     });
}

const OV_ReadPlace *OV_mediumPlaceOf(const OV_Reading *pReading, const void *pWhat)
{
    const auto &places = pReading->places;
    const auto behind = std::upper_bound(places.begin(), places.end(), pWhat,
                                         [](const void *pWanted, const OV_ReadPlace &place) {
                                             return std::less<>()(pWanted, place.pWhat);
                                         });

    if (behind == places.begin() || (behind - 1)->pWhat != pWhat)
        return nullptr;
    return &*(behind - 1);
}

/* ---- lines ---- */

static void addOddity(OV_Reading *pReading, OV_Oddity kind, const char *pAt,
                      const std::string &subject)
{
    OV_ReadOddity oddity = {kind, 0, 0, subject};

    OV_instLinePlace(pAt, &oddity.iLine, &oddity.iColumn);
    pReading->oddities.push_back(oddity);
}

static bool isBlank(char c)
{
    return isspace(static_cast<unsigned char>(c)) != 0;
}

static bool isWordCharacter(char c)
{
    return isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '_';
}

/* The first quote that stands in a word which is not quoted, or null. An apostrophe does in any. */
static const char *findStrayQuote(const char *pLine)
{
    const char *pText = pLine;

    while (*pText) {
        const char *pOpen = OV_instFindQuote(pText);
        const char *pUntil = pOpen ? pOpen : pText + strlen(pText);
        const void *pStray = memchr(pText, '\'', static_cast<size_t>(pUntil - pText));
        if (pStray)
            return static_cast<const char *>(pStray);
        if (!pOpen)
            return nullptr;
        if (pOpen > pLine && isWordCharacter(pOpen[-1]))
            return pOpen;
        const char *pClose = OV_instFindQuote(pOpen + 1);
        if (!pClose)
            return nullptr; /* which was told */
        pText = pClose + 1;
    }
    return nullptr;
}

/* The word around pAt. */
static std::string wordAround(const char *pLine, const char *pAt)
{
    const char *pEnd = pAt;

    while (pAt > pLine && !isBlank(pAt[-1]))
        pAt--;
    while (*pEnd && !isBlank(*pEnd) && pEnd - pAt < SUBJECT_SIZE)
        pEnd++;
    return std::string(pAt, pEnd);
}

/* Whether the line has a fault of that kind. */
static bool wasTold(const Collecting *pCollecting, OV_FaultCode code)
{
    const auto &faults = pCollecting->pReading->faults;

    for (size_t i = pCollecting->iLineFaults; i < faults.size(); i++)
        if (faults[i].code == code)
            return true;
    return false;
}

/* Looks at a line as it stands: what setup passes over, or takes for part of a word. */
static void watchLine(Collecting *pCollecting, const char *pLine)
{
    const char *pEnd = pLine + strlen(pLine);

    while (pEnd > pLine && isBlank(pEnd[-1]) && pEnd[-1] != '\r')
        pEnd--;
    if (pEnd > pLine && *pEnd && pEnd[-1] == '\\')
        addOddity(pCollecting->pReading, OV_ODD_BACKSLASH, pEnd - 1, "\\");
    if (const char *pStray = wasTold(pCollecting, OV_FAULT_TEXT) ? nullptr : findStrayQuote(pLine))
        addOddity(pCollecting->pReading, OV_ODD_QUOTE, pStray, wordAround(pLine, pStray));
}

/* An empty member behind the last one that has a reason of its own: the line ends in a carriage
 * return, or in a backslash that does not continue it. */
static void dropConsequences(Collecting *pCollecting, const char *pLine)
{
    auto &faults = pCollecting->pReading->faults;
    const char *pEnd = pLine + strlen(pLine);

    if (faults.size() == pCollecting->iLineFaults || faults.back().code != OV_FAULT_MEMBER_PART ||
        !faults.back().subject.empty())
        return;
    while (pEnd > pLine && isBlank(pEnd[-1]))
        pEnd--;
    if (strchr(pEnd, '\r') || (*pEnd && pEnd > pLine && pEnd[-1] == '\\'))
        faults.pop_back();
}

static void endLine(void *pContext, const char *pLine, int iResult, _OV_instCDinst *pRoot)
{
    Collecting *pCollecting = static_cast<Collecting *>(pContext);
    OV_Reading *pReading = pCollecting->pReading;

    watchLine(pCollecting, pLine);
    dropConsequences(pCollecting, pLine);
    const bool bNameLost =
        wasTold(pCollecting, OV_FAULT_TEXT) || wasTold(pCollecting, OV_FAULT_KEYWORD);
    const _OV_InstOper *pOper =
        pRoot->pPackageTail ? pRoot->pPackageTail->pPackage->pOperTail : nullptr;
    if (iResult == -1 && pOper && pOper != pCollecting->pOper)
        pReading->refused.insert(pOper);
    pCollecting->pOper = pOper;
    pCollecting->iLineFaults = pReading->faults.size();
    pReading->bSections = pReading->bSections || OV_instParsingConfiguration;
    if (iResult != -1)
        return;
    pReading->bRejected = true;
    if (bNameLost)
        loseNames(pReading, pLine);
    loseWords(pReading, pLine);
    loseNumbers(pReading, pLine);
}

/* ---- reading ---- */

/* The first carriage return, which no line of the reader's tells apart from other blanks. */
static void findLineEnds(const char *pPath, OV_Reading *pReading)
{
    OwnedFile file(fopen(pPath, "re"));
    int iLine = 1;
    int iColumn = 1;

    for (int iByte = 0; file && (iByte = getc_unlocked(file.get())) != EOF; iColumn++) {
        if (iByte == '\r') {
            pReading->oddities.push_back({OV_ODD_LINE_END, iLine, iColumn, "\r"});
            return;
        }
        if (iByte == '\n') {
            iLine++;
            iColumn = 0;
        }
    }
}

void OV_mediumRead(const char *pPath, OV_Reading *pReading)
{
    Collecting collecting = {pReading, 0, nullptr};
    const OV_ReadingSink sink = {addFault, addPlace, guessWord, endLine, &collecting};

    OV_instParsingConfiguration = 0;
    OV_instSetReadingSink(&sink);
    pReading->model.reset(OV_instReadCDinst(pPath, nullptr));
    OV_instSetReadingSink(nullptr);
    pReading->bSectionOpen = OV_instParsingConfiguration != 0;
    OV_instParsingConfiguration = 0;
    pReading->bRejected = pReading->bRejected || !pReading->model;
    if (pReading->model)
        findLineEnds(pPath, pReading);
    sortPlaces(&pReading->places);
}

/* ---- sentences ---- */

/* In the order of OV_FaultCode. "%" stands for the subject. */
static const struct {
    OV_FaultCode code;
    const char *pCode;
    const char *pText;
} s_aFaults[] = {
    {OV_FAULT_UNREADABLE,     "unreadable",         "the description cannot be read: %"           },
    {OV_FAULT_MARK,           "byte-order-mark",    "the file begins with a byte order mark"      },
    {OV_FAULT_HEADER_KEY,     "header-key",         "the header has no line '%' here"             },
    {OV_FAULT_HEADER_VERSION, "header-key",         "SetupVersion is not 1 but '%'"               },
    {OV_FAULT_HEADER_LONG,    "header-value-long",  "the value of '%' has 512 bytes or more"      },
    {OV_FAULT_KEYWORD,        "unknown-keyword",    "'%' is no keyword"                           },
    {OV_FAULT_NO_SECTION,     "section-missing",    "a configuration without ConfigBegin above it"},
    {OV_FAULT_NO_PACKAGE,     "outside-package",    "'%' before the first package"                },
    {OV_FAULT_TEXT,           "unterminated-text",  "the text has no closing quote: %"            },
    {OV_FAULT_NUMBER,         "bad-number",         "the number is not what it reads: %"          },
    {OV_FAULT_MEMBERS,        "missing-field",      "the members are not read"                    },
    {OV_FAULT_MEMBER_PART,    "missing-field",      "the member '%' has no size"                  },
    {OV_FAULT_PACKAGE,        "unknown-package",    "there is no package '%' above"               },
    {OV_FAULT_SUITE,          "unknown-suite",      "there is no suite '%' above"                 },
    {OV_FAULT_ICON,           "bad-icon",           "the icon has no comma: '%'"                  },
    {OV_FAULT_CONFIG_OUTSIDE, "configuration-line",
     "'%' does not belong between ConfigBegin and "
     "ConfigEnd"                                                                                  },
    {OV_FAULT_CONFIG_NUMBER,  "configuration-line", "a configuration begins with a number above 0"},
    {OV_FAULT_CONFIG_KIND,    "configuration-line", "'%' is no kind of configuration"             },
    {OV_FAULT_CHILD_ORDER,    "child-order",        "the member % is not greater than "           },
    {OV_FAULT_MANY_MEMBERS,   "too-many-members",
     "there is room for % members: what follows is "
     "not read"                                                                                   },
};
static_assert(sizeof(s_aFaults) / sizeof(*s_aFaults) == OV_FAULT_COUNT, "a row for every code");

const char *OV_mediumFaultCode(const OV_ReadFault *pFault)
{
    return s_aFaults[pFault->code].pCode;
}

/* What the table cannot say in one sentence. */
static std::string sentenceFor(const OV_ReadFault *pFault)
{
    if (pFault->code == OV_FAULT_MEMBER_PART && pFault->subject.empty())
        return "a member without a name: also a blank behind the last one counts for one";
    if (pFault->bBehind)
        return "'%' stands where the header has ended: its keys have an order";
    if (pFault->code == OV_FAULT_KEYWORD && getOperType(pFault->subject.c_str()) >= 0)
        return "'%' is reserved";
    if (pFault->code == OV_FAULT_CONFIG_KIND && pFault->subject.empty())
        return "a configuration without a kind";
    if (pFault->code == OV_FAULT_NUMBER && pFault->bRejects)
        return "the number is out of range: %";
    if (pFault->code == OV_FAULT_NUMBER && pFault->subject.find_first_of("xX") != std::string::npos)
        return "the number is read twice, with 0x and without: %";
    if (pFault->code == OV_FAULT_NUMBER)
        return "the number is cut to 32 bits: %";
    if (pFault->code == OV_FAULT_CHILD_ORDER)
        return s_aFaults[pFault->code].pText + std::to_string(pFault->iOwnNumber) +
               ": the members are read no further";
    return s_aFaults[pFault->code].pText;
}

std::string OV_mediumFaultSentence(const OV_ReadFault *pFault)
{
    std::string sentence = sentenceFor(pFault);
    const size_t iAt = sentence.find('%');

    if (iAt != std::string::npos)
        sentence.replace(iAt, 1,
                         pFault->code == OV_FAULT_CHILD_ORDER ||
                                 pFault->code == OV_FAULT_MANY_MEMBERS
                             ? std::to_string(pFault->iNumber)
                             : pFault->subject);
    if (!pFault->meant.empty())
        sentence += " (is '" + pFault->meant + "' meant?)";
    return sentence;
}
