#include <any>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "base/Exception.h"
#include "foundation/tasks/QMTaskEx.h"
#include "tests/foundation/tasks/TaskTest.h"

namespace vornic {
namespace {

using namespace std::chrono_literals;
using test::becomesTrue;
using testing::ElementsAre;
using testing::IsEmpty;

/// Keeps what it is told under the selector "received".
class Receiver : public TaskDelegate {
  public:
    Operation operationForSelector(std::string_view selector) override {
        if (selector == "fail") {
            return [](const std::string&, QMTaskEx&, const std::any*) {
                throw platform::Exception("TestException", "the delegate failed");
            };
        }
        if (selector != "received") {
            return nullptr;
        }
        return [this](const std::string& data, QMTaskEx& task, const std::any* object) {
            const std::lock_guard lock(mutex_);
            chunks_.push_back(data);
            task_ = &task;
            object_ = object != nullptr ? *object : std::any();
            hadObject_ = object != nullptr;
            onMainThread_ = onMainThread_ || platform::MainThread::isCurrent();
            changed_.notify_all();
        };
    }

    [[nodiscard]] bool hasEnded() {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, 20s,
                                 [this] { return !chunks_.empty() && chunks_.back().empty(); });
    }
    [[nodiscard]] bool hasReceived(std::size_t chunks) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, 20s, [&] { return chunks_.size() >= chunks; });
    }
    [[nodiscard]] std::vector<std::string> chunks() {
        const std::lock_guard lock(mutex_);
        return chunks_;
    }
    [[nodiscard]] std::string text() {
        std::string all;
        for (const std::string& chunk : chunks()) {
            all += chunk;
        }
        return all;
    }

    QMTaskEx* task_ = nullptr;
    std::any object_;
    bool hadObject_ = false;
    bool onMainThread_ = false;

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::string> chunks_;
};

class QMTaskExAsyncTest : public test::TaskTest {
  protected:
    void start(const std::string& text, std::any object = {}) {
        task->asyncDataFromTask(kShell, script(text), receiver, "received", std::move(object));
    }
    [[nodiscard]] bool ends() const {
        return becomesTrue([this] { return task->theTask() == nullptr; });
    }

    std::shared_ptr<Receiver> receiver = std::make_shared<Receiver>();
    std::shared_ptr<QMTaskEx> task = QMTaskEx::create();
};

TEST_F(QMTaskExAsyncTest, handsChunksOnInOrderAndEndsWithAnEmptyOne) {
    start("echo one; sleep 0.1; echo two", std::string("mine"));
    ASSERT_TRUE(receiver->hasEnded());
    EXPECT_THAT(receiver->chunks(), ElementsAre("one\n", "two\n", ""));
    EXPECT_EQ(receiver->task_, task.get());
    EXPECT_EQ(std::any_cast<std::string>(receiver->object_), "mine");
    EXPECT_FALSE(receiver->onMainThread_);
    EXPECT_TRUE(ends());
    EXPECT_FALSE(task->object().has_value());
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMTaskExAsyncTest, returnsAtOnce) {
    start("exec sleep 60");
    EXPECT_NE(task->theTask(), nullptr);
    EXPECT_THAT(receiver->chunks(), IsEmpty());
    task->terminateTask();
}

TEST_F(QMTaskExAsyncTest, passesNoObjectWhenThereIsNone) {
    start("echo one");
    ASSERT_TRUE(receiver->hasEnded());
    EXPECT_FALSE(receiver->hadObject_);
}

TEST_F(QMTaskExAsyncTest, losesNothingOfAFlood) {
    start("head -c 5000000 /dev/zero | tr '\\000' x");
    ASSERT_TRUE(receiver->hasEnded());
    EXPECT_EQ(receiver->text(), std::string(5000000, 'x'));
}

