#include "check/fcpxml/RepeatedIds.h"

#include <algorithm>
#include <utility>

#include "base/Text.h"
#include "check/fcpxml/ReferenceKinds.h"

namespace vornic {

namespace {

constexpr std::string_view kStyleKind = "text-style-def";

}  // namespace

void RepeatedIds::gatherReferences() {
    if (std::exchange(isGathered_, true)) {
        return;
    }
    for (const std::string_view attribute : kReferenceAttributes) {
        for (const ElementNumber element : index_.elementsWithAttribute(attribute)) {
            addReference(element, attribute);
        }
    }
}

void RepeatedIds::addReference(ElementNumber element, std::string_view attribute) {
    const TextSpan value = *index_.attributeOf(element, attribute);
    const std::string_view id = trimmed(value.of(index_.text()));
    isUnclear_ = isUnclear_ || id.find('&') != std::string_view::npos;
    references_[id].push_back({element, attribute, value});
}

RepeatedIds::Owners& RepeatedIds::ownersOf(std::string_view id) {
    const auto [found, isNew] = owners_.try_emplace(id);
    Owners& owners = found->second;
    if (!isNew) {
        return owners;
    }
    for (const ElementNumber element : index_.elementsWithId(id)) {
        owners.byKind[index_.nameOf(element)].push_back(element);
        const auto [other, isFirst] = owners.byParent.emplace(index_.parentOf(element), element);
        other->second = isFirst ? element : kNoElement;
    }
    for (const auto& [kind, elements] : owners.byKind) {
        if (areAlike(elements)) {
            owners.alike.insert(kind);
        }
    }
    const auto references = references_.find(id);
    if (references != references_.end()) {
        for (const Reference& reference : references->second) {
            resolve(owners, reference);
        }
    }
    return owners;
}

void RepeatedIds::resolve(Owners& owners, const Reference& reference) const {
    const ReferenceKinds* const kinds =
        referenceKindsOf(reference.attribute, index_.nameOf(reference.element));
    std::vector<std::string_view> meant;
    for (const auto& [kind, elements] : owners.byKind) {
        if (kinds != nullptr && kinds->allow(kind)) {
            meant.push_back(kind);
        }
    }
    ElementNumber target = kNoElement;
    if (meant.size() == 1) {
        const std::vector<ElementNumber>& candidates = owners.byKind.at(meant.front());
        target = candidates.size() == 1        ? candidates.front()
                 : meant.front() == kStyleKind ? styleOf(owners, reference.element)
                                               : kNoElement;
        if (target == kNoElement && owners.alike.contains(meant.front())) {
            target = candidates.front();
        }
    }
    if (target != kNoElement) {
        owners.references[target].push_back(reference.value);
        return;
    }
    for (const auto& [kind, elements] : owners.byKind) {
        if (meant.empty() || std::find(meant.begin(), meant.end(), kind) != meant.end()) {
            owners.unclear.insert(kind);
        }
    }
}

// The style that the title around a text defines.
ElementNumber RepeatedIds::styleOf(const Owners& owners, ElementNumber text) const {
    for (ElementNumber around = index_.parentOf(text); around != kNoElement;
         around = index_.parentOf(around)) {
        const auto inside = owners.byParent.find(around);
        if (inside != owners.byParent.end() && inside->second != kNoElement &&
            index_.isNamed(inside->second, kStyleKind)) {
            return inside->second;
        }
    }
    return kNoElement;
}

bool RepeatedIds::areAlike(const std::vector<ElementNumber>& elements) const {
    return std::all_of(elements.begin(), elements.end(), [&](ElementNumber element) {
        return index_.spanOf(element).of(index_.text()) ==
               index_.spanOf(elements.front()).of(index_.text());
    });
}

std::optional<Mend> RepeatedIds::mendOf(ElementNumber element) {
    const std::optional<TextSpan> value = index_.attributeOf(element, "id");
    const std::string_view id = value ? trimmed(value->of(index_.text())) : std::string_view();
    gatherReferences();
    if (id.empty() || isUnclear_ || id.find('&') != std::string_view::npos) {
        return std::nullopt;
    }
    Owners& owners = ownersOf(id);
    if (owners.unclear.contains(index_.nameOf(element))) {
        return std::nullopt;
    }
    const std::string fresh = freshIds_.like(id);
    Mend mend{Confidence::ask,
              "write the id \"" + fresh + "\" here, and where this one is meant",
              {{value->offset, value->length, fresh}}};
    for (const TextSpan& reference : owners.references[element]) {
        mend.edits.push_back({reference.offset, reference.length, fresh});
    }
    std::sort(mend.edits.begin(), mend.edits.end(),
              [](const Edit& left, const Edit& right) { return left.offset < right.offset; });
    return mend;
}

}  // namespace vornic
