#ifndef VORNIC_TESTS_SUPPORT_PROGRAMS_PROGRAM_RUNNER_H
#define VORNIC_TESTS_SUPPORT_PROGRAMS_PROGRAM_RUNNER_H

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

namespace vornic::test {

/// Where one of a program's output streams leads.
enum class ProgramStream {
    /// Into the result.
    captured,
    /// Nowhere: the program starts without the descriptor.
    closed,
    /// Into a pipe that nobody reads any more.
    brokenPipe,
    /// Onto the device that is always full.
    fullDevice,
    /// Onto a terminal of its own, and from there into the result.
    terminal,
};

/// How a program is started.
struct ProgramSettings {
    /// The executable's path.
    std::string program;
    /// What follows the program's own name.
    std::vector<std::string> arguments;
    /// The whole environment, "NAME=value" each.
    std::vector<std::string> environment;
    /// The working folder.
    std::string folder = "/";
    ProgramStream output = ProgramStream::captured;
    ProgramStream errors = ProgramStream::captured;
};

/// How a program ended.
struct ProgramResult {
    /// The exit status, or -1 when a signal ended the program.
    int status = -1;
    /// The signal that ended the program, or 0.
    int signal = 0;
    std::string output;
    std::string errors;
    std::chrono::milliseconds elapsed{0};
    /// The most memory that it had in use at once, in bytes. Counts the memory of the test itself
    /// at the moment of the start, so a test that looks at it keeps its own small.
    std::int64_t peakMemory = 0;
};

/// A program at work. Its output is read only by the operations that say so: a program that writes
/// more than a pipe holds waits in between, which lets a test stop it at a known place.
class RunningProgram {
  public:
    explicit RunningProgram(const ProgramSettings& settings);
    /// Kills the program if it is still at work.
    ~RunningProgram();
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    /// Reads until the text has come out on one of the captured streams.
    /// @return false when the program closed its streams without it.
    [[nodiscard]] bool readUntil(std::string_view text);
    void sendSignal(int number) const;
    /// The process number; -1 once it has been waited for.
    [[nodiscard]] pid_t id() const { return process_; }
    /// Reads everything that is still to come and waits for the end. A program that takes longer
    /// than four minutes hangs: it is killed, and the test fails.
    ProgramResult finish();

  private:
    struct Stream {
        int descriptor = -1;
        std::string text;
    };

    void readOnce();
    static void readFrom(Stream& stream);
    static void close(Stream& stream);

    pid_t process_ = -1;
    Stream output_;
    Stream errors_;
    std::chrono::steady_clock::time_point start_;
    bool hangs_ = false;
};

/// Starts a program and waits for its end.
ProgramResult runProgram(const ProgramSettings& settings);

}  // namespace vornic::test

#endif
