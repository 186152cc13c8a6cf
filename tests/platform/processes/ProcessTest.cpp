#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "base/Exception.h"
#include "platform/processes/Pipe.h"
#include "platform/processes/Process.h"
#include "platform/threads/Thread.h"
#include "tests/support/fakes/FailingSystemCall.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Waiting.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic::platform {
namespace {

using namespace std::chrono_literals;
using test::passesInChild;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char* kShell = "/bin/sh";

std::string readToEnd(const FileDescriptor& descriptor) {
    std::string all;
    for (std::string chunk = readAvailable(descriptor.get()); !chunk.empty();
         chunk = readAvailable(descriptor.get())) {
        all += chunk;
    }
    return all;
}

/// Runs a program to its end and yields what it wrote to standard output.
std::string outputOf(Process& process) {
    Pipe pipe = makePipe();
    process.setDescriptor(StandardStream::output, std::move(pipe.writingEnd));
    process.launch();
    std::string output = readToEnd(pipe.readingEnd);
    process.waitUntilExit();
    return output;
}

std::string outputOf(const std::string& path, const std::vector<std::string>& arguments) {
    Process process;
    process.setLaunchPath(path);
    process.setArguments(arguments);
    return outputOf(process);
}

std::vector<std::string> words(const std::string& text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

void launchShell(Process& process, const std::string& script) {
    process.setLaunchPath(kShell);
    process.setArguments({"-c", script});
    process.launch();
}

int statusOf(const std::string& script) {
    Process process;
    launchShell(process, script);
    process.waitUntilExit();
    return process.terminationStatus();
}

bool goesWithin(int process, std::chrono::milliseconds limit) {
    return test::becomesTrue([&] { return test::threadState(process) == '-'; }, limit);
}

std::string reasonOfFailedLaunch(Process& process) {
    try {
        process.launch();
    } catch (const Exception& exception) {
        return exception.reason();
    }
    return "";
}

TEST(ProcessTest, givesArgumentsAsTheyStand) {
    EXPECT_EQ(
        outputOf(kShell, {"-c", R"(printf '<%s>' "$@")", "sh", "a b", "", "$HOME", "*", "-x"}),
        "<a b><><$HOME><*><-x>");
}

TEST(ProcessTest, namesTheProgramByItsLaunchPath) {
    EXPECT_EQ(outputOf(kShell, {"-c", "printf %s \"$0\""}), "/bin/sh");
}

TEST(ProcessTest, replacesTheWholeEnvironment) {
    Process process;
    process.setLaunchPath("/usr/bin/env");
    process.setEnvironment(Process::Environment{{"B", "2 3"}, {"A", "1"}});
    EXPECT_EQ(outputOf(process), "A=1\nB=2 3\n");
}

TEST(ProcessTest, givesAnEmptyEnvironmentWhenItIsEmpty) {
    Process process;
    process.setLaunchPath("/usr/bin/env");
    process.setEnvironment(Process::Environment{});
    EXPECT_EQ(outputOf(process), "");
}

TEST(ProcessTest, passesItsOwnEnvironmentOnOtherwise) {
    setenv("VORNIC_PROCESS_TEST", "passed on", 1);
    EXPECT_EQ(outputOf(kShell, {"-c", "printf %s \"$VORNIC_PROCESS_TEST\""}), "passed on");
    unsetenv("VORNIC_PROCESS_TEST");
}

TEST(ProcessTest, joinsStreamsToTheNullDevice) {
    Process process;
    process.setNullDevice(StandardStream::input);
    process.setNullDevice(StandardStream::error);
    process.setLaunchPath(kShell);
    process.setArguments({"-c", "readlink /proc/$$/fd/0 /proc/$$/fd/2"});
    EXPECT_EQ(outputOf(process), "/dev/null\n/dev/null\n");
}

TEST(ProcessTest, sharesItsOwnStreamsOtherwise) {
    const std::string own = std::filesystem::read_symlink("/proc/self/fd/0").string();
    EXPECT_EQ(outputOf("/bin/readlink", {"/proc/self/fd/0"}), own + "\n");
}

TEST(ProcessTest, feedsAStreamFromAPipe) {
    Process process;
    process.setLaunchPath("/bin/cat");
    Pipe pipe = makePipe();
    process.setDescriptor(StandardStream::input, std::move(pipe.readingEnd));
    ASSERT_EQ(writeAll(pipe.writingEnd.get(), "fed", 3), 0);
    pipe.writingEnd.close();
    EXPECT_EQ(outputOf(process), "fed");
}

TEST(ProcessTest, closesTheChildsEndHereAtTheLaunch) {
    Process process;
    Pipe pipe = makePipe();
    const int given = pipe.writingEnd.get();
    process.setDescriptor(StandardStream::output, std::move(pipe.writingEnd));
    EXPECT_NE(fcntl(given, F_GETFD), -1);
    launchShell(process, "exit 0");
    EXPECT_EQ(fcntl(given, F_GETFD), -1);
    process.waitUntilExit();
}

TEST(ProcessTest, leaksNoDescriptorThatALibraryLeftInheritable) {
    const FileDescriptor careless(open("/dev/null", O_RDONLY));  // NOLINT: on purpose
    const FileDescriptor high(fcntl(careless.get(), F_DUPFD, 300));
    ASSERT_TRUE(high);
    // The last one is the folder that ls itself looks at.
    EXPECT_THAT(words(outputOf("/bin/ls", {"/proc/self/fd"})), ElementsAre("0", "1", "2", "3"));
}

TEST(ProcessTest, givesFurtherDescriptorsFromThreeOnAndNoOther) {
    const test::Sandbox sandbox;
    const FileDescriptor careless(open("/dev/null", O_RDONLY));  // NOLINT: on purpose
    Process process;
    for (const char* name : {"first", "second", "third"}) {
        const std::string path = sandbox.write(name, name);
        process.addDescriptor(FileDescriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC)));
    }
    process.setLaunchPath(kShell);
    process.setArguments({"-c", "cat <&3; cat <&4; cat <&5; ls -x /proc/self/fd"});
    // The last one is the folder that ls itself looks at.
    EXPECT_EQ(outputOf(process), "firstsecondthird0  1  2  3  4  5  6\n");
}

