#ifndef VORNIC_CHECK_FCPXML_STRUCTURE_FINDINGS_H
#define VORNIC_CHECK_FCPXML_STRUCTURE_FINDINGS_H

#include "formats/fcpxml/Validator.h"
#include "report/Findings.h"

namespace vornic {

/// What takes the faults of a validator and adds them as findings, with what would be right in the
/// words of the rules.
/// @param version the one that the file declares.
/// @param findings must outlive the result.
[[nodiscard]] fcpxml::Validator::FaultSink structureFindings(fcpxml::Version version,
                                                             Findings& findings);

}  // namespace vornic

#endif
