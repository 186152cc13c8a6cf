#include "salvage/Balancer.h"

#include <algorithm>

namespace vornic::salvage {

namespace {

constexpr std::size_t kMostStates = 24;
constexpr float kMargin = 14;
constexpr float kDocumentStart = 1.5F;

}  // namespace

Balancer::Balancer(std::string_view text, const std::vector<Token>& tokens, Grammar& grammar,
                   const NameTable& names, const Weights& weights)
    : text_(text), tokens_(tokens), grammar_(grammar), names_(names), weights_(weights) {
    Node document;
    document.kind = NodeKind::element;
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
    node.kind = NodeKind::element;
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
void Balancer::closeFrame(State& state, NameId name) {
    const Node& frame = nodes_[state.frame];
    state.open -= hashOf(frame.token, frame.name);
    state.top = state.frame;
    state.frame = frame.around;
    state.last = {name, tokens_[frame.token].indent};
    if (name != frame.name) {
        Node renamed = frame;
        renamed.name = name;
        state.top = add(renamed);
    }
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
    if (answers_ > tokens_.size() / 32 + 250000) {
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
        closeFrame(closed, frame.name);
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

void Balancer::keepBest() {
    states_.swap(next_);
    if (states_.size() == 1) {
        return;
    }
    std::stable_sort(states_.begin(), states_.end(),
                     [](const State& left, const State& right) { return left.cost < right.cost; });
    const std::size_t most = answers_ < 150000 ? kMostStates : answers_ < 250000 ? 4 : 1;
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
        closeFrame(state, frame.name);
    }
    closeFrame(state, name);
}

}  // namespace vornic::salvage
