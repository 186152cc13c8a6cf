#include <array>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "base/PathText.h"
#include "platform/processes/Console.h"
#include "platform/settings/Bundle.h"
#include "tests/platform/TextForm.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic::platform {
namespace {

/// Puts a pipe that keeps each write apart in the place of standard error.
class ConsoleTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(pipe2(ends_.data(), O_DIRECT | O_CLOEXEC | O_NONBLOCK), 0);
        before_ = dup(STDERR_FILENO);
        ASSERT_GE(dup2(ends_[1], STDERR_FILENO), 0);
    }
    void TearDown() override {
        dup2(before_, STDERR_FILENO);
        for (const int descriptor : {before_, ends_[0], ends_[1]}) {
            close(descriptor);
        }
    }
    /// The bytes of the next write, "" when there was no other.
    std::string nextWrite() {
        std::array<char, 4096> buffer{};
        const ssize_t length = read(ends_[0], buffer.data(), buffer.size());
        return length > 0 ? std::string(buffer.data(), static_cast<std::size_t>(length)) : "";
    }

  private:
    std::array<int, 2> ends_{-1, -1};
    int before_ = -1;
};

TEST_F(ConsoleTest, writesTimeProcessAndTextInOneWrite) {
    consoleLog("some text, 100% %s");
    const std::string line = nextWrite();
    const std::string process =
        lastComponent(executablePath()) + "[" + std::to_string(getpid()) + "]";
    constexpr std::string_view kTime = "####-##-## ##:##:##.###";
    EXPECT_TRUE(test::hasForm(line.substr(0, kTime.size()), kTime)) << line;
    EXPECT_EQ(line.substr(kTime.size()), " " + process + " some text, 100% %s\n");
    EXPECT_EQ(nextWrite(), "");
}

TEST_F(ConsoleTest, keepsTheLinesOfThreadsApart) {
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([] {
            for (int count = 0; count < 4; ++count) {
                consoleLog(std::string(500, 'x'));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (int count = 0; count < 16; ++count) {
        EXPECT_TRUE(nextWrite().ends_with("] " + std::string(500, 'x') + "\n"));
    }
    EXPECT_EQ(nextWrite(), "");
}

TEST_F(ConsoleTest, goesOnWithoutAConsole) {
    EXPECT_TRUE(test::passesInChild([] {
        close(STDERR_FILENO);
        consoleLog("text");
    }));
}

}  // namespace
}  // namespace vornic::platform
