#include <string>
#include <string_view>
#include <thread>
#include <type_traits>
#include <vector>

#include <gmock/gmock.h>
#include <unistd.h>

#include "foundation/log/QMLog.h"
#include "tests/foundation/log/LogTest.h"

namespace vornic {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

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

TEST_F(QMLogTest, isDisabledByItsSwitchAndSaysSoOnce) {
    setGlobalPreference("1");
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog();
        EXPECT_TRUE(QMLog::sharedController().loggingDisabled());
        QMLog::createNewLog();
    });
    EXPECT_EQ(outcome.output, "Logging is disabled\n");
    EXPECT_FALSE(test::exists(generation(1)));
}

TEST_F(QMLogTest, staysOnWhenItsSwitchHoldsAnythingElse) {
    setGlobalPreference("YES");
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog();
        EXPECT_FALSE(QMLog::sharedController().loggingDisabled());
        QMLog::finishWriting();
    });
    EXPECT_EQ(outcome.output, "");
    EXPECT_THAT(entries(), IsEmpty());
}

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

}  // namespace
}  // namespace vornic
