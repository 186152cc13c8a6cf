#ifndef VORNIC_REPORT_FINDINGS_H
#define VORNIC_REPORT_FINDINGS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <initializer_list>
#include <limits>

#include "report/Finding.h"
#include "report/RuleTable.h"
#include "xml/text/TextSpan.h"

namespace vornic {

/// Where rules put what they find. Counts everything and keeps the first findings of each rule, so
/// that a file with millions of faults costs no more memory than a sound one; what is only counted
/// costs a few nanoseconds and no memory.
///
/// A file of rules has one function for each rule, or for a few that look at the same things. It
/// takes what it reads (the index of the file, mostly) and this:
///
///     void checkReferences(const fcpxml::Index& index, Findings& findings) {
///         for (const Reference& reference : index.references()) {
///             if (!index.elementWithId(reference.id)) {
///                 findings.add("references-dangling"_rule, reference.value,
///                              {{"element", index.nameOf(reference.element)}, {"id", id}});
///             }
///         }
///     }
///
/// A mend hangs on the finding, if that is kept:
///
///     if (Finding* finding = findings.add(...)) {
///         finding->mend = Mend{Confidence::safe, "write the id that is meant", {...}};
///     }
///
/// Offsets are those of the text that is checked; line, column, element path and name are filled in
/// afterwards, for the findings that are kept alone. One thread.
class Findings {
  public:
    static constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();

    /// @param limit how many findings of a rule are kept.
    explicit Findings(std::size_t limit = kNoLimit) : limit_(limit) {}

    /// Findings of the rule are from now on neither counted nor kept.
    void ignore(RuleId rule) { ignored_[rule.index] = true; }

    /// Findings with the same limit and rules that are ignored, and nothing found.
    [[nodiscard]] Findings emptyCopy() const;
    /// Adds what rules that are not in these findings have found, behind what is there. Pointers
    /// that the other's `add` gave are void afterwards.
    void append(Findings&& other);

    /// Counts a finding and keeps it when it is among the first of its rule.
    /// @param where bytes of the text that is checked.
    /// @return the kept finding, which stays where it is; null when it was only counted.
    Finding* add(RuleId rule, TextSpan where,
                 std::initializer_list<MessageArgument> arguments = {}) {
        return add(rule, ruleOf(rule).severity, where, arguments);
    }
    /// The same with a weight that is not the rule's.
    Finding* add(RuleId rule, Severity severity, TextSpan where,
                 std::initializer_list<MessageArgument> arguments = {}) {
        if (ignored_[rule.index]) {
            return nullptr;
        }
        ++severityCounts_[static_cast<std::size_t>(severity)];
        const bool isKept = ruleCounts_[rule.index]++ < limit_;
        return isKept ? keep(rule, severity, where, arguments) : nullptr;
    }

    /// Whether the next finding of the rule would be kept. What is costly to say about it need not
    /// be made up otherwise.
    [[nodiscard]] bool keepsAnother(RuleId rule) const {
        return !ignored_[rule.index] && ruleCounts_[rule.index] < limit_;
    }

    /// How many findings there were, kept or not.
    [[nodiscard]] std::uint64_t count(RuleId rule) const { return ruleCounts_[rule.index]; }
    [[nodiscard]] std::uint64_t count(Severity severity) const {
        return severityCounts_[static_cast<std::size_t>(severity)];
    }

    /// Those that were kept, in the order in which they were found until `sort` is called.
    [[nodiscard]] const std::deque<Finding>& kept() const { return kept_; }
    [[nodiscard]] std::deque<Finding>& kept() { return kept_; }
    /// Puts them in the order of the file; those of one place stay in theirs. Pointers that `add`
    /// gave are void afterwards.
    void sort();

    /// Keeps no more of each rule than these, the first ones in the present order.
    void keepFirst(std::size_t most);

  private:
    Finding* keep(RuleId rule, Severity severity, TextSpan where,
                  std::initializer_list<MessageArgument> arguments);

    std::size_t limit_;
    std::array<bool, kRuleCount> ignored_{};
    std::array<std::uint64_t, kRuleCount> ruleCounts_{};
    std::array<std::uint64_t, kSeverityCount> severityCounts_{};
    std::deque<Finding> kept_;
};

}  // namespace vornic

#endif
