#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <unistd.h>

#include "foundation/QMLog.h"
#include "platform/Termination.h"
#include "tests/foundation/LogTest.h"

namespace vornic {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Strings = std::vector<std::string>;

class QMLogTest : public test::LogTest {};

static_assert(!std::is_copy_constructible_v<QMLog> && !std::is_destructible_v<QMLog>,
              "there is one log, and nobody ends its life");

// Names

TEST_F(QMLogTest, isOneInstanceForAllThreads) {
    static_cast<void>(inChild([] {
        std::vector<QMLog*> seen(8);
        std::vector<std::thread> threads;
        for (QMLog*& log : seen) {
            threads.emplace_back([&log] { log = &QMLog::sharedController(); });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        EXPECT_THAT(seen, ::testing::Each(&QMLog::sharedController()));
    }));
}

TEST_F(QMLogTest, isNamedAfterTheApplicationAndNeverStoresThat) {
    static_cast<void>(inChild([] {
        QMLog& log = QMLog::sharedController();
        EXPECT_EQ(log.appName(), "Vornic");
        log.setAppName("Other");
        EXPECT_EQ(log.appName(), "Other");
        log.setAppName(std::nullopt);
        EXPECT_EQ(log.appName(), "Vornic");
    }));
}

TEST_F(QMLogTest, takesAGivenNameOnlyWhereThereIsNone) {
    static_cast<void>(inChild([] {
        QMLog::createNewLog("Converter");
        QMLog::finishWriting();
    }));
    EXPECT_TRUE(test::exists(generation(1)));
    EXPECT_FALSE(test::exists(generation(1, "Converter")));
}

TEST_F(QMLogTest, callsALogWithAnEmptyNameUnknown) {
    static_cast<void>(inChild([] {
        QMLog::sharedController().setAppName("");
        QMLog::createNewLog("Converter");
        EXPECT_EQ(QMLog::sharedController().appName(), "Unknown");
        QMLog::finishWriting();
    }));
    EXPECT_THAT(entries(generation(1, "Unknown")), IsEmpty());
}

TEST_F(QMLogTest, keepsAStoredName) {
    static_cast<void>(inChild([] {
        QMLog::sharedController().setAppName("Stored");
        QMLog::createNewLog();
        QMLog::finishWriting();
    }));
    EXPECT_THAT(entries(generation(1, "Stored")), IsEmpty());
}

// Formatting

TEST_F(QMLogTest, writesOneLineForEachMessageInOrder) {
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog();
        QMLog::appendLog("Beginning repair for file %@...", "/a/b.xml");
        QMLog::fastAppendLog("%li of %0.2f", 3, 7.5);
        QMLog::appendLog("  \t%s\r\n ", "trimmed");
        QMLog::finishWriting();
    });
    EXPECT_THAT(entries(),
                ElementsAre("Beginning repair for file /a/b.xml...", "3 of 7.50", "trimmed"));
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "");
}

TEST_F(QMLogTest, writesAMessageOfSeveralLinesAsOneEntry) {
    static_cast<void>(inChild([] {
        QMLog::createNewLog();
        QMLog::appendLog("first\nsecond\n");
        QMLog::appendLog("third");
        QMLog::finishWriting();
    }));
    EXPECT_THAT(entries(), ElementsAre("first\nsecond", "third"));
}

TEST_F(QMLogTest, writesASinglePercentSignForALoneAndForADoubledOne) {
    static_cast<void>(inChild([] {
        QMLog::createNewLog();
        QMLog::appendLog("100% done");
        QMLog::appendLog("50%% done");
        QMLog::fastAppendLog("5%, 6%. 7%! 8%; 9%: 1%+ 2%- 3%");
        QMLog::finishWriting();
    }));
    EXPECT_THAT(entries(), ElementsAre("100% done", "50% done", "5%, 6%. 7%! 8%; 9%: 1%+ 2%- 3%"));
}

TEST_F(QMLogTest, writesALeftJustifiedConversionAsItStands) {
    static_cast<void>(inChild([] {
        QMLog::createNewLog();
        QMLog::appendLog("[%-5d] %d", 42);
        QMLog::finishWriting();
    }));
    EXPECT_THAT(entries(), ElementsAre("[%-5d] 42"));
}

