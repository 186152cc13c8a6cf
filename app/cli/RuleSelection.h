#ifndef VORNIC_APP_CLI_RULE_SELECTION_H
#define VORNIC_APP_CLI_RULE_SELECTION_H

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "report/RuleTable.h"

namespace vornic {

/// Which rules a user wants to hear of. Lists are ids and names of groups parted by commas, and `*`
/// for all.
class RuleSelection {
  public:
    /// Which rules may be named.
    enum class Scope {
        /// Those that a check looks at.
        checks,
        /// Those of salvages, conversions and repairs, too.
        allPrograms,
    };

    explicit RuleSelection(Scope scope = Scope::checks) : scope_(scope) {}

    /// From the first call on, only rules that such a list names are looked at.
    /// @return what is wrong with the list, or "".
    [[nodiscard]] std::string addOnly(std::string_view list);
    /// Leaves rules out, also some that `addOnly` names.
    [[nodiscard]] std::string addIgnored(std::string_view list);

    /// The rules that `addOnly` names, in the order of the table.
    [[nodiscard]] std::vector<const Rule*> only() const;
    /// The rules that are left out.
    [[nodiscard]] std::vector<RuleId> ignored() const;

  private:
    using Marks = std::array<bool, kRuleCount>;
    [[nodiscard]] bool mayName(const Rule& rule) const {
        return scope_ == Scope::allPrograms || isOfACheck(rule.group);
    }
    [[nodiscard]] std::string mark(Marks& marks, std::string_view list) const;
    [[nodiscard]] std::string unknownRule(std::string_view name) const;

    Scope scope_;
    bool hasOnly_ = false;
    Marks only_{};
    Marks ignored_{};
};

}  // namespace vornic

#endif
