#include "convert/xmeml/Conversion.h"

#include <algorithm>
#include <vector>

#include "convert/MarkupEdits.h"
#include "convert/catalogue/VersionCatalogue.h"
#include "report/RuleTable.h"

namespace vornic::xmeml {

namespace {

std::string_view nameIn(std::string_view element) {
    element.remove_prefix(element.starts_with('<') ? 1 : 0);
    element.remove_suffix(element.ends_with('>') ? 1 : 0);
    return element;
}

void tell(const ElementIndex& index, ElementNumber element, const VersionElements& elements,
          Findings& findings) {
    Finding* const finding =
        findings.add("conversion-newer-element"_rule, index.startTagOf(element));
    if (finding != nullptr) {
        finding->lost = index.spanOf(element).of(index.text());
        finding->arguments = {{"element", std::string(index.nameOf(element))},
                              {"since", elements.since(index.nameOf(element))},
                              {"content", shortened(finding->lost)}};
    }
}

}  // namespace

std::optional<VersionElements> VersionElements::load() {
    const std::optional<VersionCatalogue> catalogue = VersionCatalogue::load();
    if (!catalogue) {
        return std::nullopt;
    }
    VersionElements elements;
    elements.versions_ = catalogue->sortedKeys();
    for (std::size_t place = 0; place < elements.versions_.size(); ++place) {
        for (const std::string& element : catalogue->elements(elements.versions_[place])) {
            std::size_t& known = elements.places_[std::string(nameIn(element))];
            known = std::max(known, place);
        }
    }
    return elements;
}

bool VersionElements::isNewer(std::string_view element, const std::string& version) const {
    const auto known = places_.find(element);
    const auto target = std::find(versions_.begin(), versions_.end(), version);
    return known != places_.end() && target != versions_.end() &&
           known->second > static_cast<std::size_t>(target - versions_.begin());
}

std::string VersionElements::since(std::string_view element) const {
    const auto known = places_.find(element);
    return known == places_.end() ? "1" : versions_[known->second];
}

std::string VersionElements::lowestVersion(const ElementIndex& index) const {
    std::size_t lowest = 0;
    for (std::size_t number = 0; number < index.nameCount(); ++number) {
        const auto known = places_.find(index.nameNumbered(number));
        lowest = std::max(lowest, known == places_.end() ? 0 : known->second);
    }
    return versions_.empty() ? "1" : versions_[lowest];
}

Conversion convert(const ElementIndex& index, const std::string& to,
                   const VersionElements& elements, Findings& findings) {
    std::vector<bool> isNewer;
    for (std::size_t number = 0; number < index.nameCount(); ++number) {
        isNewer.push_back(elements.isNewer(index.nameNumbered(number), to));
    }
    MarkupEdits edits(index);
    Conversion conversion;
    edits.writeVersion(to);
    for (ElementNumber element = 1; element < index.size();) {
        const std::size_t number = index.nameNumberOf(element);
        const bool goes =
            number < isNewer.size() ? isNewer[number] : elements.isNewer(index.nameOf(element), to);
        if (goes) {
            edits.remove(index.spanOf(element));
            tell(index, element, elements, findings);
            ++conversion.losses;
        }
        element = goes ? index.endOf(element) : element + 1;
    }
    conversion.edits = edits.take();
    return conversion;
}

}  // namespace vornic::xmeml