TEST(QMLog, doublesOnlyPercentSignsThatBeginNoConversion) {
    EXPECT_EQ(QMLog::escapeTextForLogging("no sign"), "no sign");
    EXPECT_EQ(QMLog::escapeTextForLogging("% %.%!%,%-%;%:%+"), "%% %%.%%!%%,%%-%%;%%:%%+");
    EXPECT_EQ(QMLog::escapeTextForLogging("%@ %d %li %0.2f %s%"), "%@ %d %li %0.2f %s%");
    EXPECT_EQ(QMLog::escapeTextForLogging("50%% done"), "50%% done");
    EXPECT_EQ(QMLog::escapeTextForLogging("%-5d"), "%%-5d");
    EXPECT_EQ(QMLog::escapeTextForLogging("%%%@"), "%%@");
    EXPECT_EQ(QMLog::escapeTextForLogging("%%%%%%"), "%%%%");
    EXPECT_EQ(QMLog::escapeTextForLogging("%%%%."), "%%%%.");
    EXPECT_EQ(QMLog::escapeTextForLogging(""), "");
}

TEST_F(QMLogTest, neverReadsAnArgumentAsAFormat) {
    static_cast<void>(inChild([] {
        QMLog::createNewLog();
        QMLog::appendLog("%@", "50% done %@ %-5d");
        QMLog::appendLogAndDebugPrint("%@", "%d%%");
        QMLog::finishWriting();
    }));
    EXPECT_THAT(entries(), ElementsAre("50% done %@ %-5d", "%d%%"));
}

TEST_F(QMLogTest, doesNothingWithoutAFormat) {
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog();
        const std::string_view missing;
        QMLog::appendLog(missing);
        QMLog::fastAppendLog(missing);
        QMLog::appendLogAndPrint(missing);
        QMLog::appendLogAndDebugPrint(missing);
        QMLog::finishWriting();
    });
    EXPECT_THAT(entries(), IsEmpty());
    EXPECT_EQ(outcome.output, "");
}

TEST_F(QMLogTest, logsNoMessageThatTrimsToNothing) {
    static_cast<void>(inChild([] {
        // Without a log every queued text would be reported as lost.
        QMLog::appendLog("  \n");
        QMLog::fastAppendLog("");
        QMLog::appendLog("%@", "\t\u00A0");
        EXPECT_EQ(QMLog::sharedController().bytesInQueue(), 0U);
        QMLog::createNewLog();
        QMLog::appendLog(" \n ");
        QMLog::finishWriting();
    }));
    EXPECT_THAT(entries(), IsEmpty());
}

TEST_F(QMLogTest, writesUtf8WhateverBytesATextHolds) {
    static_cast<void>(inChild([] {
        QMLog::createNewLog();
        QMLog::appendLog("%@", "Grüße 🎬");
        QMLog::appendLog("%@", "/a/\xFF.xml");
        QMLog::finishWriting();
    }));
    EXPECT_THAT(entries(), ElementsAre("Grüße 🎬", "/a/\uFFFD.xml"));
}

TEST_F(QMLogTest, writesADebugPrintToTheLogAlone) {
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog();
        QMLog::appendLogAndDebugPrint(" a %d \n", 1);
        QMLog::debugPrint("nothing %d", 2);
        QMLog::finishWriting();
    });
    EXPECT_THAT(entries(), ElementsAre("a 1"));
    EXPECT_EQ(outcome.output, "");
}

// Printing

TEST_F(QMLogTest, printsWhatItLogs) {
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog();
        QMLog::appendLogAndPrint("  Converting %@...\n", "a.xml");
        QMLog::appendLogAndPrint("");
        QMLog::finishWriting();
    });
    EXPECT_THAT(entries(), ElementsAre("Converting a.xml..."));
    EXPECT_EQ(outcome.output, "Converting a.xml...\n\n");
}

