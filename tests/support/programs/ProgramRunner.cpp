#include "tests/support/programs/ProgramRunner.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace vornic::test {

namespace {

constexpr std::chrono::seconds kLongestRun{240};
constexpr int kCannotStart = 127;

struct Ends {
    int ours = -1;
    int programs = -1;
};

int keptFromPrograms(int descriptor) {
    EXPECT_GE(descriptor, 0);
    EXPECT_EQ(fcntl(descriptor, F_SETFD, FD_CLOEXEC), 0);
    return descriptor;
}

Ends makePipe() {
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    return {ends[0], ends[1]};
}

Ends makeTerminal() {
    Ends ends;
    // What the program writes arrives as it was written, without added carriage returns.
    struct termios plain {};
    EXPECT_EQ(openpty(&ends.ours, &ends.programs, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(tcgetattr(ends.programs, &plain), 0);
    cfmakeraw(&plain);
    EXPECT_EQ(tcsetattr(ends.programs, TCSANOW, &plain), 0);
    keptFromPrograms(ends.ours);
    keptFromPrograms(ends.programs);
    return ends;
}

Ends makeEnds(ProgramStream stream) {
    switch (stream) {
        case ProgramStream::captured:
            return makePipe();
        case ProgramStream::terminal:
            return makeTerminal();
        case ProgramStream::brokenPipe: {
            const Ends ends = makePipe();
            ::close(ends.ours);
            return {-1, ends.programs};
        }
        case ProgramStream::fullDevice:
            return {-1, keptFromPrograms(open("/dev/full", O_WRONLY))};
        case ProgramStream::closed:
            break;
    }
    return {};
}

std::vector<char*> pointers(const std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (const std::string& text : texts) {
        result.push_back(const_cast<char*>(text.c_str()));
    }
    result.push_back(nullptr);
    return result;
}

// The settings of a sanitizer count for the programs too.
std::vector<std::string> wholeEnvironment(const ProgramSettings& settings) {
    std::vector<std::string> environment = settings.environment;
    for (const char* name : {"ASAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS", "LSAN_OPTIONS"}) {
        if (const char* value = std::getenv(name)) {
            environment.push_back(std::string(name) + "=" + value);
        }
    }
    return environment;
}

void connect(int descriptor, int number) {
    if (descriptor < 0) {
        ::close(number);
    } else {
        dup2(descriptor, number);
    }
}

// Between fork and exec: nothing but system calls.
[[noreturn]] void becomeProgram(const ProgramSettings& settings, int output, int errors,
                                char* const* arguments, char* const* environment) {
    const int input = open("/dev/null", O_RDONLY | O_CLOEXEC);
    connect(input, STDIN_FILENO);
    connect(output, STDOUT_FILENO);
    connect(errors, STDERR_FILENO);
    signal(SIGPIPE, SIG_DFL);
    if (chdir(settings.folder.c_str()) == 0) {
        execve(settings.program.c_str(), arguments, environment);
    }
    _exit(kCannotStart);
}

}  // namespace

RunningProgram::RunningProgram(const ProgramSettings& settings)
    : start_(std::chrono::steady_clock::now()) {
    const Ends output = makeEnds(settings.output);
    const Ends errors = makeEnds(settings.errors);
    std::vector<std::string> words = settings.arguments;
    words.insert(words.begin(), settings.program);
    const std::vector<std::string> variables = wholeEnvironment(settings);
    const std::vector<char*> arguments = pointers(words);
    const std::vector<char*> environment = pointers(variables);
    process_ = fork();
    if (process_ == 0) {
        becomeProgram(settings, output.programs, errors.programs, arguments.data(),
                      environment.data());
    }
    EXPECT_GT(process_, 0);
    for (const int descriptor : {output.programs, errors.programs}) {
        if (descriptor >= 0) {
            ::close(descriptor);
        }
    }
    output_.descriptor = output.ours;
    errors_.descriptor = errors.ours;
}

RunningProgram::~RunningProgram() {
    if (process_ > 0) {
        sendSignal(SIGKILL);
        finish();
    }
}

void RunningProgram::close(Stream& stream) {
    if (stream.descriptor >= 0) {
        ::close(stream.descriptor);
        stream.descriptor = -1;
    }
}

void RunningProgram::readFrom(Stream& stream) {
    std::array<char, 65536> buffer;
    const ssize_t count = read(stream.descriptor, buffer.data(), buffer.size());
    if (count > 0) {
        stream.text.append(buffer.data(), static_cast<std::size_t>(count));
    } else if (count == 0 || errno != EINTR) {
        // A terminal that nobody holds any more ends with an input error.
        close(stream);
    }
}

void RunningProgram::readOnce() {
    std::array<pollfd, 2> waited{
        {{output_.descriptor, POLLIN, 0}, {errors_.descriptor, POLLIN, 0}}};
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        start_ + kLongestRun - std::chrono::steady_clock::now());
    const int ready = poll(waited.data(), waited.size(),
                           static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
    if (ready == 0 && !hangs_) {
        hangs_ = true;
        ADD_FAILURE() << "the program hangs; so far it wrote\n" << output_.text << errors_.text;
        sendSignal(SIGKILL);
    }
    if (waited[0].revents != 0) {
        readFrom(output_);
    }
    if (waited[1].revents != 0) {
        readFrom(errors_);
    }
}

bool RunningProgram::readUntil(std::string_view text) {
    const auto found = [&] {
        return output_.text.find(text) != std::string::npos ||
               errors_.text.find(text) != std::string::npos;
    };
    while (!found() && (output_.descriptor >= 0 || errors_.descriptor >= 0)) {
        readOnce();
    }
    return found();
}

void RunningProgram::sendSignal(int number) const {
    EXPECT_EQ(kill(process_, number), 0);
}

ProgramResult RunningProgram::finish() {
    while (output_.descriptor >= 0 || errors_.descriptor >= 0) {
        readOnce();
    }
    int status = 0;
    struct rusage usage {};
    while (wait4(process_, &status, 0, &usage) < 0 && errno == EINTR) {
    }
    process_ = -1;
    ProgramResult result;
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    result.output = std::move(output_.text);
    result.errors = std::move(errors_.text);
    result.elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - start_);
    constexpr std::int64_t kUnit = 1024;
    result.peakMemory = usage.ru_maxrss * kUnit;
    EXPECT_NE(result.status, kCannotStart) << "the program cannot be started";
    return result;
}

ProgramResult runProgram(const ProgramSettings& settings) {
    return RunningProgram(settings).finish();
}

}  // namespace vornic::test
