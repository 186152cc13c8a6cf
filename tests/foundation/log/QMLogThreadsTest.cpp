#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <unistd.h>

#include "foundation/log/QMLog.h"
#include "tests/foundation/log/LogTest.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic {
namespace {

class QMLogThreadsTest : public test::LogTest {};

TEST_F(QMLogThreadsTest, waitsUntilEverythingQueuedIsWritten) {
    constexpr int kThreads = 4;
    constexpr int kLines = 5000;
    static_cast<void>(inChild([] {
        QMLog::createNewLog();
        std::vector<std::thread> threads;
        for (int thread = 0; thread < kThreads; ++thread) {
            threads.emplace_back([thread] {
                for (int line = 0; line < kLines; ++line) {
                    if (line % 50 == 0) {
                        QMLog::appendLog("%li %li", thread, line);
                    } else {
                        QMLog::fastAppendLog("%li %li", thread, line);
                    }
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        QMLog::finishWriting();
        EXPECT_EQ(QMLog::sharedController().bytesInQueue(), 0U);
        EXPECT_EQ(QMLog::sharedController().bytesWritten(),
                  std::filesystem::file_size(QMLog::availableLogs().at(0)));
    }));
    std::vector<int> next(kThreads, 0);
    for (const std::string& entry : entries()) {
        const std::size_t thread = std::stoul(entry);
        ASSERT_EQ(std::stoi(entry.substr(entry.find(' '))), next.at(thread)++);
    }
    EXPECT_THAT(next, ::testing::Each(kLines));
}

TEST_F(QMLogThreadsTest, goesOnInCopiesForkedWhileTheWorkerStartsAndWrites) {
    constexpr int kCopies = 300;
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog();
        QMLog::finishWriting();
        for (int copy = 0; copy < kCopies; ++copy) {
            QMLog::appendLog("before %li", copy);
            ASSERT_TRUE(test::passesInChild([&] {
                // A copy whose log is stuck ends by the signal.
                alarm(20);
                QMLog::appendLog("copy %li", copy);
                QMLog::finishWriting();
            }));
        }
        QMLog::finishWriting();
    });
    EXPECT_EQ(outcome.status, 0);
    const std::vector<std::string> lines = entries();
    for (int copy = 0; copy < kCopies; ++copy) {
        EXPECT_EQ(std::count(lines.begin(), lines.end(), "before " + std::to_string(copy)), 1);
        EXPECT_EQ(std::count(lines.begin(), lines.end(), "copy " + std::to_string(copy)), 1);
    }
}

TEST_F(QMLogThreadsTest, writesAShortMessageOfAnotherThreadBeforeItsCallerGoesOn) {
    static_cast<void>(inChild([this] {
        QMLog::createNewLog();
        QMLog::finishWriting();
        std::thread([this] {
            for (int i = 0; i < 200; ++i) {
                const std::string text = "message " + std::to_string(i);
                QMLog::appendLog("%@", text);
                ASSERT_THAT(test::readBytes(generation(1)), ::testing::EndsWith(text + "\n"));
            }
        }).join();
    }));
    EXPECT_EQ(entries().size(), 200U);
}

TEST_F(QMLogThreadsTest, writesALineThatWasQueuedBeforeANewLogIntoTheLogBefore) {
    writeGeneration(1, "an older line");
    static_cast<void>(inChild([] {
        QMLog::appendLog("before");
        QMLog::createNewLog();
        QMLog::appendLog("after");
        QMLog::finishWriting();
    }));
    EXPECT_THAT(test::readBytes(generation(2)), ::testing::EndsWith(" - before\n"));
    EXPECT_THAT(entries(), ::testing::ElementsAre("after"));
}

TEST_F(QMLogThreadsTest, keepsTheNewLogWhenTheWriterHasOpenedTheOldOneMeanwhile) {
    writeGeneration(1, "an older line");
    static_cast<void>(inChild([] {
        // The old log is open, and the new one is started before anything is written.
        QMLog::setWhenReopening([] {
            QMLog::setWhenReopening(nullptr);
            QMLog::createNewLog();
            QMLog::finishWriting();
        });
        QMLog::sharedController().appendLogOnThread("while it was started");
        QMLog::appendLog("after");
        QMLog::finishWriting();
    }));
    EXPECT_THAT(entries(), ::testing::Contains("after"));
    EXPECT_THAT(test::readBytes(generation(2)), ::testing::Not(::testing::HasSubstr("after")));
}

TEST_F(QMLogThreadsTest, knowsItsLogWhereverOthersMoveIt) {
    static_cast<void>(inChild([this] {
        EXPECT_EQ(QMLog::currentLog(), std::nullopt);
        QMLog::createNewLog();
        EXPECT_EQ(QMLog::currentLog(), generation(1));
        std::filesystem::rename(generation(1), generation(3));
        EXPECT_EQ(QMLog::currentLog(), generation(3));
        std::filesystem::remove(generation(3));
        EXPECT_EQ(QMLog::currentLog(), std::nullopt);
    }));
}

TEST_F(QMLogThreadsTest, survivesLogsStartedByManyThreadsAtOnce) {
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog("", true);
        std::vector<std::thread> threads;
        for (int thread = 0; thread < 4; ++thread) {
            threads.emplace_back([thread] {
                for (int i = 0; i < 50; ++i) {
                    if (thread < 2) {
                        QMLog::createNewLog("", true);
                    }
                    QMLog::appendLog("thread %li line %li", thread, i);
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        QMLog::finishWriting();
        EXPECT_EQ(QMLog::sharedController().bytesInQueue(), 0U);
    });
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
}

TEST_F(QMLogThreadsTest, survivesProcessesThatRotateEachOthersLogs) {
    std::vector<std::unique_ptr<test::ChildProcess>> processes;
    for (int process = 0; process < 4; ++process) {
        processes.push_back(std::make_unique<test::ChildProcess>([process] {
            for (int i = 0; i < 30; ++i) {
                QMLog::createNewLog("", true);
                for (int line = 0; line < 50; ++line) {
                    QMLog::appendLog("process %li line %li", process, line);
                }
            }
            QMLog::finishWriting();
            EXPECT_EQ(QMLog::sharedController().bytesInQueue(), 0U);
        }));
    }
    for (const auto& process : processes) {
        EXPECT_EQ(process->wait(), 0);
    }
    for (int number = 1; number <= 5; ++number) {
        if (test::exists(generation(number))) {
            // Fails the test for every line that is torn or glued.
            static_cast<void>(test::logMessages(test::readBytes(generation(number))));
        }
    }
    EXPECT_TRUE(test::exists(generation(1)));
}

}  // namespace
}  // namespace vornic
