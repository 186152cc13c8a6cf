#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <thread>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "foundation/log/QMLog.h"
#include "tests/foundation/log/LogTest.h"
#include "tests/support/machine/Waiting.h"

namespace vornic {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Who waits for the queue and who does not. The current log is a pipe, so that the first write
/// waits until somebody opens the pipe's other end: as long as the test wants.
class QMLogWaitingTest : public test::LogTest {
  protected:
    void SetUp() override {
        std::filesystem::create_directories(logFolder());
        ASSERT_EQ(mkfifo(generation(1).c_str(), 0600), 0);
    }

    /// Opens the other end of the pipe: the held write goes on.
    [[nodiscard]] int openPipe() const {
        const int pipe = open(generation(1).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        EXPECT_GE(pipe, 0);
        return pipe;
    }

    /// Reads the messages that have come through the pipe; nobody must be writing any more.
    static std::vector<std::string> messagesIn(int pipe) {
        std::string text;
        std::array<char, 4096> buffer{};
        for (ssize_t count = 0; (count = read(pipe, buffer.data(), buffer.size())) > 0;) {
            text.append(buffer.data(), static_cast<std::size_t>(count));
        }
        return test::logMessages(text);
    }

    /// Waits until a thread of this process is held up opening the pipe.
    static void waitUntilHeld() {
        EXPECT_TRUE(test::becomesTrue([] {
            const std::filesystem::directory_iterator threads("/proc/self/task");
            return std::any_of(begin(threads), end(threads), isHeldOpening);
        }));
    }

  private:
    [[nodiscard]] static bool isHeldOpening(const std::filesystem::directory_entry& thread) {
        std::ifstream file(thread.path() / "syscall");
        long call = -1;
        return file >> call && call == SYS_openat &&
               test::threadState(std::stoi(thread.path().filename())) == 'S';
    }
};

/// A thread that tells when it has gone on.
class Caller {
  public:
    explicit Caller(const std::function<void()>& function)
        : thread_([this, function] {
              function();
              wentOn_ = true;
          }) {}
    ~Caller() { thread_.join(); }
    Caller(const Caller&) = delete;
    Caller& operator=(const Caller&) = delete;

    [[nodiscard]] bool goesOnWithin(std::chrono::milliseconds limit) const {
        return test::becomesTrue([this] { return wentOn_.load(); }, limit);
    }

