#include "salvage/LostReferences.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "check/fcpxml/ReferenceRules.h"
#include "check/xmeml/Rules.h"
#include "formats/xmeml/View.h"

namespace vornic::salvage {

namespace {

constexpr std::array kLeadNowhere = {"references-dangling"_rule, "references-file-undefined"_rule,
                                     "references-clip-undefined"_rule,
                                     "references-dangling-link"_rule};

}  // namespace

Findings lostReferences(const ElementIndex& copy, Findings findings) {
    for (std::size_t index = 0; index < kRuleCount; ++index) {
        const RuleId rule{static_cast<std::uint16_t>(index)};
        if (std::find(kLeadNowhere.begin(), kLeadNowhere.end(), rule) == kLeadNowhere.end()) {
            findings.ignore(rule);
        }
    }
    if (copy.kind() == FileKind::fcpxml) {
        checkFCPXMLReferences(copy, true, findings);
    } else if (copy.kind() == FileKind::xmeml) {
        xmeml::checkReferences(xmeml::View(copy, true), findings);
    }
    return findings;
}

}  // namespace vornic::salvage
