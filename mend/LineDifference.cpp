#include "mend/LineDifference.h"

#include <algorithm>
#include <cstdint>
#include <unordered_map>

namespace vornic {

namespace {

using Lines = std::vector<std::string_view>;
// Lines as numbers: those that are the same have the same one.
using Numbers = std::vector<std::uint32_t>;

// Parts of so many pairs of lines are compared pair by pair.
constexpr std::size_t kMostPairs = 1'000'000;

std::string_view trimmed(std::string_view line) {
    constexpr std::string_view kWhiteSpace = " \t\r";
    const std::size_t first = line.find_first_not_of(kWhiteSpace);
    return first == std::string_view::npos
               ? std::string_view()
               : line.substr(first, line.find_last_not_of(kWhiteSpace) - first + 1);
}

// A part of both texts that is still to be compared.
struct Part {
    std::size_t oldBegin = 0;
    std::size_t oldEnd = 0;
    std::size_t newBegin = 0;
    std::size_t newEnd = 0;
};

// Two lines that are the same.
struct Match {
    std::size_t oldLine = 0;
    std::size_t newLine = 0;
};

class Comparison {
  public:
    Comparison(const Lines& oldLines, const Lines& newLines, bool isIndentationIgnored)
        : old_(numbered(oldLines, isIndentationIgnored)),
          new_(numbered(newLines, isIndentationIgnored)),
          oldSeen_(numbers_.size()),
          newSeen_(numbers_.size()),
          place_(numbers_.size()) {}

    std::vector<LineChange> run() {
        std::vector<Part> open{{0, old_.size(), 0, new_.size()}};
        while (!open.empty()) {
            const Part part = withoutSameEnds(open.back());
            open.pop_back();
            if (part.oldBegin == part.oldEnd || part.newBegin == part.newEnd) {
                change(part);
                continue;
            }
            const std::vector<Match> matches = uniqueMatches(part);
            if (matches.empty()) {
                compareClosely(part);
                continue;
            }
            // The last one is looked at first.
            openBetween(part, matches, open);
        }
        return std::move(changes_);
    }

  private:
    Numbers numbered(const Lines& lines, bool isIndentationIgnored) {
        Numbers numbers;
        numbers.reserve(lines.size());
        for (const std::string_view line : lines) {
            const std::string_view key = isIndentationIgnored ? trimmed(line) : line;
            numbers.push_back(
                numbers_.emplace(key, static_cast<std::uint32_t>(numbers_.size())).first->second);
        }
        return numbers;
    }

    [[nodiscard]] Part withoutSameEnds(Part part) const {
        while (part.oldBegin < part.oldEnd && part.newBegin < part.newEnd &&
               old_[part.oldBegin] == new_[part.newBegin]) {
            ++part.oldBegin;
            ++part.newBegin;
        }
        while (part.oldBegin < part.oldEnd && part.newBegin < part.newEnd &&
               old_[part.oldEnd - 1] == new_[part.newEnd - 1]) {
            --part.oldEnd;
            --part.newEnd;
        }
        return part;
    }

    // The longest ascending row of lines that stand once in either part.
    std::vector<Match> uniqueMatches(const Part& part) {
        for (std::size_t line = part.oldBegin; line < part.oldEnd; ++line) {
            ++oldSeen_[old_[line]];
            place_[old_[line]] = line;
        }
        for (std::size_t line = part.newBegin; line < part.newEnd; ++line) {
            ++newSeen_[new_[line]];
        }
        std::vector<Match> candidates;
        for (std::size_t line = part.newBegin; line < part.newEnd; ++line) {
            const std::uint32_t number = new_[line];
            if (oldSeen_[number] == 1 && newSeen_[number] == 1) {
                candidates.push_back({place_[number], line});
            }
        }
        for (std::size_t line = part.oldBegin; line < part.oldEnd; ++line) {
            oldSeen_[old_[line]] = 0;
        }
        for (std::size_t line = part.newBegin; line < part.newEnd; ++line) {
            newSeen_[new_[line]] = 0;
        }
        return longestAscending(candidates);
    }

    static std::vector<Match> longestAscending(const std::vector<Match>& candidates) {
        // The last candidate of the best row of each length, and the one before each candidate.
        std::vector<std::size_t> ends;
        std::vector<std::size_t> previous(candidates.size());
        for (std::size_t index = 0; index < candidates.size(); ++index) {
            const auto place = std::lower_bound(
                ends.begin(), ends.end(), index, [&](std::size_t left, std::size_t right) {
                    return candidates[left].oldLine < candidates[right].oldLine;
                });
            previous[index] = place == ends.begin() ? candidates.size() : *(place - 1);
            if (place == ends.end()) {
                ends.push_back(index);
            } else {
                *place = index;
            }
        }
        std::vector<Match> row(ends.size());
        std::size_t index = ends.empty() ? candidates.size() : ends.back();
        for (auto place = row.rbegin(); place != row.rend(); ++place) {
            *place = candidates[index];
            index = previous[index];
        }
        return row;
    }