TEST_F(QMLogTest, printsPercentSignsDoubledAndNoPlaceholdersOrNulCharacters) {
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog();
        QMLog::appendLogAndPrint("%@", "5% of %@ and %d");
        QMLog::appendLogAndPrint("a%cb", 0);
        QMLog::appendLogAndPrint("%@", "%%@@");
        QMLog::finishWriting();
    });
    EXPECT_THAT(entries(), ElementsAre("5% of %@ and %d", std::string("a\0b", 3), "%%@@"));
    EXPECT_EQ(outcome.output, "5%% of  and %%d\nab\n%%@\n");
}

TEST_F(QMLogTest, printsNothingWhenToldSo) {
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog("Vornic", true);
        EXPECT_TRUE(QMLog::sharedController().noPrinting());
        QMLog::appendLogAndPrint("silent");
        QMLog::finishWriting();
    });
    EXPECT_THAT(entries(), ElementsAre("silent"));
    EXPECT_EQ(outcome.output, "");
}

TEST_F(QMLogTest, printsAgainAfterTheShorterFormsOfStarting) {
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog("", true);
        QMLog::finishWriting();
        QMLog::createNewLog();
        QMLog::appendLogAndPrint("one");
        QMLog::finishWriting();
        QMLog::createNewLog("", true);
        QMLog::finishWriting();
        QMLog::createNewLog("Vornic");
        QMLog::appendLogAndPrint("two");
        QMLog::finishWriting();
    });
    EXPECT_EQ(outcome.output, "one\ntwo\n");
}

TEST_F(QMLogTest, printsAtOnce) {
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog();
        QMLog::appendLogAndPrint("flushed");
        _exit(0);
    });
    EXPECT_EQ(outcome.output, "flushed\n");
}

// The switch

struct SwitchCase {
    const char* name;
    platform::PropertyList value;
    bool disables;
};

class QMLogSwitchTest : public QMLogTest, public ::testing::WithParamInterface<SwitchCase> {};

TEST_P(QMLogSwitchTest, isDisabledByTheTextOneOrTheTruthAlone) {
    setGlobalPreference(GetParam().value);
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog();
        EXPECT_EQ(QMLog::sharedController().loggingDisabled(), GetParam().disables);
        QMLog::finishWriting();
    });
    EXPECT_EQ(outcome.output, GetParam().disables ? "Logging is disabled\n" : "");
    EXPECT_EQ(test::exists(generation(1)), !GetParam().disables);
}

INSTANTIATE_TEST_SUITE_P(
    Values, QMLogSwitchTest,
    ::testing::Values(
        SwitchCase{"textOne", "1", true},
        SwitchCase{"theBooleanTrue", platform::PropertyList(true), true},
        SwitchCase{"theNumberOne", 1, true},
        SwitchCase{"theRealOne", platform::PropertyList(1.0), true},
        SwitchCase{"textYes", "YES", false}, SwitchCase{"textZero", "0", false},
        SwitchCase{"textOneWithABlank", "1 ", false}, SwitchCase{"theNumberZero", 0, false},
        SwitchCase{"theNumberTwo", 2, false},
        SwitchCase{"theBooleanFalse", platform::PropertyList(false), false},
        SwitchCase{"aList", platform::PropertyList(platform::PropertyList::Array{"1"}), false}),
    [](const auto& parameter) { return std::string(parameter.param.name); });

TEST_F(QMLogTest, staysDisabledForTheLifeOfTheProcess) {
    setGlobalPreference("1");
    const test::ChildOutcome outcome = inChild([this] {
        QMLog::createNewLog();
        setGlobalPreference("0");
        QMLog::createNewLog();
        QMLog::appendLog("a");
        QMLog::fastAppendLog("b");
        QMLog::appendLogAndPrint("c");
        QMLog::appendLogAndDebugPrint("d");
        QMLog::sharedController().appendLogOnThread("e");
        QMLog::finishWriting();
        EXPECT_TRUE(QMLog::sharedController().loggingDisabled());
        EXPECT_EQ(QMLog::sharedController().bytesInQueue(), 0U);
    });
    EXPECT_EQ(outcome.output, "Logging is disabled\n");
    EXPECT_FALSE(test::exists(logFolder()));
}

TEST_F(QMLogTest, isDisabledSilentlyWithoutPrinting) {
    setGlobalPreference("1");
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog("Vornic", true);
        EXPECT_TRUE(QMLog::sharedController().loggingDisabled());
    });
    EXPECT_EQ(outcome.output, "");
}

