#include <algorithm>

#include "salvage/Balancer.h"
#include "salvage/NameDistance.h"

// What may have happened where an end tag does not fit.

namespace vornic::salvage {

void Balancer::tryInsertEnd(const State& state, std::uint32_t token, int depth) {
    if (depth >= kMostLevels || !isOpen(state, tokens_[token].name)) {
        return;
    }
    const NameId name = nodes_[state.frame].name;
    const std::vector<Item> items = itemsOf(state);
    std::vector<Place> places = endPlaces(state, items);
    if (depth >= 2) {
        places.resize(1);
    }
    const float cost = balanced(weights_.insertEnd, grammar_.surplus(name), 1);
    for (const Place& place : places) {
        State changed = withEndAt(state, items, place.index, token);
        changed.cost += cost;
        takeEnd(changed, token, depth + 1);
    }
}

// No element is put around a root element, and none behind it around nothing but text.
bool Balancer::mayStartInDocument(const std::vector<Item>& items, std::size_t index) const {
    const auto first = items.begin() + static_cast<std::ptrdiff_t>(index);
    const auto isRoot = [this](const Item& item) {
        return grammar_.isRoot(nodes_[item.node].name);
    };
    const auto isElement = [this](const Item& item) {
        return nodes_[item.node].kind != NodeKind::text;
    };
    return std::none_of(first, items.end(), isRoot) &&
           (std::none_of(items.begin(), first, isRoot) ||
            std::any_of(first, items.end(), isElement));
}

void Balancer::tryInsertStart(const State& state, std::uint32_t token) {
    const NameId name = tokens_[token].name;
    if (name == NameTable::kNameless || name == NameTable::kOther) {
        return;
    }
    const std::vector<Item> items = itemsOf(state);
    float cost = balanced(weights_.insertStart, grammar_.surplus(name), -1);
    if (!grammar_.isKnown(name) && grammar_.starts(name) == 0) {
        cost += weights_.balance * 1.5F;
    }
    const bool isInDocument = nodes_[state.frame].name == NameTable::kDocument;
    for (const Place& place : startPlaces(state, items, token)) {
        if (isInDocument && !mayStartInDocument(items, place.index)) {
            continue;
        }
        State changed = withStartAt(state, items, place.index, token);
        changed.cost += cost;
        next_.push_back(changed);
    }
}

void Balancer::tryRemoveEnd(const State& state, std::uint32_t token) {
    const NameId name = tokens_[token].name;
    State changed = state;
    changed.cost += balanced(weights_.removeEnd, grammar_.surplus(name), -1);
    const Edit* const last = state.edits == kNone ? nullptr : &edits_[state.edits];
    if (isTwice(token)) {
        changed.cost -= weights_.twice;
    } else if (last != nullptr && last->kind == ChangeKind::insertEndTag && last->name == name &&
               last->token + 1 == token) {
        changed.cost -= weights_.crossed;
    }
    note(changed, ChangeKind::removeEndTag, token, name);
    next_.push_back(changed);
}

// One of the two names is a misspelt other.
void Balancer::tryRename(const State& state, std::uint32_t token) {
    const Token& tag = tokens_[token];
    const Node& frame = nodes_[state.frame];
    const bool isEndOdd = !grammar_.isKnown(tag.name) &&
                          (grammar_.starts(tag.name) == 0 || tag.name == NameTable::kNameless);
    const bool isStartOdd = !grammar_.isKnown(frame.name) && grammar_.starts(frame.name) <= 1 &&
                            grammar_.surplus(frame.name) > 0;
    const float far = nameDistance(names_.textOf(tag.name), names_.textOf(frame.name));
    float cost = weights_.rename + 4 * far;
    cost += isEndOdd || isStartOdd ? -weights_.balance * 1.5F : weights_.balance;
    if (!isEndOdd) {
        cost += grammar_.surplus(tag.name) < 0 && grammar_.surplus(frame.name) > 0
                    ? -weights_.balance * 0.5F
                    : weights_.balance;
    }
    State changed = state;
    const bool renamesStart = isStartOdd && !isEndOdd;
    const NameId name = renamesStart ? tag.name : frame.name;
    cost += grammar_.costOfEnd(name, state.last.name) +
            grammar_.costOfEndIndent(indentOf(frame), tag.indent);
    if (renamesStart) {
        note(changed, ChangeKind::renameStartTag, frame.token, name);
    } else {
        note(changed, ChangeKind::renameEndTag, token, name);
    }
    changed.cost += cost;
    closeFrame(changed, name);
    next_.push_back(changed);
}

// A start tag that stands twice.
void Balancer::tryRemoveStart(const State& state, std::uint32_t token, int depth) {
    if (depth > 1) {
        return;
    }
    if (const std::optional<State> changed = withoutStart(state, itemsOf(state))) {
        takeEnd(*changed, token, depth + 1);
    }
}

std::optional<Balancer::State> Balancer::withoutStart(const State& state,
                                                      const std::vector<Item>& items) {
    const Node frame = nodes_[state.frame];
    if (frame.token == kNone || !isTwice(frame.token) ||
        (!items.empty() && nodes_[items.front().node].previous != state.frame)) {
        return std::nullopt;
    }
    State changed = state;
    changed.cost += balanced(weights_.removeStart, grammar_.surplus(frame.name), 1) -
                    weights_.twice - static_cast<float>(frame.cost) / kSteps;
    note(changed, ChangeKind::removeStartTag, frame.token, frame.name);
    changed.open -= hashOf(frame.token, frame.name);
    changed.top = frame.previous;
    changed.frame = frame.around;
    changed.last = Sibling();
    for (NodeId node = changed.top; node != changed.frame; node = nodes_[node].previous) {
        if (nodes_[node].kind != NodeKind::text) {
            changed.last = siblingOf(nodes_[node]);
            break;
        }
    }
    for (const Item& item : items) {
        changed.cost -= static_cast<float>(nodes_[item.node].cost) / kSteps;
        pushItem(changed, Node(nodes_[item.node]));
    }
    return changed;
}

}  // namespace vornic::salvage
