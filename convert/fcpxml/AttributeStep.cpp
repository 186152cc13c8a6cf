#include "convert/fcpxml/AttributeStep.h"

#include <algorithm>
#include <string>

#include "report/RuleTable.h"
#include "xml/text/AttributeValue.h"

namespace vornic::fcpxml {

namespace {

bool hasReferences(const ElementDefinition& element) {
    return std::any_of(
        element.attributes.begin(), element.attributes.end(),
        [](const auto& attribute) { return attribute.type == AttributeType::reference; });
}

std::string valueOf(const AttributeDefinition& attribute, std::string_view rawValue) {
    return normalisedAttributeValue(rawValue, attribute.type != AttributeType::text);
}

}  // namespace

const AttributeStep::Changes& AttributeStep::changesOf(const ElementDefinition& from,
                                                       const ElementDefinition& to) {
    if (from.id >= known_.size()) {
        known_.resize(std::size_t{from.id} + 1);
    }
    std::vector<KnownChanges>& known = known_[from.id];
    auto entry = std::find_if(known.begin(), known.end(),
                              [&to](const KnownChanges& pair) { return pair.to == &to; });
    if (entry == known.end()) {
        entry = known.insert(known.end(), {&to, attributeChanges(from, to)});
    }
    return entry->changes;
}

std::optional<Change> AttributeStep::convert(ElementNumber element, const ElementDefinition& from,
                                             const ElementDefinition& to) {
    element_ = element;
    const Changes& changes = changesOf(from, to);
    const bool looksAtReferences = !state_.lostIds.empty() && hasReferences(to);
    if (changes.empty() && !looksAtReferences) {
        return std::nullopt;
    }
    std::uint64_t seen = 0;
    StartTag tag(state_.index.text(), state_.index.spanOf(element).offset);
    while (tag.next()) {
        const auto change = std::find_if(changes.begin(), changes.end(), [&](const auto& entry) {
            return entry.name == tag.name();
        });
        std::optional<Change> reason;
        if (change != changes.end()) {
            seen |= std::uint64_t{1} << (change - changes.begin());
            reason = convertPresent(*change, tag);
        }
        const AttributeDefinition* const definition =
            looksAtReferences ? to.attribute(tag.name()) : nullptr;
        if (!reason && definition != nullptr && definition->type == AttributeType::reference) {
            reason = convertReference(*definition, tag);
        }
        if (reason) {
            return reason;
        }
    }
    for (std::size_t index = 0; index < changes.size(); ++index) {
        const bool isSeen = (seen & (std::uint64_t{1} << index)) != 0;
        if (std::optional<Change> reason = isSeen ? std::nullopt : convertAbsent(changes[index])) {
            return reason;
        }
    }
    return std::nullopt;
}

// The path of an asset's media, and the effect of a transition, get another place.
bool AttributeStep::isTakenCareOf(std::string_view attribute) const {
    const std::string_view element = state_.index.nameOf(element_);
    return (element == "asset" && attribute == "src" &&
            (state_.crossesUpTo(9) || state_.crossesDownFrom(9))) ||
           (element == "transition" && attribute == "ref" && state_.crossesUpTo(3));
}

std::optional<Change> AttributeStep::convertPresent(const AttributeChange& change,
                                                    const StartTag& tag) {
    // What the old version does not have is left alone.
    if (change.from == nullptr || isTakenCareOf(change.name)) {
        return std::nullopt;
    }
    if (change.isDropped()) {
        return dropPresent(change, tag);
    }
    const std::string value = valueOf(*change.from, tag.value().of(state_.index.text()));
    if (!change.losesValues || change.to->allows(value) || !change.from->allows(value)) {
        return std::nullopt;
    }
    if (change.to->defaultKind == AttributeDefault::required) {
        return reason("conversion-value-not-known"_rule, *change.from);
    }
    state_.edits.removeAttribute(tag.attribute());
    tell("conversion-value-lost"_rule, tag.value(), *change.from, change.to->defaultValue);
    return std::nullopt;
}

std::optional<Change> AttributeStep::dropPresent(const AttributeChange& change,
                                                 const StartTag& tag) {
    const std::string value = valueOf(*change.from, tag.value().of(state_.index.text()));
    if (change.name == "enabled" && value == "0") {
        return reason("conversion-disabled-element"_rule, *change.from);
    }
    state_.edits.removeAttribute(tag.attribute());
    const bool saysNothing =
        change.from->defaultKind == AttributeDefault::value && value == change.from->defaultValue;
    if (!saysNothing) {
        tell("conversion-attribute-lost"_rule, tag.value(), *change.from);
    }
    return std::nullopt;
}

std::optional<Change> AttributeStep::convertReference(const AttributeDefinition& to,
                                                      const StartTag& tag) {
    if (!state_.lostIds.contains(valueOf(to, tag.value().of(state_.index.text())))) {
        return std::nullopt;
    }
    if (to.defaultKind == AttributeDefault::required) {
        return reason("conversion-referring-element"_rule, to);
    }
    state_.edits.removeAttribute(tag.attribute());
    tell("conversion-reference-lost"_rule, tag.value(), to);
    return std::nullopt;
}

std::optional<Change> AttributeStep::convertAbsent(const AttributeChange& change) {
    if (isTakenCareOf(change.name)) {
        return std::nullopt;
    }
    if (change.becomesRequired) {
        // From 1.6 on nothing becomes required but parts of what can go as a whole.
        if (state_.from < Version(6)) {
            state_.missing = state_.missing.value_or(MissingValue{element_, change.to->name});
            return std::nullopt;
        }
        return reason("conversion-value-missing"_rule, *change.to);
    }
    const TextSpan tag = state_.index.startTagOf(element_);
    if (change.losesDefault && change.to->allows(change.from->defaultValue)) {
        state_.edits.insertAttribute(element_, change.name, change.from->defaultValue);
        tell("conversion-default-written"_rule, tag, *change.from, change.from->defaultValue);
    } else if (change.gainsDefault && change.name != "enabled") {
        // That what is not switched off is on goes without saying.
        tell("conversion-default-gained"_rule, tag, *change.to, change.to->defaultValue);
    }
    return std::nullopt;
}

void AttributeStep::drop(ElementNumber element, std::string_view name) {
    StartTag tag(state_.index.text(), state_.index.spanOf(element).offset);
    while (tag.next()) {
        if (tag.name() == name) {
            state_.edits.removeAttribute(tag.attribute());
            state_.changes.push_back(
                {"conversion-attribute-lost"_rule, element, tag.value(), tag.name(), {}});
        }
    }
}

Change AttributeStep::reason(RuleId rule, const AttributeDefinition& attribute) const {
    return {rule, element_, state_.index.spanOf(element_), attribute.name, {}};
}

void AttributeStep::tell(RuleId rule, TextSpan content, const AttributeDefinition& attribute,
                         std::string_view instead) {
    state_.changes.push_back({rule, element_, content, attribute.name, instead});
}

}  // namespace vornic::fcpxml
