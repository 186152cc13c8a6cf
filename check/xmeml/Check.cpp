#include "check/xmeml/Check.h"

#include "check/xmeml/Rules.h"
#include "formats/xmeml/Version.h"

namespace vornic::xmeml {

namespace {

void skip(Report& report, RuleGroup group, std::string_view why) {
    report.groups.push_back({group, false, std::string(why)});
}

}  // namespace

void check(const ElementIndex& index, bool isComplete, const CheckOptions& options,
           Report& report) {
    const View view(index, isComplete);
    const std::optional<int> reads =
        options.reads ? parseVersion(*options.reads) : std::optional<int>();
    checkStructure(view, report.findings);
    checkVersions(view, reads, report.findings);
    report.groups.push_back({RuleGroup::structure, true, ""});
    if (isComplete) {
        checkReferences(view, report.findings);
        report.groups.push_back({RuleGroup::references, true, ""});
    } else {
        skip(report, RuleGroup::references, "the file could not be read to its end");
    }
    checkNumbers(view, report.findings);
    checkRates(view, report.findings);
    checkSpans(view, report.findings);
    checkTimelines(view, report.findings);
    report.groups.push_back({RuleGroup::timing, true, ""});
    checkValues(view, report.findings);
    checkPathURLs(view, report.findings);
    report.groups.push_back({RuleGroup::values, true, ""});
    if (reads) {
        report.groups.push_back({RuleGroup::versions, true, ""});
    } else {
        skip(report, RuleGroup::versions,
             options.reads ? "the receiver's version is none of XMEML" : kNotAskedFor);
    }
}

}  // namespace vornic::xmeml
