#ifndef VORNIC_CHECK_FCPXML_VERSION_RULES_H
#define VORNIC_CHECK_FCPXML_VERSION_RULES_H

#include "check/Check.h"
#include "formats/ElementIndex.h"
#include "report/Findings.h"

namespace vornic {

/// The version that an FCPXML file declares, and what a receiver can't read of it.
/// @param options `reads` is the newest version that the receiver reads, `missingVersion` what a
///     mend would write.
void checkFCPXMLVersions(const ElementIndex& index, const CheckOptions& options,
                         Findings& findings);

}  // namespace vornic

#endif