TEST(ProcessTest, givesSixteenFurtherDescriptorsWithoutMixingThemUp) {
    const test::Sandbox sandbox;
    Process process;
    std::string expected;
    std::string script;
    for (int number = 3; number < 3 + 16; ++number) {
        const std::string path = sandbox.write(std::to_string(number), std::to_string(number));
        EXPECT_EQ(process.addDescriptor(FileDescriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC))),
                  number);
        expected += std::to_string(number) + " ";
        script += "cat /proc/self/fd/" + std::to_string(number) + "; printf ' ';";
    }
    EXPECT_THROW(process.addDescriptor(FileDescriptor(dup(0))), Exception);
    process.setLaunchPath(kShell);
    process.setArguments({"-c", script});
    EXPECT_EQ(outputOf(process), expected);
}

TEST(ProcessTest, reportsTheNumberOfAFurtherDescriptorAndClosesItAtTheLaunch) {
    const FileDescriptor probe(open("/dev/null", O_RDONLY | O_CLOEXEC));
    Process process;
    EXPECT_EQ(process.addDescriptor(FileDescriptor(dup(probe.get()))), 3);
    EXPECT_EQ(process.addDescriptor(FileDescriptor(dup(probe.get()))), 4);
    EXPECT_THROW(process.addDescriptor(FileDescriptor()), Exception);
    const auto openHere = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    };
    const auto before = openHere();
    launchShell(process, "exit 0");
    // The descriptor by which the process's end is told has come instead.
    EXPECT_EQ(openHere(), before - 2 + 1);
    process.waitUntilExit();
}

