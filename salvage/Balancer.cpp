#include "salvage/Balancer.h"

#include <algorithm>
#include <cmath>

#include "salvage/NameDistance.h"
#include "xml/text/XMLCharacters.h"

namespace vornic::salvage {

namespace {

constexpr std::size_t kMostStates = 24;
constexpr float kMargin = 14;
// How many children are looked at for the place of a lost tag, and how many places are tried.
constexpr std::size_t kLookBack = 1024;
constexpr std::size_t kShortLookBack = 8;
constexpr std::size_t kMostPlaces = 3;
constexpr float kPlaceMargin = 3;
constexpr int kMostLevels = 24;
constexpr float kSteps = 16;
constexpr float kDocumentStart = 1.5F;
constexpr float kOdd = 0.8F;

}  // namespace

Balancer::Balancer(std::string_view text, const std::vector<Token>& tokens, Grammar& grammar,
                   const NameTable& names, const Weights& weights)
    : text_(text), tokens_(tokens), grammar_(grammar), names_(names), weights_(weights) {
    Node document;
    document.kind = NodeKind::open;
    document.name = NameTable::kDocument;
    document.token = kNone;
    State start;
    start.top = add(document);
    start.frame = start.top;
    states_.push_back(start);
}

std::uint8_t Balancer::sixteenths(float cost) {
    return static_cast<std::uint8_t>(std::min(cost * kSteps, 255.0F));
}

std::uint64_t Balancer::hashOf(std::uint32_t token, NameId name) {
    return (std::uint64_t{token} << 16U | name) * 0x9E3779B97F4A7C15U;
}

Balancer::NodeId Balancer::add(const Node& node) {
    nodes_.push_back(node);
    return static_cast<NodeId>(nodes_.size() - 1);
}

int Balancer::indentOf(const Node& node) const {
    return node.token == kNone || node.kind == NodeKind::insertedElement ||
                   node.kind == NodeKind::text
               ? Token::kNoIndent
               : tokens_[node.token].indent;
}

void Balancer::note(State& state, ChangeKind kind, std::uint32_t token, NameId name,
                    std::uint32_t other) {
    Edit edit;
    edit.previous = state.edits;
    edit.token = token;
    edit.other = other;
    edit.name = name;
    edit.kind = kind;
    edits_.push_back(edit);
    state.edits = static_cast<std::uint32_t>(edits_.size() - 1);
}

Balance Balancer::run(bool isCut) {
    isCut_ = isCut;
    for (std::uint32_t token = 0; token < tokens_.size(); ++token) {
        switch (tokens_[token].kind) {
            case TokenKind::start:
            case TokenKind::empty:
                for (State& state : states_) {
                    takeStart(state, token);
                }
                break;
            case TokenKind::text:
                for (State& state : states_) {
                    takeText(state, token);
                }
                break;
            case TokenKind::end:
                next_.clear();
                for (const State& state : states_) {
                    takeEnd(state, token, 0);
                }
                keepBest();
                break;
            case TokenKind::other:
                break;
        }
    }
    closeStates();
    return resultOf(*std::min_element(
        states_.begin(), states_.end(),
        [](const State& left, const State& right) { return left.cost < right.cost; }));
}

float Balancer::costIn(NameId parent, int parentIndent, Sibling previous, const Node& item) {
    return item.kind == NodeKind::text
               ? grammar_.costOfText(parent)
               : grammar_.costOfChild(parent, previous.name, item.name) +
                     grammar_.costOfIndent(parentIndent, previous.indent, indentOf(item));
}

Balancer::Sibling Balancer::siblingOf(const Node& element) const {
    return {element.name, static_cast<std::int16_t>(indentOf(element))};
}

void Balancer::takeStart(State& state, std::uint32_t token) {
    const Token& tag = tokens_[token];
    const Node& frame = nodes_[state.frame];
    float cost = grammar_.costOfChild(frame.name, state.last.name, tag.name) +
                 grammar_.costOfIndent(indentOf(frame), state.last.indent, tag.indent);
    if (frame.name == NameTable::kDocument && state.last.name != NameTable::kStart) {
        cost += kDocumentStart;
    }
    Node node;
    node.previous = state.top;
    node.around = state.frame;
    node.token = token;
    node.name = tag.name;
    node.cost = sixteenths(cost);
    const bool isEmpty = tag.kind == TokenKind::empty;
    node.kind = isEmpty ? NodeKind::element : NodeKind::open;
    state.cost += cost;
    state.top = add(node);
    state.last = isEmpty ? Sibling{tag.name, tag.indent} : Sibling();
    if (!isEmpty) {
        state.frame = state.top;
        state.open += hashOf(token, tag.name);
    }
}

void Balancer::takeText(State& state, std::uint32_t token) {
    Node node;
    node.previous = state.top;
    node.around = state.frame;
    node.token = token;
    node.name = NameTable::kText;
    node.kind = NodeKind::text;
    const float cost = grammar_.costOfText(nodes_[state.frame].name);
    node.cost = sixteenths(cost);
    state.cost += cost;
    state.top = add(node);
}

// The element around the frame goes on behind it.
void Balancer::closeFrame(State& state, NameId name, NodeKind kind) {
    const Node frame = nodes_[state.frame];
    state.open -= hashOf(frame.token, frame.name);
    Node element = frame;
    element.name = name;
    element.kind = kind;
    state.top = add(element);
    state.frame = frame.around;
    state.last = siblingOf(element);
}

void Balancer::pushItem(State& state, const Node& item) {
    const Node& frame = nodes_[state.frame];
    const float cost = costIn(frame.name, indentOf(frame), state.last, item);
    Node moved = item;
    moved.previous = state.top;
    moved.around = state.frame;
    moved.cost = sixteenths(cost);
    state.cost += cost;
    state.top = add(moved);
    state.last = item.kind == NodeKind::text ? state.last : siblingOf(item);
}

bool Balancer::isOpen(const State& state, NameId name) const {
    NodeId frame = state.frame;
    for (int level = 0; level < kMostLevels * 4 && frame != kNone; ++level) {
        if (nodes_[frame].name == name) {
            return true;
        }
        frame = nodes_[frame].around;
    }
    return false;
}

// How a change's cost is told by what the whole file has too many or too few of.
float Balancer::balanced(float cost, int surplus, int wanted) const {
    if (surplus == 0) {
        return cost + weights_.balance * 0.5F;
    }
    return (surplus > 0) == (wanted > 0) ? cost - weights_.balance : cost + weights_.balance;
}

std::string_view Balancer::rawText(std::uint32_t token) const {
    return text_.substr(tokens_[token].offset, tokens_[token].end - tokens_[token].offset);
}

// Two pieces right behind each other, or each on a line of its own that begins alike.
bool Balancer::isBeside(std::uint32_t token, std::uint32_t other) const {
    const Token& first = tokens_[std::min(token, other)];
    const Token& second = tokens_[std::max(token, other)];
    return first.end == second.offset || (first.indent >= 0 && first.indent == second.indent);
}

bool Balancer::isTwice(std::uint32_t token) const {
    const auto isSame = [&](std::uint32_t other) {
        return tokens_[other].kind == tokens_[token].kind &&
               tokens_[other].name == tokens_[token].name && isBeside(other, token) &&
               rawText(other) == rawText(token);
    };
    return (token > 0 && isSame(token - 1)) || (token + 1 < tokens_.size() && isSame(token + 1));
}

void Balancer::takeEnd(const State& state, std::uint32_t token, int depth) {
    const Token& tag = tokens_[token];
    const Node& frame = nodes_[state.frame];
    if (answers_ > tokens_.size() / 32 + 300000) {
        State poor = state;
        takeEndPoorly(poor, token);
        next_.push_back(poor);
        return;
    }
    const bool fits = frame.name == tag.name && frame.name != NameTable::kDocument;
    if (fits) {
        const float odd = grammar_.costOfEnd(frame.name, state.last.name) +
                          grammar_.costOfEndIndent(indentOf(frame), tag.indent);
        State closed = state;
        closeFrame(closed, frame.name, NodeKind::element);
        closed.cost += odd;
        next_.push_back(closed);
        if (odd < weights_.doubt || depth > 0) {
            return;
        }
    }
    ++answers_;
    if (frame.name != NameTable::kDocument) {
        tryInsertEnd(state, token, depth);
        tryRemoveStart(state, token, depth);
    }
    if (depth <= 1) {
        tryInsertStart(state, token);
    }
    if (depth == 0) {
        tryRemoveEnd(state, token);
        if (!fits && frame.name != NameTable::kDocument) {
            tryRename(state, token);
        }
    }
}

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
    closeFrame(changed, frame.name, NodeKind::element);
    for (std::size_t i = index; i < items.size(); ++i) {
        pushItem(changed, Node(nodes_[items[i].node]));
    }
    return changed;
}

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
    for (const Place& place : startPlaces(state, items, token)) {
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
    closeFrame(changed, name, NodeKind::element);
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

void Balancer::keepBest() {
    states_.swap(next_);
    if (states_.size() == 1) {
        return;
    }
    std::stable_sort(states_.begin(), states_.end(),
                     [](const State& left, const State& right) { return left.cost < right.cost; });
    const std::size_t most = answers_ < 200000 ? kMostStates : answers_ < 300000 ? 4 : 1;
    std::size_t kept = 0;
    for (std::size_t i = 0; i < states_.size() && kept < most; ++i) {
        const State& state = states_[i];
        if (state.cost > states_[0].cost + kMargin) {
            break;
        }
        const bool isNew =
            std::none_of(states_.begin(), states_.begin() + static_cast<std::ptrdiff_t>(kept),
                         [&](const State& other) { return other.open == state.open; });
        if (isNew) {
            states_[kept++] = state;
        }
    }
    states_.resize(kept);
}

// For texts with so many faults that there is nothing to weigh.
void Balancer::takeEndPoorly(State& state, std::uint32_t token) {
    const NameId name = tokens_[token].name;
    if (!isOpen(state, name)) {
        note(state, ChangeKind::removeEndTag, token, name);
        state.cost += weights_.removeEnd;
        return;
    }
    while (nodes_[state.frame].name != name) {
        const Node& frame = nodes_[state.frame];
        note(state, ChangeKind::insertEndTag, token, frame.name, frame.token);
        state.cost += weights_.insertEnd;
        closeFrame(state, frame.name, NodeKind::element);
    }
    closeFrame(state, name, NodeKind::element);
}

}  // namespace vornic::salvage
