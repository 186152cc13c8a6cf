#ifndef VORNIC_TESTS_SUPPORT_PROGRAMS_CONSOLE_CAPTURE_H
#define VORNIC_TESTS_SUPPORT_PROGRAMS_CONSOLE_CAPTURE_H

#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace vornic::test {

/// The texts of the lines of a console, without date, time and process.
[[nodiscard]] inline std::vector<std::string> consoleTexts(const std::string& console) {
    std::vector<std::string> texts;
    std::istringstream stream(console);
    for (std::string line; std::getline(stream, line);) {
        const std::size_t process = line.find("] ");
        texts.push_back(process == std::string::npos ? line : line.substr(process + 2));
    }
    return texts;
}

/// What is written to the console while the object lives.
class ConsoleCapture {
  public:
    ConsoleCapture() { ::testing::internal::CaptureStderr(); }
    ~ConsoleCapture() { static_cast<void>(lines()); }
    ConsoleCapture(const ConsoleCapture&) = delete;
    ConsoleCapture& operator=(const ConsoleCapture&) = delete;

    /// Ends the capture. @return `consoleTexts`.
    std::vector<std::string> lines() {
        if (!std::exchange(taken_, true)) {
            lines_ = consoleTexts(::testing::internal::GetCapturedStderr());
        }
        return lines_;
    }

  private:
    bool taken_ = false;
    std::vector<std::string> lines_;
};

}  // namespace vornic::test

#endif