TEST(ProcessTest, leaksNoPipeBetweenConcurrentLaunches) {
    constexpr int kThreads = 6;
    constexpr int kRounds = 15;
    std::vector<std::string> seen(kThreads);
    std::vector<std::thread> threads;
    for (int index = 0; index < kThreads; ++index) {
        threads.emplace_back([&own = seen[static_cast<std::size_t>(index)]] {
            for (int round = 0; round < kRounds; ++round) {
                // The cat ends only when nobody else holds the writing end of its input.
                Process cat;
                cat.setLaunchPath("/bin/cat");
                Pipe pipe = makePipe();
                cat.setDescriptor(StandardStream::input, std::move(pipe.readingEnd));
                cat.setNullDevice(StandardStream::output);
                cat.launch();
                own += outputOf("/bin/ls", {"/proc/self/fd"});
                pipe.writingEnd.close();
                cat.waitUntilExit();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::string expected;
    for (int round = 0; round < kRounds; ++round) {
        expected += "0\n1\n2\n3\n";
    }
    EXPECT_THAT(seen, testing::Each(expected));
}

TEST(ProcessTest, startsTheChildWithDefaultSignals) {
    EXPECT_TRUE(passesInChild([] {
        sigset_t blocked;
        sigfillset(&blocked);
        sigprocmask(SIG_SETMASK, &blocked, nullptr);
        for (const int number : {SIGPIPE, SIGHUP, SIGINT, SIGTERM, SIGUSR1}) {
            signal(number, SIG_IGN);
        }
        const std::vector<std::string> signals =
            words(outputOf("/bin/grep", {"^Sig[BI]", "/proc/self/status"}));
        ASSERT_THAT(signals, ElementsAre("SigBlk:", "0000000000000000", "SigIgn:", testing::_));
        // The system's library keeps the two lowest real-time signals to itself.
        constexpr unsigned long long kLibrarys = 0x180000000ULL;
        EXPECT_EQ(std::stoull(signals[3], nullptr, 16) & ~kLibrarys, 0U) << signals[3];
    }));
}

TEST(ProcessTest, sharesItsSessionUnlessTheChildGetsOneOfItsOwn) {
    for (const bool ownSession : {false, true}) {
        Process process;
        process.setLaunchPath("/bin/sleep");
        process.setArguments({"10"});
        process.setOwnSession(ownSession);
        process.launch();
        EXPECT_EQ(getsid(process.processIdentifier()),
                  ownSession ? process.processIdentifier() : getsid(0));
        process.kill();
        process.waitUntilExit();
    }
}

TEST(ProcessTest, yieldsTheExitStatus) {
    EXPECT_EQ(statusOf("exit 0"), 0);
    EXPECT_EQ(statusOf("exit 7"), 7);
    EXPECT_EQ(statusOf("exit 255"), 255);
}

TEST(ProcessTest, reportsTheSignalThatEndedTheProcess) {
    Process process;
    launchShell(process, "kill -9 $$");
    process.waitUntilExit();
    EXPECT_EQ(process.terminationStatus(), -1);
    EXPECT_EQ(process.terminationSignal(), SIGKILL);
}

TEST(ProcessTest, asksPolitelyWhenItTerminates) {
    Process process;
    process.setLaunchPath(kShell);
    process.setArguments({"-c", "trap 'exit 3' TERM; echo ready; while :; do sleep 0.01; done"});
    Pipe pipe = makePipe();
    process.setDescriptor(StandardStream::output, std::move(pipe.writingEnd));
    process.launch();
    EXPECT_EQ(readAvailable(pipe.readingEnd.get()), "ready\n");
    process.terminate();
    process.waitUntilExit();
    EXPECT_EQ(process.terminationStatus(), 3);
    EXPECT_EQ(process.terminationSignal(), 0);
}

TEST(ProcessTest, runsFromTheLaunchToTheEnd) {
    Process process;
    EXPECT_FALSE(process.isRunning());
    EXPECT_EQ(process.processIdentifier(), 0);
    Pipe pipe = makePipe();
    process.setDescriptor(StandardStream::input, std::move(pipe.readingEnd));
    launchShell(process, "read line; exit 0");
    EXPECT_TRUE(process.isRunning());
    EXPECT_GT(process.processIdentifier(), 0);
    EXPECT_THROW(static_cast<void>(process.terminationStatus()), Exception);
    EXPECT_EQ(process.terminationSignal(), 0);
    pipe.writingEnd.close();
    process.waitUntilExit();
    EXPECT_FALSE(process.isRunning());
    EXPECT_EQ(process.terminationStatus(), 0);
}

TEST(ProcessTest, doesNothingToAProcessThatDoesNotRun) {
    Process process;
    process.terminate();
    process.kill();
    process.waitUntilExit();
    EXPECT_THROW(static_cast<void>(process.terminationStatus()), Exception);
    launchShell(process, "exit 5");
    process.waitUntilExit();
    process.kill();
    EXPECT_EQ(process.terminationStatus(), 5);
}

TEST(ProcessTest, mayBeWaitedForByManyThreads) {
    Process process;
    Pipe pipe = makePipe();
    process.setDescriptor(StandardStream::input, std::move(pipe.readingEnd));
    launchShell(process, "read line; exit 4");
    std::vector<int> seen(8);
    std::vector<std::thread> threads;
    for (int& status : seen) {
        threads.emplace_back([&] {
            process.waitUntilExit();
            status = process.terminationStatus();
        });
    }
    pipe.writingEnd.close();
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_THAT(seen, testing::Each(4));
}

TEST(ProcessTest, reportsWhyAMissingProgramCannotBeStarted) {
    Process process;
    process.setLaunchPath("/no/such/tool");
    EXPECT_EQ(reasonOfFailedLaunch(process),
              "The tool /no/such/tool cannot be started: no such file or folder.");
    EXPECT_FALSE(process.isRunning());
}

TEST(ProcessTest, startsNothingWithoutAPath) {
    Process process;
    EXPECT_THAT(reasonOfFailedLaunch(process), HasSubstr("no such file or folder"));
}

TEST(ProcessTest, startsNoFolder) {
    Process process;
    process.setLaunchPath("/usr/bin");
    EXPECT_THAT(reasonOfFailedLaunch(process), HasSubstr("permission denied"));
}

TEST(ProcessTest, startsNothingWithANulCharacterInAnArgument) {
    Process process;
    process.setLaunchPath("/bin/echo");
    process.setArguments({std::string("a\0b", 3)});
    EXPECT_THAT(reasonOfFailedLaunch(process), HasSubstr("NUL"));
}

TEST(ProcessTest, startsOnlyOnce) {
    Process process;
    launchShell(process, "exit 0");
    EXPECT_THAT(reasonOfFailedLaunch(process), HasSubstr("started already"));
    process.waitUntilExit();
}

TEST(ProcessTest, reportsWhenNoDescriptorIsLeft) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer needs a descriptor of its own to look at an exception";
#endif
    EXPECT_TRUE(passesInChild([] {
        const struct rlimit few { 3, 3 };
        EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
        EXPECT_THROW(static_cast<void>(makePipe()), Exception);
    }));
}

TEST(ProcessTest, leavesNoZombieWhenTheObjectGoesFirst) {
    int identifier = 0;
    {
        Process process;
        launchShell(process, "sleep 0.1");
        identifier = process.processIdentifier();
    }
    EXPECT_NE(test::threadState(identifier), '-');
    EXPECT_TRUE(goesWithin(identifier, 10s));
    EXPECT_TRUE(joinDetachedThreads(10s));
}

TEST(ProcessTest, leavesNoZombieAmongManyChildrenLeftToThemselves) {
    std::vector<int> identifiers;
    for (int index = 0; index < 20; ++index) {
        Process process;
        launchShell(process, index % 2 == 0 ? "exit 0" : "sleep 0.05");
        identifiers.push_back(process.processIdentifier());
    }
    EXPECT_TRUE(std::all_of(identifiers.begin(), identifiers.end(),
                            [](int identifier) { return goesWithin(identifier, 10s); }));
    EXPECT_TRUE(joinDetachedThreads(10s));
}

TEST(ProcessTest, reapsInTheBackgroundWhileTheObjectStays) {
    Process process;
    launchShell(process, "sleep 0.05; exit 6");
    process.reapInBackground();
    EXPECT_TRUE(goesWithin(process.processIdentifier(), 10s));
    EXPECT_EQ(process.terminationStatus(), 6);
    EXPECT_TRUE(joinDetachedThreads(10s));
}

TEST(ProcessTest, letsAChildOutliveTheProgramsThreads) {
    Process kept;
    launchShell(kept, "exec sleep 60");
    kept.reapInBackground();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(joinDetachedThreads(30s));
    EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
    EXPECT_TRUE(kept.isRunning());
    kept.kill();
    // The next child that is left to itself starts the background work again.
    {
        Process process;
        launchShell(process, "sleep 0.05");
    }
    EXPECT_TRUE(goesWithin(kept.processIdentifier(), 10s));
    EXPECT_TRUE(joinDetachedThreads(10s));
}

TEST(ProcessTest, worksOnASystemThatDoesNotTellTheEndsOfProcesses) {
    EXPECT_TRUE(passesInChild([] {
        ASSERT_TRUE(test::failSystemCall(SYS_pidfd_open, ENOSYS));
        EXPECT_EQ(statusOf("sleep 0.02; exit 3"), 3);
        int identifier = 0;
        {
            Process process;
            launchShell(process, "sleep 0.05");
            identifier = process.processIdentifier();
        }
        EXPECT_TRUE(goesWithin(identifier, 10s));
        EXPECT_TRUE(joinDetachedThreads(10s));
    }));
}

TEST(ProcessTest, knowsTheStatusThoughEndsOfChildrenWereIgnored) {
    EXPECT_TRUE(passesInChild([] {
        signal(SIGCHLD, SIG_IGN);
        EXPECT_EQ(statusOf("exit 9"), 9);
    }));
}

TEST(ProcessTest, takesAnEndThatSomebodyElseFetchedForAnEnd) {
    Process process;
    launchShell(process, "exit 2");
    int status = 0;
    ASSERT_EQ(waitpid(process.processIdentifier(), &status, 0), process.processIdentifier());
    process.waitUntilExit();
    EXPECT_FALSE(process.isRunning());
    EXPECT_EQ(process.terminationStatus(), -1);
}

TEST(ProcessTest, worksWithoutStandardStreamsOfItsOwn) {
    EXPECT_TRUE(passesInChild([] {
        close(STDIN_FILENO);
        close(STDOUT_FILENO);
        Process process;
        process.setLaunchPath("/bin/cat");
        Pipe pipe = makePipe();
        EXPECT_GT(pipe.readingEnd.get(), STDERR_FILENO);
        EXPECT_GT(pipe.writingEnd.get(), STDERR_FILENO);
        process.setDescriptor(StandardStream::input, std::move(pipe.readingEnd));
        EXPECT_EQ(writeAll(pipe.writingEnd.get(), "through", 7), 0);
        pipe.writingEnd.close();
        EXPECT_EQ(outputOf(process), "through");
    }));
}

}  // namespace
}  // namespace vornic::platform