TEST_F(QMTaskExAsyncTest, throwsErrorsAway) {
    testing::internal::CaptureStderr();
    start("echo failed >&2");
    ASSERT_TRUE(receiver->hasEnded());
    EXPECT_THAT(receiver->chunks(), ElementsAre(""));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(QMTaskExAsyncTest, replacesTheWholeEnvironment) {
    task->asyncDataFromTask("/usr/bin/env", {}, receiver, "received", {},
                            platform::Process::Environment{{"ONE", "1"}});
    ASSERT_TRUE(receiver->hasEnded());
    EXPECT_EQ(receiver->text(), "ONE=1\n");
}

TEST_F(QMTaskExAsyncTest, endsARunWhoseDelegateDoesNotAnswer) {
    task->asyncDataFromTask("/bin/echo", {"x"}, receiver, "other", {});
    EXPECT_TRUE(ends());
    EXPECT_THAT(receiver->chunks(), IsEmpty());
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMTaskExAsyncTest, endsARunWithoutDelegateOrSelector) {
    task->asyncDataFromTask("/bin/echo", {"x"}, nullptr, "received", {});
    EXPECT_TRUE(ends());
    task->asyncDataFromTask("/bin/echo", {"x"}, receiver, "", {});
    EXPECT_TRUE(ends());
    EXPECT_THAT(receiver->chunks(), IsEmpty());
}

TEST_F(QMTaskExAsyncTest, doesNotKeepItsDelegateAlive) {
    start("sleep 0.1; echo late");
    receiver.reset();
    EXPECT_TRUE(ends());
}

TEST_F(QMTaskExAsyncTest, livesUntilItsRunHasEnded) {
    start("sleep 0.1; echo late");
    const std::weak_ptr<QMTaskEx> watched = task;
    task.reset();
    ASSERT_TRUE(receiver->hasEnded());
    EXPECT_THAT(receiver->chunks(), ElementsAre("late\n", ""));
    EXPECT_TRUE(becomesTrue([&] { return watched.expired(); }));
}

TEST_F(QMTaskExAsyncTest, logsAToolThatIsMissingOrMayNotBeRun) {
    const std::string message =
        "Unable to launch async task - task does not exist or is not executable";
    test::CapturedOutput printed;
    task->asyncDataFromTask(missingTool(), {}, receiver, "received", {});
    ASSERT_TRUE(platform::joinDetachedThreads(20s));
    task->asyncDataFromTask(sandbox.write("plain", "text"), {}, receiver, "received", {});
    ASSERT_TRUE(platform::joinDetachedThreads(20s));
    EXPECT_EQ(printed.text(), "") << "logged only";
    EXPECT_THAT(log.entries(), ElementsAre(message, message));
    EXPECT_THAT(receiver->chunks(), IsEmpty());
}

TEST_F(QMTaskExAsyncTest, logsAndPrintsThatThereIsNoTask) {
    test::CapturedOutput printed;
    task->launchAsyncTask();
    EXPECT_EQ(printed.text(), "Unable to launch async task - no task set\n");
    EXPECT_THAT(log.entries(), ElementsAre("Unable to launch async task - no task set"));
}

TEST_F(QMTaskExAsyncTest, logsAndPrintsAFailedLaunch) {
    const std::string tool = unlaunchableTool();
    const std::string message =
        "Exception: The tool " + tool + " cannot be started: no such file or folder.";
    test::CapturedOutput printed;
    task->asyncDataFromTask(tool, {}, receiver, "received", {});
    ASSERT_TRUE(platform::joinDetachedThreads(20s));
    EXPECT_EQ(printed.text(), message + "\n");
    EXPECT_THAT(log.entries(), ElementsAre(message));
    EXPECT_THAT(receiver->chunks(), IsEmpty());
}

TEST_F(QMTaskExAsyncTest, endsEarlyOnItsOwnersRequest) {
    start("echo one; exec sleep 60");
    ASSERT_TRUE(receiver->hasReceived(1));
    const std::shared_ptr<platform::Process> process = task->theTask();
    task->terminateTask();
    EXPECT_EQ(task->theTask(), nullptr);
    EXPECT_TRUE(becomesTrue([&] { return !process->isRunning(); }));
    EXPECT_EQ(process->terminationSignal(), SIGTERM);
    ASSERT_TRUE(platform::joinDetachedThreads(20s));
    EXPECT_THAT(receiver->chunks(), ElementsAre("one\n")) << "no call after the end";
    EXPECT_THAT(log.entries(), IsEmpty());
    task->terminateTask();
}

TEST_F(QMTaskExAsyncTest, leavesNoThreadWaitingForAChildOfTheTool) {
    const std::size_t before = threads();
    start("sleep 3 & echo one; wait");
    ASSERT_TRUE(receiver->hasReceived(1));
    task->terminateTask();
    EXPECT_TRUE(becomesTrue([&] { return threads() <= before; }, 2s));
}

TEST_F(QMTaskExAsyncTest, launchesNothingAfterAnEarlyEnd) {
    for (int round = 0; round < 30; ++round) {
        start("exec sleep 60");
        const std::shared_ptr<platform::Process> process = task->theTask();
        task->terminateTask();
        ASSERT_TRUE(platform::joinDetachedThreads(20s));
        EXPECT_TRUE(becomesTrue([&] { return !process->isRunning(); }));
    }
    EXPECT_THAT(receiver->chunks(), IsEmpty());
}

TEST_F(QMTaskExAsyncTest, mayStartAgainAfterItsEnd) {
    start("echo one; exec sleep 60");
    ASSERT_TRUE(receiver->hasReceived(1));
    task->terminateTask();
    start("echo two");
    ASSERT_TRUE(receiver->hasEnded());
    EXPECT_THAT(receiver->chunks(), ElementsAre("one\n", "two\n", ""));
}

TEST_F(QMTaskExAsyncTest, endsTheRunWhosePlaceANewOneTakes) {
    start("echo one; exec sleep 60");
    ASSERT_TRUE(receiver->hasReceived(1));
    const std::shared_ptr<platform::Process> first = task->theTask();
    start("echo two; exec sleep 60");
    EXPECT_TRUE(becomesTrue([&] { return !first->isRunning(); }));
    ASSERT_TRUE(receiver->hasReceived(2));
    EXPECT_TRUE(task->theTask()->isRunning());
    EXPECT_THAT(receiver->chunks(), ElementsAre("one\n", "two\n"));
    task->terminateTask();
}

TEST_F(QMTaskExAsyncTest, asksAToolToEndThatClosesItsOutput) {
    start("echo one; exec >/dev/null; exec sleep 60");
    ASSERT_TRUE(receiver->hasReceived(1));
    const std::shared_ptr<platform::Process> process = task->theTask();
    ASSERT_TRUE(receiver->hasEnded());
    if (process) {
        EXPECT_TRUE(becomesTrue([&] { return !process->isRunning(); }));
        EXPECT_EQ(process->terminationSignal(), SIGTERM);
    }
}

TEST_F(QMTaskExAsyncTest, endsWithTheProgram) {
    start("echo one; exec sleep 60");
    ASSERT_TRUE(receiver->hasReceived(1));
    const std::shared_ptr<platform::Process> process = task->theTask();
    ASSERT_TRUE(platform::joinDetachedThreads(20s));
    EXPECT_THAT(receiver->chunks(), ElementsAre("one\n", ""));
    EXPECT_TRUE(becomesTrue([&] { return !process->isRunning(); }));
}

TEST_F(QMTaskExAsyncTest, endsItsProcessWhenTheInstanceGoes) {
    task->asyncDataFromTask(kShell, script("echo one; exec sleep 60"), receiver, "fail", {});
    const std::shared_ptr<platform::Process> process = task->theTask();
    ASSERT_TRUE(becomesTrue([&] { return threads() == 1 || !log.entries().empty(); }));
    EXPECT_THAT(log.entries(), ElementsAre("Exception: the delegate failed"));
    EXPECT_TRUE(process->isRunning());
    task.reset();
    EXPECT_TRUE(becomesTrue([&] { return !process->isRunning(); }));
    EXPECT_EQ(process->terminationSignal(), SIGTERM);
}

TEST_F(QMTaskExAsyncTest, endsOnANotificationWithoutAChunk) {
    start("exec sleep 60");
    const std::shared_ptr<platform::Process> process = task->theTask();
    ASSERT_TRUE(becomesTrue([&] { return process->isRunning(); }));
    TaskNotification notification;
    EXPECT_EQ(notification.name, "QMAsyncTaskDataNotification");
    task->asyncTaskReturnData(notification);
    EXPECT_EQ(task->theTask(), nullptr);
    EXPECT_THAT(receiver->chunks(), ElementsAre(""));
    EXPECT_TRUE(becomesTrue([&] { return !process->isRunning(); }));
}

TEST_F(QMTaskExAsyncTest, takesTheChunkFromTheNotificationsInformation) {
    start("exec sleep 60");
    TaskNotification notification;
    notification.userInfo["NSFileHandleNotificationDataItem"] = "handed over";
    notification.userInfo["other"] = "ignored";
    task->asyncTaskReturnData(notification);
    EXPECT_THAT(receiver->chunks(), ElementsAre("handed over"));
    task->terminateTask();
}

}  // namespace
}  // namespace vornic
