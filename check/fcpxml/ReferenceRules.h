#ifndef VORNIC_CHECK_FCPXML_REFERENCE_RULES_H
#define VORNIC_CHECK_FCPXML_REFERENCE_RULES_H

#include "formats/ElementIndex.h"
#include "report/Findings.h"

namespace vornic {

/// What the ids, angle ids and uids of an FCPXML file lead to.
/// @param tellsDangling whether references to nothing are reported: where the definition of the
/// file's version has reported them already, they are passed over.
void checkFCPXMLReferences(const ElementIndex& index, bool tellsDangling, Findings& findings);

}  // namespace vornic

#endif
