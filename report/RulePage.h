#ifndef VORNIC_REPORT_RULE_PAGE_H
#define VORNIC_REPORT_RULE_PAGE_H

#include <string>

#include "report/Rule.h"

namespace vornic {

/// What the table says of a rule, for a terminal: lines of at most 80 characters.
[[nodiscard]] std::string pageOf(const Rule& rule);

/// A line for each rule of a check: id, weight, and what is wrong.
[[nodiscard]] std::string listOfRules();

/// All rules of a check in Markdown: `docs/rules.md`. With a list of what the formats ask for and
/// the rules that hold it.
[[nodiscard]] std::string rulesInMarkdown();

/// Every line that a repair, a salvage or a conversion says, in Markdown: a chapter of the user
/// manual.
[[nodiscard]] std::string reportLinesInMarkdown();

/// The manual page vornic-rules(7).
/// @param date of the page, such as "2026-11-22".
[[nodiscard]] std::string rulesInRoff(const std::string& date);

}  // namespace vornic

#endif
