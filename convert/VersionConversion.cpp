#include "convert/VersionConversion.h"

#include <string_view>
#include <utility>

#include "base/FormatString.h"
#include "base/Text.h"
#include "convert/catalogue/VersionCatalogue.h"
#include "formats/xmeml/VersionedXMEML.h"

namespace vornic {

namespace {

/// "name" of a catalogue's "<name".
std::string elementName(std::string_view element) {
    return replacingOccurrences(replacingOccurrences(element, "<", ""), ">", "");
}

/// @return what is wrong with the name as a query, or nothing.
ErrorSlot removeElements(XMLDocument& document, const std::string& name) {
    ErrorSlot error;
    const std::vector<XMLNode> nodes =
        XMLDocument::nodesForXPath(formatString(".//%@", name), document.documentNode(), error);
    document.removeNodes(nodes);
    return error;
}

}  // namespace

// The lowest is compared without a sign: a negative target counts as a very high one and loses
// nothing.
bool losesInformation(std::int64_t current, std::int64_t target, std::int64_t lowest) {
    const bool isBelowLowest =
        static_cast<std::uint64_t>(lowest) > static_cast<std::uint64_t>(target);
    return target < current && isBelowLowest;
}

std::variant<ConversionPlan, ConversionRefusal> planConversion(const XMLDocument* document,
                                                               const std::string& version,
                                                               std::int64_t lowestVersion) {
    if (document == nullptr || !isVersionedXMEML(*document)) {
        return ConversionRefusal::noVersion;
    }
    const std::optional<std::string> declared = document->rootAttribute("version");
    // No tree of ours has an attribute without a value; whatever has none is refused.
    if (!declared) {
        return ConversionRefusal::noVersionAttribute;
    }
    ConversionPlan plan{
        .current = integerValue(*declared), .target = integerValue(version), .version = version};
    plan.losesInformation = losesInformation(plan.current, plan.target, lowestVersion);
    return plan;
}

StripResult stripElementsAbove(XMLDocument& document, const std::string& version) {
    const std::optional<VersionCatalogue> catalogue = VersionCatalogue::load();
    if (!catalogue) {
        return {StripResult::Outcome::noCatalogue, {}};
    }
    if (!isVersionedXMEML(document)) {
        return {StripResult::Outcome::noVersion, {}};
    }
    StripResult result;
    const std::vector<std::string> versions =
        catalogue->versionsAbove(version).value_or(std::vector<std::string>());
    for (auto above = versions.rbegin(); above != versions.rend(); ++above) {
        for (const std::string& element : catalogue->elements(*above)) {
            if (ErrorSlot error = removeElements(document, elementName(element))) {
                result.queryErrors.push_back(std::move(*error));
            }
        }
    }
    return result;
}

}  // namespace vornic
