#include "tests/support/texts/LogText.h"

#include <algorithm>
#include <array>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vornic::test {

namespace {

constexpr std::string_view kDateForm = "dddd-dd-dd dd:dd:dd +0000";
constexpr std::string_view kSeparator = " - ";
constexpr std::size_t kHeaderLines = 5;

bool beginsWithDate(std::string_view line) {
    if (line.size() < kDateForm.size()) {
        return false;
    }
    return std::equal(kDateForm.begin(), kDateForm.end(), line.begin(), [](char form, char found) {
        return form == 'd' ? found >= '0' && found <= '9' : form == found;
    });
}

}  // namespace

std::vector<std::string> linesOf(std::string_view text) {
    EXPECT_TRUE(text.empty() || text.back() == '\n') << "the last line is cut off";
    std::vector<std::string> lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

std::vector<std::string> logMessages(std::string_view log) {
    std::vector<std::string> messages;
    for (const std::string& line : linesOf(log)) {
        const std::string_view rest =
            std::string_view(line).substr(beginsWithDate(line) ? kDateForm.size() : line.size());
        if (rest.starts_with(kSeparator)) {
            messages.emplace_back(rest.substr(kSeparator.size()));
        } else if (!messages.empty()) {
            messages.back() += "\n" + line;
        } else {
            ADD_FAILURE() << "no entry begins like this: " << line;
        }
    }
    return messages;
}

std::vector<std::string> withoutLogHeader(std::vector<std::string> messages) {
    constexpr std::array kForms{"Log started: ....-..-.. ..:..:.. \\+0000", "Version: .+",
                                "Path: /.+",
                                "System: macOS .+, [0-9]+ CPU\\(s\\), [0-9]+\\.[0-9][0-9] GB RAM",
                                "Running in 64-bit mode"};
    if (messages.size() < kHeaderLines) {
        ADD_FAILURE() << "the log has no whole header: " << ::testing::PrintToString(messages);
        return {};
    }
    for (std::size_t line = 0; line < kHeaderLines; ++line) {
        EXPECT_THAT(messages[line], ::testing::MatchesRegex(kForms[line]));
    }
    messages.erase(messages.begin(), messages.begin() + kHeaderLines);
    return messages;
}

}  // namespace vornic::test
