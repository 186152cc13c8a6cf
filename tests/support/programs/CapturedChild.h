#ifndef VORNIC_TESTS_SUPPORT_PROGRAMS_CAPTURED_CHILD_H
#define VORNIC_TESTS_SUPPORT_PROGRAMS_CAPTURED_CHILD_H

#include <cstdio>
#include <functional>
#include <string>

#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/programs/ChildProcess.h"

namespace vornic::test {

/// How a child process ended and what it wrote to its standard streams.
struct ChildOutcome {
    /// The exit status, or minus the number of the signal that ended it.
    int status = 0;
    std::string output;
    std::string errors;
};

/// The exit status of a child that cannot have on this machine what it needs.
inline constexpr int kChildSkipped = 77;

/// Everything in a temporary file, which is closed.
inline std::string takeContents(std::FILE* file) {
    std::string contents;
    std::rewind(file);
    for (int character = std::fgetc(file); character != EOF; character = std::fgetc(file)) {
        contents += static_cast<char>(character);
    }
    static_cast<void>(std::fclose(file));
    return contents;
}

/// Runs a function in a child process to its end and keeps what it writes. Expectations that fail
/// in the child fail the running test.
inline ChildOutcome runInChild(const std::function<void()>& function) {
    std::FILE* output = std::tmpfile();
    std::FILE* errors = std::tmpfile();
    if (output == nullptr || errors == nullptr) {
        ADD_FAILURE() << "no temporary file";
        return {};
    }
    ChildProcess child([&] {
        dup2(fileno(output), STDOUT_FILENO);
        dup2(fileno(errors), STDERR_FILENO);
        function();
    });
    const int status = child.wait();
    ChildOutcome outcome{.status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status),
                         .output = takeContents(output),
                         .errors = takeContents(errors)};
    if (outcome.status == EXIT_FAILURE) {
        ADD_FAILURE() << outcome.output << outcome.errors;
    }
    return outcome;
}

}  // namespace vornic::test

#endif
