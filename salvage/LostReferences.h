#ifndef VORNIC_SALVAGE_LOST_REFERENCES_H
#define VORNIC_SALVAGE_LOST_REFERENCES_H

#include "formats/ElementIndex.h"
#include "report/Findings.h"

namespace vornic::salvage {

/// What a check tells of references that lead nowhere; nothing of other rules. Linear.
/// @param findings empty; says how many are kept.
[[nodiscard]] Findings lostReferences(const ElementIndex& copy, Findings findings);

}  // namespace vornic::salvage

#endif
