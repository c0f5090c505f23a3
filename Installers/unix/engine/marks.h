/* The marks of the model, noted so that they can be put back: what counts as installed (packages,
 * suites, configurations) and what is chosen. */
#ifndef OVINST_ENGINE_MARKS_H
#define OVINST_ENGINE_MARKS_H

#include <memory>

#include "description/model.h"

struct OV_Marks;

/* The marks of a description as they are now; it must outlive them. Never null. */
OV_Marks *OV_instNoteMarks(_OV_instCDinst *pRoot);

/* Puts all of them back; may be done more than once. */
void OV_instRestoreMarks(const OV_Marks *pMarks);

/* Null is accepted. */
void OV_instFreeMarks(OV_Marks *pMarks);

struct MarksFreed {
    void operator()(OV_Marks *pMarks) const { OV_instFreeMarks(pMarks); }
};

using OwnedMarks = std::unique_ptr<OV_Marks, MarksFreed>;

#endif
