#ifndef VORNIC_CHECK_FCPXML_RULES_H
#define VORNIC_CHECK_FCPXML_RULES_H

#include "check/Check.h"
#include "formats/ElementIndex.h"
#include "report/Report.h"

namespace vornic {

/// What a check of an FCPXML file has seen before its rules run.
struct FCPXMLReading {
    /// False when a fault ended the reading before the end of the file.
    bool isComplete = true;
    /// Whether the file was compared with the definition of its version.
    bool isCompared = false;
};

/// Runs the groups references, timing, values and versions over an FCPXML file, and notes them in
/// the report as run.
void checkFCPXML(const ElementIndex& index, const FCPXMLReading& reading,
                 const CheckOptions& options, Report& report);

}  // namespace vornic

#endif
