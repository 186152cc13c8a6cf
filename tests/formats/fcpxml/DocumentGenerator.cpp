#include "tests/formats/fcpxml/DocumentGenerator.h"

#include <algorithm>
#include <limits>

namespace vornic::test {

namespace {

using fcpxml::AttributeDefault;
using fcpxml::AttributeDefinition;
using fcpxml::AttributeType;
using fcpxml::Catalogue;
using fcpxml::ContentKind;
using fcpxml::ContentModel;
using fcpxml::ElementDefinition;
using fcpxml::ElementId;

constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max() / 4;
constexpr int kDeepest = 9;
constexpr std::size_t kMostElements = 300;
// Stands for an id until all of them are known. No value holds it.
constexpr std::string_view kReference = "@@reference@@";

std::string keyOf(const ElementDefinition& element, const AttributeDefinition& attribute) {
    return std::string(element.name) + "@" + std::string(attribute.name);
}

}  // namespace

DocumentGenerator::DocumentGenerator(fcpxml::Version version, std::uint32_t seed)
    : definition_(fcpxml::Definition::of(version)),
      random_(seed),
      costs_(Catalogue::shared().size(), kNever) {
    measure();
    measureReach();
}

// The smallest forms get smaller from round to round until nothing changes.
void DocumentGenerator::measure() {
    for (bool isChanged = true; isChanged;) {
        isChanged = false;
        for (std::size_t id = 0; id < costs_.size(); ++id) {
            const ElementDefinition* const element =
                definition_.element(static_cast<ElementId>(id));
            if (element == nullptr) {
                continue;
            }
            const std::size_t content =
                element->content ? costFrom(*element->content, ContentModel::kStart) : 0;
            if (content + 1 < costs_[id]) {
                costs_[id] = content + 1;
                isChanged = true;
            }
        }
    }
}

void DocumentGenerator::measureReach() {
    std::vector<ElementId> open{Catalogue::shared().idOf("fcpxml")};
    while (!open.empty()) {
        const ElementId id = open.back();
        open.pop_back();
        const ElementDefinition* const element = definition_.element(id);
        if (element == nullptr || costs_[id] >= kNever || !reachable_.insert(id).second) {
            continue;
        }
        const auto& names = element->content ? element->content->names() : element->mixedNames;
        open.insert(open.end(), names.begin(), names.end());
    }
}

// `costFrom` for an element of the definition, found out once.
std::size_t DocumentGenerator::restOf(const ElementDefinition& element, ContentModel::State state) {
    const auto [entry, isNew] = rests_.try_emplace({element.id, state}, 0);
    if (isNew) {
        entry->second = costFrom(*element.content, state);
    }
    return entry->second;
}

// The fewest elements that bring the content to an end from a state.
std::size_t DocumentGenerator::costFrom(const ContentModel& model, ContentModel::State from) const {
    std::vector<std::size_t> costs(ContentModel::kRefused, kNever);
    costs[from] = 0;
    std::set<std::pair<std::size_t, ContentModel::State>> open{{0, from}};
    while (!open.empty()) {
        const auto [cost, state] = *open.begin();
        open.erase(open.begin());
        if (model.mayEnd(state)) {
            return cost;
        }
        for (const ElementId name : model.possible(state)) {
            const ContentModel::State next = model.next(state, name);
            if (costs_[name] < kNever && cost + costs_[name] < costs[next]) {
                open.erase({costs[next], next});
                costs[next] = cost + costs_[name];
                open.insert({costs[next], next});
            }
        }
    }
    return kNever;
}

std::string DocumentGenerator::next() {
    text_ = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE fcpxml>\n";
    idCount_ = 0;
    elementCount_ = 0;
    append(*definition_.element("fcpxml"), 0);
    if (idCount_ == 0 && text_.find(kReference) != std::string::npos) {
        // Nothing to refer to: the smallest thing with an id goes into no model everywhere, so that
        // another document is tried.
        return next();
    }
    std::string result;
    std::size_t copied = 0;
    for (std::size_t at = text_.find(kReference); at != std::string::npos;
         at = text_.find(kReference, copied)) {
        result.append(text_, copied, at - copied);
        result += "r" + std::to_string(random_() % static_cast<unsigned>(idCount_));
        copied = at + kReference.size();
    }
    return result.append(text_, copied);
}

void DocumentGenerator::append(const ElementDefinition& element, int depth) {
    ++elementCount_;
    occurred_.insert(std::string(element.name));
    text_.append("<").append(element.name);
    appendAttributes(element);
    if (element.kind == ContentKind::empty) {
        text_ += "/>";
        return;
    }
    text_ += ">";
    if (element.kind == ContentKind::mixed) {
        text_ += "Text &amp; more";
        for (const ElementId child : element.mixedNames) {
            if (chance(60) && definition_.element(child) != nullptr) {
                append(*definition_.element(child), depth + 1);
            }
        }
    } else {
        appendChildren(element, depth);
    }
    text_.append("</").append(element.name).append(">");
}

void DocumentGenerator::appendChildren(const ElementDefinition& element, int depth) {
    const ContentModel& model = *element.content;
    ContentModel::State state = ContentModel::kStart;
    while (depth < kDeepest && elementCount_ < kMostElements) {
        std::vector<ElementId> names = model.possible(state);
        std::erase_if(names, [&](ElementId name) {
            return !reachable_.contains(name) || restOf(element, model.next(state, name)) >= kNever;
        });
        if (names.empty() || (model.mayEnd(state) && chance(15))) {
            break;
        }
        std::vector<ElementId> fresh = names;
        std::erase_if(fresh, [&](ElementId name) { return isCovered(*definition_.element(name)); });
        const std::vector<ElementId>& choice = !fresh.empty() && chance(60) ? fresh : names;
        const ElementId name = choice[random_() % choice.size()];
        text_ += "\n";
        append(*definition_.element(name), depth + 1);
        state = model.next(state, name);
    }
    appendShortest(element, state, depth);
}

void DocumentGenerator::appendShortest(const ElementDefinition& element, ContentModel::State state,
                                       int depth) {
    const ContentModel& model = *element.content;
    while (!model.mayEnd(state)) {
        ElementId best = fcpxml::kNoElement;
        std::size_t bestCost = kNever;
        for (const ElementId name : model.possible(state)) {
            const std::size_t rest = restOf(element, model.next(state, name));
            if (costs_[name] < kNever && costs_[name] + rest < bestCost) {
                best = name;
                bestCost = costs_[name] + rest;
            }
        }
        append(*definition_.element(best), std::max(depth, kDeepest) + 1);
        state = model.next(state, best);
    }
}

void DocumentGenerator::appendAttributes(const ElementDefinition& element) {
    for (const AttributeDefinition& attribute : element.attributes) {
        const bool isRequired = attribute.defaultKind == AttributeDefault::required ||
                                (element.name == "fcpxml" && attribute.name == "version");
        const std::string key = keyOf(element, attribute);
        if (!isRequired && !chance(isCovered(element, attribute) ? 30 : 80)) {
            continue;
        }
        occurred_.insert(key);
        text_.append(" ").append(attribute.name).append("=\"");
        text_ += valueOf(element, attribute) + "\"";
    }
}

std::string DocumentGenerator::valueOf(const ElementDefinition& element,
                                       const AttributeDefinition& attribute) {
    if (attribute.type == AttributeType::id) {
        return "r" + std::to_string(idCount_++);
    }
    if (attribute.type == AttributeType::reference) {
        return std::string(kReference);
    }
    if (attribute.defaultKind == AttributeDefault::fixed) {
        return std::string(attribute.defaultValue);
    }
    if (attribute.type == AttributeType::text) {
        return "10 &lt; 20";
    }
    const std::string key = keyOf(element, attribute) + "=";
    std::string_view value = attribute.values[random_() % attribute.values.size()];
    for (const std::string_view other : attribute.values) {
        value = occurred_.contains(key + std::string(other)) ? value : other;
    }
    occurred_.insert(key + std::string(value));
    return std::string(value);
}

bool DocumentGenerator::isCovered(const ElementDefinition& element) {
    if (covered_.contains(&element)) {
        return true;
    }
    const bool isNowCovered =
        occurred_.contains(std::string(element.name)) &&
        std::all_of(element.attributes.begin(), element.attributes.end(),
                    [&](const auto& attribute) { return isCovered(element, attribute); });
    if (isNowCovered) {
        covered_.insert(&element);
    }
    return isNowCovered;
}

bool DocumentGenerator::isCovered(const ElementDefinition& element,
                                  const AttributeDefinition& attribute) {
    if (covered_.contains(&attribute)) {
        return true;
    }
    const bool isNowCovered = haveAllOccurred(element, attribute);
    if (isNowCovered) {
        covered_.insert(&attribute);
    }
    return isNowCovered;
}

bool DocumentGenerator::haveAllOccurred(const ElementDefinition& element,
                                        const AttributeDefinition& attribute) const {
    const std::string key = keyOf(element, attribute);
    const bool hasValues = attribute.defaultKind != AttributeDefault::fixed;
    return occurred_.contains(key) &&
           (!hasValues || std::all_of(attribute.values.begin(), attribute.values.end(),
                                      [&](std::string_view value) {
                                          return occurred_.contains(key + "=" + std::string(value));
                                      }));
}

std::vector<std::string> DocumentGenerator::missing() const {
    std::vector<std::string> missing;
    const auto expect = [&](const std::string& key) {
        if (!occurred_.contains(key)) {
            missing.push_back(key);
        }
    };
    for (const ElementId id : reachable_) {
        const ElementDefinition& element = *definition_.element(id);
        expect(std::string(element.name));
        for (const AttributeDefinition& attribute : element.attributes) {
            expect(keyOf(element, attribute));
            for (const std::string_view value : attribute.values) {
                if (attribute.defaultKind != AttributeDefault::fixed) {
                    expect(keyOf(element, attribute) + "=" + std::string(value));
                }
            }
        }
    }
    return missing;
}

bool DocumentGenerator::chance(int percent) {
    return static_cast<int>(random_() % 100) < percent;
}

std::string documentTypeDefinition(fcpxml::Version version) {
    std::string text;
    const Catalogue& catalogue = Catalogue::shared();
    for (std::size_t id = 0; id < catalogue.size(); ++id) {
        const fcpxml::CatalogueElement& element = catalogue.element(static_cast<ElementId>(id));
        const std::string name(element.name);
        for (const fcpxml::CatalogueModel& model : element.models) {
            if (model.versions.holds(version)) {
                text += "<!ELEMENT " + name + " " + std::string(model.model) + ">\n";
            }
        }
        for (const fcpxml::CatalogueAttribute& attribute : element.attributes) {
            if (attribute.versions.holds(version)) {
                text += "<!ATTLIST " + name + " " + std::string(attribute.name) + " " +
                        std::string(attribute.type) + " " + std::string(attribute.defaultText) +
                        ">\n";
            }
        }
    }
    return text;
}

}  // namespace vornic::test
