#include <algorithm>

#include "salvage/Balancer.h"
#include "xml/text/XMLCharacters.h"

namespace vornic::salvage {

namespace {

using xmlchars::is;
using xmlchars::kSpace;

std::size_t lineStart(std::string_view text, std::size_t at) {
    while (at > 0 && (text[at - 1] == ' ' || text[at - 1] == '\t')) {
        --at;
    }
    return at;
}

}  // namespace

Balance Balancer::resultOf(const State& state) {
    Balance result;
    result.cost = state.cost;
    result.roots = rootsOf(state);
    nodes_ = {};
    std::uint32_t edit = state.edits;
    while (edit != kNone) {
        result.changes.push_back(changeOf(edits_[edit]));
        edits_.shrinkTo(edit + 1);
        edit = edits_[edit].previous;
    }
    std::reverse(result.changes.begin(), result.changes.end());
    // A sort takes memory for half of them.
    if (!std::is_sorted(result.changes.begin(), result.changes.end(), isBefore)) {
        std::stable_sort(result.changes.begin(), result.changes.end(), isBefore);
    }
    return result;
}

std::vector<RootElement> Balancer::rootsOf(const State& state) const {
    std::vector<RootElement> roots;
    auto end = static_cast<std::uint32_t>(tokens_.size());
    for (NodeId node = state.top; node != state.frame; node = nodes_[node].previous) {
        const Node& item = nodes_[node];
        if (item.kind != NodeKind::text) {
            roots.push_back({item.name, item.token, end});
        }
        end = item.token;
    }
    std::reverse(roots.begin(), roots.end());
    return roots;
}

Change Balancer::changeOf(const Edit& edit) const {
    Change change;
    change.kind = edit.kind;
    change.name = edit.name;
    switch (edit.kind) {
        case ChangeKind::insertEndTag:
        case ChangeKind::closeAtEnd:
            placeEndTag(edit, change);
            break;
        case ChangeKind::insertStartTag:
            placeStartTag(edit, change);
            break;
        case ChangeKind::renameEndTag:
        case ChangeKind::renameStartTag: {
            const bool isEnd = edit.kind == ChangeKind::renameEndTag;
            change.offset = tokens_[edit.token].offset + (isEnd ? 2 : 1);
            std::size_t at = change.offset;
            while (isEnd && at < text_.size() && is(text_[at], kSpace)) {
                ++at;
            }
            change.offset = static_cast<std::uint32_t>(at);
            change.length = static_cast<std::uint32_t>(
                xmlchars::nameLength(text_.data() + at, text_.data() + text_.size()));
            break;
        }
        default:
            placeRemoval(edit, change);
    }
    return change;
}

void Balancer::placeEndTag(const Edit& edit, Change& change) const {
    const Token* const before = edit.token > 0 ? &tokens_[edit.token - 1] : nullptr;
    change.offset = before == nullptr ? 0 : before->end;
    change.other = edit.other < tokens_.size() ? tokens_[edit.other].offset : 0;
    if (before == nullptr || edit.other >= tokens_.size()) {
        return;
    }
    const Token& start = tokens_[edit.other];
    const bool isBesideStart = edit.token - 1 == edit.other ||
                               (before->kind == TokenKind::text && edit.token - 2 == edit.other);
    const std::string_view between =
        text_.substr(start.end, std::max(before->end, start.end) - start.end);
    // One line break tells; where there is none, the search must not be long.
    const bool isOnOneLine = between.substr(0, 4096).find('\n') == std::string_view::npos;
    change.isOnOwnLine = !isBesideStart && !isOnOneLine && start.indent >= 0;
}

void Balancer::placeStartTag(const Edit& edit, Change& change) const {
    if (edit.token >= tokens_.size()) {
        change.offset = static_cast<std::uint32_t>(text_.size());
        return;
    }
    const Token& child = tokens_[edit.token];
    change.offset = child.offset;
    if (edit.other >= tokens_.size()) {
        change.other = static_cast<std::uint32_t>(text_.size());
        return;
    }
    const Token& end = tokens_[edit.other];
    change.other = end.offset;
    if (child.indent >= 0 && end.indent >= 0 && edit.token != edit.other) {
        change.offset = static_cast<std::uint32_t>(lineStart(text_, child.offset));
        change.isOnOwnLine = true;
    }
}

// A tag that stands alone on its line goes with the line.
void Balancer::placeRemoval(const Edit& edit, Change& change) const {
    const Token& tag = tokens_[edit.token];
    std::size_t from = tag.offset;
    const std::size_t end = tag.end;
    if (tag.indent >= 0 && end < text_.size() && (text_[end] == '\n' || text_[end] == '\r')) {
        from = lineStart(text_, from);
        if (from > 0 && text_[from - 1] == '\n') {
            from -= from > 1 && text_[from - 2] == '\r' ? 2 : 1;
        }
    }
    change.offset = static_cast<std::uint32_t>(from);
    change.length = static_cast<std::uint32_t>(end - from);
}

}  // namespace vornic::salvage
