#include <csignal>
#include <exception>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>

#include <gmock/gmock.h>
#include <unistd.h>

#include "base/Exception.h"
#include "foundation/log/UncaughtExceptions.h"
#include "tests/foundation/log/LogTest.h"

namespace vornic {
namespace {

using ::testing::ElementsAre;

/// Lets an exception out of a function that promises that there is none: nobody catches it.
template <typename Exception>
void throwUncaught(const Exception& exception) noexcept {
    std::rethrow_exception(std::make_exception_ptr(exception));
}

class UncaughtExceptionsTest : public test::LogTest {
  protected:
    /// Logs a line, then lets the process die of a function.
    [[nodiscard]] test::ChildOutcome dieOf(const std::function<void()>& function) const {
        return inChild([&] {
            QMLog::createNewLog();
            QMLog::fastAppendLog("before");
            function();
        });
    }
};

TEST_F(UncaughtExceptionsTest, logsAndPrintsTheReasonBeforeTheProcessDies) {
    const test::ChildOutcome outcome =
        dieOf([] { throwUncaught(platform::Exception("Name", "the reason, 100% of it")); });
    EXPECT_EQ(outcome.status, -SIGABRT);
    EXPECT_THAT(entries(), ElementsAre("before", "the reason, 100% of it"));
    EXPECT_EQ(outcome.output, "the reason, 100%% of it\n");
}

TEST_F(UncaughtExceptionsTest, logsWhatAnExceptionOfTheLanguageSays) {
    const test::ChildOutcome outcome =
        dieOf([] { throwUncaught(std::runtime_error("a runtime error")); });
    EXPECT_EQ(outcome.status, -SIGABRT);
    EXPECT_THAT(entries(), ElementsAre("before", "a runtime error"));
}

TEST_F(UncaughtExceptionsTest, logsThatAnythingElseWasThrown) {
    EXPECT_EQ(dieOf([] { throwUncaught(5); }).status, -SIGABRT);
    EXPECT_THAT(entries(), ElementsAre("before", "exception of an unknown type"));
}

TEST_F(UncaughtExceptionsTest, logsAnEndWithoutAnException) {
    EXPECT_EQ(dieOf([] { std::terminate(); }).status, -SIGABRT);
    EXPECT_THAT(entries(), ElementsAre("before", "terminated without an exception"));
}

TEST_F(UncaughtExceptionsTest, logsTheReasonOfAnotherThread) {
    const test::ChildOutcome outcome =
        dieOf([] { std::thread([] { throw platform::Exception("Name", "on a thread"); }).join(); });
    EXPECT_EQ(outcome.status, -SIGABRT);
    EXPECT_THAT(entries(), ElementsAre("before", "on a thread"));
}

TEST_F(UncaughtExceptionsTest, goesOnToWhatWouldHaveHappenedWithoutIt) {
    const test::ChildOutcome outcome = inChild([] {
        std::set_terminate([] { _exit(42); });
        QMLog::createNewLog();
        logUncaughtExceptions();
        throwUncaught(platform::Exception("Name", "the reason"));
    });
    EXPECT_EQ(outcome.status, 42);
    EXPECT_THAT(entries(), ElementsAre("the reason"));
}

}  // namespace
}  // namespace vornic
