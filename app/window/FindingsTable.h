#ifndef VORNIC_APP_WINDOW_FINDINGS_TABLE_H
#define VORNIC_APP_WINDOW_FINDINGS_TABLE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/window/Inspection.h"
#include "report/Finding.h"

namespace vornic {

/// What has become of a finding.
enum class FindingState {
    /// The file was only looked at.
    found,
    /// The original has it, the file has it no more.
    gone,
    /// Both have it.
    left,
    /// The original did not have it.
    appeared,
};

/// "Found", "Gone", "Left", "New".
[[nodiscard]] std::string_view nameOf(FindingState state);

/// A finding in the table.
struct ListedFinding {
    /// Lives as long as the table.
    const Finding* finding = nullptr;
    FindingState state = FindingState::found;
    /// Whether its place is one of the original.
    bool isInOriginal = false;
};

/// By what a table is sorted. Those that are equal stand in the order of the file.
enum class FindingsOrder { severity, message, place, state };

/// A finding in a text.
struct SourceMark {
    /// Of the text.
    TextSpan span;
    Severity severity = Severity::info;
};

/// What of a table is shown.
struct FindingsChoice {
    /// Shows what has this text in its message, rule, name, path or timecode; "" for all. Case of
    /// ASCII letters is no matter.
    std::string text = {};
    /// By severity: info, warning, error.
    std::array<bool, kSeverityCount> severities = {true, true, true};
    FindingsOrder order = FindingsOrder::severity;
    bool isDescending = true;
};

/// A row of the table as it is shown.
struct FindingsRow {
    static constexpr std::size_t kNoParent = static_cast<std::size_t>(-1);
    /// The finding, or the first one of a group.
    std::size_t listed = 0;
    /// A group of findings of one rule that have become the same; its children are they.
    bool isGroup = false;
    /// Of a group, with those that were only counted; of the others 1.
    std::uint64_t count = 1;
    /// The row that this one is below: its group, or its cause.
    std::size_t parent = kNoParent;
    std::vector<std::size_t> children = {};
};

/// Rows in the order in which parents come before their children.
struct FindingsRows {
    std::vector<FindingsRow> rows;
    std::vector<std::size_t> top;
};

/// Where something is, in the order of what a user looks for: "Clip 1, 01:00:04:12, line 63"; of a
/// long name the beginning.
[[nodiscard]] std::string placeText(const Place& where);

/// The findings of a file, and of what it was before, to be listed: what both have is listed once,
/// equal ones are a group, and what comes of another finding stands below it. It never changes, so
/// that any thread may read it.
class FindingsTable {
  public:
    /// @param inspection kept as long as the table
    explicit FindingsTable(std::shared_ptr<const Inspection> inspection);

    [[nodiscard]] const Inspection& inspection() const { return *inspection_; }
    [[nodiscard]] const std::shared_ptr<const Inspection>& shared() const { return inspection_; }
    [[nodiscard]] const std::vector<ListedFinding>& findings() const { return findings_; }
    /// How many findings of a severity the file has, or with an original that one had.
    [[nodiscard]] std::uint64_t count(Severity severity) const;

    /// Where findings are in the text of the file or of the original, in its order.
    [[nodiscard]] const std::vector<SourceMark>& marks(bool ofOriginal) const {
        return ofOriginal ? originalMarks_ : fileMarks_;
    }

    /// Chooses, groups and sorts. N log N; tenths of a second for a hundred thousand.
    [[nodiscard]] FindingsRows arranged(const FindingsChoice& choice) const;
    /// What a finding comes of, by its place in the list; itself for most.
    [[nodiscard]] std::size_t causeOf(std::size_t listed) const { return causes_[listed]; }
    /// How many more findings of the rule were counted and are not in the list.
    [[nodiscard]] std::uint64_t countedMore(const ListedFinding& listed) const;

    /// `placeText`, and of which of the files.
    [[nodiscard]] std::string placeOf(const ListedFinding& listed) const;
    /// The line that the finding is in, and what it has become or its mend would make of it,
    /// shortened around what differs; "" where nothing is known.
    [[nodiscard]] std::string before(const ListedFinding& listed) const;
    [[nodiscard]] std::string after(const ListedFinding& listed) const;
    /// The lines around a finding's place, each with its number; the finding's own begins with >.
    [[nodiscard]] std::string linesAround(const ListedFinding& listed) const;
    /// The lines of the file around what has become of a line of the original; "" for a finding
    /// that is not one of the original.
    [[nodiscard]] std::string linesAroundAfter(const ListedFinding& listed) const;

    /// Whether the file would be changed by the finding's mend, and whether that is safe.
    [[nodiscard]] static bool canBeMended(const ListedFinding& listed);
    [[nodiscard]] static bool isSafelyMended(const ListedFinding& listed);

  private:
    [[nodiscard]] const SourceText* sourceOf(const ListedFinding& listed) const;
    [[nodiscard]] std::string lineOf(const ListedFinding& listed) const;
    void compareWithOriginal();
    void findCauses();

    std::shared_ptr<const Inspection> inspection_;
    std::vector<ListedFinding> findings_;
    std::vector<SourceMark> fileMarks_;
    std::vector<SourceMark> originalMarks_;
    // For each finding the one that it comes of, or itself.
    std::vector<std::size_t> causes_;
};

}  // namespace vornic

#endif
