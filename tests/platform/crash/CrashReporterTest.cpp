#include <atomic>
#include <chrono>
#include <csignal>
#include <ctime>
#include <exception>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/Exception.h"
#include "platform/crash/CrashReporter.h"
#include "platform/items/FileDates.h"
#include "platform/threads/Thread.h"
#include "tests/platform/crash/CrashTest.h"

namespace vornic::platform {
namespace {

using test::callerOfTheCrashingFunction;
using test::crashingFunction;
using test::depthWanted;
using test::endlessRecursion;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::Not;

using CrashReporterTest = test::CrashTest;

/// Lets an exception out of a function that promises that there is none: nobody catches it.
void throwUncaught(const std::runtime_error& exception) noexcept {
    std::rethrow_exception(std::make_exception_ptr(exception));
}

// What is reported

TEST_F(CrashReporterTest, reportsProgramPlaceAndCauseOfACrash) {
    EXPECT_EQ(crash(callerOfTheCrashingFunction), SIGSEGV);
    EXPECT_THAT(report(),
                ContainsRegex("^Program: probe\n"
                              "Version: 1\\.2\\.3\n"
                              "Path: /.*/test-crashes\n"
                              "Process: [0-9]+, thread [0-9]+\n"
                              "Date: [0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2} "
                              "\\+0000\n"
                              "Signal: SIGSEGV \\(11\\), code 1\n"
                              "Faulting address: 0x8\n"
                              "Log: /a/Vornic\\.1\\.log\n"
                              "\n"
                              "Backtrace:\n"
                              "0  0x[0-9a-f]{16}  /.*/test-crashes \\+ 0x[0-9a-f]+  "
                              "crashingFunction\n"
                              "1  0x[0-9a-f]{16}  /.*/test-crashes \\+ 0x[0-9a-f]+  "
                              "callerOfTheCrashingFunction\n"
                              "2  0x"));
}

TEST_F(CrashReporterTest, saysOnStandardErrorThatTheProgramHasEnded) {
    std::string said = sandbox.path("said");
    settings.folder = "/dev/null/no report can be written";
    EXPECT_EQ(crash([&] {
                  const int file = open(said.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
                  dup2(file, STDERR_FILENO);
                  std::abort();
              }),
              SIGABRT);
    EXPECT_EQ(test::readBytes(said),
              "probe was ended by a fault (SIGABRT). Each file is as it was or complete; none is "
              "half written.\n");
}

TEST_F(CrashReporterTest, namesTheReportByProgramAndTime) {
    crash(crashingFunction);
    ASSERT_EQ(reports().size(), 1U);
    EXPECT_THAT(reports().front(),
                MatchesRegex("probe_[0-9]{4}-[0-9]{2}-[0-9]{2}-[0-9]{6}-[0-9]{6}\\.crash"));
    const std::time_t now = std::time(nullptr);
    std::tm time{};
    gmtime_r(&now, &time);
    std::string day(16, '\0');
    day.resize(std::strftime(day.data(), day.size(), "probe_%Y-%m-%d", &time));
    EXPECT_EQ(reports().front().substr(0, day.size()), day);
}

TEST_F(CrashReporterTest, sortsReportsByTheirTime) {
    crash(crashingFunction);
    const std::string first = reports().front();
    crash(crashingFunction);
    ASSERT_EQ(reports().size(), 2U);
    EXPECT_EQ(reports().front(), first);
}

TEST_F(CrashReporterTest, diesOfEachFatalSignalAndReportsIt) {
    for (const int number : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGTRAP, SIGSYS}) {
        const std::size_t before = reports().size();
        EXPECT_EQ(crash([number] { raise(number); }), number);
        ASSERT_EQ(reports().size(), before + 1);
        EXPECT_THAT(test::readBytes(settings.folder + "/" + reports().back()),
                    HasSubstr("(" + std::to_string(number) + "), code -6\n"));
    }
}

TEST_F(CrashReporterTest, reportsAnAbort) {
    EXPECT_EQ(crash([] { std::abort(); }), SIGABRT);
    EXPECT_THAT(report(), HasSubstr("\nSignal: SIGABRT (6), code -6\nLog: "));
}

TEST_F(CrashReporterTest, reportsAnEndByAnotherProgramAsSuch) {
    EXPECT_EQ(crash([] { kill(getpid(), SIGBUS); }), SIGBUS);
    EXPECT_THAT(report(), HasSubstr("\nSignal: SIGBUS (7), code 0\nSent by process: "));
    EXPECT_THAT(report(), Not(HasSubstr("Faulting address")));
}

TEST_F(CrashReporterTest, reportsNothingOfAKill) {
    EXPECT_EQ(crash([] { raise(SIGKILL); }), SIGKILL);
    EXPECT_THAT(reports(), IsEmpty());
}

TEST_F(CrashReporterTest, reportsNothingOfAPlainEnd) {
    EXPECT_EQ(crash([] {}), 0);
    EXPECT_EQ(crash([] { raise(SIGTERM); }), SIGTERM);
    EXPECT_FALSE(test::exists(sandbox.path("Logs")));
}

// Exceptions

TEST_F(CrashReporterTest, reportsTheReasonOfAnExceptionThatNobodyCaught) {
    EXPECT_EQ(crash([] { std::thread([] { throw Exception("Name", "a\nreason, 100%"); }).join(); }),
              SIGABRT);
    EXPECT_THAT(report(),
                HasSubstr("\nSignal: SIGABRT (6), code -6\nReason: a reason, 100%\nLog: "));
}

TEST_F(CrashReporterTest, reportsWhatAnExceptionOfTheLanguageSays) {
    EXPECT_EQ(crash([] { throwUncaught(std::runtime_error("a runtime error")); }), SIGABRT);
    EXPECT_THAT(report(), HasSubstr("\nReason: a runtime error\n"));
}

TEST_F(CrashReporterTest, cutsAReasonThatIsTooLong) {
    EXPECT_EQ(crash([] { throwUncaught(std::runtime_error(std::string(600, 'x'))); }), SIGABRT);
    EXPECT_THAT(report(), HasSubstr("\nReason: " + std::string(512, 'x') + "\n"));
}

TEST_F(CrashReporterTest, leavesTheEndToTheHandlerThatWasThereBefore) {
    test::ChildProcess child([&] {
        std::set_terminate([] { _exit(42); });
        installCrashReporter(settings);
        std::terminate();
    });
    const int status = child.wait();
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 42);
    EXPECT_THAT(reports(), IsEmpty());
}

// Stacks and threads

TEST_F(CrashReporterTest, reportsAFullStackOfAThread) {
    EXPECT_EQ(crash([] {
                  detachNewThread([] { depthWanted = endlessRecursion(0); });
                  joinDetachedThreads(std::chrono::seconds(60));
              }),
              SIGSEGV);
    EXPECT_THAT(report(), HasSubstr("endlessRecursion\nFurther frames"));
}

TEST_F(CrashReporterTest, reportsTheCrashOfASecondThread) {
    EXPECT_EQ(crash([] { std::thread(callerOfTheCrashingFunction).join(); }), SIGSEGV);
    const std::string text = report();
    EXPECT_THAT(text, HasSubstr("  crashingFunction\n1  0x"));
    EXPECT_THAT(text, HasSubstr("  callerOfTheCrashingFunction\n2  0x"));
    EXPECT_THAT(text, Not(HasSubstr("  main\n")));
    const auto numberAfter = [&text](const std::string& word) {
        return std::stoi(text.substr(text.find(word) + word.size()));
    };
    EXPECT_NE(numberAfter("\nProcess: "), numberAfter(", thread "));
}

TEST_F(CrashReporterTest, writesOneReportThoughManyThreadsCrashAtOnce) {
    EXPECT_EQ(crash([] {
                  std::atomic<int> ready{0};
                  std::vector<std::thread> threads;
                  for (int number = 0; number < 8; ++number) {
                      threads.emplace_back([&ready] {
                          ++ready;
                          while (ready < 8) {
                          }
                          crashingFunction();
                      });
                  }
                  for (std::thread& thread : threads) {
                      thread.join();
                  }
              }),
              SIGSEGV);
    EXPECT_THAT(report(), HasSubstr("  crashingFunction\n"));
}

TEST_F(CrashReporterTest, needsNoMemoryFromTheProgram) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer has an allocator of its own";
#endif
    const int signal = crash([] {
        // The allocator's notes around a block are destroyed, so that it fails in its own code.
        auto* const block = new std::size_t[64];
        for (int index = 64; index < 1024; ++index) {
            const_cast<volatile std::size_t*>(block)[index] = ~std::size_t{0};
        }
        for (std::size_t size = 8; size < 8192; size += 8) {
            static_cast<void>(operator new(size));
        }
        _exit(0);
    });
    EXPECT_THAT(signal, ::testing::AnyOf(SIGABRT, SIGSEGV));
    EXPECT_THAT(report(), HasSubstr("  main\n"));
}

