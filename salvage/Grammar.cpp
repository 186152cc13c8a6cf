#include "salvage/Grammar.h"

#include <algorithm>

namespace vornic::salvage {

namespace {

constexpr std::size_t kFirstSize = 1024;
// A text with more different places of elements is no project.
constexpr std::size_t kMostEntries = 1U << 20U;
// A end tag closes at most so many elements that lack theirs, while the file is learned from.
constexpr std::size_t kNearest = 12;
constexpr float kChildIndent = 2.0F;
constexpr float kEndIndent = 2.0F;
constexpr float kSameAgain = 0.1F;

// 0 for a share that is no better than chance, 1 for one that nearly always holds.
float reliability(std::uint32_t right, std::uint32_t all) {
    if (all < 2) {
        return 0.4F;
    }
    const float share = static_cast<float>(right) / static_cast<float>(all);
    return std::clamp((share - 0.6F) / 0.3F, 0.0F, 1.0F);
}

}  // namespace

Grammar::Grammar(std::unique_ptr<Format> format, const NameTable& names)
    : format_(std::move(format)),
      names_(names),
      fcpxml_(names.find("fcpxml")),
      xmeml_(names.find("xmeml")),
      entries_(kFirstSize) {}

void Grammar::learn(const std::vector<Token>& tokens) {
    surplus_.assign(names_.size(), 0);
    starts_.assign(names_.size(), 0);
    open_.push_back({NameTable::kDocument, NameTable::kStart, Token::kNoIndent, -2});
    for (const Token& token : tokens) {
        switch (token.kind) {
            case TokenKind::start:
            case TokenKind::empty:
                learnStart(token);
                break;
            case TokenKind::end:
                learnEnd(token);
                break;
            case TokenKind::text:
                count(open_.back().name, NameTable::kStart, NameTable::kText);
                break;
            case TokenKind::other:
                break;
        }
    }
    open_ = {};
    finishLayout();
}

void Grammar::learnStart(const Token& token) {
    Open& parent = open_.back();
    count(parent.name, parent.last, token.name);
    count(parent.name, kAnything, token.name);
    parent.last = token.name;
    if (parent.indent >= 0 && token.indent >= 0) {
        const int delta = token.indent - parent.indent;
        ++children_;
        if (delta >= 0 && delta < static_cast<int>(stepCounts_.size())) {
            ++stepCounts_[static_cast<std::size_t>(delta)];
        }
    }
    if (token.name < starts_.size()) {
        ++starts_[token.name];
    }
    if (token.kind == TokenKind::start) {
        if (token.name < surplus_.size()) {
            ++surplus_[token.name];
        }
        open_.push_back({token.name, NameTable::kStart, token.indent, -2});
    } else {
        count(token.name, NameTable::kStart, NameTable::kEnd);
        count(token.name, kAnything, NameTable::kEnd);
    }
}

void Grammar::learnEnd(const Token& token) {
    if (token.name < surplus_.size()) {
        --surplus_[token.name];
    }
    std::size_t depth = open_.size();
    const std::size_t lowest = depth > kNearest ? depth - kNearest : 1;
    while (depth > lowest && open_[depth - 1].name != token.name) {
        --depth;
    }
    if (depth <= 1 || open_[depth - 1].name != token.name) {
        return;
    }
    const bool isSound = depth == open_.size();
    const Open closed = open_[depth - 1];
    open_.resize(depth - 1);
    if (!isSound) {
        return;
    }
    count(closed.name, closed.last, NameTable::kEnd);
    count(closed.name, kAnything, NameTable::kEnd);
    if (closed.indent >= 0 && token.indent >= 0) {
        ++ends_;
        evenEnds_ += closed.indent == token.indent ? 1 : 0;
    }
}

void Grammar::finishLayout() {
    const auto* const best = std::max_element(stepCounts_.begin(), stepCounts_.end());
    step_ = static_cast<int>(best - stepCounts_.begin());
    childWeight_ = kChildIndent * reliability(*best, children_);
    endWeight_ = kEndIndent * reliability(evenEnds_, ends_);
    if (step_ == 0) {
        childWeight_ = 0;
        endWeight_ = 0;
    }
}

float Grammar::costOfIndent(int around, int previous, int child) const {
    if (around < 0 || child < 0 || child == around + step_) {
        return 0;
    }
    const float cost = child <= around ? childWeight_ : childWeight_ * 0.8F;
    return child == previous ? cost * kSameAgain : cost;
}

float Grammar::costOfEndIndent(int start, int end) const {
    return start < 0 || end < 0 || start == end ? 0 : endWeight_;
}

Grammar::Entry& Grammar::entry(NameId parent, NameId previous, NameId child) {
    const std::uint64_t key =
        (std::uint64_t{parent} << 32U | std::uint64_t{previous} << 16U | std::uint64_t{child}) + 1;
    if (used_ * 2 > entries_.size()) {
        grow();
    }
    std::size_t slot = (key * 0x9E3779B97F4A7C15U) >> 20U;
    for (;; ++slot) {
        Entry& found = entries_[slot & (entries_.size() - 1)];
        if (found.key == key) {
            return found;
        }
        if (found.key == 0) {
            found.key = key;
            ++used_;
            return found;
        }
    }
}

void Grammar::grow() {
    std::vector<Entry> old(entries_.size() < kMostEntries ? entries_.size() * 2 : kFirstSize);
    old.swap(entries_);
    used_ = 0;
    if (entries_.size() == kFirstSize) {
        return;
    }
    for (const Entry& known : old) {
        if (known.key != 0) {
            const std::uint64_t key = known.key - 1;
            entry(static_cast<NameId>(key >> 32U), static_cast<NameId>(key >> 16U),
                  static_cast<NameId>(key)) = known;
        }
    }
}

float Grammar::cost(NameId parent, NameId previous, NameId child) {
    const float known = entry(parent, previous, child).cost;
    if (known >= 0) {
        return known;
    }
    const float made = makeCost(parent, previous, child);
    entry(parent, previous, child).cost = made;
    return made;
}

float Grammar::makeCost(NameId parent, NameId previous, NameId child) {
    const std::uint32_t exactly = countOf(parent, previous, child);
    if (parent == NameTable::kDocument) {
        return child == NameTable::kText ? 1.5F : isRoot(child) ? 0.0F : 5.0F;
    }
    if (child == NameTable::kText) {
        const float format = format_->costOfText(parent);
        return exactly >= 3 ? format * 0.2F : format;
    }
    const std::uint32_t anywhere = countOf(parent, kAnything, child);
    float format = child == NameTable::kEnd ? format_->costOfEnd(parent, previous)
                                            : format_->costOfChild(parent, previous, child);
    if (exactly >= 3) {
        format *= 0.2F;
    } else if (anywhere >= 3) {
        format *= 0.5F;
    }
    const bool isUnseen = exactly <= 1 && anywhere >= 4;
    return format + (isUnseen ? 0.4F : exactly <= 1 ? 0.1F : 0.0F);
}

}  // namespace vornic::salvage
