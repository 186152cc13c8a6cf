#ifndef VORNIC_CHECK_FCPXML_VALUE_RULES_H
#define VORNIC_CHECK_FCPXML_VALUE_RULES_H

#include "formats/ElementIndex.h"
#include "report/Findings.h"

namespace vornic {

/// The form of dates, of media paths and of what assets say of their sound, in an FCPXML file.
void checkFCPXMLValues(const ElementIndex& index, Findings& findings);

}  // namespace vornic

#endif
