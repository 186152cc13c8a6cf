#include "check/xmeml/FindingsAfterEdits.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "formats/IndexUpdate.h"
#include "formats/xmeml/View.h"

namespace vornic::xmeml {

namespace {

// Of longer names only the beginning is read.
constexpr std::size_t kReadWhole = 1000;

// Whether the rules of the group look at bytes that no element's text stands for.
bool isFoundAnew(RuleId rule) {
    const RuleGroup group = ruleOf(rule).group;
    return group == RuleGroup::xml || group == RuleGroup::characters || group == RuleGroup::media;
}

// Whether all findings are kept: what was only counted may lie anywhere.
bool areAllKept(const Findings& findings) {
    std::array<std::uint64_t, kRuleCount> kept{};
    for (const Finding& finding : findings.kept()) {
        ++kept[finding.rule.index];
    }
    for (std::size_t index = 0; index < kRuleCount; ++index) {
        const RuleId rule{static_cast<std::uint16_t>(index)};
        if (!isFoundAnew(rule) && findings.count(rule) != kept[index]) {
            return false;
        }
    }
    return true;
}

// Moves findings to where they are in the mended text.
class Move {
  public:
    Move(const ElementIndex& old, const std::vector<Edit>& edits,
         const std::vector<ElementNumber>& around)
        : old_(old), edits_(edits), around_(around) {
        for (const Edit& edit : edits) {
            growths_.push_back(growths_.back() + edit.text.size() - edit.length);
        }
    }

    // @return nothing where one was found in what the edits change.
    [[nodiscard]] std::optional<Findings> of(const Findings& before) const {
        Findings moved = before.emptyCopy();
        for (const Finding& finding : before.kept()) {
            if (!isFoundAnew(finding.rule) && !add(finding, moved)) {
                return std::nullopt;
            }
        }
        return moved;
    }

  private:
    bool add(const Finding& finding, Findings& moved) const {
        const std::optional<TextSpan> where =
            movedSpan({finding.where.offset, finding.where.length});
        if (!where) {
            return false;
        }
        Finding copy = finding;
        copy.where.offset = where->offset;
        copy.where.length = where->length;
        if (copy.mend && !move(*copy.mend)) {
            return false;
        }
        if (Finding* const added = moved.add(finding.rule, finding.severity, *where)) {
            *added = std::move(copy);
        }
        return true;
    }

    bool move(Mend& mend) const {
        return std::all_of(mend.edits.begin(), mend.edits.end(), [this](Edit& edit) {
            const TextSpan old{edit.offset, edit.length};
            const std::optional<TextSpan> place = movedSpan(old);
            if (!place || !spares(old)) {
                return false;
            }
            edit.offset = place->offset;
            edit.length = place->length;
            return true;
        });
    }

    // Whether a span holds what the edits change with its whole element, or not at all: else its
    // text may have been made for the text as it was written.
    [[nodiscard]] bool spares(TextSpan span) const {
        for (std::size_t index = passedBy(span.offset);
             index < edits_.size() && edits_[index].offset < span.end(); ++index) {
            const TextSpan element = old_.spanOf(around_[index]);
            if (element.offset < span.offset || element.end() > span.end()) {
                return false;
            }
        }
        return true;
    }

    // @return nothing for a span that begins or ends where an edit changes something.
    [[nodiscard]] std::optional<TextSpan> movedSpan(TextSpan span) const {
        const std::optional<std::size_t> start = movedOffset(span.offset);
        const std::optional<std::size_t> end = movedOffset(span.end());
        return start && end ? std::optional(TextSpan{*start, *end - *start}) : std::nullopt;
    }

    [[nodiscard]] std::optional<std::size_t> movedOffset(std::size_t offset) const {
        const std::size_t passed = passedBy(offset);
        const bool isInside = passed != edits_.size() && edits_[passed].offset < offset;
        const bool isInsertion =
            passed != 0 && edits_[passed - 1].length == 0 && edits_[passed - 1].offset == offset;
        return isInside || isInsertion ? std::nullopt : std::optional(offset + growths_[passed]);
    }

    // How many edits end before an offset.
    [[nodiscard]] std::size_t passedBy(std::size_t offset) const {
        const auto next = std::partition_point(
            edits_.begin(), edits_.end(),
            [offset](const Edit& edit) { return edit.offset + edit.length <= offset; });
        return static_cast<std::size_t>(next - edits_.begin());
    }

    const ElementIndex& old_;
    const std::vector<Edit>& edits_;
    // Of each edit.
    const std::vector<ElementNumber>& around_;
    // How much longer the text is behind the first edits, by their number; wraps around where it
    // got shorter.
    std::vector<std::size_t> growths_{0};
};

}  // namespace

FindingsAfterEdits::FindingsAfterEdits(const Findings& before, const ElementIndex& old,
                                       const std::vector<Edit>& edits) {
    const bool comparesTexts = before.count("references-file-repeated"_rule) != 0 ||
                               before.count("references-file-redefined"_rule) != 0;
    if (comparesTexts || !areAllKept(before)) {
        return;
    }
    const View view(old, true);
    std::vector<ElementNumber> around;
    for (const Edit& edit : edits) {
        const ElementNumber element = elementAround(old, edit);
        if (element == kNoElement) {
            return;
        }
        const bool isKnown = !around.empty() && around.back() == element;
        around.push_back(element);
        for (ElementNumber part = element; !isKnown && part < old.endOf(element); ++part) {
            const std::optional<TextSpan> text = old.textOf(part);
            if (text && text->length > kReadWhole) {
                return;
            }
            said_.push_back({part, text ? std::optional(view.textOf(part)) : std::nullopt,
                             text && text->length == 0});
        }
    }
    moved_ = Move(old, edits, around).of(before);
}

std::optional<Findings> FindingsAfterEdits::in(const ElementIndex& changed) && {
    const View view(changed, true);
    std::string storage;
    const bool saysTheSame = std::all_of(said_.begin(), said_.end(), [&](const Said& before) {
        const std::optional<TextSpan> text = changed.textOf(before.element);
        if (!text || !before.text) {
            return !text && !before.text;
        }
        return text->length <= kReadWhole && before.isEmpty == (text->length == 0) &&
               view.textOf(before.element, storage) == *before.text;
    });
    return saysTheSame ? std::move(moved_) : std::nullopt;
}

}  // namespace vornic::xmeml
