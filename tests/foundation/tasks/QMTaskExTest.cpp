#include <chrono>
#include <csignal>
#include <filesystem>
#include <string>
#include <thread>

#include <gmock/gmock.h>

#include "foundation/log/QMLog.h"
#include "foundation/tasks/QMTaskEx.h"
#include "tests/foundation/tasks/TaskTest.h"

namespace vornic {
namespace {

using namespace std::chrono_literals;
using test::becomesTrue;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

class QMTaskExTest : public test::TaskTest {
  protected:
    /// The message of a tool that failed the check before the launch.
    static std::string notExecutable(const std::string& path) {
        return "Error: " + path + " is not executable";
    }
    static std::string notStarted(const std::string& path) {
        return "Exception running task " + path + ": The tool " + path +
               " cannot be started: no such file or folder.";
    }
    [[nodiscard]] int numberIn(const std::string& file) const {
        return std::stoi(test::readBytes(sandbox.path(file)));
    }
    /// Makes a folder that looks like an application, with execute permission.
    [[nodiscard]] std::string bundleFolder() const {
        const std::string path = sandbox.path("Tool.app");
        std::filesystem::create_directories(path + "/Contents/MacOS");
        return path;
    }
};

TEST_F(QMTaskExTest, runsAToolToItsEnd) {
    const std::string mark = sandbox.path("mark");
    EXPECT_TRUE(QMTaskEx::runTask(kShell, script("sleep 0.05; echo done > " + mark)));
    EXPECT_EQ(test::readBytes(mark), "done\n");
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMTaskExTest, takesAToolThatFailedForOneThatRan) {
    EXPECT_TRUE(QMTaskEx::runTask(kShell, script("exit 3")));
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMTaskExTest, throwsTheOutputOfARunAway) {
    test::CapturedOutput printed;
    testing::internal::CaptureStderr();
    EXPECT_TRUE(QMTaskEx::runTask(kShell, script("echo out; echo err >&2")));
    EXPECT_EQ(QMTaskEx::terminationCodeFromTask(kShell, script("echo out; echo err >&2")), 0);
    const std::string mark = sandbox.path("mark");
    QMTaskEx::runTaskAndReturn(kShell, script("echo out; echo err >&2; mkdir " + mark));
    EXPECT_TRUE(becomesTrue([&] { return std::filesystem::exists(mark); }));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(printed.text(), "");
}

TEST_F(QMTaskExTest, refusesAToolThatIsMissing) {
    test::CapturedOutput printed;
    EXPECT_FALSE(QMTaskEx::runTask(missingTool(), {}));
    EXPECT_EQ(printed.text(), notExecutable(missingTool()) + "\n");
    EXPECT_THAT(log.entries(), ElementsAre(notExecutable(missingTool())));
}

TEST_F(QMTaskExTest, refusesAFileThatMayNotBeRun) {
    const std::string file = sandbox.write("plain", "text");
    EXPECT_FALSE(QMTaskEx::runTask(file, {}));
    EXPECT_EQ(QMTaskEx::terminationCodeFromTask(file, {}), -1);
    EXPECT_EQ(QMTaskEx::dataFromTask(file, {}, nullptr), std::nullopt);
    QMTaskEx::runTaskAndReturn(file, {});
    EXPECT_THAT(log.entries(), ElementsAre(notExecutable(file), notExecutable(file),
                                           notExecutable(file), notExecutable(file)));
}

TEST_F(QMTaskExTest, refusesABundleFolderWithExecutePermission) {
    const std::string bundle = bundleFolder();
    EXPECT_FALSE(QMTaskEx::runTask(bundle, {}));
    EXPECT_EQ(QMTaskEx::terminationCodeFromTask(bundle, {}), -1);
    EXPECT_EQ(QMTaskEx::dataFromTask(bundle, {}, nullptr), std::nullopt);
    QMTaskEx::runTaskAndReturn(bundle, {});
    EXPECT_THAT(log.entries(), ElementsAre(notExecutable(bundle), notExecutable(bundle),
                                           notExecutable(bundle), notExecutable(bundle)));
}

TEST_F(QMTaskExTest, runsARelativePathWithoutTheCheck) {
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::create_symlink("/bin/true", sandbox.path("tool"));
    std::filesystem::current_path(sandbox.folder());
    EXPECT_TRUE(QMTaskEx::runTask("tool", {}));
    EXPECT_FALSE(QMTaskEx::runTask("other", {}));
    std::filesystem::current_path(before);
    EXPECT_THAT(log.entries(), ElementsAre(notStarted("other")));
}

TEST_F(QMTaskExTest, runsAnEmptyPathWithoutTheCheck) {
    test::CapturedOutput printed;
    EXPECT_FALSE(QMTaskEx::runTask("", {}));
    EXPECT_EQ(printed.text(), "") << "logged only";
    EXPECT_THAT(log.entries(), ElementsAre(notStarted("")));
}

TEST_F(QMTaskExTest, checksEveryPathElsewhere) {
    QMTaskEx::runTaskAndReturn("", {});
    EXPECT_EQ(QMTaskEx::terminationCodeFromTask("other", {}), -1);
    EXPECT_EQ(QMTaskEx::dataFromTask("other", {}, nullptr), std::nullopt);
    EXPECT_THAT(log.entries(),
                ElementsAre(notExecutable(""), notExecutable("other"), notExecutable("other")));
}

TEST_F(QMTaskExTest, reportsAToolThatASignalEnded) {
    const std::string message =
        "Exception running task /bin/sh: The tool /bin/sh was ended by signal 9.";
    EXPECT_FALSE(QMTaskEx::runTask(kShell, script("kill -9 $$")));
    EXPECT_EQ(QMTaskEx::terminationCodeFromTask(kShell, script("kill -9 $$")), -1);
    EXPECT_THAT(log.entries(), ElementsAre(message, message));
}

TEST_F(QMTaskExTest, handsTheProcessBackBeforeTheLaunch) {
    TaskSlot slot;
    EXPECT_FALSE(QMTaskEx::runTask(unlaunchableTool(), {}, &slot));
    ASSERT_TRUE(slot.value());
    EXPECT_EQ(slot.value()->launchPath(), sandbox.path("broken"));
    EXPECT_EQ(slot.value()->processIdentifier(), 0);
    EXPECT_EQ(QMTaskEx::terminationCodeFromTask(kShell, script("exit 4"), &slot), 4);
    EXPECT_EQ(slot.value()->terminationStatus(), 4);
    EXPECT_EQ(QMTaskEx::dataFromTask("/bin/echo", {"x"}, &slot), "x\n");
    EXPECT_EQ(slot.value()->launchPath(), "/bin/echo");
}

TEST_F(QMTaskExTest, returnsBeforeTheToolHasEnded) {
    const std::string mark = sandbox.path("mark");
    QMTaskEx::runTaskAndReturn(kShell,
                               script("echo $$ > " + mark + ".new; mv " + mark + ".new " + mark +
                                      "; while test -e " + mark + "; do sleep 0.01; done"));
    ASSERT_TRUE(becomesTrue([&] { return std::filesystem::exists(mark); }));
    const int process = numberIn("mark");
    EXPECT_TRUE(exists(process));
    std::filesystem::remove(mark);
    EXPECT_TRUE(becomesTrue([&] { return !exists(process); })) << "a zombie is left";
}

TEST_F(QMTaskExTest, logsAToolThatCannotBeLaunched) {
    const std::string tool = unlaunchableTool();
    test::CapturedOutput printed;
    EXPECT_FALSE(QMTaskEx::runTask(tool, {}));
    QMTaskEx::runTaskAndReturn(tool, {});
    EXPECT_EQ(QMTaskEx::terminationCodeFromTask(tool, {}), -1);
    EXPECT_EQ(printed.text(), "") << "logged only";
    EXPECT_THAT(log.entries(), ElementsAre(notStarted(tool), notStarted(tool), notStarted(tool)));
}

TEST_F(QMTaskExTest, yieldsTheExitStatus) {
    EXPECT_EQ(QMTaskEx::terminationCodeFromTask("/bin/true", {}), 0);
    EXPECT_EQ(QMTaskEx::terminationCodeFromTask(kShell, script("sleep 0.05; exit 200")), 200);
}

class TaskDataTest : public QMTaskExTest {
  protected:
    static QMTaskEx::Data data(const std::string& text) {
        return QMTaskEx::dataFromTask(kShell, script(text), nullptr);
    }
    static QMTaskEx::Data data(const std::string& text, bool logOutput, bool logError) {
        return QMTaskEx::dataFromTask(kShell, script(text), nullptr, std::nullopt, logOutput,
                                      logError);
    }
};

TEST_F(TaskDataTest, isWhatTheToolWrites) {
    EXPECT_EQ(data("printf 'a\\000b\\377'"), std::string("a\0b\xFF", 4));
}

TEST_F(TaskDataTest, isTheErrorTextOfAToolThatWritesNothingElse) {
    EXPECT_EQ(data("echo failed >&2"), "failed\n");
}

TEST_F(TaskDataTest, leavesTheErrorTextOutWhenThereIsOutput) {
    EXPECT_EQ(data("echo failed >&2; sleep 0.05; echo output; echo more >&2"), "output\n");
}

TEST_F(TaskDataTest, isEmptyForASilentTool) {
    EXPECT_THAT(data("exit 1"), Optional(std::string()));
}

TEST_F(TaskDataTest, endsTheToolsInputAtOnce) {
    EXPECT_EQ(data("cat; echo end"), "end\n");
}

TEST_F(TaskDataTest, replacesTheWholeEnvironment) {
    EXPECT_EQ(QMTaskEx::dataFromTask("/usr/bin/env", {}, nullptr,
                                     platform::Process::Environment{{"ONE", "1"}}),
              "ONE=1\n");
}

TEST_F(TaskDataTest, leavesTheOutputToTheCallersStream) {
    test::CapturedOutput printed;
    EXPECT_EQ(data("echo output; echo failed >&2", false, true), "failed\n");
    EXPECT_EQ(printed.text(), "output\n");
}

TEST_F(TaskDataTest, capturesErrorsWhetherOrNotItCapturesOutput) {
    EXPECT_EQ(
        QMTaskEx::dataFromTask(kShell, script("echo failed >&2"), nullptr, std::nullopt, false),
        "failed\n");
}

TEST_F(TaskDataTest, throwsErrorsAwayThatAreNotWanted) {
    testing::internal::CaptureStderr();
    EXPECT_THAT(data("echo failed >&2", true, false), Optional(std::string()));
    EXPECT_EQ(data("echo failed >&2; echo output", true, false), "output\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(TaskDataTest, returnsStraightAfterTheLaunchWhenNothingIsCaptured) {
    TaskSlot slot;
    EXPECT_THAT(QMTaskEx::dataFromTask("/bin/sleep", {"60"}, &slot, std::nullopt, false, false),
                Optional(std::string()));
    EXPECT_TRUE(slot.value()->isRunning());
    slot.value()->kill();
    EXPECT_TRUE(becomesTrue([&] { return !exists(slot.value()->processIdentifier()); }));
}

TEST_F(TaskDataTest, returnsWhenTheStreamsHaveEndedThoughTheToolGoesOn) {
    TaskSlot slot;
    EXPECT_EQ(QMTaskEx::dataFromTask(
                  kShell, script("echo output; exec sleep 60 >/dev/null 2>/dev/null"), &slot),
              "output\n");
    EXPECT_TRUE(slot.value()->isRunning());
    slot.value()->kill();
    EXPECT_TRUE(becomesTrue([&] { return !exists(slot.value()->processIdentifier()); }))
        << "a zombie is left though nobody waits";
}

TEST_F(TaskDataTest, logsAndPrintsThatAToolCannotBeLaunched) {
    const std::string tool = unlaunchableTool();
    test::CapturedOutput printed;
    EXPECT_EQ(QMTaskEx::dataFromTask(tool, {}, nullptr), std::nullopt);
    EXPECT_EQ(printed.text(), notStarted(tool) + "\n");
    EXPECT_THAT(log.entries(), ElementsAre(notStarted(tool)));
}

TEST_F(TaskDataTest, neverDeadlocksOnAToolThatFloodsBothStreams) {
    constexpr std::size_t kFlood = 8U << 20U;
    const QMTaskEx::Data flood =
        data("head -c 8388608 /dev/zero >&2 & head -c 8388608 /dev/zero | tr '\\000' x; wait");
    EXPECT_EQ(flood, std::string(kFlood, 'x'));
}

TEST_F(TaskDataTest, neverDeadlocksOnErrorsWhileTheOutputIsSilent) {
    EXPECT_EQ(data("head -c 4194304 /dev/zero >&2; echo output"), "output\n");
    const QMTaskEx::Data errors = data("head -c 4194304 /dev/zero | tr '\\000' e >&2");
    EXPECT_EQ(errors, std::string(4U << 20U, 'e'));
}

TEST_F(TaskDataTest, keepsNoDescriptorOpen) {
    const std::string unlaunchable = unlaunchableTool();
    const auto runEachKind = [&] {
        data("echo output; echo error >&2");
        QMTaskEx::dataFromTask(missingTool(), {}, nullptr);
        QMTaskEx::dataFromTask(unlaunchable, {}, nullptr);
        QMTaskEx::runTask("/bin/true", {});
    };
    // What waits for the processes opens a few descriptors of its own, at a moment of its own.
    constexpr std::size_t kRounds = 20;
    runEachKind();
    const std::size_t before = descriptors();
    for (std::size_t round = 0; round < kRounds; ++round) {
        runEachKind();
    }
    EXPECT_TRUE(becomesTrue([&] { return descriptors() < before + kRounds; }))
        << descriptors() << " instead of " << before;
}

TEST_F(TaskDataTest, runsOnManyThreadsAtOnce) {
    constexpr int kThreads = 4;
    std::vector<std::string> seen(kThreads);
    std::vector<std::thread> threads;
    for (int index = 0; index < kThreads; ++index) {
        threads.emplace_back([index, &own = seen[static_cast<std::size_t>(index)]] {
            for (int round = 0; round < 10; ++round) {
                own += data("echo " + std::to_string(index)).value_or("?");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (int index = 0; index < kThreads; ++index) {
        std::string expected;
        for (int round = 0; round < 10; ++round) {
            expected += std::to_string(index) + "\n";
        }
        EXPECT_EQ(seen[static_cast<std::size_t>(index)], expected);
    }
}

class TaskStringTest : public QMTaskExTest {};

TEST_F(TaskStringTest, isStrictAsciiUnlessAskedOtherwise) {
    EXPECT_EQ(QMTaskEx::stringFromTask("/bin/echo", {"plain"}), "plain\n");
    EXPECT_EQ(QMTaskEx::stringFromTask("/bin/echo", {"plain"}, nullptr), "plain\n");
    EXPECT_EQ(QMTaskEx::stringFromTask("/bin/echo", {"caf\xC3\xA9"}), std::nullopt);
}

TEST_F(TaskStringTest, isDecodedByTheGivenEncoding) {
    EXPECT_EQ(
        QMTaskEx::stringFromTask("/bin/echo", {"caf\xC3\xA9"}, QMTaskEx::Encoding::utf8, nullptr),
        "caf\xC3\xA9\n");
    EXPECT_EQ(QMTaskEx::stringFromTask("/bin/echo", {"-n", "caf\x8E"}, QMTaskEx::Encoding::macRoman,
                                       nullptr),
              "caf\xC3\xA9");
}

TEST_F(TaskStringTest, isTheErrorTextOfAToolThatWritesNothingElse) {
    EXPECT_EQ(QMTaskEx::stringFromTask(kShell, script("echo failed >&2")), "failed\n");
}

TEST_F(TaskStringTest, isEmptyWhenTheToolCannotBeRun) {
    EXPECT_EQ(QMTaskEx::stringFromTask(missingTool(), {}), "");
    EXPECT_EQ(QMTaskEx::stringFromTask(missingTool(), {}, 1s), "");
}

class TimedTaskTest : public QMTaskExTest {
  protected:
    static constexpr const char* kTimedOut = "Task /bin/sleep timed out. Terminating...";
};

TEST_F(TimedTaskTest, yieldsWhatAToolWritesInTime) {
    besideTheMainThread([] {
        const QMTaskEx::Arguments writer = script("echo output; echo error >&2");
        EXPECT_EQ(QMTaskEx::dataFromTask(kShell, writer, 60s), "output\n");
        EXPECT_EQ(QMTaskEx::dataFromTask(kShell, script("echo error >&2"), 60s, true, false), "");
        EXPECT_EQ(QMTaskEx::dataFromTask(kShell, script("echo error >&2"), 60s, false, true),
                  "error\n");
        EXPECT_EQ(QMTaskEx::stringFromTask(kShell, writer, 60s), "output\n");
        EXPECT_EQ(QMTaskEx::stringFromTask("/bin/echo", {"caf\xC3\xA9"}, 60s), std::nullopt);
        EXPECT_EQ(
            QMTaskEx::stringFromTask("/bin/echo", {"caf\xC3\xA9"}, QMTaskEx::Encoding::utf8, 60s),
            "caf\xC3\xA9\n");
        EXPECT_EQ(QMTaskEx::stringFromTask(kShell, script("echo error >&2"),
                                           QMTaskEx::Encoding::utf8, 60s, true, false),
                  "");
        EXPECT_EQ(QMTaskEx::terminationCodeFromTask(kShell, script("exit 6"), 60s), 6);
        EXPECT_TRUE(QMTaskEx::runTask(kShell, script("exit 6"), 60s));
    });
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(TimedTaskTest, asksAToolToEndThatTakesTooLong) {
    test::CapturedOutput printed;
    const auto start = std::chrono::steady_clock::now();
    const QMTaskEx::Data data = besideTheMainThread(
        [] { return QMTaskEx::dataFromTask(kShell, script("echo partial; exec sleep 60"), 1s); });
    const auto elapsed = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(data, "partial\n");
    EXPECT_GE(elapsed, 1s);
    EXPECT_LT(elapsed, 20s);
    EXPECT_EQ(printed.text(), "Task /bin/sh timed out. Terminating...\n");
    EXPECT_THAT(log.entries(), ElementsAre("Task /bin/sh timed out. Terminating..."));
}

TEST_F(TimedTaskTest, hasNoExitStatusOfAToolThatTookTooLong) {
    EXPECT_EQ(besideTheMainThread(
                  [] { return QMTaskEx::terminationCodeFromTask("/bin/sleep", {"60"}, 1s); }),
              -1);
    EXPECT_THAT(
        log.entries(),
        ElementsAre(kTimedOut,
                    "Exception running task /bin/sleep: The tool /bin/sleep was ended by signal "
                    "15."));
}

TEST_F(TimedTaskTest, asksPolitely) {
    EXPECT_EQ(besideTheMainThread([] {
                  return QMTaskEx::terminationCodeFromTask(
                      kShell, script("trap 'exit 5' TERM; while :; do sleep 0.01; done"), 1s);
              }),
              5);
}

TEST_F(TimedTaskTest, cutsTheLimitToWholeSeconds) {
    const std::shared_ptr<QMTaskEx> task = QMTaskEx::create();
    std::thread runner([&] {
        EXPECT_EQ(task->terminationCodeFromTimedTask("/bin/sleep", {"60"},
                                                     std::chrono::duration<double>(0.9)),
                  -1);
    });
    EXPECT_TRUE(becomesTrue([&] { return task->theTask() && task->theTask()->isRunning(); }));
    // The watchdog's order is there already, or comes at once.
    EXPECT_TRUE(platform::MainThread::dispatchOne(10s));
    runner.join();
    EXPECT_THAT(log.entries(), testing::Contains(kTimedOut));
}

TEST_F(TimedTaskTest, takesALimitBelowZeroForNone) {
    const std::shared_ptr<QMTaskEx> task = QMTaskEx::create();
    std::thread runner([&] { task->terminationCodeFromTimedTask("/bin/sleep", {"60"}, -5s); });
    EXPECT_TRUE(becomesTrue([&] { return task->theTask() && task->theTask()->isRunning(); }));
    EXPECT_TRUE(platform::MainThread::dispatchOne(10s));
    runner.join();
}

TEST_F(TimedTaskTest, hasNoEffectOnARunOfATask) {
    const std::string mark = sandbox.path("mark");
    std::thread runner([&] {
        EXPECT_FALSE(QMTaskEx::runTask(
            kShell,
            script("echo $$ > " + mark + ".new; mv " + mark + ".new " + mark + "; exec sleep 60"),
            1s));
    });
    ASSERT_TRUE(becomesTrue([&] { return std::filesystem::exists(mark); }));
    // The watchdog's order comes and finds nothing.
    EXPECT_TRUE(platform::MainThread::dispatchOne(20s));
    const int process = numberIn("mark");
    EXPECT_TRUE(exists(process));
    EXPECT_THAT(log.entries(), IsEmpty());
    kill(process, SIGTERM);
    runner.join();
}

TEST_F(TimedTaskTest, actsOnlyOnceTheMainThreadDispatchesEvents) {
    const std::shared_ptr<QMTaskEx> task = QMTaskEx::create();
    std::thread runner([&] { task->dataFromTimedTask("/bin/sleep", {"60"}, 0s); });
    ASSERT_TRUE(becomesTrue([&] { return task->theTask() && task->theTask()->isRunning(); }));
    std::this_thread::sleep_for(100ms);
    EXPECT_TRUE(task->theTask()->isRunning());
    EXPECT_THAT(log.entries(), IsEmpty());
    EXPECT_TRUE(platform::MainThread::dispatchOne(10s));
    runner.join();
}

TEST_F(TimedTaskTest, doesNotActOnARunThatBlocksTheMainThread) {
    EXPECT_EQ(QMTaskEx::terminationCodeFromTask(kShell, script("sleep 0.2; exit 3"), 0s), 3);
    while (platform::MainThread::dispatchOne(0ms)) {
    }
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(TimedTaskTest, leavesNoWatchdogBehind) {
    const std::size_t before = threads();
    for (int round = 0; round < 5; ++round) {
        EXPECT_EQ(QMTaskEx::dataFromTask("/bin/echo", {"x"}, 3600s), "x\n");
        EXPECT_EQ(QMTaskEx::terminationCodeFromTask("/bin/true", {}, 0s), 0);
        EXPECT_EQ(QMTaskEx::dataFromTask(missingTool(), {}, 3600s), std::nullopt);
    }
    EXPECT_TRUE(becomesTrue([&] { return threads() <= before; }))
        << threads() << " threads instead of " << before;
}

TEST_F(TimedTaskTest, sparesTheNextRunOfTheInstance) {
    const std::shared_ptr<QMTaskEx> task = QMTaskEx::create();
    EXPECT_EQ(task->terminationCodeFromTimedTask("/bin/true", {}, 0s), 0);
    std::thread runner([&] {
        EXPECT_EQ(task->terminationCodeFromTimedTask(kShell, script("sleep 0.3; exit 4"), 3600s),
                  4);
    });
    ASSERT_TRUE(becomesTrue([&] { return task->theTask() && task->theTask()->isRunning(); }));
    while (platform::MainThread::dispatchOne(100ms)) {
    }
    runner.join();
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(TimedTaskTest, clearsItsProcessAfterwards) {
    const std::shared_ptr<QMTaskEx> task = QMTaskEx::create();
    EXPECT_EQ(task->dataFromTimedTask("/bin/echo", {"x"}, 60s), "x\n");
    EXPECT_EQ(task->theTask(), nullptr);
    task->timeout();
    EXPECT_THAT(log.entries(), IsEmpty());
}

}  // namespace
}  // namespace vornic