  private:
    std::atomic<bool> wentOn_ = false;
    std::thread thread_;
};

constexpr auto kSoon = 10s;
constexpr auto kAMoment = 150ms;

TEST_F(QMLogWaitingTest, neverWaitsOnTheMainThread) {
    static_cast<void>(inChild([this] {
        QMLog::appendLog("short");
        EXPECT_EQ(QMLog::sharedController().bytesInQueue(), 5U);
        const int pipe = openPipe();
        QMLog::finishWriting();
        EXPECT_THAT(messagesIn(pipe), ElementsAre("short"));
    }));
}

TEST_F(QMLogWaitingTest, waitsOnAnotherThreadForAShortMessage) {
    static_cast<void>(inChild([this] {
        const Caller caller([] { QMLog::appendLog("short"); });
        EXPECT_FALSE(caller.goesOnWithin(kAMoment));
        const int pipe = openPipe();
        EXPECT_TRUE(caller.goesOnWithin(kSoon));
        EXPECT_THAT(messagesIn(pipe), ElementsAre("short"));
    }));
}

TEST_F(QMLogWaitingTest, waitsOnAnotherThreadForAShortMessageThatIsPrintedToo) {
    const test::ChildOutcome outcome = inChild([this] {
        const Caller caller([] { QMLog::appendLogAndPrint("printed"); });
        EXPECT_FALSE(caller.goesOnWithin(kAMoment));
        const int pipe = openPipe();
        EXPECT_TRUE(caller.goesOnWithin(kSoon));
        EXPECT_THAT(messagesIn(pipe), ElementsAre("printed"));
    });
    EXPECT_EQ(outcome.output, "printed\n");
}

TEST_F(QMLogWaitingTest, waitsOnAnotherThreadForAShortMessageOfDebugOutput) {
    static_cast<void>(inChild([this] {
        const Caller caller([] { QMLog::appendLogAndDebugPrint("short"); });
        EXPECT_FALSE(caller.goesOnWithin(kAMoment));
        const int pipe = openPipe();
        EXPECT_TRUE(caller.goesOnWithin(kSoon));
        EXPECT_THAT(messagesIn(pipe), ElementsAre("short"));
    }));
}

TEST_F(QMLogWaitingTest, neverWaitsForAFastMessage) {
    static_cast<void>(inChild([this] {
        const Caller caller([] { QMLog::fastAppendLog("short"); });
        EXPECT_TRUE(caller.goesOnWithin(kSoon));
        const int pipe = openPipe();
        QMLog::finishWriting();
        EXPECT_THAT(messagesIn(pipe), ElementsAre("short"));
    }));
}

TEST_F(QMLogWaitingTest, waitsForAMessageOf99Units) {
    static_cast<void>(inChild([this] {
        std::string text(95, 'x');
        text += "éé🎬";
        const Caller caller([&] { QMLog::appendLog("%@", text); });
        EXPECT_FALSE(caller.goesOnWithin(kAMoment));
        const int pipe = openPipe();
        EXPECT_TRUE(caller.goesOnWithin(kSoon));
        EXPECT_THAT(messagesIn(pipe), ElementsAre(text));
    }));
}

TEST_F(QMLogWaitingTest, doesNotWaitForAMessageOf100Units) {
    static_cast<void>(inChild([this] {
        std::string text(98, 'x');
        text += "🎬";
        const Caller caller([&] { QMLog::appendLog("%@", text); });
        EXPECT_TRUE(caller.goesOnWithin(kSoon));
        EXPECT_EQ(QMLog::sharedController().bytesInQueue(), 100U);
        const int pipe = openPipe();
        QMLog::finishWriting();
        EXPECT_THAT(messagesIn(pipe), ElementsAre(text));
    }));
}

TEST_F(QMLogWaitingTest, measuresAMessageBeforeItIsTrimmed) {
    static_cast<void>(inChild([this] {
        const Caller caller([] { QMLog::appendLog("%@", "short" + std::string(95, ' ')); });
        EXPECT_TRUE(caller.goesOnWithin(kSoon));
        EXPECT_EQ(QMLog::sharedController().bytesInQueue(), 5U);
        const int pipe = openPipe();
        QMLog::finishWriting();
        EXPECT_THAT(messagesIn(pipe), ElementsAre("short"));
    }));
}

TEST_F(QMLogWaitingTest, doesNotWaitWhenMoreThan99UnitsAreQueued) {
    static_cast<void>(inChild([this] {
        QMLog::fastAppendLog("%@", std::string(60, 'a'));
        const Caller caller([] { QMLog::appendLog("%@", std::string(40, 'b')); });
        EXPECT_TRUE(caller.goesOnWithin(kSoon));
        EXPECT_EQ(QMLog::sharedController().bytesInQueue(), 100U);
        const int pipe = openPipe();
        QMLog::finishWriting();
        EXPECT_EQ(messagesIn(pipe).size(), 2U);
    }));
}

TEST_F(QMLogWaitingTest, waitsWhenNoMoreThan99UnitsAreQueued) {
    static_cast<void>(inChild([this] {
        QMLog::fastAppendLog("%@", std::string(60, 'a'));
        const Caller caller([] { QMLog::appendLog("%@", std::string(39, 'b')); });
        EXPECT_FALSE(caller.goesOnWithin(kAMoment));
        const int pipe = openPipe();
        EXPECT_TRUE(caller.goesOnWithin(kSoon));
        EXPECT_EQ(messagesIn(pipe).size(), 2U);
    }));
}

TEST_F(QMLogWaitingTest, doesNotWaitForAnEmptyMessage) {
    static_cast<void>(inChild([this] {
        QMLog::fastAppendLog("first");
        const Caller caller([] { QMLog::appendLog(""); });
        EXPECT_TRUE(caller.goesOnWithin(kSoon));
        const int pipe = openPipe();
        QMLog::finishWriting();
        EXPECT_THAT(messagesIn(pipe), ElementsAre("first"));
    }));
}

TEST_F(QMLogWaitingTest, holdsACallerOfFinishWritingUntilTheQueueIsWritten) {
    static_cast<void>(inChild([this] {
        for (int i = 0; i < 100; ++i) {
            QMLog::fastAppendLog("%li", i);
        }
        const Caller caller([] { QMLog::finishWriting(); });
        EXPECT_FALSE(caller.goesOnWithin(kAMoment));
        const int pipe = openPipe();
        EXPECT_TRUE(caller.goesOnWithin(kSoon));
        EXPECT_EQ(QMLog::sharedController().bytesInQueue(), 0U);
        EXPECT_EQ(messagesIn(pipe).size(), 100U);
    }));
}

TEST_F(QMLogWaitingTest, waitsAtTheEndForTenQueuedLines) {
    static_cast<void>(inChild([this] {
        for (int i = 0; i < 10; ++i) {
            QMLog::fastAppendLog("%li", i);
        }
        const Caller caller([] { QMLog::willTerminate(); });
        EXPECT_FALSE(caller.goesOnWithin(kAMoment));
        const int pipe = openPipe();
        EXPECT_TRUE(caller.goesOnWithin(kSoon));
        EXPECT_EQ(messagesIn(pipe).size(), 10U);
    }));
}

TEST_F(QMLogWaitingTest, dropsElevenQueuedLinesAtTheEnd) {
    static_cast<void>(inChild([this] {
        QMLog::fastAppendLog("the running one");
        waitUntilHeld();
        for (int i = 0; i < 10; ++i) {
            QMLog::fastAppendLog("dropped");
        }
        QMLog::willTerminate();
        const int pipe = openPipe();
        QMLog::finishWriting();
        EXPECT_THAT(messagesIn(pipe), ElementsAre("the running one"));
    }));
}

TEST_F(QMLogWaitingTest, keepsTheLengthsOfTextsThatADisabledLogDoesNotWrite) {
    static_cast<void>(inChild([this] {
        QMLog::fastAppendLog("the running one");
        waitUntilHeld();
        QMLog::fastAppendLog("1234");
        QMLog::fastAppendLog("56");
        setGlobalPreference("1");
        QMLog::createNewLog("", true);
        ASSERT_TRUE(QMLog::sharedController().loggingDisabled());
        const int pipe = openPipe();
        QMLog::finishWriting();
        EXPECT_THAT(messagesIn(pipe), ElementsAre("the running one"));
        EXPECT_EQ(QMLog::sharedController().bytesInQueue(), 6U);
    }));
}

}  // namespace
}  // namespace vornic
