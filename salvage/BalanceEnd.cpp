#include <algorithm>

#include "salvage/Balancer.h"

// What becomes of the elements that are open where the text ends.

namespace vornic::salvage {

// The cheapest first; where much is open, that is all.
void Balancer::closeStates() {
    std::stable_sort(states_.begin(), states_.end(),
                     [](const State& left, const State& right) { return left.cost < right.cost; });
    const std::size_t before = nodes_.size();
    std::size_t closed = 0;
    while (closed < states_.size() &&
           (closed == 0 || nodes_.size() - before < tokens_.size() / 16 + 10000)) {
        closeAll(states_[closed++]);
    }
    states_.resize(closed);
}

void Balancer::closeAll(State& state) {
    while (nodes_[state.frame].name != NameTable::kDocument) {
        closeOneAtEnd(state);
    }
    addMissingRoot(state);
}

void Balancer::closeOneAtEnd(State& state) {
    const auto end = static_cast<std::uint32_t>(tokens_.size());
    const Node frame = nodes_[state.frame];
    const std::vector<Item> items = itemsOf(state);
    if (const std::optional<State> changed = withoutStart(state, items);
        changed && changed->cost < state.cost + weights_.closeAtEnd) {
        state = *changed;
        return;
    }
    const std::vector<Place> places = endPlaces(state, items);
    const auto last = std::find_if(places.begin(), places.end(),
                                   [&](const Place& place) { return place.index == items.size(); });
    const float insertion = balanced(weights_.insertEnd, grammar_.surplus(frame.name), 1);
    const bool isInside = places.front().index < items.size() &&
                          (last == places.end() ||
                           places.front().cost + insertion < last->cost + weights_.closeAtEnd);
    if (isInside) {
        state = withEndAt(state, items, places.front().index, end);
        state.cost += insertion;
        return;
    }
    note(state, ChangeKind::closeAtEnd, end, frame.name, frame.token);
    state.cost += weights_.closeAtEnd;
    closeFrame(state, frame.name);
}

// What is left of a file whose root element's start was lost is put into one.
void Balancer::addMissingRoot(State& state) {
    bool hasRoot = false;
    bool hasOther = false;
    std::uint32_t first = kNone;
    for (NodeId node = state.top; node != state.frame; node = nodes_[node].previous) {
        const Node& item = nodes_[node];
        hasRoot = hasRoot || grammar_.isRoot(item.name);
        hasOther = hasOther || item.kind != NodeKind::text;
        first = item.kind != NodeKind::text ? item.token : first;
    }
    const NameId root = grammar_.rootName();
    if (hasRoot || !hasOther || root == NameTable::kOther) {
        return;
    }
    const auto end = static_cast<std::uint32_t>(tokens_.size());
    note(state, ChangeKind::insertStartTag, first, root, end);
    note(state, ChangeKind::closeAtEnd, end, root, first);
    Node element;
    element.kind = NodeKind::insertedElement;
    element.name = root;
    element.previous = state.frame;
    element.around = state.frame;
    element.token = first;
    state.top = add(element);
    state.cost += weights_.insertStart * 2;
}

}  // namespace vornic::salvage