    static void openBetween(const Part& part, const std::vector<Match>& matches,
                            std::vector<Part>& open) {
        Part rest{matches.back().oldLine + 1, part.oldEnd, matches.back().newLine + 1, part.newEnd};
        open.push_back(rest);
        for (std::size_t index = matches.size(); index-- > 0;) {
            const Match& match = matches[index];
            open.push_back(
                {index == 0 ? part.oldBegin : matches[index - 1].oldLine + 1, match.oldLine,
                 index == 0 ? part.newBegin : matches[index - 1].newLine + 1, match.newLine});
        }
    }

    // The longest common row of lines, where that is affordable.
    void compareClosely(const Part& part) {
        const std::size_t height = part.oldEnd - part.oldBegin;
        const std::size_t width = part.newEnd - part.newBegin;
        if (height > kMostPairs / width) {
            return change(part);
        }
        // The length of the longest row behind each pair.
        std::vector<std::uint32_t> lengths((height + 1) * (width + 1), 0);
        const auto at = [&](std::size_t row, std::size_t column) -> std::uint32_t& {
            return lengths[row * (width + 1) + column];
        };
        for (std::size_t row = height; row-- > 0;) {
            for (std::size_t column = width; column-- > 0;) {
                const bool isSame = old_[part.oldBegin + row] == new_[part.newBegin + column];
                at(row, column) = isSame ? at(row + 1, column + 1) + 1
                                         : std::max(at(row + 1, column), at(row, column + 1));
            }
        }
        Part pending{part.oldBegin, part.oldBegin, part.newBegin, part.newBegin};
        while (pending.oldEnd < part.oldEnd && pending.newEnd < part.newEnd) {
            if (old_[pending.oldEnd] == new_[pending.newEnd]) {
                change(pending);
                pending.oldBegin = ++pending.oldEnd;
                pending.newBegin = ++pending.newEnd;
                continue;
            }
            const std::size_t row = pending.oldEnd - part.oldBegin;
            const std::size_t column = pending.newEnd - part.newBegin;
            if (at(row + 1, column) >= at(row, column + 1)) {
                ++pending.oldEnd;
            } else {
                ++pending.newEnd;
            }
        }
        change({pending.oldBegin, part.oldEnd, pending.newBegin, part.newEnd});
    }

    // Parts come in their order; those that touch are one change.
    void change(const Part& part) {
        const LineChange next{part.oldBegin, part.oldEnd - part.oldBegin, part.newBegin,
                              part.newEnd - part.newBegin};
        if (next.oldCount == 0 && next.newCount == 0) {
            return;
        }
        if (!changes_.empty()) {
            LineChange& last = changes_.back();
            if (last.oldLine + last.oldCount == next.oldLine &&
                last.newLine + last.newCount == next.newLine) {
                last.oldCount += next.oldCount;
                last.newCount += next.newCount;
                return;
            }
        }
        changes_.push_back(next);
    }

    std::unordered_map<std::string_view, std::uint32_t> numbers_;
    Numbers old_;
    Numbers new_;
    // By number, for one part at a time: how often it stands there, and where.
    std::vector<std::uint32_t> oldSeen_;
    std::vector<std::uint32_t> newSeen_;
    std::vector<std::size_t> place_;
    std::vector<LineChange> changes_;
};

}  // namespace

std::vector<LineChange> lineDifference(const Lines& oldLines, const Lines& newLines,
                                       bool isIndentationIgnored) {
    return Comparison(oldLines, newLines, isIndentationIgnored).run();
}

std::size_t newLineOf(std::size_t oldLine, const std::vector<LineChange>& changes) {
    const auto next = std::upper_bound(
        changes.begin(), changes.end(), oldLine,
        [](std::size_t line, const LineChange& change) { return line < change.oldLine; });
    if (next == changes.begin()) {
        return oldLine;
    }
    const LineChange& change = *(next - 1);
    const std::size_t inside = oldLine - change.oldLine;
    if (inside >= change.oldCount) {
        return change.newLine + change.newCount + inside - change.oldCount;
    }
    return change.newLine + std::min(inside, change.newCount - (change.newCount == 0 ? 0 : 1));
}

}  // namespace vornic
