#ifndef VORNIC_TESTS_SUPPORT_LOG_CAPTURE_H
#define VORNIC_TESTS_SUPPORT_LOG_CAPTURE_H

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/QMLog.h"
#include "tests/support/Sandbox.h"

namespace vornic::test {

/// Starts a log in the test's own home folder and reads back what is written to it. Needs a
/// `Sandbox`, and an unprivileged process, because root's log lies elsewhere.
class LogCapture {
  public:
    enum class Printing { off, on };

    explicit LogCapture(Printing printing = Printing::off) {
        QMLog::createNewLog("Vornic", printing == Printing::off);
    }

    /// The texts of the entries after the header, in order.
    [[nodiscard]] static std::vector<std::string> entries() {
        QMLog::finishWriting();
        const std::vector<std::string> logs = QMLog::availableLogs();
        if (logs.empty()) {
            ADD_FAILURE() << "there is no log";
            return {};
        }
        std::vector<std::string> texts = textsOf(readBytes(logs.front()));
        const auto lastOfHeader = std::find(texts.begin(), texts.end(), "Running in 64-bit mode");
        EXPECT_NE(lastOfHeader, texts.end());
        texts.erase(texts.begin(), lastOfHeader == texts.end() ? lastOfHeader : lastOfHeader + 1);
        return texts;
    }
    [[nodiscard]] static bool contains(std::string_view text) {
        const std::vector<std::string> texts = entries();
        return std::find(texts.begin(), texts.end(), text) != texts.end();
    }

  private:
    /// True when an entry, "2026-11-21 07:05:00 +0000 - text", begins with the line.
    static bool beginsEntry(std::string_view line) {
        constexpr std::string_view kPattern = "dddd-dd-dd dd:dd:dd sdddd - ";
        return line.size() >= kPattern.size() &&
               std::equal(kPattern.begin(), kPattern.end(), line.begin(), [](char p, char c) {
                   return p == 'd'   ? c >= '0' && c <= '9'
                          : p == 's' ? c == '+' || c == '-'
                                     : p == c;
               });
    }

    static std::vector<std::string> textsOf(std::string_view log) {
        std::vector<std::string> texts;
        while (!log.empty()) {
            const std::string_view line = log.substr(0, log.find('\n'));
            if (beginsEntry(line)) {
                texts.emplace_back(line.substr(line.find(" - ") + 3));
            } else if (!texts.empty()) {
                texts.back().append("\n").append(line);
            }
            log.remove_prefix(std::min(log.size(), line.size() + 1));
        }
        return texts;
    }
};

}  // namespace vornic::test

#endif
