/* The description of a medium. */
#ifndef OVMEDIUM_DESCRIPTION_H
#define OVMEDIUM_DESCRIPTION_H

#include <string>

#include "description/model.h"

/* The description's path for a MEDIUM that was named: a directory that holds one, or the file. */
std::string OV_mediumDescriptionOf(const std::string &place);

/* Its model, for the caller to free; no module is loaded. Null with the reason told. */
_OV_instCDinst *OV_mediumReadDescription(const std::string &place);

#endif
