/* A description read to its end whatever is wrong with it: the model, the faults that were met, and
 * where its words stand. */
#ifndef OVMEDIUM_READING_H
#define OVMEDIUM_READING_H

#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "description/faults.h"
#include "description/model.h"

struct OV_ReadModelFreed {
    void operator()(_OV_instCDinst *pRoot) const { OV_instFreeCDinst(pRoot); }
};
using OwnedReadModel = std::unique_ptr<_OV_instCDinst, OV_ReadModelFreed>;

/* A fault as it was told; see description/faults.h. */
struct OV_ReadFault {
    OV_FaultCode code;
    bool bRejects;
    int iLine;
    int iColumn;
    std::string subject;
    std::string meant; /* the keyword that the word is near to, or empty */
    int32_t iNumber;
    int32_t iOwnNumber;
    bool bBehind; /* a key of the header that stands behind it */
};

/* Where something that the model holds stands. */
struct OV_ReadPlace {
    const void *pWhat;
    int iLine;
    int iColumn;
    bool bOctal; /* a number that begins with 0 and has no other digits than octal ones */
};

/* Places in lines that setup reads otherwise than they look. */
enum OV_Oddity { OV_ODD_LINE_END, OV_ODD_BACKSLASH, OV_ODD_QUOTE };

struct OV_ReadOddity {
    OV_Oddity kind;
    int iLine;
    int iColumn;
    std::string subject;
};

struct OV_Reading {
    OwnedReadModel model; /* null only where the file cannot be read at all */
    std::vector<OV_ReadFault> faults;
    std::vector<OV_ReadOddity> oddities;
    std::vector<OV_ReadPlace> places; /* in the order of pWhat, once reading has ended */
    bool bRejected;                   /* setup does not take it, whatever its modules are */
    bool bSections;                   /* there was a ConfigBegin */
    bool bSectionOpen;                /* the last one has no ConfigEnd */
    bool bNumberLost;                 /* a configuration was refused for want of its number */

    /* What refused lines would have told: operations that are not all there, names that they may
     * have declared, words that may be names they used, and numbers of configurations. */
    std::unordered_set<const _OV_InstOper *> refused;
    std::unordered_set<std::string> lostNames;
    std::unordered_set<std::string> lostWords;
    std::unordered_set<int32_t> lostNumbers;
};

/* Reads the file. Nothing is printed, no module is loaded. */
void OV_mediumRead(const char *pPath, OV_Reading *pReading);

/* Where it stands, or null for what the description does not give. */
const OV_ReadPlace *OV_mediumPlaceOf(const OV_Reading *pReading, const void *pWhat);

/* What a fault of the reader's is called, how bad it is apart from being refused, and a sentence.
 */
const char *OV_mediumFaultCode(const OV_ReadFault *pFault);
std::string OV_mediumFaultSentence(const OV_ReadFault *pFault);

#endif
