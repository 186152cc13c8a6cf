#ifndef VORNIC_CHECK_FCPXML_VERSION_RULES_H
#define VORNIC_CHECK_FCPXML_VERSION_RULES_H

#include <optional>

#include "formats/ElementIndex.h"
#include "formats/fcpxml/Version.h"
#include "report/Findings.h"

namespace vornic {

/// The version that an FCPXML file declares, and what a receiver can't read of it.
/// @param reads the newest version that the receiver reads; nothing to look at the version alone.
void checkFCPXMLVersions(const ElementIndex& index, std::optional<fcpxml::Version> reads,
                         Findings& findings);

}  // namespace vornic

#endif
