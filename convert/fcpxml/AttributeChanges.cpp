#include "convert/fcpxml/AttributeChanges.h"

#include <algorithm>

namespace vornic::fcpxml {

namespace {

bool losesValues(const AttributeDefinition& from, const AttributeDefinition& to) {
    if (to.type != AttributeType::enumerated) {
        return false;
    }
    return from.type != AttributeType::enumerated ||
           !std::all_of(from.values.begin(), from.values.end(),
                        [&to](std::string_view value) { return to.allows(value); });
}

bool isRequired(const AttributeDefinition* attribute) {
    return attribute != nullptr && attribute->defaultKind == AttributeDefault::required;
}

bool hasDefault(const AttributeDefinition* attribute) {
    return attribute != nullptr && attribute->defaultKind == AttributeDefault::value;
}

AttributeChange changeOf(std::string_view name, const AttributeDefinition* from,
                         const AttributeDefinition* to) {
    AttributeChange change{.name = name, .from = from, .to = to};
    if (from != nullptr && to != nullptr) {
        change.losesValues = losesValues(*from, *to);
        change.losesDefault =
            hasDefault(from) && !(hasDefault(to) && to->defaultValue == from->defaultValue);
        change.gainsDefault = from->defaultKind == AttributeDefault::none && hasDefault(to);
    }
    change.becomesRequired = isRequired(to) && !isRequired(from);
    return change;
}

}  // namespace

std::vector<AttributeChange> attributeChanges(const ElementDefinition& from,
                                              const ElementDefinition& to) {
    std::vector<AttributeChange> changes;
    const auto add = [&changes](const AttributeChange& change) {
        const bool isAny = change.isDropped() || change.losesValues || change.losesDefault ||
                           change.gainsDefault || change.becomesRequired;
        const auto* const any = change.from != nullptr ? change.from : change.to;
        if (isAny && any->defaultKind != AttributeDefault::fixed) {
            changes.push_back(change);
        }
    };
    for (const AttributeDefinition& attribute : from.attributes) {
        add(changeOf(attribute.name, &attribute, to.attribute(attribute.name)));
    }
    for (const AttributeDefinition& attribute : to.attributes) {
        if (from.attribute(attribute.name) == nullptr) {
            add(changeOf(attribute.name, nullptr, &attribute));
        }
    }
    return changes;
}

}  // namespace vornic::fcpxml