TEST_F(CrashReporterTest, leavesACoreDumpAsThereWouldHaveBeenWithoutIt) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer takes the signal itself where the reporter does not";
#endif
    const auto dumpsCore = [&](bool withReporter) {
        test::ChildProcess child([&] {
            const rlimit enough{.rlim_cur = 1U << 28U, .rlim_max = RLIM_INFINITY};
            setrlimit(RLIMIT_CORE, &enough);
            EXPECT_EQ(chdir(sandbox.folder().c_str()), 0);
            if (withReporter) {
                installCrashReporter(settings);
            }
            crashingFunction();
        });
        return WCOREDUMP(child.wait()) != 0;
    };
    EXPECT_EQ(dumpsCore(true), dumpsCore(false));
    EXPECT_EQ(reports().size(), 1U);
}

// Where it goes

TEST_F(CrashReporterTest, isReadableByItsOwnerAlone) {
    crash(crashingFunction);
    ASSERT_EQ(reports().size(), 1U);
    EXPECT_EQ(test::fileState(settings.folder + "/" + reports().front()).mode, S_IFREG | 0600U);
    struct stat status {};
    ASSERT_EQ(stat(sandbox.path("Logs").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode, S_IFDIR | 0700U);
}

TEST_F(CrashReporterTest, isNoOlderThanTheMomentBeforeTheCrash) {
    for (int attempt = 0; attempt < 10; ++attempt) {
        std::optional<FileDate> before;
        crash([&] {
            before = FileDate::clock::now();
            test::writeBytes(sandbox.path("before"),
                             std::to_string(before->time_since_epoch().count()));
            crashingFunction();
        });
        const auto changed = modificationDate(settings.folder + "/" + reports().back());
        ASSERT_TRUE(changed);
        EXPECT_GE(changed->time_since_epoch().count(),
                  std::stoll(test::readBytes(sandbox.path("before"))));
    }
}

TEST_F(CrashReporterTest, leavesOutALogThatThereIsNot) {
    settings.log = "";
    crash(crashingFunction);
    EXPECT_THAT(report(), HasSubstr("Faulting address: 0x8\n\nBacktrace:\n"));
}

TEST_F(CrashReporterTest, diesOfTheSignalThoughNoReportCanBeWritten) {
    sandbox.write("Logs", "a file in the folder's place");
    EXPECT_EQ(crash(crashingFunction), SIGSEGV);
    EXPECT_EQ(test::readBytes(sandbox.path("Logs")), "a file in the folder's place");
    settings.folder = "/" + std::string(5000, 'x');
    EXPECT_EQ(crash(crashingFunction), SIGSEGV);
}

TEST_F(CrashReporterTest, diesOfTheSignalWhenTheDiskIsFull) {
    EXPECT_EQ(crash([] {
                  // No file may grow beyond a few bytes.
                  std::signal(SIGXFSZ, SIG_IGN);
                  const rlimit little{.rlim_cur = 64, .rlim_max = 64};
                  setrlimit(RLIMIT_FSIZE, &little);
                  crashingFunction();
              }),
              SIGSEGV);
    EXPECT_EQ(report().size(), 64U);
}

TEST_F(CrashReporterTest, isInstalledOnlyWhereItWasAskedFor) {
    EXPECT_FALSE(isCrashReporterInstalled());
    EXPECT_TRUE(test::passesInChild([&] {
        installCrashReporter(settings);
        EXPECT_TRUE(isCrashReporterInstalled());
    }));
}

}  // namespace
}  // namespace vornic::platform