TEST_F(QMLogTest, dropsAnOpenLogWhenItIsDisabled) {
    static_cast<void>(inChild([this] {
        QMLog::createNewLog();
        EXPECT_TRUE(QMLog::sharedController().hasFileHandle());
        setGlobalPreference("1");
        QMLog::createNewLog();
        EXPECT_FALSE(QMLog::sharedController().hasFileHandle());
    }));
}

TEST_F(QMLogTest, staysOnWithABrokenPreferenceFile) {
    std::filesystem::create_directories(library() + "/Preferences");
    std::ofstream(library() + "/Preferences/com.quillmark.global.plist") << "no property list";
    static_cast<void>(inChild([] {
        QMLog::createNewLog();
        EXPECT_FALSE(QMLog::sharedController().loggingDisabled());
    }));
}

// Failures of writing

TEST_F(QMLogTest, printsTheTextsThatItCannotLog) {
    const test::ChildOutcome outcome = inChild([this] {
        QMLog::appendLog("50% lost");
        QMLog::appendLog("%@", "and %@ too");
        QMLog::finishWriting();
        EXPECT_EQ(QMLog::sharedController().bytesInQueue(), 0U);
        EXPECT_EQ(QMLog::sharedController().bytesWritten(), 0U);
        EXPECT_FALSE(test::exists(generation(1)));
    });
    EXPECT_EQ(
        outcome.output,
        "Unable to log the following information: 50% lost\nUnable to open log for output\n"
        "Unable to log the following information: and %@ too\nUnable to open log for output\n");
}

TEST_F(QMLogTest, losesTextsSilentlyWithoutPrinting) {
    std::filesystem::create_directories(library());
    std::ofstream(library() + "/Logs") << "in the way";
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog("Vornic", true);
        QMLog::appendLog("lost");
        QMLog::finishWriting();
    });
    EXPECT_EQ(outcome.output, "");
}

TEST_F(QMLogTest, opensAnExistingLogAtItsEndWithoutAHeader) {
    writeGeneration(1, "2026-11-21 07:05:00 +0000 - old");
    static_cast<void>(inChild([] {
        QMLog::appendLog("new");
        QMLog::finishWriting();
        EXPECT_TRUE(QMLog::sharedController().hasFileHandle());
        EXPECT_EQ(QMLog::sharedController().bytesWritten(),
                  std::string_view("2026-11-21 07:05:00 +0000 - new\n").size());
    }));
    EXPECT_THAT(test::logMessages(test::readBytes(generation(1))), ElementsAre("old", "new"));
}

TEST_F(QMLogTest, triesAgainWithEachLineToOpenTheLog) {
    const test::ChildOutcome outcome = inChild([this] {
        QMLog::appendLog("lost");
        QMLog::finishWriting();
        writeGeneration(1, "2026-11-21 07:05:00 +0000 - old");
        QMLog::appendLog("found");
        QMLog::finishWriting();
    });
    EXPECT_THAT(test::logMessages(test::readBytes(generation(1))), ElementsAre("old", "found"));
    EXPECT_THAT(outcome.output, ::testing::Not(::testing::HasSubstr("found")));
}

/// Lets no file of this process grow beyond a size.
void limitFileSize(std::uint64_t size) {
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
    const rlimit limit{.rlim_cur = size, .rlim_max = RLIM_INFINITY};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
}

TEST_F(QMLogTest, printsAnExceptionOfWriting) {
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog();
        QMLog::finishWriting();
        const std::uint64_t written = QMLog::sharedController().bytesWritten();
        limitFileSize(written);
        QMLog::appendLog("full");
        QMLog::finishWriting();
        EXPECT_EQ(QMLog::sharedController().bytesWritten(), written);
        // The length of a text whose writing raised is not taken off.
        EXPECT_EQ(QMLog::sharedController().bytesInQueue(), 4U);
        limitFileSize(RLIM_INFINITY);
        QMLog::appendLog("room again");
        QMLog::finishWriting();
    });
    EXPECT_THAT(
        outcome.output,
        ::testing::MatchesRegex("Exception writing to log: The log file cannot be written: .+\n"));
    EXPECT_THAT(entries(), ElementsAre("room again"));
}

