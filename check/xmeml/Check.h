#ifndef VORNIC_CHECK_XMEML_CHECK_H
#define VORNIC_CHECK_XMEML_CHECK_H

#include "check/Check.h"
#include "formats/ElementIndex.h"

namespace vornic::xmeml {

/// Looks at an XMEML file with all rules of the groups structure, references, timing, values and
/// versions, and says of each group whether it ran.
/// @param isComplete false when a fault ended the reading.
void check(const ElementIndex& index, bool isComplete, const CheckOptions& options, Report& report);

}  // namespace vornic::xmeml

#endif
