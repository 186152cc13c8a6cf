#ifndef VORNIC_TESTS_SUPPORT_PROGRAMS_CHILD_PROCESS_H
#define VORNIC_TESTS_SUPPORT_PROGRAMS_CHILD_PROCESS_H

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <functional>

#include <gtest/gtest.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vornic::test {

/// A forked copy of the test's process, for what a process does not come back from: signals, kills,
/// limits and filters. Start it while no other thread runs. Expectations that fail in the child are
/// printed by it and tell by its exit status 1.
class ChildProcess {
  public:
    explicit ChildProcess(const std::function<void()>& body) {
        static_cast<void>(std::fflush(nullptr));
        id_ = fork();
        if (id_ == 0) {
            body();
            static_cast<void>(std::fflush(nullptr));
            _exit(::testing::Test::HasFailure() ? EXIT_FAILURE : EXIT_SUCCESS);
        }
        EXPECT_GT(id_, 0);
    }
    ~ChildProcess() { static_cast<void>(wait()); }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    [[nodiscard]] pid_t id() const { return id_; }

    /// Waits for its end. @return the status as waitpid(2) gives it, also when asked again; -1 when
    /// there is no child.
    int wait() {
        while (!ended_ && id_ > 0) {
            ended_ = waitpid(id_, &status_, 0) == id_ || errno != EINTR;
        }
        return status_;
    }

  private:
    pid_t id_ = -1;
    int status_ = -1;
    bool ended_ = false;
};

/// Runs the body in a child. Success when it came to its end and no expectation failed in it.
inline ::testing::AssertionResult passesInChild(const std::function<void()>& body) {
    const int status = ChildProcess(body).wait();
    if (WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure()
           << (WIFSIGNALED(status) ? "the child ended by signal " : "the child ended with status ")
           << (WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status));
}

}  // namespace vornic::test

#endif
