#ifndef VORNIC_TESTS_SUPPORT_TEXTS_LOG_TEXT_H
#define VORNIC_TESTS_SUPPORT_TEXTS_LOG_TEXT_H

#include <string>
#include <string_view>
#include <vector>

namespace vornic::test {

/// The messages of a log, each without its date. Every entry must have the form "date - message"
/// and end with a line break; anything else fails the running test. A message of several lines is
/// one entry.
[[nodiscard]] std::vector<std::string> logMessages(std::string_view log);

/// The lines of a text whose last line is ended like the others; else the running test fails.
[[nodiscard]] std::vector<std::string> linesOf(std::string_view text);

/// The messages without the header of a generation, whose five lines are checked for their form.
[[nodiscard]] std::vector<std::string> withoutLogHeader(std::vector<std::string> messages);

}  // namespace vornic::test

#endif
