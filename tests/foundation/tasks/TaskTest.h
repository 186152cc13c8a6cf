#ifndef VORNIC_TESTS_FOUNDATION_TASKS_TASK_TEST_H
#define VORNIC_TESTS_FOUNDATION_TASKS_TASK_TEST_H

#include <chrono>
#include <filesystem>
#include <future>
#include <string>
#include <string_view>
#include <utility>

#include "foundation/tasks/QMTaskEx.h"
#include "platform/threads/MainThread.h"
#include "platform/threads/Thread.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"
#include "tests/support/machine/Waiting.h"
#include "tests/support/texts/LogCapture.h"

namespace vornic::test {

/// Tests that run real tools, with a log of their own that prints.
class TaskTest : public ::testing::Test {
  protected:
    ~TaskTest() override { EXPECT_TRUE(platform::joinDetachedThreads(std::chrono::seconds(30))); }

    static constexpr const char* kShell = "/bin/sh";

    [[nodiscard]] static QMTaskEx::Arguments script(const std::string& text) {
        return {"-c", text};
    }

    /// Runs a function on another thread while this one, the main thread, dispatches its events.
    template <typename Function>
    static auto besideTheMainThread(const Function& function) {
        auto result = std::async(std::launch::async, function);
        while (result.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
            platform::MainThread::dispatchOne(std::chrono::milliseconds(5));
        }
        return result.get();
    }

    [[nodiscard]] static std::size_t entriesOf(const std::string& folder) {
        const std::filesystem::directory_iterator entries(folder);
        return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
    }
    [[nodiscard]] static std::size_t threads() { return entriesOf("/proc/self/task"); }
    [[nodiscard]] static std::size_t descriptors() { return entriesOf("/proc/self/fd"); }
    /// True while the process exists, a zombie included.
    [[nodiscard]] static bool exists(int process) {
        return std::filesystem::exists("/proc/" + std::to_string(process));
    }

    /// A file that may be run and cannot: its interpreter does not exist.
    [[nodiscard]] std::string unlaunchableTool() const {
        std::string path = sandbox.write("broken", "#!/no/such/interpreter\n");
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
        return path;
    }
    [[nodiscard]] std::string missingTool() const { return sandbox.path("missing"); }

    Unprivileged user;
    Sandbox sandbox;
    LogCapture log{LogCapture::Printing::on};
};

/// What is written to standard output while the object lives.
class CapturedOutput {
  public:
    CapturedOutput() { ::testing::internal::CaptureStdout(); }
    ~CapturedOutput() { static_cast<void>(text()); }
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;

    /// Ends the capture.
    std::string text() {
        if (!std::exchange(taken_, true)) {
            text_ = ::testing::internal::GetCapturedStdout();
        }
        return text_;
    }

  private:
    bool taken_ = false;
    std::string text_;
};

}  // namespace vornic::test

#endif
