#include "formats/fcpxml/Definition.h"

#include <algorithm>
#include <array>
#include <memory>
#include <mutex>

#include "xml/text/XMLCharacters.h"

namespace vornic::fcpxml {

namespace {

constexpr std::string_view kText = "#PCDATA";

std::string_view withoutEnds(std::string_view text) {
    return text.substr(1, text.size() - 2);
}

// The parts of "(a|b | c)".
std::vector<std::string_view> alternatives(std::string_view group) {
    std::vector<std::string_view> parts;
    group = withoutEnds(group);
    while (!group.empty()) {
        const std::size_t end = std::min(group.find('|'), group.size());
        std::string_view part = group.substr(0, end);
        part.remove_prefix(std::min(part.find_first_not_of(' '), part.size()));
        part = part.substr(0, part.find_last_not_of(' ') + 1);
        parts.push_back(part);
        group.remove_prefix(std::min(end + 1, group.size()));
    }
    return parts;
}

AttributeType typeOf(std::string_view type) {
    if (type.starts_with('(')) {
        return AttributeType::enumerated;
    }
    if (type == "ID") {
        return AttributeType::id;
    }
    return type == "IDREF" ? AttributeType::reference : AttributeType::text;
}

AttributeDefinition attributeOf(const CatalogueAttribute& entry) {
    AttributeDefinition attribute{entry.name, typeOf(entry.type), AttributeDefault::none, "", {}};
    if (attribute.type == AttributeType::enumerated) {
        attribute.values = alternatives(entry.type);
    }
    constexpr std::string_view kFixed = "#FIXED ";
    std::string_view rest = entry.defaultText;
    if (rest == "#REQUIRED") {
        attribute.defaultKind = AttributeDefault::required;
    } else if (rest.starts_with(kFixed)) {
        attribute.defaultKind = AttributeDefault::fixed;
        attribute.defaultValue = withoutEnds(rest.substr(kFixed.size()));
    } else if (rest != "#IMPLIED") {
        attribute.defaultKind = AttributeDefault::value;
        attribute.defaultValue = withoutEnds(rest);
    }
    return attribute;
}

void setContent(ElementDefinition& element, std::string_view model, const Catalogue& catalogue) {
    element.model = model;
    if (model == "EMPTY") {
        return;
    }
    if (model.find(kText) == std::string_view::npos) {
        element.kind = ContentKind::elements;
        element.content.emplace(model, catalogue);
        return;
    }
    element.kind = ContentKind::mixed;
    // "(#PCDATA | a)*" or "(#PCDATA)".
    const std::size_t end = model.rfind(')') + 1;
    for (const std::string_view name : alternatives(model.substr(0, end))) {
        if (name != kText) {
            element.mixedNames.push_back(catalogue.idOf(name));
        }
    }
}

ElementDefinition definitionOf(ElementId id, Version version, const Catalogue& catalogue) {
    const CatalogueElement& entry = catalogue.element(id);
    ElementDefinition element;
    for (const CatalogueModel& model : entry.models) {
        if (model.versions.holds(version)) {
            element.id = id;
            element.name = entry.name;
            setContent(element, model.model, catalogue);
        }
    }
    for (const CatalogueAttribute& attribute : entry.attributes) {
        if (element.id != kNoElement && attribute.versions.holds(version)) {
            element.attributes.push_back(attributeOf(attribute));
        }
    }
    return element;
}

}  // namespace

bool AttributeDefinition::allows(std::string_view value) const {
    if (defaultKind == AttributeDefault::fixed) {
        return value == defaultValue;
    }
    return type != AttributeType::enumerated ||
           std::find(values.begin(), values.end(), value) != values.end();
}

const AttributeDefinition* ElementDefinition::attribute(std::string_view attributeName,
                                                        std::size_t expected) const {
    const std::size_t first = std::min(expected, attributes.size());
    const auto from = attributes.begin() + static_cast<std::ptrdiff_t>(first);
    const auto isNamed = [attributeName](const AttributeDefinition& entry) {
        return entry.name.size() == attributeName.size() &&
               entry.name.front() == attributeName.front() && entry.name == attributeName;
    };
    if (const auto found = std::find_if(from, attributes.end(), isNamed);
        found != attributes.end()) {
        return &*found;
    }
    const auto found = std::find_if(attributes.begin(), from, isNamed);
    return found == from ? nullptr : &*found;
}

bool ElementDefinition::allowsInText(ElementId child) const {
    return std::find(mixedNames.begin(), mixedNames.end(), child) != mixedNames.end();
}

bool ElementDefinition::mentions(ElementId child) const {
    return content ? content->mentions(child) : allowsInText(child);
}

const Definition& Definition::of(Version version) {
    // Not std::call_once: what is thrown through it ends a program that has no memory left.
    static std::array<std::mutex, Version::kNewestMinor + 1> making;
    static std::array<std::unique_ptr<const Definition>, Version::kNewestMinor + 1> definitions;
    const auto index = static_cast<std::size_t>(version.minor());
    const std::lock_guard turn(making[index]);
    if (!definitions[index]) {
        definitions[index].reset(new Definition(version));
    }
    return *definitions[index];
}

Definition::Definition(Version version) : version_(version) {
    const Catalogue& catalogue = Catalogue::shared();
    elements_.reserve(catalogue.size());
    for (std::size_t id = 0; id < catalogue.size(); ++id) {
        elements_.push_back(definitionOf(static_cast<ElementId>(id), version, catalogue));
    }
}

const ElementDefinition* Definition::element(ElementId id) const {
    return id < elements_.size() && elements_[id].id != kNoElement ? &elements_[id] : nullptr;
}

const ElementDefinition* Definition::element(std::string_view name) const {
    return element(Catalogue::shared().idOf(name));
}

}  // namespace vornic::fcpxml
