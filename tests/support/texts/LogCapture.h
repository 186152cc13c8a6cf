#ifndef VORNIC_TESTS_SUPPORT_TEXTS_LOG_CAPTURE_H
#define VORNIC_TESTS_SUPPORT_TEXTS_LOG_CAPTURE_H

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/log/QMLog.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/texts/LogText.h"

namespace vornic::test {

/// Starts a log in the test's own home folder and reads back what is written to it. Needs a
/// `Sandbox`, and an unprivileged process, because root's log lies elsewhere.
class LogCapture {
  public:
    enum class Printing { off, on };

    explicit LogCapture(Printing printing = Printing::off) { start(printing); }

    /// Starts over with an empty log.
    static void start(Printing printing) {
        // What is still queued belongs to the log before.
        QMLog::finishWriting();
        QMLog::createNewLog("Vornic", printing == Printing::off);
        QMLog::finishWriting();
    }

    /// The texts of the entries after the header, in order. (The header has no version line when
    /// the test has put a bundle of its own in place.)
    [[nodiscard]] static std::vector<std::string> entries() {
        QMLog::finishWriting();
        const std::vector<std::string> logs = QMLog::availableLogs();
        if (logs.empty()) {
            ADD_FAILURE() << "there is no log";
            return {};
        }
        std::vector<std::string> texts = logMessages(readBytes(logs.front()));
        const auto lastOfHeader = std::find(texts.begin(), texts.end(), "Running in 64-bit mode");
        EXPECT_NE(lastOfHeader, texts.end());
        texts.erase(texts.begin(), lastOfHeader == texts.end() ? lastOfHeader : lastOfHeader + 1);
        return texts;
    }
    [[nodiscard]] static bool contains(std::string_view text) {
        const std::vector<std::string> texts = entries();
        return std::find(texts.begin(), texts.end(), text) != texts.end();
    }
};

}  // namespace vornic::test

#endif
