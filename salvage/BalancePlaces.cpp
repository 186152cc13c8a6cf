#include <algorithm>

#include "salvage/Balancer.h"

// Where in the open element a lost tag may have stood.

namespace vornic::salvage {

namespace {

// How many children are looked at, and how many places are tried.
constexpr std::size_t kLookBack = 1024;
constexpr std::size_t kShortLookBack = 8;
constexpr std::size_t kMostPlaces = 3;
constexpr float kPlaceMargin = 3;
constexpr float kOdd = 0.8F;

}  // namespace

std::vector<Balancer::Item> Balancer::itemsOf(const State& state) {
    const std::size_t most =
        lookedBack_ < 16 * tokens_.size() + 100000 ? kLookBack : kShortLookBack;
    std::vector<Item> items;
    for (NodeId node = state.top; node != state.frame && items.size() < most;
         node = nodes_[node].previous) {
        items.push_back({node, Sibling()});
    }
    lookedBack_ += items.size();
    std::reverse(items.begin(), items.end());
    Sibling previous;
    for (Item& item : items) {
        item.previous = previous;
        if (nodes_[item.node].kind != NodeKind::text) {
            previous = siblingOf(nodes_[item.node]);
        }
    }
    return items;
}

namespace {

void keepCheapest(auto& places) {
    std::stable_sort(places.begin(), places.end(),
                     [](const auto& left, const auto& right) { return left.cost < right.cost; });
    while (places.size() > kMostPlaces ||
           (places.size() > 1 && places.back().cost > places.front().cost + kPlaceMargin)) {
        places.pop_back();
    }
}

}  // namespace

// What a child of the frame would cost behind it. The element around may have lost its end as well.
float Balancer::costOutside(const Node& frame, Sibling previous, const Node& item) {
    const Node& parent = nodes_[frame.around];
    const float cost = costIn(parent.name, indentOf(parent), previous, item);
    if (cost < kOdd || parent.around == kNone) {
        return cost;
    }
    const Node& next = nodes_[parent.around];
    return std::min(cost, costIn(next.name, indentOf(next), siblingOf(parent), item) + kOdd);
}

// In front of which children the frame may have ended. The cost is what all of its children cost
// then; later places come first where the costs are equal.
std::vector<Balancer::Place> Balancer::endPlaces(const State& state,
                                                 const std::vector<Item>& items) {
    const Node& frame = nodes_[state.frame];
    std::vector<Place> places;
    float inside = 0;
    for (const Item& item : items) {
        inside += static_cast<float>(nodes_[item.node].cost) / kSteps;
    }
    float outside = 0;
    NameId last = state.last.name;
    for (std::size_t index = items.size();; --index) {
        float cost = inside + outside + grammar_.costOfEnd(frame.name, last);
        if (index < items.size()) {
            const Item& first = items[index];
            const Node& node = nodes_[first.node];
            cost += costOutside(frame, siblingOf(frame), node) -
                    costOutside(frame, first.previous, node);
        }
        places.push_back({index, cost});
        if (index == 0) {
            break;
        }
        const Item& item = items[index - 1];
        const Node& node = nodes_[item.node];
        inside -= static_cast<float>(node.cost) / kSteps;
        outside += costOutside(frame, item.previous, node);
        last = item.previous.name;
    }
    keepCheapest(places);
    return places;
}

Balancer::State Balancer::withEndAt(const State& state, const std::vector<Item>& items,
                                    std::size_t index, std::uint32_t token) {
    const Node frame = nodes_[state.frame];
    State changed = state;
    const NameId last = (index < items.size() ? items[index].previous : state.last).name;
    for (std::size_t i = index; i < items.size(); ++i) {
        changed.cost -= static_cast<float>(nodes_[items[i].node].cost) / kSteps;
    }
    changed.cost += grammar_.costOfEnd(frame.name, last);
    note(changed, ChangeKind::insertEndTag,
         index < items.size() ? nodes_[items[index].node].token : token, frame.name, frame.token);
    closeFrame(changed, frame.name);
    for (std::size_t i = index; i < items.size(); ++i) {
        pushItem(changed, Node(nodes_[items[i].node]));
    }
    return changed;
}

// From which child on the frame's children may be those of an element whose start tag is lost.
std::vector<Balancer::Place> Balancer::startPlaces(const State& state,
                                                   const std::vector<Item>& items,
                                                   std::uint32_t token) {
    const Token& tag = tokens_[token];
    const Node& frame = nodes_[state.frame];
    std::vector<Place> places;
    float before = 0;
    for (const Item& item : items) {
        before += static_cast<float>(nodes_[item.node].cost) / kSteps;
    }
    float inside = grammar_.costOfEnd(tag.name, state.last.name);
    for (std::size_t index = items.size();; --index) {
        const Sibling previous = index < items.size() ? items[index].previous : state.last;
        float cost = before + inside + grammar_.costOfChild(frame.name, previous.name, tag.name);
        if (index == items.size()) {
            cost += 0.3F + grammar_.costOfEnd(tag.name, NameTable::kStart) -
                    grammar_.costOfEnd(tag.name, state.last.name);
        } else {
            const Node& node = nodes_[items[index].node];
            cost += costIn(tag.name, tag.indent, Sibling(), node) -
                    costIn(tag.name, tag.indent, previous, node);
        }
        places.push_back({index, cost});
        if (index == 0) {
            break;
        }
        const Item& item = items[index - 1];
        const Node& node = nodes_[item.node];
        before -= static_cast<float>(node.cost) / kSteps;
        inside += costIn(tag.name, tag.indent, item.previous, node);
    }
    keepCheapest(places);
    return places;
}

Balancer::State Balancer::withStartAt(const State& state, const std::vector<Item>& items,
                                      std::size_t index, std::uint32_t token) {
    const Token& tag = tokens_[token];
    const Node& frame = nodes_[state.frame];
    State changed = state;
    Sibling last;
    for (std::size_t i = index; i < items.size(); ++i) {
        const Node& node = nodes_[items[i].node];
        changed.cost +=
            costIn(tag.name, tag.indent, last, node) - static_cast<float>(node.cost) / kSteps;
        last = node.kind == NodeKind::text ? last : siblingOf(node);
    }
    const Sibling previous = index < items.size() ? items[index].previous : state.last;
    const float cost = grammar_.costOfChild(frame.name, previous.name, tag.name) +
                       grammar_.costOfIndent(indentOf(frame), previous.indent, tag.indent);
    changed.cost += cost + grammar_.costOfEnd(tag.name, last.name);
    Node element;
    element.kind = NodeKind::insertedElement;
    element.name = tag.name;
    element.previous = index < items.size() ? nodes_[items[index].node].previous : state.top;
    element.around = state.frame;
    element.token = index < items.size() ? nodes_[items[index].node].token : token;
    element.cost = sixteenths(cost);
    note(changed, ChangeKind::insertStartTag, element.token, tag.name, token);
    changed.top = add(element);
    changed.last = {tag.name, tag.indent};
    return changed;
}

}  // namespace vornic::salvage
