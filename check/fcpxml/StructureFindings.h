#ifndef VORNIC_CHECK_FCPXML_STRUCTURE_FINDINGS_H
#define VORNIC_CHECK_FCPXML_STRUCTURE_FINDINGS_H

#include <string_view>

#include "formats/ElementIndex.h"
#include "formats/fcpxml/Validator.h"
#include "report/Findings.h"

namespace vornic {

/// What takes the faults of a validator and adds them as findings, with what would be right in the
/// words of the rules.
/// @param version the one that the file declares.
/// @param text what is validated. @param findings must outlive the result, and so must the text.
[[nodiscard]] fcpxml::Validator::FaultSink structureFindings(fcpxml::Version version,
                                                             std::string_view text,
                                                             Findings& findings);

/// Makes what they say call the elements by their names, as far as the index knows them.
void nameStructureFindings(const ElementIndex& index, Findings& findings);

}  // namespace vornic

#endif
