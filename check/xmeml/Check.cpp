#include "check/xmeml/Check.h"

#include <algorithm>
#include <utility>

#include "check/RulesBeside.h"
#include "check/xmeml/Rules.h"
#include "formats/xmeml/Version.h"

namespace vornic::xmeml {

namespace {

void skip(Report& report, RuleGroup group, std::string_view why) {
    report.groups.push_back({group, false, std::string(why)});
}

// The rules that look at one element and what is in it.
void checkElements(const View& view, Findings& findings) {
    constexpr ElementNumber kPiece = 2048;
    const auto size = static_cast<ElementNumber>(view.index().size());
    for (ElementNumber first = 0; first < size;) {
        const ElementRange range{first, first + std::min(kPiece, size - first)};
        checkParts(view, range, findings);
        checkNumbers(view, range, findings);
        checkRates(view, range, findings);
        checkSpans(view, range, findings);
        checkValues(view, range, findings);
        first = range.end;
    }
}

}  // namespace

void check(const ElementIndex& index, bool isComplete, const CheckOptions& options,
           Report& report) {
    const View view(index, isComplete);
    const std::optional<int> reads =
        options.reads ? parseVersion(*options.reads) : std::optional<int>();
    const bool isBeside = options.runsBeside(index.text().size());
    RulesBeside references(isBeside, report.findings, [&](Findings& found) {
        if (isComplete) {
            checkReferences(view, found);
        }
    });
    RulesBeside timelines(isBeside, report.findings,
                          [&](Findings& found) { checkTimelines(view, found); });
    checkRoot(view, report.findings);
    checkElements(view, report.findings);
    checkVersions(view, reads, options.missingVersion, report.findings);
    // While the others are at work.
    Findings paths = report.findings.emptyCopy();
    checkPathURLs(view, paths);
    report.groups.push_back({RuleGroup::structure, true, ""});
    references.addTo(report.findings);
    if (isComplete) {
        report.groups.push_back({RuleGroup::references, true, ""});
    } else {
        skip(report, RuleGroup::references, "the file could not be read to its end");
    }
    timelines.addTo(report.findings);
    report.groups.push_back({RuleGroup::timing, true, ""});
    report.findings.append(std::move(paths));
    report.groups.push_back({RuleGroup::values, true, ""});
    report.groups.push_back({RuleGroup::versions, true, ""});
}

}  // namespace vornic::xmeml
