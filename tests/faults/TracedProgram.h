#ifndef VORNIC_TESTS_FAULTS_TRACED_PROGRAM_H
#define VORNIC_TESTS_FAULTS_TRACED_PROGRAM_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <sys/resource.h>
#include <sys/types.h>

#include "tests/faults/CallObserver.h"

namespace vornic::test {

/// How a program is started.
struct ProgramStart {
    std::string program;
    std::vector<std::string> arguments;
    /// The whole environment, "NAME=value" each.
    std::vector<std::string> environment;
    std::string folder = "/";
    /// Limits that hold for the program: a RLIMIT_… constant and its value.
    std::vector<std::pair<int, rlim_t>> limits;
};

/// How a program ended.
struct ProgramEnd {
    /// The exit status, or -1.
    int status = -1;
    /// The signal that ended it, or 0.
    int signal = 0;
    /// It took longer than it may and was killed.
    bool hung = false;
    /// The observer had it killed.
    bool killed = false;
    std::string output;
    std::string errors;
};

/// One run of a program under ptrace(2): whatever library makes a system call, the observer sees
/// it. x86-64 only. One at a time in a process, which must have no other children.
class TracedProgram {
  public:
    TracedProgram(const ProgramStart& start, CallObserver& observer);
    /// Runs the program to its end, or to the time-out, which counts as hanging.
    [[nodiscard]] ProgramEnd run(std::chrono::seconds longest);

  private:
    struct Task {
        int thread = 0;
        long calls = 0;
        // Its first stop tells that it was attached to, and no more.
        bool attached = false;
        Verdict pending;
        // The register that was given another value for the call, and the one that it had; 0 for
        // none.
        std::size_t changed = 0;
        std::uint64_t before = 0;
    };

    [[noreturn]] void becomeProgram(const std::vector<char*>& arguments,
                                    const std::vector<char*>& environment) const;
    void start();
    // @return false when there is nothing left to wait for.
    bool handleNextStop();
    void handleStop(pid_t task, int status);
    void handleCall(pid_t task);
    void enter(pid_t task, Task& state, const SystemCall& call);
    static void change(pid_t task, Task& state, std::size_t offset, std::uint64_t before,
                       std::uint64_t value);
    static void fail(pid_t task, Task& state, const SystemCall& call);
    void leave(pid_t task, Task& state);
    void resume(pid_t task, const Task& state, int signal) const;
    // @return true when the call comes from the program and not from its loader.
    bool counts(const Task& state, long number);
    [[nodiscard]] std::string pathsOf(const SystemCall& call) const;
    [[nodiscard]] std::string textAt(std::uint64_t address) const;
    void kill();

    const ProgramStart& start_;
    CallObserver& observer_;
    pid_t process_ = -1;
    int output_ = -1;
    int errors_ = -1;
    std::map<pid_t, Task> tasks_;
    bool loaderIsAtItsEnd_ = false;
    bool loaded_ = false;
    ProgramEnd end_;
};

}  // namespace vornic::test

#endif
