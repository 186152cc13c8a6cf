#include "check/fcpxml/Rules.h"

#include "check/RulesBeside.h"
#include "check/fcpxml/ReferenceRules.h"
#include "check/fcpxml/StructureFindings.h"
#include "check/fcpxml/StructureMends.h"
#include "check/fcpxml/TimingRules.h"
#include "check/fcpxml/ValueRules.h"
#include "check/fcpxml/VersionRules.h"

namespace vornic {

void checkFCPXML(const ElementIndex& index, const FCPXMLReading& reading,
                 const CheckOptions& options, Report& report) {
    if (const auto version = fcpxml::Version::parse(report.version)) {
        addStructureMends(index, *version, report.findings);
        nameStructureFindings(index, report.findings);
    }
    RulesBeside timing(
        options.runsBeside(index.text().size()), report.findings,
        [&](Findings& found) { checkFCPXMLTiming(index, reading.isComplete, found); });
    checkFCPXMLReferences(index, reading.isComplete && !reading.isCompared, report.findings);
    timing.addTo(report.findings);
    checkFCPXMLValues(index, report.findings);
    checkFCPXMLVersions(index, options, report.findings);
    for (const RuleGroup group :
         {RuleGroup::references, RuleGroup::timing, RuleGroup::values, RuleGroup::versions}) {
        report.groups.push_back({group, true, ""});
    }
}

}  // namespace vornic
