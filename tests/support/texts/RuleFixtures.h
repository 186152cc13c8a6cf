#ifndef VORNIC_TESTS_SUPPORT_TEXTS_RULE_FIXTURES_H
#define VORNIC_TESTS_SUPPORT_TEXTS_RULE_FIXTURES_H

#include <string>
#include <vector>

#include "check/Check.h"

namespace vornic::test {

/// A file of `tests/data/check/RULE/`: one that breaks the rule and no other (`broken*`), or one
/// that comes close and does not (`close*`).
struct RuleFixture {
    /// The folder's name, which is the rule's id.
    std::string rule;
    /// The file's name in it.
    std::string name;
    std::string bytes;
    /// As the folder's file `options` says, which holds what would stand on the command line.
    CheckOptions options;

    [[nodiscard]] bool breaks() const { return name.starts_with("broken"); }
};

/// The names of the folders, sorted.
[[nodiscard]] std::vector<std::string> ruleFixtureFolders();
/// All fixtures, sorted by folder and name.
/// @throws std::runtime_error for a file that is none and for options that are not known here.
[[nodiscard]] std::vector<RuleFixture> ruleFixtures();

}  // namespace vornic::test

#endif
