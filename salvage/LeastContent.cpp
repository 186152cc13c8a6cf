#include "salvage/LeastContent.h"

#include <utility>
#include <vector>

namespace vornic::salvage {

using fcpxml::AttributeDefault;
using fcpxml::AttributeDefinition;
using fcpxml::AttributeType;
using fcpxml::ContentKind;
using fcpxml::ContentModel;
using fcpxml::ElementDefinition;
using fcpxml::ElementId;

namespace {

// No project needs more elements in each other.
constexpr int kDeepest = 4;

}  // namespace

LeastContent::LeastContent(const ElementIndex& file, const fcpxml::Definition& definition)
    : file_(file), definition_(definition) {
    const ElementNumber resources = file.childOf(0, "resources");
    std::size_t formats = 0;
    for (ElementNumber child = resources == kNoElement ? kNoElement : file.firstChildOf(resources);
         child != kNoElement; child = file.nextSiblingOf(child)) {
        if (file.isNamed(child, "format")) {
            format_ = formats++ == 0 ? file.attributeTextOf(child, "id") : std::string_view();
        }
    }
}

std::optional<LeastContent::Children> LeastContent::missingIn(ElementNumber element) const {
    const ElementDefinition* const definition = definition_.element(file_.nameOf(element));
    if (definition == nullptr || definition->kind != ContentKind::elements) {
        return std::nullopt;
    }
    const ContentModel& model = *definition->content;
    State state = ContentModel::kStart;
    for (ElementNumber child = file_.firstChildOf(element); child != kNoElement;
         child = file_.nextSiblingOf(child)) {
        const ElementId id = fcpxml::Catalogue::shared().idOf(file_.nameOf(child));
        state = id == fcpxml::kNoElement ? ContentModel::kRefused : model.next(state, id);
        if (state == ContentModel::kRefused) {
            return std::nullopt;
        }
    }
    return model.mayEnd(state) ? std::nullopt : completion(model, state, 0);
}

// Breadth first, so that the fewest children are found.
std::optional<LeastContent::Children> LeastContent::completion(const ContentModel& model,
                                                               State from, int depth) const {
    std::vector<std::pair<State, Children>> reached{{from, {}}};
    std::vector<bool> isSeen(ContentModel::kRefused, false);
    for (std::size_t i = 0; i < reached.size(); ++i) {
        const State state = reached[i].first;
        if (model.mayEnd(state)) {
            return reached[i].second;
        }
        for (const ElementId id : model.possible(state)) {
            const State next = model.next(state, id);
            const auto child = isSeen[next] ? std::nullopt : least(id, depth);
            if (child) {
                isSeen[next] = true;
                Children children = reached[i].second;
                children.first =
                    children.text.empty() ? definition_.element(id)->name : children.first;
                children.text += *child;
                reached.emplace_back(next, std::move(children));
            }
        }
    }
    return std::nullopt;
}

std::optional<std::string> LeastContent::least(ElementId element, int depth) const {
    const ElementDefinition* const definition = definition_.element(element);
    if (definition == nullptr || depth == kDeepest) {
        return std::nullopt;
    }
    const std::optional<std::string> attributes = attributesOf(*definition);
    if (!attributes) {
        return std::nullopt;
    }
    const std::string head = "<" + std::string(definition->name) + *attributes;
    if (definition->kind != ContentKind::elements ||
        definition->content->mayEnd(ContentModel::kStart)) {
        return head + "/>";
    }
    const auto content = completion(*definition->content, ContentModel::kStart, depth + 1);
    return content ? std::optional(head + ">" + content->text + "</" +
                                   std::string(definition->name) + ">")
                   : std::nullopt;
}

std::optional<std::string> LeastContent::attributesOf(const ElementDefinition& element) const {
    std::string attributes;
    for (const AttributeDefinition& attribute : element.attributes) {
        if (attribute.defaultKind != AttributeDefault::required) {
            continue;
        }
        const bool isFormat =
            attribute.name == "format" && attribute.type == AttributeType::reference;
        if (!isFormat || format_.empty()) {
            return std::nullopt;
        }
        attributes += " format=\"" + std::string(format_) + "\"";
    }
    return attributes;
}

}  // namespace vornic::salvage
