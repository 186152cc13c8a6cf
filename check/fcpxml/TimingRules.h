#ifndef VORNIC_CHECK_FCPXML_TIMING_RULES_H
#define VORNIC_CHECK_FCPXML_TIMING_RULES_H

#include "formats/ElementIndex.h"
#include "report/Findings.h"

namespace vornic {

/// The times of an FCPXML file, and where its clips stand by them: one pass over the index, memory
/// for the open elements alone.
/// @param isComplete false when the reading ended before the file did: lengths of sequences are
/// then not judged.
void checkFCPXMLTiming(const ElementIndex& index, bool isComplete, Findings& findings);

}  // namespace vornic

#endif