TEST_F(QMLogTest, losesOnlyTheLinesForWhichThereIsNoRoom) {
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog();
        QMLog::finishWriting();
        limitFileSize(QMLog::sharedController().bytesWritten() + 10 * 30);
        for (int i = 0; i < 12; ++i) {
            QMLog::fastAppendLog("%li", i % 10);
        }
        QMLog::finishWriting();
        EXPECT_EQ(QMLog::sharedController().bytesInQueue(), 2U);
    });
    EXPECT_EQ(entries().size(), 10U);
    EXPECT_EQ(std::count(outcome.output.begin(), outcome.output.end(), '\n'), 2);
}

TEST_F(QMLogTest, losesAnExceptionOfWritingSilentlyWithoutPrinting) {
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog("Vornic", true);
        QMLog::finishWriting();
        limitFileSize(QMLog::sharedController().bytesWritten());
        QMLog::appendLog("full");
        QMLog::finishWriting();
    });
    EXPECT_EQ(outcome.output, "");
}

// The end

TEST_F(QMLogTest, writesWhatIsQueuedWhenTheApplicationEnds) {
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog();
        QMLog::sharedController().setAppName("Stored");
        QMLog::finishWriting();
        QMLog::fastAppendLog("last");
        platform::postWillTerminate();
        EXPECT_EQ(QMLog::sharedController().appName(), "Vornic");
        EXPECT_FALSE(QMLog::sharedController().hasFileHandle());
    });
    EXPECT_THAT(entries(), ElementsAre("last"));
    EXPECT_EQ(outcome.output, "");
}

TEST_F(QMLogTest, dropsWhatIsLoggedAfterTheEnd) {
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog();
        platform::postWillTerminate();
        QMLog::appendLog("dropped");
        std::thread([] { QMLog::appendLog("dropped"); }).join();
        QMLog::finishWriting();
        EXPECT_EQ(QMLog::sharedController().bytesInQueue(), 14U);
        QMLog::willTerminate();
    });
    EXPECT_THAT(entries(), IsEmpty());
    EXPECT_EQ(outcome.output, "");
}

TEST_F(QMLogTest, endsWithTheProcessWithoutBeingToldSo) {
    for (int i = 0; i < 20; ++i) {
        const test::ChildOutcome outcome = inChild([i] {
            QMLog::createNewLog();
            for (int line = 0; line < i * 100; ++line) {
                QMLog::fastAppendLog("line %li", line);
            }
            std::exit(0);
        });
        ASSERT_EQ(outcome.status, 0) << outcome.errors;
    }
}

TEST_F(QMLogTest, leavesNoThreadBehindTheEnd) {
    static_cast<void>(inChild([] {
        QMLog::createNewLog();
        QMLog::fastAppendLog("wakes the worker");
        QMLog::finishWriting();
        QMLog::willTerminate();
        // The thread itself may need a moment more than its last step.
        const auto threads = [] {
            return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
        };
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (threads() > 1 && std::chrono::steady_clock::now() < end) {
            std::this_thread::yield();
        }
        EXPECT_EQ(threads(), 1);
    }));
}

TEST_F(QMLogTest, keepsItsFileFromProgramsThatAreStarted) {
    static_cast<void>(inChild([this] {
        QMLog::createNewLog();
        bool isFound = false;
        for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
            std::error_code ignored;
            if (std::filesystem::read_symlink(entry.path(), ignored) == generation(1)) {
                isFound = true;
                const int descriptor = std::stoi(entry.path().filename().string());
                EXPECT_EQ(fcntl(descriptor, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
            }
        }
        EXPECT_TRUE(isFound);
    }));
}

// Threads

TEST_F(QMLogTest, waitsUntilEverythingQueuedIsWritten) {
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

TEST_F(QMLogTest, writesAShortMessageOfAnotherThreadBeforeItsCallerGoesOn) {
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

TEST_F(QMLogTest, survivesLogsStartedByManyThreadsAtOnce) {
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

TEST_F(QMLogTest, survivesProcessesThatRotateEachOthersLogs) {
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
